// Values of every type, read and sent.
#include "tds_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class TdsValuesTest : public TdsTest {
protected:
    void SetUp() override {
        TdsTest::SetUp();
        Do(u"create table goods (id integer primary key, name nvarchar(20), code varchar(20), fixed char(6), "
           u"price decimal(12,2), amount money, total bigint, small smallint, tiny tinyint, sold bit, weight float, "
           u"height real, made datetime, day date, fine datetime2(6), note ntext, plain text, longer nvarchar(max), "
           u"data varbinary(max), picture image, bytes varbinary(10), mark uniqueidentifier, at time(3))");
        Do(u"insert into goods values (1, N'苹果€', '中文', 'ab', 1234567890.12, 922337203685477.5, 9000000000, -5, "
           u"200, 1, 1.25, 0.5, '2003-07-04 13:05:09.123', '2003-07-04', '2003-07-04 13:05:09.123456', N'长文本', "
           u"'正文', N'更长', 0x0102, 0x0304, 0x0506, '6F9619FF-8B86-D011-B42D-00C04FC964FF', '13:05:09.123')");
        Do(u"insert into goods (id) values (2)");
    }
};

TEST_F(TdsValuesTest, GivesEachTypeAsCallersKnowIt) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id", 1);
    const struct {
        const char16_t* name;
        LONG fieldType;
        VARTYPE type;
        std::string text;
    } kRows[] = {
        {u"id", 3, VT_I4, "1"},
        {u"name", 202, VT_BSTR, ToUtf8(u"苹果€")},
        {u"code", 200, VT_BSTR, ToUtf8(u"中文")},
        {u"fixed", 129, VT_BSTR, "ab    "},
        {u"price", 131, VT_DECIMAL, "1234567890.12"},
        {u"amount", 131, VT_DECIMAL, "922337203685477.5"},
        {u"total", 20, VT_DECIMAL, "9000000000"},
        {u"small", 2, VT_I2, "-5"},
        {u"tiny", 17, VT_UI1, "200"},
        {u"sold", 11, VT_BOOL, "-1"},
        {u"weight", 5, VT_R8, "1.25"},
        {u"height", 4, VT_R4, "0.5"},
        {u"made", 135, VT_DATE, ""},
        {u"day", 133, VT_DATE, ""},
        {u"fine", 135, VT_DATE, ""},
        {u"note", 203, VT_BSTR, ToUtf8(u"长文本")},
        {u"plain", 201, VT_BSTR, ToUtf8(u"正文")},
        {u"longer", 203, VT_BSTR, ToUtf8(u"更长")},
        {u"data", 205, VT_ARRAY | VT_UI1, ""},
        {u"picture", 205, VT_ARRAY | VT_UI1, ""},
        {u"bytes", 204, VT_ARRAY | VT_UI1, ""},
        {u"at", 134, VT_DATE, ""},
        {u"mark", 72, VT_BSTR, "{6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(ToUtf8(row.name));
        const Object field = rows.Get(kFields).Result().Get(collection::kItem, {Text(row.name)}).Result();
        EXPECT_EQ(field.Get(field::kType).Long(), row.fieldType);
        const Outcome value = rows.Get(kCollect, {Text(row.name)});
        EXPECT_EQ(value.value.Type(), row.type) << value;
        if (!row.text.empty()) {
            EXPECT_EQ(value.Utf8(), row.text);
        }
    }
    rows.Call(kMoveNext);
    for (const auto& row : kRows) {
        if (std::u16string_view(row.name) == u"id") continue;
        EXPECT_EQ(ValueOf(rows, row.name), "NULL") << ToUtf8(row.name);
    }
}

}  // namespace
}  // namespace tk::ado::test
