// Table scripts from one dialect into another: every rule of every pair alone, the words that meet two rules, whole
// scripts, and texts that are no scripts.
#include <gtest/gtest.h>

#include <vector>

#include "tkkernel/driver.h"

namespace tk::test {
namespace {

constexpr char kUnknownDbms[] = "无法识别的数据库管理系统(DBMS SYSTEM ERROR)!\r\n";
constexpr char kUnknownRdbms[] = "无法识别的数据库管理系统(RDBMS SYSTEM ERROR)!\r\n";
constexpr char kUnknownRdbmsWide[] = "无法识别的数据库管理系统（RDBMS SYSTEM ERROR）!\r\n";

/// The four converters, in reach.
class Converters : public CTDatabase {
public:
    CString FromSqlServer(const char* script, const char* target) { return VeriFySQLServerPragramer(script, target); }
    CString FromSybase(const char* script, const char* target) { return VeriFySybasePragramer(script, target); }
    CString FromDb2(const char* script, const char* target) { return VeriFyDB2Pragramer(script, target); }
    CString FromOracle(const char* script, const char* target) { return VeriFyOraclePragramer(script, target); }
    void SetTag(const char* tag) { dbmsTag_ = tag; }
};

using Converter = CString (Converters::*)(const char*, const char*);

struct Source {
    const char* label;
    Converter convert;
    const char* unknownTarget;
};

const Source kSources[] = {
    {"SQL Server", &Converters::FromSqlServer, kUnknownRdbmsWide},
    {"Sybase", &Converters::FromSybase, kUnknownRdbms},
    {"DB2", &Converters::FromDb2, kUnknownRdbms},
    {"Oracle", &Converters::FromOracle, kUnknownRdbms},
};

struct Row {
    const char* label;
    const char* script;
    const char* converted;
};

/// Runs rows through converters that have to agree, and looks that none of them complains.
void ExpectConverted(std::vector<Converter> converters, std::vector<const char*> targets,
                     const std::vector<Row>& rows) {
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        for (const Converter convert : converters) {
            for (const char* target : targets) {
                Converters database;
                EXPECT_STREQ((database.*convert)(row.script, target), row.converted) << target;
                EXPECT_STREQ(database.GetLastErrorString(), "");
            }
        }
    }
}

// ---- pairs -------------------------------------------------------------------------------------------------------

TEST(DialectConversion, SqlServerAndSybaseScriptsBecomeDb2Scripts) {
    ExpectConverted({&Converters::FromSqlServer, &Converters::FromSybase}, {"DB2", "db2"},
                    {
                        {"1 national text", "NVARCHAR (50)", "LONG VARCHAR "},
                        {"2 default", "DEFAULT (0)", "WITH DEFAULT (0)"},
                        {"3 date and time", "DATETIME", "TIMESTAMP"},
                        {"4 real", "FLOAT", "DOUBLE"},
                        {"5 small date, after 3", "SMALLDATETIME", "SMALLTIMESTAMP"},
                        {"6 tiny integer", "TINYINT", "SMALLINT"},
                        {"7 numeric", "NUMERIC (10,2)", "DECIMAL (10,2)"},
                        {"8 text", "TEXT", "BLOB"},
                        {"9 national text, after 8", "NTEXT", "NBLOB"},
                        {"10 image", "IMAGE", "GRPHIC"},
                        {"11 longest text", "CHAR (255)", "CHAR (254)"},
                        {"12 longest text with blanks", "CHAR ( 255 )", "CHAR ( 254 )"},
                        {"one blank is not two", "CHAR ( 255)", "CHAR ( 255)"},
                        {"longer number", "CHAR (2550), CHAR (1255)", "CHAR (2550), CHAR (1255)"},
                        {"other types stay", "INT, CHAR (254), BIT, MONEY", "INT, CHAR (254), BIT, MONEY"},
                        {"name", "\"TEXTURE\" INT", "\"BLOBURE\" INT"},
                        {"default again", "WITH DEFAULT 0", "WITH WITH DEFAULT 0"},
                        {"small letters", "datetime", "TIMESTAMP"},
                    });
}

TEST(DialectConversion, TheFirstNationalTextDecidesWhichBecomeLong) {
    ExpectConverted(
        {&Converters::FromSqlServer, &Converters::FromSybase}, {"DB2"},
        {
            {"same length", "\"NAME\" NVARCHAR (50), \"MEMO\" NVARCHAR (50), \"X\" NVARCHAR (10)",
             "\"NAME\" LONG VARCHAR , \"MEMO\" LONG VARCHAR , \"X\" NVARCHAR (10)"},
            {"first counts", "NVARCHAR (10), NVARCHAR (50), NVARCHAR (50)",
             "LONG VARCHAR , NVARCHAR (50), NVARCHAR (50)"},
            {"compared as text", "NVARCHAR (50), NVARCHAR (050), NVARCHAR (50 )",
             "LONG VARCHAR , NVARCHAR (050), NVARCHAR (50 )"},
            {"none", "VARCHAR (50)", "VARCHAR (50)"},
            {"without a blank", "NVARCHAR(50)", "NVARCHAR(50)"},
            {"empty length", "NVARCHAR () NVARCHAR (5)", "LONG VARCHAR  NVARCHAR (5)"},
            {"none but an empty length", "NCHAR (5), XNVARCHAR ()", "NCHAR (5), XLONG VARCHAR "},
            {"not closed", "NVARCHAR (50", "NVARCHAR (50"},
            {"closed late", "NVARCHAR (50, NVARCHAR (60)", "LONG VARCHAR "},
            {"255 is gone before its rule", "NVARCHAR (255), NCHAR (255)", "LONG VARCHAR , NCHAR (254)"},
            {"any text between the brackets", "NVARCHAR (MAX), NVARCHAR (TEXT)", "LONG VARCHAR , NVARCHAR (BLOB)"},
        });
}

TEST(DialectConversion, SqlServerScriptsBecomeOracleScripts) {
    ExpectConverted({&Converters::FromSqlServer}, {"ORA", "Ora"},
                    {
                        {"1 national text, and 2 again", "NVARCHAR (20)", "VARCHAR22 (20)"},
                        {"2 text", "VARCHAR (20)", "VARCHAR2 (20)"},
                        {"3 integer", "INTEGER", "NUMBER"},
                        {"4 decimal", "DECIMAL (10,2)", "NUMBER (10,2)"},
                        {"5 numeric", "NUMERIC (10,2)", "NUMBER (10,2)"},
                        {"6 real", "DOUBLE", "NUMBER"},
                        {"7 binary", "BINARY (8)", "NUMBER (8)"},
                        {"7 in a longer word", "VARBINARY (8)", "VARNUMBER (8)"},
                        {"8 time stamp", "TIMESTAMP", "DATE"},
                        {"9 date and time", "DATETIME", "DATE"},
                        {"9 in a longer word", "SMALLDATETIME", "SMALLDATE"},
                        {"10 text", "TEXT", "LONG"},
                        {"11 national text, after 10", "NTEXT", "NLONG"},
                        {"12 image", "IMAGE", "LONG ROW"},
                        {"short integer", "INT", "INT"},
                        {"already there", "VARCHAR2 (20)", "VARCHAR22 (20)"},
                        {"default stays", "DEFAULT (0)", "DEFAULT (0)"},
                        {"small letters", "nvarchar (20)", "VARCHAR22 (20)"},
                    });
}

TEST(DialectConversion, SybaseAndDb2ScriptsBecomeSqlServerScripts) {
    ExpectConverted({&Converters::FromSybase, &Converters::FromDb2}, {"Mic", "MS ", "mic", "ms "},
                    {
                        {"1 long text", "LONG VARCHAR", "VARCHAR (7999)"},
                        {"2 default", "WITH DEFAULT 0", "DEFAULT 0"},
                        {"3 time stamp, and 5 again", "TIMESTAMP", "SMALLDATETIMETIME"},
                        {"4 real", "DOUBLE", "FLOAT"},
                        {"5 date", "DATE", "SMALLDATETIME"},
                        {"5 in a name", "\"UPDATED\" INT", "\"UPSMALLDATETIMED\" INT"},
                        {"6 small integer", "SMALLINT", "TINYINT"},
                        {"7 large object", "BLOB (10)", "TEXT (10)"},
                        {"8 large text", "CLOB", "NTEXT"},
                        {"9 graphic", "GRPHIC", "IMAGE"},
                        {"long graphic stays", "LONG VARGRAPHIC", "LONG VARGRAPHIC"},
                        {"short text stays", "VARCHAR (20)", "VARCHAR (20)"},
                        {"default alone stays", "DEFAULT 0", "DEFAULT 0"},
                        {"small letters", "timestamp", "SMALLDATETIMETIME"},
                    });
}

TEST(DialectConversion, Db2ScriptsBecomeOracleScripts) {
    ExpectConverted({&Converters::FromDb2}, {"ORA", "ora"},
                    {
                        {"1 long text", "LONG VARCHAR", "LONG"},
                        {"2 text", "VARCHAR (20)", "VARCHAR2 (20)"},
                        {"3 integer", "INTEGER", "NUMBER"},
                        {"4 decimal", "DECIMAL (10,2)", "NUMBER (10,2)"},
                        {"5 real", "DOUBLE", "NUMBER"},
                        {"6 binary", "VARBINARY (8)", "VARNUMBER (8)"},
                        {"7 time stamp", "TIMESTAMP", "DATE"},
                        {"8 graphic", "GRPHIC", "LONG ROW"},
                        {"default stays", "WITH DEFAULT 0", "WITH DEFAULT 0"},
                        {"large object stays", "BLOB (10)", "BLOB (10)"},
                        {"numeric stays", "NUMERIC", "NUMERIC"},
                    });
}

TEST(DialectConversion, OracleScriptsBecomeDb2Scripts) {
    ExpectConverted({&Converters::FromOracle}, {"DB2", "dB2"},
                    {
                        {"1 default", "DEFAULT (0)", "WITH DEFAULT 0"},
                        {"2 date", "DATE", "TIMESTAMP"},
                        {"3 real", "FLOAT (5,0)", "DOUBLE (5,0)"},
                        {"4 text", "VARCHAR2 (20)", "VARCHAR (20)"},
                        {"5 number", "NUMBER (10,2)", "DECIMAL (10,2)"},
                        {"6 long", "LONG", "LONG VARCHAR"},
                        {"7 long row, after 6", "LONG ROW", "LONG VARCHAR ROW"},
                        {"6 is behind 4", "LONG2", "LONG VARCHAR2"},
                        {"2 in a name", "\"UPDATED\" CHAR (1)", "\"UPTIMESTAMPD\" CHAR (1)"},
                        {"text without a number stays", "VARCHAR (20)", "VARCHAR (20)"},
                    });
}

TEST(DialectConversion, OracleScriptsBecomeSqlServerScripts) {
    ExpectConverted({&Converters::FromOracle}, {"Mic", "MS ", "MIC", "Ms "},
                    {
                        {"1 default, as for DB2", "DEFAULT (0)", "WITH DEFAULT 0"},
                        {"2 date", "DATE", "DATETIME"},
                        {"3 text", "VARCHAR2 (20)", "VARCHAR (20)"},
                        {"4 number", "NUMBER (10,2)", "DECIMAL (10,2)"},
                        {"5 long", "LONG", "TEXT"},
                        {"6 long row, after 5", "LONG ROW", "TEXT ROW"},
                        {"real stays", "FLOAT (5,0)", "FLOAT (5,0)"},
                    });
}

TEST(DialectConversion, TheFirstDefaultOfOracleDecidesWhichLoseTheirBrackets) {
    ExpectConverted(
        {&Converters::FromOracle}, {"DB2", "Mic"},
        {
            {"same value", "A INT DEFAULT (0), B INT DEFAULT (1), C INT DEFAULT (0)",
             "A INT WITH DEFAULT 0, B INT DEFAULT (1), C INT WITH DEFAULT 0"},
            {"text", "DEFAULT ('N')", "WITH DEFAULT 'N'"},
            {"bracket inside", "DEFAULT (F(1))", "WITH DEFAULT F(1)"},
            {"empty", "DEFAULT () X", "WITH DEFAULT  X"},
            {"none", "DEFAULT 0", "DEFAULT 0"},
            {"not closed", "DEFAULT (0", "DEFAULT (0"},
            {"quote not closed", "DEFAULT ('N), DEFAULT ('N)", "WITH DEFAULT 'N, WITH DEFAULT 'N"},
            {"small letters become capitals", "default ('abc')", "WITH DEFAULT 'ABC'"},
            {"those that halves of characters make as well", "DEFAULT (\x81)\x81g", "WITH DEFAULT \x81\x81G"},
        });
    ExpectConverted({&Converters::FromOracle}, {"DB2"},
                    {{"the value meets the later rules", "DEFAULT (NUMBER)", "WITH DEFAULT DECIMAL"}});
    ExpectConverted({&Converters::FromOracle}, {"Mic"},
                    {{"the value meets the later rules", "DEFAULT (SYSDATE)", "WITH DEFAULT SYSDATETIME"}});
}

TEST(DialectConversion, EightPairsOnlyWriteCapitals) {
    static const struct {
        const char* label;
        Converter convert;
        std::vector<const char*> targets;
    } kRows[] = {
        {"SQL Server", &Converters::FromSqlServer, {"Mic", "MS ", "mic", "ADA", "ada"}},
        {"Sybase", &Converters::FromSybase, {"ADA", "ORA", "ora"}},
        {"DB2", &Converters::FromDb2, {"DB2", "ADA"}},
        {"Oracle", &Converters::FromOracle, {"ORA", "ADA"}},
    };
    constexpr char kScript[] =
        "create table \"t\" (\"单价ａ\" nvarchar (255) default (0), b datetime, c float, d smalldatetime, e tinyint, f "
        "numeric, g text, h ntext, i image, j long varchar, k timestamp with default 0, l double, m blob, n clob, o "
        "grphic, p varchar2 (5), q number, r long row, s integer, u decimal, v binary)";
    constexpr char kCapitals[] =
        "CREATE TABLE \"T\" (\"单价Ａ\" NVARCHAR (255) DEFAULT (0), B DATETIME, C FLOAT, D SMALLDATETIME, E TINYINT, F "
        "NUMERIC, G TEXT, H NTEXT, I IMAGE, J LONG VARCHAR, K TIMESTAMP WITH DEFAULT 0, L DOUBLE, M BLOB, N CLOB, O "
        "GRPHIC, P VARCHAR2 (5), Q NUMBER, R LONG ROW, S INTEGER, U DECIMAL, V BINARY)";
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        ExpectConverted({row.convert}, row.targets, {{"every word", kScript, kCapitals}});
    }
}

// ---- tags --------------------------------------------------------------------------------------------------------

TEST(DialectConversion, AnUnknownTargetGivesCapitalsAndAReason) {
    for (const Source& source : kSources) {
        SCOPED_TRACE(source.label);
        for (const char* target : {"", "Micro", "MS", "MS  ", " DB2", "ORACLE", "PG", "数据库"}) {
            SCOPED_TRACE(target);
            Converters database;
            EXPECT_STREQ((database.*source.convert)("a text default (0), date", target), "A TEXT DEFAULT (0), DATE");
            EXPECT_STREQ(database.GetLastErrorString(), source.unknownTarget);
        }
    }
}

TEST(DialectConversion, NullTextsCountAsEmptyOnes) {
    for (const Source& source : kSources) {
        SCOPED_TRACE(source.label);
        Converters database;
        for (const char* target : {"Mic", "ADA", "DB2", "ORA"}) {
            EXPECT_STREQ((database.*source.convert)(nullptr, target), "");
            EXPECT_STREQ((database.*source.convert)("", target), "");
        }
        EXPECT_STREQ(database.GetLastErrorString(), "");
        EXPECT_STREQ((database.*source.convert)("int", nullptr), "INT");
        EXPECT_STREQ(database.GetLastErrorString(), source.unknownTarget);
        EXPECT_STREQ((database.*source.convert)(nullptr, nullptr), "");
    }
}

TEST(DialectConversion, TheTagOfTheConnectionChoosesTheSource) {
    constexpr char kScript[] = "VARCHAR (5), LONG VARCHAR, DEFAULT (0), DATE, TEXT";
    static const struct {
        const char* tag;
        const char* target;
        const char* converted;
    } kRows[] = {
        {"Mic", "DB2", "VARCHAR (5), LONG VARCHAR, WITH DEFAULT (0), DATE, BLOB"},
        {"MS ", "DB2", "VARCHAR (5), LONG VARCHAR, WITH DEFAULT (0), DATE, BLOB"},
        {"mIC", "ORA", "VARCHAR2 (5), LONG VARCHAR2, DEFAULT (0), DATE, LONG"},
        {"ADA", "Mic", "VARCHAR (5), VARCHAR (7999), DEFAULT (0), SMALLDATETIME, TEXT"},
        {"ada", "ORA", "VARCHAR (5), LONG VARCHAR, DEFAULT (0), DATE, TEXT"},
        {"DB2", "ORA", "VARCHAR2 (5), LONG, DEFAULT (0), DATE, TEXT"},
        {"Db2", "MS ", "VARCHAR (5), VARCHAR (7999), DEFAULT (0), SMALLDATETIME, TEXT"},
        {"ORA", "DB2", "VARCHAR (5), LONG VARCHAR VARCHAR, WITH DEFAULT 0, TIMESTAMP, TEXT"},
        {"oRa", "Mic", "VARCHAR (5), TEXT VARCHAR, WITH DEFAULT 0, DATETIME, TEXT"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.tag);
        Converters database;
        database.SetTag(row.tag);
        EXPECT_STREQ(database.VeriFySQLPragramer(kScript, row.target), row.converted);
        EXPECT_STREQ(database.GetLastErrorString(), "");
    }
}

TEST(DialectConversion, AnUnknownSourceGivesNothingAndAReason) {
    for (const char* tag : {"", "Micro", "MS", "Oracle", "PG", "SQL"}) {
        SCOPED_TRACE(tag);
        Converters database;
        database.SetTag(tag);
        EXPECT_STREQ(database.VeriFySQLPragramer("INT", "DB2"), "");
        EXPECT_STREQ(database.GetLastErrorString(), kUnknownDbms);
        EXPECT_STREQ(database.VeriFySQLPragramer(nullptr, nullptr), "");
        EXPECT_STREQ(database.GetLastErrorString(), kUnknownDbms);
    }
}

TEST(DialectConversion, TheUnknownTargetOfAConnectionIsToldByItsConverter) {
    static const struct {
        const char* tag;
        const char* reason;
    } kRows[] = {{"Mic", kUnknownRdbmsWide},
                 {"MS ", kUnknownRdbmsWide},
                 {"ADA", kUnknownRdbms},
                 {"DB2", kUnknownRdbms},
                 {"ORA", kUnknownRdbms}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.tag);
        Converters database;
        database.SetTag(row.tag);
        EXPECT_STREQ(database.VeriFySQLPragramer("int", "PG"), "INT");
        EXPECT_STREQ(database.GetLastErrorString(), row.reason);
    }
}

// ---- texts that are no scripts -----------------------------------------------------------------------------------

TEST(DialectConversion, CharactersAreNeverCutApart) {
    // The second byte of these characters is a letter that begins a word of the rules.
    ASSERT_EQ("\x81\x44"[1], 'D');
    ASSERT_EQ("\x81\x54"[1], 'T');
    ExpectConverted({&Converters::FromSqlServer}, {"DB2"},
                    {
                        {"second byte D",
                         "\x81\x44"
                         "ATETIME DATETIME",
                         "\x81\x44"
                         "ATETIME TIMESTAMP"},
                        {"second byte T",
                         "\x81\x54"
                         "EXT,TEXT",
                         "\x81\x54"
                         "EXT,BLOB"},
                        {"Chinese before", "\"说明\"TEXT", "\"说明\"BLOB"},
                        {"Chinese behind", "TEXT说明", "BLOB说明"},
                        {"small second bytes stay", "\x81\x64 d", "\x81\x64 D"},
                        {"half a character at the end", "TEXT\x81", "BLOB\x81"},
                        {"half a character before a blank", "\x81 TEXT", "\x81 BLOB"},
                        {"half a character before a bracket", "\x81(255)", "\x81(254)"},
                        {"bytes that are no characters", "\x80TEXT\xFFTEXT",
                         "\x80"
                         "BLOB\xFF"
                         "BLOB"},
                        {"half a character before a word is one with its letter", "\x81TEXT TEXT", "\x81TEXT BLOB"},
                        {"a run of lead bytes", "\x81\x81\x81\x81TEXT \x81\x81\x81TEXT",
                         "\x81\x81\x81\x81"
                         "BLOB \x81\x81\x81TEXT"},
                    });
    ExpectConverted({&Converters::FromOracle}, {"DB2"},
                    {
                        {"Chinese default", "DEFAULT ('否'), DEFAULT ('否')", "WITH DEFAULT '否', WITH DEFAULT '否'"},
                        {"half a character in a default", "DEFAULT (\x81)", "WITH DEFAULT \x81"},
                    });
}

TEST(DialectConversion, TextsThatAreNoScriptsComeBackChangedByTheRulesAlone) {
    ExpectConverted({&Converters::FromSqlServer}, {"DB2"},
                    {
                        {"quote not closed", "\"TEXT", "\"BLOB"},
                        {"percent signs", "%s%d%n TEXT", "%S%D%N BLOB"},
                        {"line ends stay", "a\r\n\ttext,\r\n", "A\r\n\tBLOB,\r\n"},
                        {"blanks only", "   ", "   "},
                        {"words grown together", "TEXTTEXTFLOATFLOAT", "BLOBBLOBDOUBLEDOUBLE"},
                        {"a word in a word", "DADATETIMETETIME", "DATIMESTAMPTETIME"},
                        {"a word that a rule completes", "NUNUMERICMERIC", "NUDECIMALMERIC"},
                    });
}

TEST(DialectConversion, MegabytesAreConvertedWhole) {
    constexpr int kColumns = 40000;
    CString script;
    CString expected;
    for (int i = 0; i < kColumns; ++i) {
        script += "\t\"说明\"\tnvarchar (50)\tdefault ('无'),\r\n";
        expected += "\t\"说明\"\tLONG VARCHAR \tWITH DEFAULT ('无'),\r\n";
    }
    ASSERT_GT(script.GetLength(), 1 << 20);
    Converters database;
    EXPECT_TRUE(database.FromSqlServer(script, "DB2") == expected);
    script += "end";
    EXPECT_TRUE(database.FromSqlServer(script, "DB2") == expected + "END");
}

TEST(DialectConversion, AMegabyteOfOpenedDefaultsIsConvertedAtOnce) {
    // Every opening of the second part could begin the first clause once more: so much of it repeats itself. Tried
    // one after the other that takes minutes.
    constexpr int kOpened = 60000;
    CString opened;
    for (int i = 0; i < kOpened; ++i)
        opened += "DEFAULT (";
    Converters database;
    const CString script = opened + "0), " + opened + opened + "1)";
    EXPECT_TRUE(database.FromOracle(script, "ADA") == script);
    EXPECT_TRUE(database.FromOracle(script, "DB2") == "WITH DEFAULT " + opened.Mid(9) + "0, " + opened + opened + "1)");
}

}  // namespace
}  // namespace tk::test
