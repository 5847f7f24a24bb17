#include <gtest/gtest.h>

#include <set>

#include "tkkernel/driver.h"

namespace tk::test {
namespace {

constexpr char kUnknownSystem[] = "无法识别的数据库管理系统(RDBMS SYSTEM ERROR)!\r\n";

class Columns : public CTRecordset {
public:
    using CTRecordset::GetDB2FieldType;
    using CTRecordset::GetORACLEFieldType;
    using CTRecordset::GetSQLFieldType;
    using CTRecordset::GetSYBASEFieldType;
    /// The tag as it stands, of any length.
    void Tag(const char* tag) { dbmsTag_ = tag; }
};

using Mapper = CString (Columns::*)(long, int, int, int, int, int);

constexpr int kLong = 0x80;
constexpr int kFixed = 0x10;
constexpr int kLongest = 2147483647;

struct Row {
    long code;
    int size;
    int longFlag;
    int fixedFlag;
    const char* text;
};

/// Every code that is not among the rows is "UNKNOWN", whatever the flags.
template <std::size_t Count>
void Expect(Mapper mapper, const Row (&rows)[Count]) {
    Columns columns;
    std::set<long> known;
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << "code " << row.code << " size " << row.size << " long " << row.longFlag
                                          << " fixed " << row.fixedFlag);
        EXPECT_STREQ((columns.*mapper)(row.code, row.size, 18, 4, row.longFlag, row.fixedFlag), row.text);
        known.insert(row.code);
    }
    for (long code = -2; code <= 300; ++code) {
        if (known.contains(code)) continue;
        SCOPED_TRACE(code);
        EXPECT_STREQ((columns.*mapper)(code, 10, 18, 4, 0, 0), "UNKNOWN");
        EXPECT_STREQ((columns.*mapper)(code, 10, 18, 4, kLong, kFixed), "UNKNOWN");
    }
    for (const long code : {-2147483647L - 1, 2147483647L, 256L + 2, 65536L + 3}) {
        SCOPED_TRACE(code);
        EXPECT_STREQ((columns.*mapper)(code, 10, 18, 4, 0, 0), "UNKNOWN");
    }
    EXPECT_STREQ(columns.GetLastErrorString(), "");
}

TEST(ColumnTypes, SqlServerSpellsThem) {
    static constexpr Row kRows[] = {
        {2, 0, 0, 0, "SMALLINT"},
        {3, 0, 0, 0, "INT"},
        {3, 0, kLong, kFixed, "INT"},
        {4, 0, 0, 0, "REAL"},
        {5, 0, 0, 0, "FLOAT"},
        {6, 0, 0, 0, "MONEY"},
        {11, 0, 0, 0, "BIT"},
        {14, 0, 0, 0, "DECIMAL (18,4)"},
        {17, 0, 0, 0, "TINYINT"},
        {72, 0, 0, 0, "UNIQUEIDENTIFIER"},
        {128, 10, 0, 0, "VARBINARY (10)"},
        {128, 8, 0, kFixed, "TIMESTAMP"},
        {128, kLongest, kLong, 0, "IMAGE"},
        {128, 8, kLong, kFixed, "IMAGE"},
        {129, 20, 0, 0, "VARCHAR (20)"},
        {129, 0, 0, 0, "VARCHAR (0)"},
        {129, -1, 0, 0, "VARCHAR (-1)"},
        {129, 20, 0, kFixed, "CHAR (20)"},
        {129, kLongest, kLong, 0, "TEXT"},
        {129, 20, kLong, kFixed, "TEXT"},
        {129, 20, 1, 0, "TEXT"},
        {129, 20, 0, 1, "CHAR (20)"},
        {130, 20, 0, 0, "NVARCHAR (20)"},
        {130, 20, 0, kFixed, "NCHAR (20)"},
        {130, 1073741823, kLong, 0, "NTEXT (1073741823)"},
        {130, 20, kLong, kFixed, "NTEXT (20)"},
        {131, 0, 0, 0, "NUMERIC (18,4)"},
        {135, 0, 0, 0, "DATETIME"},
    };
    Expect(&Columns::GetSQLFieldType, kRows);
}

TEST(ColumnTypes, SybaseSpellsThem) {
    static constexpr Row kRows[] = {
        {2, 0, 0, 0, "SMALLINT"},
        {3, 0, 0, 0, "INT"},
        {4, 0, 0, 0, "FLOAT"},
        {5, 0, 0, 0, "DOUBLE"},
        {6, 0, 0, 0, "MONEY"},
        {11, 0, 0, 0, "BIT"},
        {14, 0, 0, 0, "DECIMAL (18,4)"},
        {16, 0, 0, 0, "TINYINT"},
        {17, 0, 0, 0, "TINYINT"},
        {20, 0, 0, 0, "UNSIGNED BIGINT"},
        {72, 0, 0, 0, "UNIQUEIDENTIFIER"},
        {128, 1999999999, 0, 0, "VARBINARY (1999999999)"},
        {128, 2000000000, 0, 0, "IMAGE"},
        {128, 10, kLong, kFixed, "VARBINARY (10)"},
        {129, 10, 0, 0, "CHAR (10)"},
        {129, 10, 0, kFixed, "VARCHAR (10)"},
        {129, 10, kLong, 0, "CHAR (10)"},
        {129, 10, 0, 1, "VARCHAR (10)"},
        {129, 1999999999, 0, kFixed, "VARCHAR (1999999999)"},
        {129, 2000000000, 0, kFixed, "TEXT"},
        {129, 2000000000, 0, 0, "TEXT"},
        {129, kLongest, kLong, 0, "TEXT"},
        {129, -1, 0, 0, "CHAR (-1)"},
        {131, 0, 0, 0, "NUMERIC (18,4)"},
        {133, 0, 0, 0, "DATE"},
        {134, 0, 0, 0, "TIME"},
        {135, 0, 0, kFixed, "TIMESTAMP"},
        {135, 0, 0, 0, "DATETIME"},
        {135, 0, 0, 1, "DATETIME"},
        {135, 0, kLong, 17, "DATETIME"},
    };
    Expect(&Columns::GetSYBASEFieldType, kRows);
}

TEST(ColumnTypes, Db2SpellsThem) {
    static constexpr Row kRows[] = {
        {2, 0, 0, 0, "SMALLINT"},
        {3, 0, 0, 0, "INT"},
        {4, 0, 0, 0, "REAL"},
        {5, 0, 0, 0, "DOUBLE"},
        {11, 0, 0, 0, "SMALLINT"},
        {17, 0, 0, 0, "SMALLINT"},
        {20, 0, 0, 0, "BIGINT"},
        {128, 16350, 0, kFixed, "LONG VARGRAPHIC"},
        {128, 16350, 0, 0, "BLOB (16350)"},
        {128, 16349, 0, kFixed, "BLOB (16349)"},
        {128, 10, kLong, 0, "BLOB (10)"},
        {129, 20, 0, kFixed, "CHAR (20)"},
        {129, 32700, 0, kFixed, "CHAR (32700)"},
        {129, 32700, 0, 0, "LONG VARCHAR"},
        {129, 32699, 0, 0, "VARCHAR (32699)"},
        {129, 32701, kLong, 0, "VARCHAR (32701)"},
        {131, 0, 0, 0, "DECIMAL (18,4)"},
        {133, 0, 0, 0, "DATE"},
        {134, 0, 0, 0, "TIME"},
        {135, 0, 0, 0, "TIMESTAMP"},
    };
    Expect(&Columns::GetDB2FieldType, kRows);
}

TEST(ColumnTypes, OracleSpellsThem) {
    static constexpr Row kRows[] = {
        {2, 0, 0, 0, "FLOAT (18,4)"},     {3, 0, 0, 0, "FLOAT (18,4)"},
        {4, 0, 0, 0, "FLOAT (18,4)"},     {5, 0, 0, 0, "FLOAT (18,4)"},
        {128, 16, 0, 0, "VARCHAR2 (16)"}, {128, 16, 0, kFixed, "CHAR (16)"},
        {128, 16, kLong, 0, "LONG"},      {128, 16, kLong, kFixed, "LONG"},
        {129, 16, 0, 0, "VARCHAR2 (16)"}, {129, 16, 0, kFixed, "CHAR (16)"},
        {129, 16, kLong, kFixed, "LONG"}, {131, 0, 0, 0, "NUMBER (18,4)"},
        {135, 0, 0, 0, "DATE"},           {139, 0, 0, 0, "NUMBER (18,4)"},
    };
    Expect(&Columns::GetORACLEFieldType, kRows);
}

// A column whose spelling differs in every system: a fixed text of ten characters.
TEST(ColumnTypes, TheTagDecidesWhoseSpelling) {
    static const struct {
        const char* tag;
        const char* fixedText;
        const char* single;
    } kRows[] = {
        {"Mic", "CHAR (10)", "REAL"},        {"MIC", "CHAR (10)", "REAL"},        {"mic", "CHAR (10)", "REAL"},
        {"MS ", "CHAR (10)", "REAL"},        {"ms ", "CHAR (10)", "REAL"},        {"ADA", "VARCHAR (10)", "FLOAT"},
        {"Ada", "VARCHAR (10)", "FLOAT"},    {"DB2", "CHAR (10)", "REAL"},        {"db2", "CHAR (10)", "REAL"},
        {"ORA", "CHAR (10)", "FLOAT (7,0)"}, {"ora", "CHAR (10)", "FLOAT (7,0)"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.tag);
        Columns columns;
        columns.Tag(row.tag);
        EXPECT_STREQ(columns.GetFieldTypeStr(129, 10, 0, 0, 0, kFixed), row.fixedText);
        EXPECT_STREQ(columns.GetFieldTypeStr(4, 0, 7, 0, 0, kFixed), row.single);
        EXPECT_STREQ(columns.GetFieldTypeStr(1, 0, 7, 0, 0, 0), "UNKNOWN");
        EXPECT_STREQ(columns.GetLastErrorString(), "");
    }
}

TEST(ColumnTypes, ATagIsComparedWhole) {
    for (const char* tag : {"", "M", "Mi", "Micro", "Microsoft SQL Server", "MS", "MS S", "MS  ", " MS", "Sybase",
                            "ORACLE", "DB2/NT", "DB", "SQL", "Pos",
                            "M\xa9"
                            "c",
                            "\xa3\xcf"
                            "RA",
                            "ＯＲＡ"}) {
        SCOPED_TRACE(tag);
        Columns columns;
        columns.Tag(tag);
        EXPECT_STREQ(columns.GetFieldTypeStr(3, 0, 0, 0, 0, 0), "");
        EXPECT_STREQ(columns.GetLastErrorString(), kUnknownSystem);
    }
}

TEST(ColumnTypes, SetDBMSCutsALongName) {
    CTRecordset columns;
    EXPECT_STREQ(columns.GetFieldTypeStr(3, 0, 0, 0, 0, 0), "") << "nobody told the system yet";
    columns.SetDBMS("Microsoft SQL Server");
    EXPECT_STREQ(columns.GetFieldTypeStr(3, 0, 0, 0, 0, 0), "INT");
    columns.SetDBMS("MS SQL");
    EXPECT_STREQ(columns.GetFieldTypeStr(3, 0, 0, 0, 0, 0), "INT");
    columns.SetDBMS("Adaptive Server Enterprise");
    EXPECT_STREQ(columns.GetFieldTypeStr(20, 0, 0, 0, 0, 0), "UNSIGNED BIGINT");
}

TEST(ColumnTypes, FieldDefaultValueIsAClauseOfTheDialect) {
    static const struct {
        const char* tag;
        const char* text;
    } kRows[] = {
        {"Mic", "\tDEFAULT (getdate())"}, {"MS ", "\tDEFAULT (getdate())"},    {"ADA", "\tDEFAULT (getdate())"},
        {"ORA", "\tDEFAULT (getdate())"}, {"DB2", "\tWITH DEFAULT getdate()"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.tag);
        Columns columns;
        columns.Tag(row.tag);
        EXPECT_STREQ(columns.FieldDefaultValue(-1, "getdate()"), row.text);
        EXPECT_STREQ(columns.FieldDefaultValue(1, "getdate()"), row.text);
        EXPECT_STREQ(columns.FieldDefaultValue(0, "getdate()"), "");
        EXPECT_STREQ(columns.FieldDefaultValue(1, ""), "");
        EXPECT_STREQ(columns.FieldDefaultValue(1, nullptr), "");
        EXPECT_STREQ(columns.GetLastErrorString(), "");
    }
    Columns columns;
    columns.Tag("DB2");
    EXPECT_STREQ(columns.FieldDefaultValue(1, "'100%s'"), "\tWITH DEFAULT '100%s'");
    columns.Tag("Mic");
    EXPECT_STREQ(columns.FieldDefaultValue(1, "('库')"), "\tDEFAULT (('库'))");
}

TEST(ColumnTypes, FieldDefaultValueAsksForTheTagOnlyWhenThereIsADefault) {
    Columns columns;
    columns.Tag("Micro");
    EXPECT_STREQ(columns.FieldDefaultValue(0, "1"), "");
    EXPECT_STREQ(columns.FieldDefaultValue(1, ""), "");
    EXPECT_STREQ(columns.GetLastErrorString(), "");
    EXPECT_STREQ(columns.FieldDefaultValue(1, "1"), "");
    EXPECT_STREQ(columns.GetLastErrorString(), kUnknownSystem);
}

}  // namespace
}  // namespace tk::test
