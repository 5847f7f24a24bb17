// Single values and whole results: which query is opened, how it is walked, and what its values become.
#include <stdexcept>
#include <thread>

#include "catalog/catalog_fixture.h"
#include "util/faults.h"

namespace tk::test {
namespace {

constexpr char kUnchanged[] = "以前的错误";

class Database : public CTDatabase {
public:
    void Remember(const char* error) { lastError_ = error; }
};

class Lookups : public CatalogTest {
protected:
    void SetUp() override {
        Open(database_, "Oracle");
        database_.Remember(kUnchanged);
    }
    void TearDown() override {
        database_held_.reset();
        CatalogTest::TearDown();
    }

    /// The next recordset shows these rows in pages.
    void Show(std::vector<Row> rows) {
        ShowInRecordset(std::move(rows));
        recordsets_->Give(records_.Get());
        records_->On(Get(1050)).Does(
            [this](const Arguments&) { return Long(static_cast<long>((rows_.size() + 999) / 1000)); });
        records_->On(Put(1047)).Does([this](const Arguments& arguments) {
            at_ = static_cast<std::size_t>(V_I4(arguments.at(0)) - 1) * 1000;
            return Nothing();
        });
    }

    static Lines Query(const std::string& sql) {
        return {"connection.get 0",
                "connection.get 18",
                "records.get 1054",
                "records.put 1051 (I4 3)",
                "records.call 1022 (BSTR \"" + sql + "\", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)",
                "records.put 1004 (I4 1000)"};
    }
    static Lines Joined(Lines first, const Lines& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    std::unique_ptr<Database> database_held_ = std::make_unique<Database>();
    Database& database_ = *database_held_;
};

// ---- values ------------------------------------------------------------------------------------------------------

TEST_F(Lookups, TheFirstValueIsTheNamedColumnOfTheFirstRow) {
    Show({{{"A", Long(1)}, {"名称", Text("螺丝")}}, {{"A", Long(2)}, {"名称", Text("no")}}});
    EXPECT_EQ(Describe(database_.GetFirstValue("select * from T", "名称")), "BSTR \"螺丝\"");
    EXPECT_EQ(journal_.Take(),
              Joined(Query("select * from T"), {"records.get 1006", "records.get 0", "fields.get 0 (BSTR \"名称\")",
                                                "field.get 0", "records.get 1054"}));
    Show({{{"A", Long(1)}, {"B", Real(2.5)}}});
    EXPECT_EQ(Describe(database_.GetFirstValue("q", 1L)), "R8 2.5");
    EXPECT_THAT(journal_.Take(), ::testing::Contains("fields.get 0 (I4 1)"));
    EXPECT_EQ(ErrorOf(database_), kUnchanged);
}

TEST_F(Lookups, WithoutAValueTheFirstValueIsEmpty) {
    Show({{{"A", Long(1)}}});
    EXPECT_EQ(Describe(database_.GetFirstValue("q", "A")), "I4 1");
    Show({});
    EXPECT_EQ(Describe(database_.GetFirstValue("q", "A")), "EMPTY") << "no row, and the value before is gone";
    Show({{{"A", Long(1)}}});
    EXPECT_EQ(Describe(database_.GetFirstValue("q", "B")), "EMPTY") << "no such column";
    Show({{{"A", Long(1)}}});
    EXPECT_EQ(Describe(database_.GetFirstValue("q", 7L)), "EMPTY");
    Show({{{"A", Long(1)}}});
    EXPECT_EQ(Describe(database_.GetFirstValue("q", static_cast<const char*>(nullptr))), "EMPTY");
    recordsets_->Give(records_.Get());
    records_->On(Call(1022)).Fails("语法错误");
    EXPECT_EQ(Describe(database_.GetFirstValue("q", 0L)), "EMPTY");
    EXPECT_EQ(ErrorOf(database_), kUnchanged) << "not opened: no error text";
    EXPECT_EQ(Describe(CTDatabase().GetFirstValue("q", 0L)), "EMPTY");
}

TEST_F(Lookups, AFailureBehindTheOpenIsReportedWithTheStatement) {
    Show({{{"A", Long(1)}}});
    records_->On(Get(1006)) = Script();
    records_->On(Get(1006)).Fails("断开");
    EXPECT_EQ(Describe(database_.GetFirstValue("select 1", 0L)), "EMPTY");
    EXPECT_EQ(ErrorOf(database_), Failure("断开", "select 1"));
}

TEST_F(Lookups, EachThreadHasAFirstValueOfItsOwn) {
    Show({{{"A", Text("mine")}}});
    const VARIANT& mine = database_.GetFirstValue("q", 0L);
    std::thread([&] {
        const Apartment apartment;
        Show({{{"A", Text("other")}}});
        const VARIANT& other = database_.GetFirstValue("q", 0L);
        EXPECT_EQ(Describe(other), "BSTR \"other\"");
        EXPECT_NE(&other, &mine);
    }).join();
    EXPECT_EQ(Describe(mine), "BSTR \"mine\"");
    Show({{{"A", Text("later")}}});
    EXPECT_EQ(&database_.GetFirstValue("q", 0L), &mine);
    EXPECT_EQ(Describe(mine), "BSTR \"later\"");
}

TEST_F(Lookups, RowsAreCountedInIntegersAlone) {
    static const struct {
        const char* label;
        COleVariant value;
        long count;
    } kRows[] = {
        {"I4", Long(7), 7},
        {"I2", Short(-3), -3},
        {"largest", Long(2147483647), 2147483647},
        {"decimal", Decimal(7), -1},
        {"real", Real(7), -1},
        {"I8", Integer(VT_I8, 7), -1},
        {"UI4", Integer(VT_UI4, 7), -1},
        {"text", Text("7"), -1},
        {"null", Null(), -1},
        {"nothing", Nothing(), -1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({{{"", row.value}}});
        EXPECT_EQ(database_.GetRecordCount("T"), row.count);
    }
    Show({});
    EXPECT_EQ(database_.GetRecordCount("T"), -1);
    EXPECT_EQ(CTDatabase().GetRecordCount("T"), -1);
}

TEST_F(Lookups, TheCountedTableIsNotQuoted) {
    Show({{{"", Long(1)}}});
    EXPECT_EQ(database_.GetRecordCount("dbo.订单 where A like '%d'"), 1);
    EXPECT_EQ(journal_.Take().at(4),
              "records.call 1022 (BSTR \"select count(*) from dbo.订单 where A like '%d'\", BSTR \"DSN=stock\", I4 0, "
              "I4 1, I4 1)");
    Show({});
    database_.GetRecordCount(nullptr);
    EXPECT_EQ(journal_.Take().at(4),
              "records.call 1022 (BSTR \"select count(*) from \", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)");
}

// ---- the first row as a text -------------------------------------------------------------------------------------

TEST_F(Lookups, SpecialValuesAreTheNamedColumnsOfTheFirstRow) {
    static const struct {
        const char* label;
        const char* names;
        const char* text;
    } kRows[] = {
        {"two", "A|B", "1|螺丝"},
        {"order of the names", "B|A", "螺丝|1"},
        {"numbers are as displayed", "A|R", "1|        1.5"},
        {"a single name is the first column", "B", "1"},
        {"a single name that does not exist", "nothing", "1"},
        {"empty values in the middle", "A|N|B", "1||螺丝"},
        {"empty values at the end go", "A|N|N", "1"},
        {"only empty values", "N|N", ""},
        {"no such column is empty", "A|X|B", "1||螺丝"},
        {"empty names are dropped", "A||B", "1|螺丝"},
        {"an empty last name is a name", "A|", "1"},
        {"no name at all", "", ""},
        {"null", nullptr, ""},
        {"bars of the value at the end go", "A|BAR", "1|x"},
        {"a character that ends in the bar's byte stays", "A|TRAIL", "1|\x81\x7C"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({{{"A", Long(1)},
               {"B", Text("螺丝")},
               {"R", Real(1.5)},
               {"N", Null()},
               {"BAR", Text("x||")},
               {"TRAIL", Text("\x81\x7C")}},
              {{"A", Long(2)}}});
        EXPECT_STREQ(database_.GetSpecialValue("q", row.names), row.text);
        EXPECT_EQ(ErrorOf(database_), kUnchanged);
    }
}

TEST_F(Lookups, SpecialValuesAreReadInOneWalk) {
    Show({{{"A", Long(1)}, {"B", Long(2)}}});
    EXPECT_STREQ(database_.GetSpecialValue("q", "B|A"), "2|1");
    EXPECT_EQ(journal_.Take(),
              Joined(Query("q"), {"records.get 1006", "records.get 0", "fields.get 0 (BSTR \"B\")", "field.get 0",
                                  "records.get 0", "fields.get 0 (BSTR \"A\")", "field.get 0", "records.get 1054"}));
    Show({{{"A", Long(1)}, {"B", Long(2)}}});
    EXPECT_STREQ(database_.GetSpecialValue("q", "B"), "1");
    EXPECT_EQ(journal_.Take(), Joined(Query("q"), {"records.get 1006", "records.get 0", "fields.get 0 (I4 0)",
                                                   "field.get 0", "records.get 1054"}));
}

TEST_F(Lookups, WithoutARowTheTextsAreEmpty) {
    Show({});
    EXPECT_STREQ(database_.GetSpecialValue("q", "A|B"), "");
    Show({});
    EXPECT_STREQ(database_.GetRecordValues("q", "|"), "");
    EXPECT_EQ(Calls().size(), 2 * (Query("q").size() + 2)) << "asked for a row, closed, and nothing else";
    records_->On(Call(1022)).Fails("语法错误");
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database_.GetSpecialValue("q", "A|B"), "");
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database_.GetRecordValues("q", "|"), "");
    EXPECT_EQ(ErrorOf(database_), kUnchanged);
    EXPECT_STREQ(CTDatabase().GetSpecialValue("q", "A"), "");
    EXPECT_STREQ(CTDatabase().GetRecordValues(nullptr, nullptr), "");
}

TEST_F(Lookups, EveryExceptionBecomesOneText) {
    const struct {
        const char* label;
        std::function<void(Script&)> fail;
    } kFaults[] = {
        {"of the automation object", [](Script& script) { script.Fails("断开"); }},
        {"with a code alone", [](Script& script) { script.FailsWith(E_OUTOFMEMORY); }},
        {"of a server in this process",
         [](Script& script) { script.Does([](const Arguments&) -> COleVariant { throw std::runtime_error("x"); }); }},
        {"of no known kind", [](Script& script) { script.Does([](const Arguments&) -> COleVariant { throw 1; }); }},
        {"of the memory",
         [](Script& script) {
             script.Does([](const Arguments&) {
                 ReadNull();
                 return Nothing();
             });
         }},
    };
    const struct {
        const char* label;
        CString (*read)(CTDatabase&);
        const char* text;
    } kReaders[] = {
        {"special", [](CTDatabase& d) { return d.GetSpecialValue("q", "A|B"); },
         "数据库服务器出现异常,面临崩溃危险[异常位置:GetSpecialValue]"},
        {"records", [](CTDatabase& d) { return d.GetRecordValues("q", "|"); },
         "数据库服务器出现异常,面临崩溃危险[异常位置:GetRecordValues]"},
    };
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        for (const auto& reader : kReaders) {
            SCOPED_TRACE(reader.label);
            Show({{{"A", Long(1)}}});
            records_->On(Get(1006)) = Script();
            fault.fail(records_->On(Get(1006)));
            EXPECT_STREQ(reader.read(database_), "");
            EXPECT_EQ(ErrorOf(database_), reader.text);
        }
    }
}

TEST_F(Lookups, AFailureAnywhereInTheWalkGivesNothing) {
    for (const Member member : {Put(1048), Get(1050), Put(1047), Call(1018)}) {
        SCOPED_TRACE(member.id);
        database_.Remember("");
        Show({{{"A", Long(1)}}, {{"A", Long(2)}}});
        records_->On(member) = Script();
        records_->On(member).Fails("断开");
        EXPECT_STREQ(database_.GetRecordValues("q", "|"), "");
        EXPECT_EQ(ErrorOf(database_), "数据库服务器出现异常,面临崩溃危险[异常位置:GetRecordValues]");
        records_->On(member) = Script();
    }
}

// ---- all rows as a text ------------------------------------------------------------------------------------------

TEST_F(Lookups, RecordValuesAreLinesOfTexts) {
    static const struct {
        const char* label;
        const char* separator;
        const char* text;
    } kRows[] = {
        {"bar", "|", "a\r\nb|螺丝\r\n\r\n||        1.5\r\n"},
        {"comma", ",", "a\r\nb,螺丝\r\n\r\n,,        1.5\r\n"},
        {"two characters", ", ", "a\r\nb, 螺丝\r\n\r\n, ,         1.5\r\n"},
        {"none", "", "a\r\nb螺丝\r\n\r\n        1.5\r\n"},
        {"null", nullptr, "a\r\nb螺丝\r\n\r\n        1.5\r\n"},
        {"Chinese", "、", "a\r\nb、螺丝\r\n\r\n、、        1.5\r\n"},
        {"characters of the separator that end a value go", "ab|", "\r\nbab|螺丝\r\n\r\nab|ab|        1.5\r\n"},
        {"a line feed cuts the line before an empty one", "\n", "a\r\nb\n螺丝\r\r\n\n\n        1.5\r\n"},
        {"a line end takes it away", "\r\n", "a\r\nb\r\n螺丝\r\n\r\n\r\n        1.5\r\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({{{"A", Text("a")}, {"B", Null()}, {"C", Null()}},
              {{"A", Text("b")}, {"B", Text("螺丝")}, {"C", Text("")}},
              {{"A", Null()}, {"B", Null()}, {"C", Null()}},
              {{"A", Null()}, {"B", Null()}, {"C", Real(1.5)}}});
        EXPECT_STREQ(database_.GetRecordValues("q", row.separator), row.text);
        EXPECT_EQ(ErrorOf(database_), kUnchanged);
    }
}

TEST_F(Lookups, RecordValuesAreReadPageByPage) {
    Show({{{"A", Long(1)}, {"B", Long(2)}}});
    EXPECT_STREQ(database_.GetRecordValues("q", "|"), "1|2\r\n");
    EXPECT_EQ(journal_.Take(),
              Joined(Query("q"), {"records.get 1006", "records.put 1048 (I4 1000)", "records.get 1050",
                                  "records.get 1010", "records.get 0", "fields.get 1", "records.put 1047 (I4 1)",
                                  "records.get 0", "fields.get 0 (I4 0)", "field.get 0", "records.get 0",
                                  "fields.get 0 (I4 1)", "field.get 0", "records.call 1018", "records.get 1054"}));
}

TEST_F(Lookups, EveryRowOfEveryPageIsReadOnce) {
    for (const int count : {999, 1000, 1001, 2500}) {
        SCOPED_TRACE(count);
        std::vector<Row> rows;
        std::string expected;
        for (int i = 0; i < count; ++i) {
            rows.push_back({{"A", Long(i)}});
            expected += std::to_string(i) + "\r\n";
        }
        Show(std::move(rows));
        EXPECT_EQ(std::string(database_.GetRecordValues("q", "|")), expected);
        Lines pages = journal_.Take();
        std::erase_if(pages, [](const std::string& line) { return !line.starts_with("records.put 1047"); });
        EXPECT_EQ(pages.size(), static_cast<std::size_t>((count + 999) / 1000));
        EXPECT_EQ(pages.back(), "records.put 1047 (I4 " + std::to_string(pages.size()) + ")");
    }
}

TEST_F(Lookups, AnUnknownNumberOfRowsGivesNone) {
    Show({{{"A", Long(1)}}});
    records_->On(Get(1010)) = Script();
    records_->On(Get(1010)).Returns(Long(-1));
    EXPECT_STREQ(database_.GetRecordValues("q", "|"), "");
    Show({{{"A", Long(1)}}});
    records_->On(Get(1050)) = Script();
    records_->On(Get(1050)).Returns(Long(-1));
    EXPECT_STREQ(database_.GetRecordValues("q", "|"), "");
}

// ---- files and descriptions --------------------------------------------------------------------------------------

TEST_F(Lookups, StoringARecordsetOpensAndSavesIt) {
    Show({{{"A", Long(1)}}});
    EXPECT_EQ(database_.StoreRecordsetToFile("select 1", "/nowhere/行.dat"), 1);
    EXPECT_EQ(journal_.Take(),
              Joined(Query("select 1"), {"records.call 1057 (BSTR \"/nowhere/行.dat\", I4 0)", "records.get 1054"}));
    EXPECT_EQ(ErrorOf(database_), kUnchanged);
    records_->On(Call(1057)).Fails("磁盘已满");
    recordsets_->Give(records_.Get());
    EXPECT_EQ(database_.StoreRecordsetToFile("select 1", "/nowhere/行.dat"), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("磁盘已满", "SaveAsFile!"));
    journal_.Take();
    database_.Remember(kUnchanged);
    records_->On(Call(1022)).Fails("语法错误");
    recordsets_->Give(records_.Get());
    EXPECT_EQ(database_.StoreRecordsetToFile("select", "/nowhere/行.dat"), 0);
    EXPECT_THAT(journal_.Take(), ::testing::Not(::testing::Contains(::testing::HasSubstr("1057"))));
    EXPECT_EQ(ErrorOf(database_), kUnchanged);
}

TEST(ConnectionDescription, NamesSystemServerAndDatabase) {
    // Nothing is asked of a connection that is not open.
    EXPECT_STREQ(CTDatabase().GetDbInfor(), "::(Unknown)");
}

TEST_F(Lookups, TheConnectionIsDescribedByThreeProperties) {
    Database database;
    DriverTest::Open(database, {{"DBMS Name", Text("Microsoft SQL Server")},
                                {"Data Source Name", Text("库房")},
                                {"Current Catalog", Text("C:\\data\\stock.mdb")}});
    EXPECT_STREQ(database.GetDbInfor(), "Microsoft SQL Server:库房:stock.mdb");
    connection_->On(Get(18)).Returns(Long(0));
    EXPECT_STREQ(database.GetDbInfor(), "::(Unknown)");
}

}  // namespace
}  // namespace tk::test
