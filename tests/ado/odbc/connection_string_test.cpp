#include "ado/odbc/connection_string.h"

#include <gtest/gtest.h>

#include "ado/support/utf8.h"

namespace tk::ado {
namespace {

using test::Utf8;

/// The pairs as `key=value|key=value`, braced values in braces.
std::string Pairs(const ConnectionString& string) {
    std::string text;
    for (const auto& pair : string.Pairs()) {
        if (!text.empty()) text += "|";
        text += pair.key + "=" + (pair.isBraced ? "{" + pair.value + "}" : pair.value);
    }
    return text;
}

TEST(ConnectionStringParse, ReadsPairsAndPassesOverFragments) {
    const struct {
        const char* label;
        std::string given;
        std::string pairs;
    } rows[] = {
        {"empty", "", ""},
        {"one pair", "DSN=stock", "DSN=stock"},
        {"blanks around key and value", "  DSN = stock ;UID= sa ", "DSN=stock|UID=sa"},
        {"fragment at the end", "DSN=stock;J", "DSN=stock"},
        {"fragment in the middle", "DSN=stock;what is this;UID=sa", "DSN=stock|UID=sa"},
        {"only semicolons", ";;;", ""},
        {"empty value", "PWD=;UID=sa", "PWD=|UID=sa"},
        {"empty quoted value", "Extended Properties=\"\";UID=sa", "Extended Properties=|UID=sa"},
        {"quoted semicolon", "PWD=\"a;b\";UID=sa", "PWD=a;b|UID=sa"},
        {"single quotes", "PWD='a;b';UID=sa", "PWD=a;b|UID=sa"},
        {"doubled quote inside", "PWD=\"a\"\"b\";X='it''s'", "PWD=a\"b|X=it's"},
        {"other quote inside", "PWD=\"it's\"", "PWD=it's"},
        {"blanks inside quotes stay", "PWD=\" a \"", "PWD= a "},
        {"text after a closed quote is dropped", "PWD=\"a\" junk;UID=sa", "PWD=a|UID=sa"},
        {"quote never closed is text", "PWD=\"abc;UID=sa", "PWD=\"abc|UID=sa"},
        {"braces", "Driver={PostgreSQL Unicode};UID=sa", "Driver={PostgreSQL Unicode}|UID=sa"},
        {"doubled brace", "PWD={a}}b}", "PWD={a}b}"},
        {"brace never closed is text", "Driver={SQLite3;UID=sa", "Driver={SQLite3|UID=sa"},
        {"doubled equals in a key", "a==b=c", "a=b=c"},
        {"equals in a value", "PWD=a=b", "PWD=a=b"},
        {"no key", "=value;UID=sa", "UID=sa"},
        {"the last of a repeated key counts", "UID=a;uid=b", "uid=b"},
        {"the first provider counts", "Provider=A;provider=B", "Provider=A"},
        {"Chinese", Utf8(u8"DSN=库存;UID=管理员"), Utf8(u8"DSN=库存|UID=管理员")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const ConnectionString parsed = ConnectionString::Parse(row.given);
        EXPECT_EQ(Pairs(parsed), row.pairs);
        EXPECT_EQ(parsed.Text(), row.given);
    }
}

TEST(ConnectionStringParse, TakesAnyBytes) {
    // Every string of three characters out of those that mean something.
    const std::string letters = "a=;\"'{} ";
    for (const char first : letters) {
        for (const char second : letters) {
            for (const char third : letters) {
                const std::string text = std::string("k=") + first + second + third + ";last=1";
                const ConnectionString parsed = ConnectionString::Parse(text);
                EXPECT_FALSE(parsed.Pairs().empty()) << text;
                EXPECT_NO_THROW(ConnectionString::Parse(parsed.ToOdbc()));
                parsed.WithoutPassword();
            }
        }
    }
}

TEST(ConnectionStringFind, IgnoresCaseAndPrefersTheFirstSpelling) {
    const auto parsed = ConnectionString::Parse("USER id=sa;uid=guest");
    ASSERT_NE(parsed.Find("User ID"), nullptr);
    EXPECT_EQ(*parsed.Find("user id"), "sa");
    EXPECT_EQ(parsed.Find("password"), nullptr);
    EXPECT_EQ(parsed.Get({"UID", "User ID"}), "guest");
    EXPECT_EQ(parsed.Get({"PWD"}), "");
}

TEST(ConnectionStringToOdbc, BracesWhatNeedsThem) {
    ConnectionString string;
    string.Set("Driver", "PostgreSQL Unicode");
    string.Set("PWD", "a;b}c");
    string.Set("UID", " sa");
    string.Set("DATABASE", "stock");
    EXPECT_EQ(string.ToOdbc(), "Driver={PostgreSQL Unicode};PWD={a;b}}c};UID={ sa};DATABASE=stock;");
    const auto again = ConnectionString::Parse(string.ToOdbc());
    EXPECT_EQ(again.Get({"PWD"}), "a;b}c");
    EXPECT_EQ(again.Get({"UID"}), " sa");
}

TEST(ConnectionStringToOdbc, KeepsBracesThatWereGiven) {
    EXPECT_EQ(ConnectionString::Parse("Driver={SQLite3};X=1").ToOdbc(), "Driver={SQLite3};X=1;");
}

TEST(ConnectionStringWithoutPassword, LeavesEverythingElseAsGiven) {
    const struct {
        const char* label;
        const char* given;
        const char* shown;
    } rows[] = {
        {"short form", "DSN=stock;UID=sa;PWD=secret;X=1", "DSN=stock;UID=sa;X=1"},
        {"long form", "DSN=stock;Password=\"a;b\";X=1", "DSN=stock;X=1"},
        {"at the end", "DSN=stock; pwd = secret", "DSN=stock;"},
        {"twice", "PWD=a;DSN=stock;PWD=b", "DSN=stock;"},
        {"in the extended properties", "Extended Properties=\"DSN=s;PWD=secret;UID=sa\";X=1",
         "Extended Properties=\"DSN=s;UID=sa\";X=1"},
        {"none", "DSN=stock;J", "DSN=stock;J"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(ConnectionString::Parse(row.given).WithoutPassword(), row.shown);
    }
}

TEST(ConnectionStringProvider, DropsTheVersionTailOfTheDefaultOne) {
    EXPECT_EQ(ConnectionString::Parse("DSN=x").Provider(), "MSDASQL");
    EXPECT_EQ(ConnectionString::Parse("Provider=MSDASQL.1;DSN=x").Provider(), "MSDASQL");
    EXPECT_EQ(ConnectionString::Parse("Provider=msdasql;DSN=x").Provider(), "MSDASQL");
    EXPECT_EQ(ConnectionString::Parse("Provider=;DSN=x").Provider(), "MSDASQL");
    EXPECT_EQ(ConnectionString::Parse("Provider=SQLOLEDB.1").Provider(), "SQLOLEDB.1");
    EXPECT_EQ(ConnectionString::Parse("Provider=MSDASQLX").Provider(), "MSDASQLX");
}

TEST(ReadProperties, KeepsWhatIsNotTheDrivers) {
    const auto properties = ReadProperties(ConnectionString::Parse(
        "Provider=SQLOLEDB;Data Source=db1;Initial Catalog=stock;User ID=sa;Persist Security Info=True;"
        "Connect Timeout=7;DBMS Name=Oracle;OLE DB Services=-2;Locale Identifier=2052;Location=here;Mode=1"));
    EXPECT_EQ(properties.provider, "SQLOLEDB");
    EXPECT_EQ(properties.dataSource, "db1");
    EXPECT_EQ(properties.initialCatalog, "stock");
    EXPECT_EQ(properties.userId, "sa");
    EXPECT_TRUE(properties.persistSecurityInfo);
    EXPECT_EQ(properties.connectTimeoutSeconds, 7);
    EXPECT_EQ(properties.dbmsName, "Oracle");
    EXPECT_EQ(properties.oleDbServices, -2);
    EXPECT_EQ(properties.localeIdentifier, 2052);
    EXPECT_EQ(properties.location, "here");
    EXPECT_EQ(properties.mode, 1);
}

TEST(ReadProperties, HasDefaults) {
    const auto properties = ReadProperties(ConnectionString::Parse("DSN=x;Connect Timeout=soon"));
    EXPECT_EQ(properties.dataSource, "x");
    EXPECT_FALSE(properties.persistSecurityInfo);
    EXPECT_FALSE(properties.connectTimeoutSeconds.has_value());
    EXPECT_FALSE(properties.dbmsName.has_value());
    EXPECT_EQ(properties.oleDbServices, -1);
}

}  // namespace
}  // namespace tk::ado
