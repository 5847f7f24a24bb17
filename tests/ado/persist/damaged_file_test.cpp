// Files that are cut off, damaged or made to harm: an error, and no memory for what is not there.
#include <sys/resource.h>
#include <sys/stat.h>

#include <random>

#include "saved_rows.h"

namespace tk::ado::test {
namespace {

/// Goods with a change of every kind.
std::shared_ptr<RowStore> ChangedGoods() {
    auto store = Goods();
    std::vector<std::optional<Value>> values(store->Columns().size());
    values[1] = Text(u"changed");
    values[2] = Null();
    store->Change(0, values, kStatusPending | kStatusModified);
    store->Delete(1, kStatusPending | kStatusDeleted);
    store->Add(values, kStatusPending | kStatusNew);
    return store;
}

/// Loads what may be anything; reads every value of what is taken for rows.
int TryToLoad(std::string_view bytes) {
    return ErrorOf([&] {
        const auto store = StoreOf(Load(bytes));
        for (std::size_t row = 0; row < store->CountRows(); ++row) {
            for (std::size_t i = 0; i < store->Columns().size(); ++i)
                Exactly(*store, row, i);
        }
    });
}

TEST(DamagedFile, CutOffAnywhereIsAnError) {
    for (const PersistFormat format : kBothFormats) {
        std::string bytes = SavedBytes(*ChangedGoods(), format);
        while (format == PersistFormat::Xml && bytes.back() == '\n')
            bytes.pop_back();
        ASSERT_EQ(TryToLoad(bytes), 0);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            ASSERT_EQ(TryToLoad(std::string_view(bytes).substr(0, size)), 3003) << size << " of " << bytes.size();
        }
    }
}

TEST(DamagedFile, WithAnyByteChangedIsReadOrRefused) {
    for (const PersistFormat format : kBothFormats) {
        const std::string whole = SavedBytes(*ChangedGoods(), format);
        for (std::size_t at = 0; at < whole.size(); ++at) {
            for (const unsigned value : {0x00u, 0x01u, 0x7Fu, 0x80u, 0xFFu, 0x20u, 0x3Cu}) {
                std::string bytes = whole;
                bytes[at] = static_cast<char>(value);
                const int error = TryToLoad(bytes);
                ASSERT_TRUE(error == 0 || error == 3003) << "byte " << at << " as " << value << ": " << error;
            }
        }
    }
}

TEST(DamagedFile, OfManyRandomFaultsIsReadOrRefused) {
    std::mt19937 random(20031);
    for (const PersistFormat format : kBothFormats) {
        const std::string whole = SavedBytes(*ChangedGoods(), format);
        for (int i = 0; i < 2000; ++i) {
            std::string bytes = whole;
            for (unsigned fault = 0; fault < 1 + random() % 8; ++fault) {
                const std::size_t at = random() % bytes.size();
                switch (random() % 3) {
                    case 0:
                        bytes[at] = static_cast<char>(random());
                        break;
                    case 1:
                        bytes.erase(at, random() % 40);
                        break;
                    default:
                        bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 40));
                }
                if (bytes.empty()) bytes = "x";
            }
            const int error = TryToLoad(bytes);
            ASSERT_TRUE(error == 0 || error == 3003) << error;
        }
    }
}

TEST(DamagedFile, ThatIsNoRecordsetIsRefused) {
    const struct {
        const char* label;
        std::string bytes;
    } rows[] = {
        {"nothing", ""},
        {"one byte", "\x01"},
        {"blanks", "   \n  "},
        {"words", "id,name\n1,apple\n"},
        {"a picture", std::string("\x89PNG\r\n\x1A\n\0\0\0", 11)},
        {"a web page", "<html><body>no rows</body></html>"},
        {"other XML", "<?xml version='1.0'?><xml/>"},
        {"a schema without rows",
         "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'><s:Schema id='RowsetSchema'/></xml>"},
        {"rows without a schema",
         "<xml xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#R'><rs:data><z:row a='1'/></rs:data></xml>"},
        {"an encoding there is not", "<?xml version='1.0' encoding='klingon'?><xml/>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(TryToLoad(row.bytes), 3003);
    }
}

std::string WithRows(std::string_view rows, std::string_view columns = "<s:AttributeType name='a'/>") {
    return "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882' "
           "xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882' "
           "xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#R' xmlns:x='urn:tkkernel32:recordset'>"
           "<s:Schema id='R'><s:ElementType name='row'>" +
           std::string(columns) + "</s:ElementType></s:Schema><rs:data>" + std::string(rows) + "</rs:data></xml>";
}

TEST(DamagedFile, OfXmlThatMakesNoSenseIsRefused) {
    const struct {
        const char* label;
        std::string bytes;
    } rows[] = {
        {"a row inside a row", WithRows("<z:row a='1'><z:row a='2'/></z:row>")},
        {"a child recordset", WithRows("", "<s:AttributeType name='a'/><s:ElementType name='child'/>")},
        {"something else among the rows", WithRows("<z:column a='1'/>")},
        {"an update without the old row", WithRows("<rs:update><z:row a='1'/></rs:update>")},
        {"an update without the new row", WithRows("<rs:update><rs:original><z:row a='1'/></rs:original></rs:update>")},
        {"an update of two rows", WithRows("<rs:update><rs:original><z:row a='1'/><z:row a='1'/></rs:original>"
                                           "<z:row a='2'/></rs:update>")},
        {"an update that is empty", WithRows("<rs:update/>")},
        {"a column twice", WithRows("", "<s:AttributeType name='a'/><s:AttributeType name='a'/>")},
        {"a column without a name", WithRows("", "<s:AttributeType rs:number='1'/>")},
        {"a figure that is none", WithRows("", "<s:AttributeType name='a' x:type='many'/>")},
        {"a figure out of range", WithRows("", "<s:AttributeType name='a' x:precision='256'/>")},
        {"a kind there is not", WithRows("", "<s:AttributeType name='a' x:kind='13'/>")},
        {"bytes of half a digit", WithRows("<z:row a='abc'/>", "<s:AttributeType name='a' dt:type='bin.hex'/>")},
        {"bytes that are none", WithRows("<z:row a='xy'/>", "<s:AttributeType name='a' dt:type='bin.hex'/>")},
        {"a second schema", WithRows("").replace(WithRows("").find("<rs:data>"), 0, "<s:Schema id='S'/>")},
        {"an attribute twice", WithRows("<z:row a='1' a='2'/>")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(TryToLoad(row.bytes), 3003);
    }
}

TEST(DamagedFile, WithADocumentTypeIsRefusedBeforeAnyEntityIsDefined) {
    std::string bomb = "<?xml version='1.0'?><!DOCTYPE xml [<!ENTITY a0 'ha'>";
    for (int i = 1; i < 40; ++i) {
        bomb +=
            "<!ENTITY a" + std::to_string(i) + " '&a" + std::to_string(i - 1) + ";&a" + std::to_string(i - 1) + ";'>";
    }
    bomb += "]>" + WithRows("<z:row a='&a39;'/>");
    try {
        Load(bomb);
        ADD_FAILURE();
    } catch (const AdoError& error) {
        EXPECT_EQ(error.Code() & 0xFFFF, 3003);
        EXPECT_NE(error.Description().find(u"文档类型"), std::u16string::npos) << ToUtf8(error.Description());
    }
    EXPECT_EQ(TryToLoad("<!DOCTYPE xml SYSTEM 'file:///etc/passwd'>" + WithRows("")), 3003);
}

long PeakKilobytes() {
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(DamagedFile, AsksForNoMemoryThatItsLengthsPromise) {
    const long before = PeakKilobytes();
    // A deep tree, a wide schema with empty rows, and a value that is said to be 2 GB long.
    std::string deep;
    for (int i = 0; i < 200'000; ++i)
        deep += "<a>";
    EXPECT_EQ(TryToLoad(deep), 3003);
    std::string columns;
    for (int i = 0; i < 20'000; ++i)
        columns += "<s:AttributeType name='c" + std::to_string(i) + "'/>";
    std::string rows;
    for (int i = 0; i < 20'000; ++i)
        rows += "<z:row/>";
    EXPECT_EQ(TryToLoad(WithRows(rows, columns)), 3003);
    const auto store = Goods();
    std::string bytes = SavedBytes(*store, PersistFormat::Binary);
    for (std::size_t at = bytes.size() - 120; at + 4 < bytes.size(); ++at) {
        std::string lying = bytes;
        lying.replace(at, 4, "\xF0\xFF\xFF\x7F");
        const int error = TryToLoad(lying);
        EXPECT_TRUE(error == 0 || error == 3003) << error;
    }
    // The sanitizers keep books of their own about every byte.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(PeakKilobytes() - before, 450 * 1024);
#else
    static_cast<void>(before);
#endif
}

TEST(DamagedFile, IsNamedTogetherWithTheReason) {
    const tk::test::TemporaryFolder folder;
    const auto path = folder.Path() / "not rows.xml";
    std::ofstream(path) << "<xml><unfinished></xml>";
    try {
        LoadRows(path.string());
        ADD_FAILURE();
    } catch (const AdoError& error) {
        EXPECT_EQ(error.Code() & 0xFFFF, 3003);
        const std::string text = ToUtf8(error.Description());
        EXPECT_NE(text.find("not rows.xml"), std::string::npos) << text;
        EXPECT_NE(text.find("mismatched tag"), std::string::npos) << text;
    }
    EXPECT_EQ(ErrorOf([&] { LoadRows((folder.Path() / "missing").string()); }), 3002);
    EXPECT_EQ(ErrorOf([&] { LoadRows(folder.Path().string()); }), 3002);
    EXPECT_EQ(ErrorOf([&] { LoadRows("/dev/zero"); }), 3002);
    const std::string pipe = (folder.Path() / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(ErrorOf([&] { LoadRows(pipe); }), 3002);
}

}  // namespace
}  // namespace tk::ado::test
