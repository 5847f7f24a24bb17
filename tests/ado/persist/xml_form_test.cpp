// The XML form to the letter, and files that people or other programs made.
#include "saved_rows.h"

namespace tk::ado::test {
namespace {

std::shared_ptr<RowStore> Opened(std::string_view text) {
    return StoreOf(Load(text));
}

TEST(XmlForm, IsWrittenToTheLetter) {
    std::vector<Column> columns = {MakeColumn(u"id", 3, 0, 0),         MakeColumn(u"unit price", 131, 0, 0x60),
                                   MakeColumn(u"名称", 202, 20, 0x60), MakeColumn(u"born", 135, 0, 0x60),
                                   MakeColumn(u"flag", 11, 0, 0x60),   MakeColumn(u"photo", 205, 2147483647, 0x60)};
    columns[0].baseTable = "goods";
    columns[0].baseColumn = "id";
    columns[0].isKey = true;
    columns[0].attributes |= 0x8000;
    columns[1].precision = 10;
    columns[1].scale = 2;
    columns[1].sqlType = 2;
    for (const auto& [index, sqlType] : {std::pair{0, 4}, {2, -9}, {3, 93}, {4, -7}, {5, -4}})
        columns[static_cast<std::size_t>(index)].sqlType = sqlType;
    RowStore store(TextRows(columns, {{"1", "2.50", "茶 <'&\">", "2003-07-04 13:05:09", "1", "\xCA\xFE"},
                                      {"2", nullptr, "", "2003-07-04 13:05:09.25", "0", nullptr},
                                      {"3", "3", "a\tb\r\n", nullptr, nullptr, ""}}));
    std::vector<std::optional<Value>> values(columns.size());
    values[1] = Decimal(u"4");
    values[2] = Null();
    store.Change(1, values, kStatusPending | kStatusModified);
    store.Delete(2, kStatusPending | kStatusDeleted);
    std::vector<std::optional<Value>> added(columns.size());
    added[0] = Number(4);
    added[3] = Null();
    store.Add(added, kStatusPending | kStatusNew);
    EXPECT_EQ(SavedBytes(store, PersistFormat::Xml),
              R"(<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'
	xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'
	xmlns:rs='urn:schemas-microsoft-com:rowset'
	xmlns:z='#RowsetSchema'>
<s:Schema id='RowsetSchema'>
	<s:ElementType name='row' content='eltOnly' rs:CommandTimeout='30' rs:updatable='true'>
		<s:AttributeType name='id' rs:number='1' rs:write='true' rs:basetable='goods' rs:basecolumn='id' rs:keycolumn='true'>
			<s:datatype dt:type='int' dt:maxLength='4' rs:precision='10' rs:fixedlength='true' rs:maybenull='false'/>
		</s:AttributeType>
		<s:AttributeType name='c1' rs:name='unit price' rs:number='2' rs:nullable='true' rs:write='true'>
			<s:datatype dt:type='number' rs:dbtype='numeric' dt:maxLength='19' rs:scale='2' rs:precision='10' rs:fixedlength='true'/>
		</s:AttributeType>
		<s:AttributeType name='名称' rs:number='3' rs:nullable='true' rs:write='true'>
			<s:datatype dt:type='string' dt:maxLength='20'/>
		</s:AttributeType>
		<s:AttributeType name='born' rs:number='4' rs:nullable='true' rs:write='true'>
			<s:datatype dt:type='dateTime' rs:dbtype='timestamp' dt:maxLength='16' rs:fixedlength='true'/>
		</s:AttributeType>
		<s:AttributeType name='flag' rs:number='5' rs:nullable='true' rs:write='true'>
			<s:datatype dt:type='boolean' dt:maxLength='2' rs:fixedlength='true'/>
		</s:AttributeType>
		<s:AttributeType name='photo' rs:number='6' rs:nullable='true' rs:write='true'>
			<s:datatype dt:type='bin.hex' dt:maxLength='2147483647' rs:long='true'/>
		</s:AttributeType>
		<s:extends type='rs:rowbase'/>
	</s:ElementType>
</s:Schema>
<rs:data>
	<z:row id='1' c1='2.50' 名称='茶 &lt;&#39;&amp;&quot;&gt;' born='2003-07-04T13:05:09' flag='True' photo='cafe'/>
	<rs:update><rs:original><z:row id='2' 名称='' born='2003-07-04T13:05:09.25' flag='False'/></rs:original><z:row c1='4' rs:forcenull='名称'/></rs:update>
	<rs:delete><z:row id='3' c1='3' 名称='a&#x9;b&#xD;&#xA;' photo=''/></rs:delete>
	<rs:insert><z:row id='4' rs:forcenull='born'/></rs:insert>
</rs:data>
</xml>
)");
}

TEST(XmlForm, SaysInHexadecimalWhatXmlExcludes) {
    RowStore store(TextRows(Columns({{u"a", kVarWChar}, {u"b", kVarWChar}}), {{"x\x01y", "plain"}}));
    const std::string text = SavedBytes(store, PersistFormat::Xml);
    EXPECT_NE(text.find("<z:row a='780179' b='plain' xmlns:x='urn:tkkernel32:recordset' x:hex='a'/>"),
              std::string::npos)
        << text;
}

constexpr const char* kHead =
    "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882' xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882' "
    "xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#RowsetSchema'>";

TEST(XmlForm, OfNamesAloneIsEnough) {
    const auto store = Opened(std::string(kHead) +
                              "<s:Schema id='RowsetSchema'><s:ElementType name='row' content='eltOnly'>"
                              "<s:AttributeType name='a'/><s:AttributeType name='b'/></s:ElementType></s:Schema>"
                              "<rs:data><z:row a='1' b='two'/><z:row b=''/><z:row/></rs:data></xml>");
    ASSERT_EQ(store->Columns().size(), 2u);
    EXPECT_EQ(store->Columns()[0].type, 202);
    EXPECT_EQ(store->CountRows(), 3u);
    EXPECT_EQ(Exactly(*store, 0, 0), "8:1");
    EXPECT_EQ(Exactly(*store, 0, 1), "8:two");
    EXPECT_EQ(Exactly(*store, 1, 0), "1:");
    EXPECT_EQ(Exactly(*store, 1, 1), "8:");
    EXPECT_EQ(store->Status(0), kStatusUnmodified);
}

TEST(XmlForm, IsReadWhateverThePrefixesQuotesAndOrder) {
    const auto store = Opened(
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><!-- made by hand -->\n"
        "<root xmlns=\"uuid:bdc6e3f0-6da3-11d1-a2a3-00aa00c14882\" "
        "xmlns:t=\"uuid:C2F41010-65B3-11D1-A29F-00AA00C14882\" "
        "xmlns:r=\"urn:schemas-microsoft-com:rowset\" xmlns:q=\"#Other\" more=\"x\">"
        "<Schema id=\"Other\"><ElementType name=\"line\"><attribute type=\"b\"/><extends "
        "type=\"r:rowbase\"/></ElementType>"
        "<AttributeType name=\"b\" r:number=\"2\" t:type=\"i4\" made=\"up\"/>"
        "<AttributeType name=\"a\" r:number=\"1\"><datatype t:type=\"r8\"/></AttributeType>"
        "<AttributeType name=\"c\"><datatype t:type=\"nonsense\"/></AttributeType>"
        "<description>words</description></Schema>"
        "<r:data><q:line c=\"x\" unknown=\"?\" b=\"7\" a=\"2.5\"/></r:data><rest><anything/></rest></root>");
    ASSERT_EQ(store->Columns().size(), 3u);
    EXPECT_EQ(store->Columns()[0].name, u"a");
    EXPECT_EQ(store->Columns()[0].type, 5);
    EXPECT_EQ(store->Columns()[1].type, 3);
    EXPECT_EQ(store->Columns()[2].type, 202);
    EXPECT_EQ(Exactly(*store, 0, 1), "3:7");
    EXPECT_EQ(Exactly(*store, 0, 2), "8:x");
}

TEST(XmlForm, ReadsTheSpellingsOfEachType) {
    const struct {
        const char* type;
        const char* value;
        const char* shown;
    } rows[] = {
        {"boolean", "True", "BOOL true"},
        {"boolean", "FALSE", "BOOL false"},
        {"boolean", "-1", "BOOL true"},
        {"boolean", "0", "BOOL false"},
        {"boolean", "1", "BOOL true"},
        {"int", "-5", "I4 -5"},
        {"i2", "7", "I2 7"},
        {"ui1", "200", "UI1 200"},
        {"i8", "9223372036854775807", "DECIMAL 9223372036854775807"},
        {"float", "1e-3", "R8 0.001"},
        {"r4", "0.5", "R4 0.5"},
        {"number", "12.50", "DECIMAL 12.50"},
        {"dateTime", "2003-07-04T13:05:09", "DATE 2003-07-04 13:05:09"},
        {"dateTime", "2003-07-04", "DATE 2003-07-04 00:00:00"},
        {"date", "2003-07-04", "DATE 2003-07-04 00:00:00"},
        {"time", "13:05:09", "DATE 1899-12-30 13:05:09"},
        {"bin.hex", "CAfe 00", "BYTES cafe00"},
        {"uuid", "6f9619ff-8b86-d011-b42d-00c04fc964ff", "BSTR {6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
        {"uuid", "{6F9619FF-8B86-D011-B42D-00C04FC964FF}", "BSTR {6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
        {"string", "&#xA;&#x4E2D;", "BSTR \n\xE4\xB8\xAD"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        const auto store = Opened(std::string(kHead) +
                                  "<s:Schema id='RowsetSchema'><s:ElementType name='row'><s:AttributeType name='a'>"
                                  "<s:datatype dt:type='" +
                                  row.type + "'/></s:AttributeType></s:ElementType></s:Schema><rs:data><z:row a='" +
                                  row.value + "'/></rs:data></xml>");
        tk::test::Value value;
        store->Read(0, 0, value);
        EXPECT_EQ(tk::test::Show(value), row.shown);
    }
}

TEST(XmlForm, ReadsOtherEncodings) {
    const std::string gbk("<?xml version='1.0' encoding='gb2312'?>" + std::string(kHead) +
                          "<s:Schema id='RowsetSchema'><s:ElementType name='row'><s:AttributeType name='a'/>"
                          "</s:ElementType></s:Schema><rs:data><z:row a='\xD6\xD0\xCE\xC4'/></rs:data></xml>");
    EXPECT_EQ(Exactly(*Opened(gbk), 0, 0), "8:\xE4\xB8\xAD\xE6\x96\x87");
    std::u16string wide = u"\uFEFF" + ToUtf16(kHead) +
                          u"<s:Schema id='RowsetSchema'><s:ElementType name='row'><s:AttributeType name='a'/>"
                          u"</s:ElementType></s:Schema><rs:data><z:row a='\u4E2D'/></rs:data></xml>";
    const std::string_view bytes(reinterpret_cast<const char*>(wide.data()), wide.size() * 2);
    EXPECT_EQ(Exactly(*Opened(bytes), 0, 0), "8:\xE4\xB8\xAD");
}

TEST(XmlForm, TakesSeveralRowsInOneInsert) {
    const auto store = Opened(std::string(kHead) +
                              "<s:Schema id='RowsetSchema'><s:ElementType name='row'><s:AttributeType name='a'/>"
                              "</s:ElementType></s:Schema><rs:data><rs:insert><z:row a='1'/><z:row a='2'/></rs:insert>"
                              "<rs:delete><z:row a='3'/><z:row a='4'/></rs:delete></rs:data></xml>");
    EXPECT_EQ(store->CountRows(), 4u);
    EXPECT_EQ(store->Status(1), kStatusPending | kStatusNew);
    EXPECT_TRUE(store->IsDeleted(2));
    EXPECT_TRUE(store->IsDeleted(3));
}

}  // namespace
}  // namespace tk::ado::test
