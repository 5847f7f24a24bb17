// Descriptions of columns from a recordset that shows a columns rowset, and the lines of a CREATE TABLE script.
#include <climits>
#include <cstring>

#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

/// A column as a columns rowset has it; what is not given is what most columns have.
struct Column {
    const char* name = "ID";
    long type = 129;
    long size = 20;
    short precision = 0;
    short scale = 0;
    bool nullable = true;
    const char* defaultText = nullptr;
    long flags = 0;
    long ordinal = 1;
};

Row RowOf(const Column& column) {
    return {
        {"TABLE_CATALOG", Text("stock")},
        {"TABLE_SCHEMA", Text("dbo")},
        {"TABLE_NAME", Text("ORDERS")},
        {"COLUMN_NAME", Text(column.name)},
        {"ORDINAL_POSITION", Long(column.ordinal)},
        {"COLUMN_HASDEFAULT", Flag(column.defaultText != nullptr)},
        {"COLUMN_DEFAULT", column.defaultText == nullptr ? Null() : Text(column.defaultText)},
        {"COLUMN_FLAGS", Long(column.flags)},
        {"IS_NULLABLE", Flag(column.nullable)},
        {"DATA_TYPE", Integer(VT_UI2, column.type)},
        {"CHARACTER_MAXIMUM_LENGTH", Long(column.size)},
        {"NUMERIC_PRECISION", Integer(VT_UI2, column.precision)},
        {"NUMERIC_SCALE", Short(column.scale)},
    };
}

std::vector<Row> RowsOf(std::vector<Column> columns) {
    std::vector<Row> rows;
    for (const Column& column : columns)
        rows.push_back(RowOf(column));
    return rows;
}

class FieldInfo : public CatalogTest {
protected:
    void SetUp() override {
        recordsets_->Give(records_.Get());
        ASSERT_EQ(columns_.OpenDatabase("DSN=stock", "Mic"), 1);
        std::memset(&info_, 0x55, sizeof(info_));
    }
    void TearDown() override {
        held_.reset();
        CatalogTest::TearDown();
    }
    void Show(std::vector<Column> columns) { ShowInRecordset(RowsOf(std::move(columns))); }
    bool Untouched() const {
        _tagFIELDINFO before;
        std::memset(&before, 0x55, sizeof(before));
        return std::memcmp(&before, &info_, sizeof(info_)) == 0;
    }

    std::unique_ptr<CTRecordset> held_ = std::make_unique<CTRecordset>();
    CTRecordset& columns_ = *held_;
    _tagFIELDINFO info_;
};

// ---- the current row -----------------------------------------------------------------------------------------------

TEST_F(FieldInfo, ReadsTheRowInItsOrder) {
    Show({{.name = "NAME", .size = 20, .nullable = false, .defaultText = "('x')", .flags = 0x0C, .ordinal = 2}});
    journal_.Take();
    EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 1);
    Lines read;
    for (const std::string& line : journal_.Take()) {
        if (line.starts_with("fields.get 0")) read.push_back(line.substr(20, line.size() - 22));
    }
    EXPECT_THAT(read, ElementsAre("COLUMN_NAME", "CHARACTER_MAXIMUM_LENGTH", "NUMERIC_PRECISION", "NUMERIC_SCALE",
                                  "IS_NULLABLE", "COLUMN_HASDEFAULT", "COLUMN_DEFAULT", "COLUMN_FLAGS", "TABLE_CATALOG",
                                  "TABLE_NAME", "TABLE_SCHEMA", "ORDINAL_POSITION", "DATA_TYPE"));
    EXPECT_STREQ(info_.szName, "NAME");
    EXPECT_STREQ(info_.szType, "VARCHAR (20)");
    EXPECT_EQ(info_.nSize, 20);
    EXPECT_EQ(info_.nPrecision, 0);
    EXPECT_EQ(info_.nScale, 0);
    EXPECT_EQ(info_.nHasDefault, -1);
    EXPECT_STREQ(info_.szDefault, "('x')");
    EXPECT_STREQ(info_.szNull, " NOT NULL");
    EXPECT_EQ(info_.nNullable, 0);
    EXPECT_EQ(info_.nFlags, 0x0Cu);
    EXPECT_STREQ(info_.szCatalog, "stock");
    EXPECT_STREQ(info_.szTable, "ORDERS");
    EXPECT_STREQ(info_.szSchema, "dbo");
    EXPECT_EQ(info_.nOrdinal, 2);
    EXPECT_EQ(info_.nPrimaryKey, 0x55555555) << "the caller's";
    EXPECT_EQ(info_.nReserved, 0x55555555) << "the caller's";
}

TEST_F(FieldInfo, ANullableColumnWithoutDefault) {
    Show({{.name = "PRICE", .type = 131, .size = 0, .precision = 18, .scale = 4, .flags = 0x70}});
    EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 1);
    EXPECT_STREQ(info_.szType, "NUMERIC (18,4)");
    EXPECT_EQ(info_.nPrecision, 18);
    EXPECT_EQ(info_.nScale, 4);
    EXPECT_EQ(info_.nHasDefault, 0);
    EXPECT_STREQ(info_.szDefault, "");
    EXPECT_STREQ(info_.szNull, "");
    EXPECT_EQ(info_.nNullable, -1);
}

TEST_F(FieldInfo, FlagsAndLowBitsOfTheTypeDecideItsText) {
    static const struct {
        const char* label;
        Column column;
        const char* type;
    } kRows[] = {
        {"long", {.flags = 0x80}, "TEXT"},
        {"long among others", {.flags = 0xFF}, "TEXT"},
        {"fixed", {.flags = 0x10}, "CHAR (20)"},
        {"all but long and fixed", {.flags = 0x7FFFFF6F}, "VARCHAR (20)"},
        {"an array of texts", {.type = 0x2000 + 129}, "VARCHAR (20)"},
        {"every other bit", {.type = 0xFF00 + 129}, "VARCHAR (20)"},
        {"no type of the system", {.type = 200}, "UNKNOWN"},
        {"timestamp", {.type = 128, .size = 8, .flags = 0x10}, "TIMESTAMP"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({row.column});
        EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 1);
        EXPECT_STREQ(info_.szType, row.type);
    }
}

TEST_F(FieldInfo, TheTagDecidesTheText) {
    static const struct {
        const char* tag;
        const char* type;
    } kRows[] = {
        {"Mic", "CHAR (10)"}, {"ADA", "VARCHAR (10)"}, {"DB2", "CHAR (10)"}, {"ORA", "CHAR (10)"}, {"SQL", ""}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.tag);
        columns_.SetDBMS(row.tag);
        Show({{.size = 10, .flags = 0x10}});
        EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 1);
        EXPECT_STREQ(info_.szType, row.type);
    }
    EXPECT_EQ(ErrorOf(columns_), "无法识别的数据库管理系统(RDBMS SYSTEM ERROR)!\r\n");
}

TEST_F(FieldInfo, LongTextsAreCutBehindAWholeCharacter) {
    const std::string name63(63, 'n');
    const std::string name64(64, 'n');
    const std::string chinese = "n" + [] {
        std::string text;
        for (int i = 0; i < 40; ++i)
            text += "库";
        return text;
    }();
    Show({{.name = name63.c_str()},
          {.name = name64.c_str()},
          {.name = chinese.c_str(), .defaultText = chinese.c_str()}});
    EXPECT_EQ(columns_.GetFieldInfo(0L, &info_), 1);
    EXPECT_EQ(info_.szName, name63);
    EXPECT_EQ(columns_.GetFieldInfo(1L, &info_), 1);
    EXPECT_EQ(info_.szName, name63);
    EXPECT_EQ(columns_.GetFieldInfo(2L, &info_), 1);
    EXPECT_EQ(info_.szName, chinese.substr(0, 63)) << "one byte and 31 characters";
    EXPECT_EQ(info_.szDefault, chinese.substr(0, 63));
    Show({{.name = ("nn" + chinese.substr(1)).c_str()}});
    EXPECT_EQ(columns_.GetFieldInfo(0L, &info_), 1);
    EXPECT_EQ(info_.szName, ("nn" + chinese.substr(1)).substr(0, 62)) << "no half character";
}

TEST_F(FieldInfo, AValueThatIsMissingIsZeroOrEmpty) {
    ShowInRecordset({{{"COLUMN_NAME", Text("ONLY")}}});
    EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 1);
    EXPECT_STREQ(info_.szName, "ONLY");
    EXPECT_STREQ(info_.szType, "UNKNOWN");
    EXPECT_EQ(info_.nSize, 0);
    EXPECT_EQ(info_.nHasDefault, 0);
    EXPECT_EQ(info_.nNullable, 0);
    EXPECT_STREQ(info_.szNull, " NOT NULL");
    EXPECT_EQ(info_.nFlags, 0u);
}

TEST_F(FieldInfo, BehindTheLastRowNothingIsTouched) {
    Show({});
    EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 0);
    EXPECT_TRUE(Untouched());
    Show({{}});
    EXPECT_EQ(columns_.GetFieldInfoCurrent(nullptr), 0);
    at_ = 1;
    EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 0);
    EXPECT_TRUE(Untouched());
    EXPECT_EQ(ErrorOf(columns_), "返回编码:[0x00000000]操作完全成功。");
}

TEST_F(FieldInfo, AFailureIsReported) {
    Show({{}});
    records_->On(Get(1006)) = Script();
    records_->On(Get(1006)).Fails("已关闭");
    EXPECT_EQ(columns_.GetFieldInfoCurrent(&info_), 0);
    EXPECT_EQ(ErrorOf(columns_), Failure("已关闭", "GetFieldInfo!"));
    EXPECT_EQ(columns_.GetFieldInfo(0L, &info_), 0);
    EXPECT_EQ(ErrorOf(columns_), Failure("已关闭", "GetFieldInfo!"));
    EXPECT_STREQ(columns_.GetFieldsStruct(), "");
    EXPECT_EQ(ErrorOf(columns_), Failure("已关闭", "GetFieldsStruct!"));
    EXPECT_TRUE(Untouched());
    CTRecordset without;
    EXPECT_EQ(without.GetFieldInfoCurrent(&info_), 0);
    EXPECT_EQ(without.GetFieldInfo("ID", &info_), 0);
    EXPECT_STREQ(without.GetFieldsStruct(), "");
}

// ---- by number and by name -----------------------------------------------------------------------------------------

TEST_F(FieldInfo, GoesToTheRowOfANumber) {
    Show({{.name = "A"}, {.name = "B"}, {.name = "C"}});
    at_ = 1;
    journal_.Take();
    EXPECT_EQ(columns_.GetFieldInfo(2L, &info_), 1);
    EXPECT_STREQ(info_.szName, "C");
    Lines lines = Calls();
    lines.resize(5);
    EXPECT_THAT(lines, ElementsAre("records.get 1006", "records.get 1010", "records.call 1020",
                                   "records.call 1017 (I4 2, I2 1)", "records.get 1006"));
    EXPECT_EQ(columns_.GetFieldInfo(0L, &info_), 1);
    EXPECT_STREQ(info_.szName, "A");
    EXPECT_EQ(columns_.GetFieldInfo(0L, nullptr), 0);
}

TEST_F(FieldInfo, ANumberThatDoesNotExistMovesNothing) {
    Show({{.name = "A"}, {.name = "B"}});
    for (const long index : {-1L, 2L, 3L, long{INT_MIN}, long{INT_MAX}}) {
        SCOPED_TRACE(index);
        journal_.Take();
        EXPECT_EQ(columns_.GetFieldInfo(index, &info_), 0);
        EXPECT_THAT(journal_.Take(), ::testing::Not(::testing::Contains(::testing::HasSubstr(".call"))));
    }
    at_ = 2;
    EXPECT_EQ(columns_.GetFieldInfo(0L, &info_), 0) << "behind the last row even of a row that exists";
    EXPECT_TRUE(Untouched());
    EXPECT_EQ(ErrorOf(columns_), "返回编码:[0x00000000]操作完全成功。");
}

TEST_F(FieldInfo, AMoveThatFailsIsReported) {
    Show({{.name = "A"}});
    for (const Member member : {Call(1017), Call(1020)}) {
        records_->On(member) = Script();
        records_->On(member).Fails("不能移动");
        EXPECT_EQ(columns_.GetFieldInfo(0L, &info_), 0);
        EXPECT_EQ(ErrorOf(columns_), Failure("不能移动", "GetFieldInfo!"));
    }
    EXPECT_EQ(columns_.GetFieldInfo("A", &info_), 0);
    EXPECT_EQ(ErrorOf(columns_), Failure("不能移动", "GetFieldInfo!"));
    EXPECT_TRUE(Untouched());
}

TEST_F(FieldInfo, FindsAColumnByItsExactName) {
    Show({{.name = "ID"}, {.name = "id", .ordinal = 2}, {.name = "编号", .ordinal = 3}, {.name = "ID", .ordinal = 4}});
    static const struct {
        const char* name;
        int ordinal;
    } kRows[] = {{"ID", 1}, {"id", 2}, {"编号", 3}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(columns_.GetFieldInfo(row.name, &info_), 1);
        EXPECT_EQ(info_.nOrdinal, row.ordinal);
    }
    for (const char* name : {"Id", "ID ", "I", "", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(name == nullptr ? "null" : name);
        std::memset(&info_, 0x55, sizeof(info_));
        EXPECT_EQ(columns_.GetFieldInfo(name, &info_), 0);
        EXPECT_TRUE(Untouched());
    }
    EXPECT_EQ(columns_.GetFieldInfo("ID", &info_), 1) << "from the first row again";
    Show({});
    EXPECT_EQ(columns_.GetFieldInfo("ID", &info_), 0);
    EXPECT_EQ(ErrorOf(columns_), "返回编码:[0x00000000]操作完全成功。");
}

// ---- lines of a script ---------------------------------------------------------------------------------------------

TEST_F(FieldInfo, WritesALineForEachColumn) {
    static const struct {
        const char* label;
        const char* tag;
        std::vector<Column> columns;
        const char* lines;
    } kRows[] = {
        {"none", "Mic", {}, ""},
        {"nullable", "Mic", {{.name = "NAME"}}, "\r\n\t\"NAME\"\tVARCHAR (20)"},
        {"not null", "Mic", {{.name = "ID", .type = 3, .nullable = false}}, "\r\n\t\"ID\"\tINT\t\t NOT NULL"},
        {"default",
         "Mic",
         {{.name = "AT", .type = 135, .defaultText = "getdate()"}},
         "\r\n\t\"AT\"\tDATETIME\tDEFAULT (getdate())"},
        {"both",
         "DB2",
         {{.name = "AT", .type = 135, .nullable = false, .defaultText = "current timestamp"}},
         "\r\n\t\"AT\"\tTIMESTAMP\t\t NOT NULL\tWITH DEFAULT current timestamp"},
        {"several",
         "ORA",
         {{.name = "ID", .type = 139, .precision = 10, .nullable = false},
          {.name = "名称", .size = 40},
          {.name = "a\"b", .type = 135, .defaultText = "sysdate"}},
         "\r\n\t\"ID\"\tNUMBER (10,0)\t\t NOT NULL,\r\n\t\"名称\"\tVARCHAR2 (40),\r\n\t\"a\"b\"\tDATE\tDEFAULT "
         "(sysdate)"},
        {"a comma at the end goes",
         "DB2",
         {{.name = "A", .type = 3, .defaultText = "1,,"}},
         "\r\n\t\"A\"\tINT\tWITH DEFAULT 1"},
        {"an empty default is none", "Mic", {{.name = "A", .type = 3, .defaultText = ""}}, "\r\n\t\"A\"\tINT"},
        {"percent signs stay",
         "Mic",
         {{.name = "100%s", .defaultText = "'%d'"}},
         "\r\n\t\"100%s\"\tVARCHAR (20)\tDEFAULT ('%d')"},
        {"no known system",
         "SQL",
         {{.name = "A", .nullable = false, .defaultText = "1"}, {.name = "B"}},
         "\r\n\t\"A\"\t\t\t NOT NULL,\r\n\t\"B\"\t"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        columns_.SetDBMS(row.tag);
        Show(row.columns);
        EXPECT_STREQ(columns_.GetFieldsStruct(), row.lines);
    }
    EXPECT_EQ(ErrorOf(columns_), "无法识别的数据库管理系统(RDBMS SYSTEM ERROR)!\r\n");
}

TEST_F(FieldInfo, AScriptHasLongTextsWhole) {
    const std::string name(100, 'n');
    const std::string text(300, '1');
    Show({{.name = name.c_str(), .type = 3, .defaultText = text.c_str()}});
    EXPECT_EQ(std::string(columns_.GetFieldsStruct()), "\r\n\t\"" + name + "\"\tINT\tDEFAULT (" + text + ")");
}

TEST_F(FieldInfo, AScriptBeginsAtTheFirstRowUnlessAllAreRead) {
    Show({{.name = "A", .type = 3}, {.name = "B", .type = 3}});
    at_ = 1;
    journal_.Take();
    EXPECT_STREQ(columns_.GetFieldsStruct(), "\r\n\t\"A\"\tINT,\r\n\t\"B\"\tINT");
    Lines lines = Calls();
    lines.resize(4);
    EXPECT_THAT(lines, ElementsAre("records.get 1006", "records.call 1020", "records.get 1010", "records.get 1006"));
    EXPECT_STREQ(columns_.GetFieldsStruct(), "") << "behind the last row";
}

TEST_F(FieldInfo, ARowThatCannotBeReadEndsTheScript) {
    Show({{.name = "A", .type = 3}, {.name = "B", .type = 3}});
    records_->On(Get(1006)) = Script();
    records_->On(Get(1006)).Returns(Flag(false)).Then().Returns(Flag(false)).Then().Fails("断开");
    EXPECT_STREQ(columns_.GetFieldsStruct(), "\r\n\t\"A\"\tINT");
    EXPECT_EQ(ErrorOf(columns_), Failure("断开", "GetFieldInfo!"));
    Show({{.name = "A", .type = 3}, {.name = "B", .type = 3}});
    records_->On(Call(1018)) = Script();
    records_->On(Call(1018)).Fails("不能移动");
    EXPECT_STREQ(columns_.GetFieldsStruct(), "");
    EXPECT_EQ(ErrorOf(columns_), Failure("不能移动", "GetFieldsStruct!"));
}

}  // namespace
}  // namespace tk::test
