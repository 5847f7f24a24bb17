// Schema rowsets on every database system: odd names, the order of keys, tables that go, and how often a driver is
// asked.
#include <gtest/gtest.h>

#include "ado/odbc/odbc_api.h"
#include "ado/odbc/quoted_name.h"
#include "ado/support/own_questions.h"
#include "database_systems.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

enum : LONG { kColumns = 4, kIndexes = 12, kTables = 20, kForeignKeys = 27, kPrimaryKeys = 28 };

/// Counts what is asked of the driver while it lives.
class Questions {
public:
    Questions() : former_(SetOdbcForTest(Table())) { asked_.clear(); }
    ~Questions() { SetOdbcForTest(former_); }
    Questions(const Questions&) = delete;
    Questions& operator=(const Questions&) = delete;

    /// "SQLColumns SQLTables": what was asked, in order.
    static std::string Take() { return std::exchange(asked_, {}); }

private:
    template <auto Member>
    struct Stand;
    template <class Result, class... Arguments, Result (*OdbcApi::*Member)(Arguments...)>
    struct Stand<Member> {
        static inline const char* name = "";
        static Result Call(Arguments... arguments) {
            asked_ += (asked_.empty() ? "" : " ") + std::string(name);
            return (real_.*Member)(arguments...);
        }
    };
    static const OdbcApi& Table() {
        static const OdbcApi table = [] {
            OdbcApi made;
#define TK_COUNTED(member)                        \
    made.member = &Stand<&OdbcApi::member>::Call; \
    Stand<& OdbcApi::member>::name = "SQL" #member;
            TK_COUNTED(ExecDirect)
            TK_COUNTED(Execute)
            TK_COUNTED(Tables)
            TK_COUNTED(Columns)
            TK_COUNTED(PrimaryKeys)
            TK_COUNTED(ForeignKeys)
            TK_COUNTED(Statistics)
#undef TK_COUNTED
            made.ExecDirect = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
                return tk::test::IsOwnQuestion(text) ? real_.ExecDirect(statement, text, length)
                                                     : Stand<&OdbcApi::ExecDirect>::Call(statement, text, length);
            };
            return made;
        }();
        return table;
    }

    static inline const OdbcApi real_;
    static inline std::string asked_;
    const OdbcApi& former_;
};

class SchemaSystemsTest : public SystemTest {
protected:
    void TearDown() override {
        for (auto name = made_.rbegin(); name != made_.rend(); ++name)
            Execute(connection_, u"drop table if exists " + Quoted(*name));
        SystemTest::TearDown();
    }
    std::u16string Quoted(std::u16string_view name) const {
        return ToUtf16(QuotedName(ToUtf8(name), ToUtf8(Words().quote)));
    }
    void Make(const std::u16string& name, std::u16string_view columns) {
        made_.push_back(name);
        Execute(connection_, u"create table " + Quoted(name) + u" (" + std::u16string(columns) + u")");
    }
    Outcome TryOpen(LONG schema, const std::vector<Value>& restrictions) const {
        return connection_.Call(connection::kOpenSchema, {Number(schema), Array(restrictions)});
    }
    Object Open(LONG schema, const std::vector<Value>& restrictions) const {
        const Outcome outcome = TryOpen(schema, restrictions);
        EXPECT_TRUE(outcome.Ok()) << outcome;
        return outcome.Result();
    }
    static std::vector<Value> About(LONG schema, std::u16string_view table) {
        const Value none;
        if (schema == kIndexes) return {none, none, none, none, Text(table)};
        if (schema == kForeignKeys) return {none, none, none, none, none, Text(table)};
        return {none, none, Text(table)};
    }

private:
    std::vector<std::u16string> made_;
};

TEST_P(SchemaSystemsTest, TakesNamesAsTheyAre) {
    const std::u16string long_ = [] {
        std::u16string name;
        while (name.size() < 20)
            name += u"长";
        return name;
    }();
    std::vector<std::u16string> names = {u"odd%name",  u"odd_name", u"oddXname",  u"odd.name",
                                         u"odd name",  u"odd'name", u"odd\"name", u"odd[name]",
                                         u"odd\\name", u"odd;name", u"名称",      long_};
    // Two names in a file differ by more than their case.
    if (GetParam() != SystemKind::Sqlite) names.push_back(u"Odd_Name");
    for (const std::u16string& name : names) {
        Make(name, u"id integer not null, " + Quoted(u"列 1") + u" integer, primary key (id)");
        Execute(connection_,
                u"create index " + Quoted(u"ix " + name) + u" on " + Quoted(name) + u" (" + Quoted(u"列 1") + u")");
    }
    for (const std::u16string& name : names) {
        SCOPED_TRACE(ToUtf8(name));
        const std::string utf8 = ToUtf8(name);
        EXPECT_EQ(List(Open(kTables, About(kTables, name)), {u"TABLE_NAME"}), utf8 + ";");
        EXPECT_EQ(List(Open(kColumns, About(kColumns, name)), {u"TABLE_NAME", u"COLUMN_NAME", u"ORDINAL_POSITION"}),
                  utf8 + ",id,1;" + utf8 + "," + ToUtf8(u"列 1") + ",2;");
        EXPECT_EQ(List(Open(kPrimaryKeys, About(kPrimaryKeys, name)), {u"TABLE_NAME", u"COLUMN_NAME", u"ORDINAL"}),
                  utf8 + ",id,1;");
        const Object indexes = Open(kIndexes, {Value(), Value(), Text(u"ix " + name), Value(), Text(name)});
        EXPECT_EQ(List(indexes, {u"TABLE_NAME", u"INDEX_NAME", u"COLUMN_NAME", u"PRIMARY_KEY"}),
                  utf8 + ",ix " + utf8 + "," + ToUtf8(u"列 1") + ",0;");
    }
    for (const char16_t* pattern : {u"odd%", u"%", u"odd-name", u"_dd_name"}) {
        SCOPED_TRACE(ToUtf8(pattern));
        for (const LONG schema : {kTables, kColumns, kPrimaryKeys, kIndexes}) {
            EXPECT_EQ(Open(schema, About(schema, pattern)).Get(kRecordCount).Long(), 0) << schema;
        }
    }
    // Column names are no patterns either.
    EXPECT_EQ(Open(kColumns, {Value(), Value(), Text(u"odd_name"), Text(u"i_")}).Get(kRecordCount).Long(), 0);
    EXPECT_EQ(Open(kColumns, {Value(), Value(), Text(u"odd_name"), Text(u"id")}).Get(kRecordCount).Long(), 1);
}

TEST_P(SchemaSystemsTest, GivesTheColumnsOfKeysInTheirOrder) {
    Make(u"parts", u"a integer not null, b integer not null, c integer not null, d integer, primary key (c, a, b)");
    Make(u"lines",
         u"x integer, y integer, z integer, x2 integer, y2 integer, z2 integer, "
         u"constraint fk_one foreign key (z, x, y) references parts (c, a, b), "
         u"constraint fk_two foreign key (x2, y2, z2) references parts (c, a, b)");
    EXPECT_EQ(List(Open(kPrimaryKeys, About(kPrimaryKeys, u"parts")), {u"COLUMN_NAME", u"ORDINAL"}), "c,1;a,2;b,3;");
    // Two keys between the same tables do not mix.
    EXPECT_EQ(
        List(Open(kForeignKeys, About(kForeignKeys, u"lines")), {u"FK_COLUMN_NAME", u"PK_COLUMN_NAME", u"ORDINAL"}),
        GetParam() == SystemKind::Sqlite ? "x2,c,1;y2,a,2;z2,b,3;z,c,1;x,a,2;y,b,3;"
                                         : "z,c,1;x,a,2;y,b,3;x2,c,1;y2,a,2;z2,b,3;");
    const Object indexes = Open(kIndexes, About(kIndexes, u"parts"));
    EXPECT_EQ(List(indexes, {u"PRIMARY_KEY", u"ORDINAL_POSITION", u"COLUMN_NAME"}), "-1,1,c;-1,2,a;-1,3,b;");
}

TEST_P(SchemaSystemsTest, TellsConditionsAndExpressionsOfIndexes) {
    if (GetParam() == SystemKind::MariaDb) GTEST_SKIP() << "it has neither";
    Make(u"special", u"id integer not null primary key, \"where\" varchar(20), n integer, m integer");
    Execute(connection_, u"create unique index ix_part on special (n, m desc) where n > 5 and \"where\" is not null");
    Execute(connection_, u"create index ix_shown on special (lower(\"where\"), n)");
    if (GetParam() == SystemKind::Postgres) Execute(connection_, u"create index ix_with on special (m) include (n)");
    const auto names = {u"INDEX_NAME",  u"UNIQUE",    u"ORDINAL_POSITION",
                        u"COLUMN_NAME", u"COLLATION", u"FILTER_CONDITION"};
    const auto index = [&](const char16_t* name) {
        return List(Open(kIndexes, {Value(), Value(), Text(name), Value(), Text(u"special")}), names);
    };
    if (GetParam() == SystemKind::Postgres) {
        constexpr char kCondition[] = "((n > 5) AND (\"where\" IS NOT NULL))";
        EXPECT_EQ(index(u"ix_part"),
                  std::string("ix_part,-1,1,n,1,") + kCondition + ";ix_part,-1,2,m,2," + kCondition + ";");
        EXPECT_EQ(index(u"ix_shown"), "ix_shown,0,1,lower(\"where\"::text),1,NULL;ix_shown,0,2,n,1,NULL;");
        EXPECT_EQ(index(u"ix_with"), "ix_with,0,1,m,1,NULL;") << "what is included is no part of the key";
    } else {
        constexpr char kCondition[] = "n > 5 and \"where\" is not null";
        EXPECT_EQ(index(u"ix_part"),
                  std::string("ix_part,-1,1,n,1,") + kCondition + ";ix_part,-1,2,m,2," + kCondition + ";");
        EXPECT_EQ(index(u"ix_shown"), "ix_shown,0,1,NULL,1,NULL;ix_shown,0,2,n,1,NULL;");
        // Names that end like the word.
        for (const char16_t* table : {u"表where", u"a$where", u"nowhere"}) {
            const std::u16string name(table);
            Make(name, u"a integer");
            Execute(connection_, u"create index ix_of on " + name + u"(a) where a > 1");
            const Object found = Open(kIndexes, {Value(), Value(), Value(), Value(), Text(name)});
            EXPECT_EQ(List(found, {u"COLUMN_NAME", u"FILTER_CONDITION"}), "a,a > 1;") << ToUtf8(name);
            Execute(connection_, u"drop table " + name);
        }
    }
}

TEST_P(SchemaSystemsTest, FindsNothingOfATableThatIsGone) {
    Make(u"passing", u"id integer not null primary key, n integer");
    Execute(connection_, u"create index ix_passing on " + Quoted(u"passing") + u" (n)");
    for (const LONG schema : {kTables, kColumns, kPrimaryKeys, kIndexes}) {
        EXPECT_GT(Open(schema, About(schema, u"passing")).Get(kRecordCount).Long(), 0) << schema;
    }
    // By somebody else, between two questions.
    const Object other = Connect();
    Execute(other, u"drop table " + Quoted(u"passing"));
    for (const LONG schema : {kTables, kColumns, kPrimaryKeys, kIndexes, kForeignKeys}) {
        EXPECT_EQ(Open(schema, About(schema, u"passing")).Get(kRecordCount).Long(), 0) << schema;
    }
}

TEST_P(SchemaSystemsTest, AsksTheDriverOnceForEachRowset) {
    Make(u"asked", u"id integer not null primary key, n integer");
    Execute(connection_, u"create index ix_asked on " + Quoted(u"asked") + u" (n)");
    for (const LONG schema : {kTables, kColumns, kPrimaryKeys, kIndexes})
        Open(schema, About(schema, u"asked"));
    const bool isFile = GetParam() == SystemKind::Sqlite;
    const struct {
        LONG schema;
        const char* questions;
    } kRows[] = {
        {kTables, isFile ? "SQLExecDirect" : "SQLTables"},
        {kColumns, isFile ? "SQLExecDirect" : "SQLColumns"},
        {kPrimaryKeys, isFile                               ? "SQLExecDirect"
                       : GetParam() == SystemKind::Postgres ? "SQLExecute"
                                                            : "SQLPrimaryKeys"},
        // Where a query does not say which index is the key's, the key does.
        {kIndexes, isFile                               ? "SQLExecDirect"
                   : GetParam() == SystemKind::Postgres ? "SQLExecute"
                                                        : "SQLStatistics SQLPrimaryKeys"},
    };
    const Questions questions;
    for (const auto& row : kRows) {
        EXPECT_GT(Open(row.schema, About(row.schema, u"asked")).Get(kRecordCount).Long(), 0);
        EXPECT_EQ(Questions::Take(), row.questions) << row.schema;
    }
    Make(u"keyless", u"n integer not null");
    Questions::Take();
    EXPECT_EQ(Open(kPrimaryKeys, About(kPrimaryKeys, u"keyless")).Get(kRecordCount).Long(), 0);
    EXPECT_EQ(Questions::Take(), kRows[2].questions) << "a table without a key";
}

TEST_P(SchemaSystemsTest, GivesNoColumnsOfWhatIsNoTable) {
    Make(u"beside", u"id integer not null primary key, n integer");
    Make(u"open_to_null", u"a integer, b integer");
    Execute(connection_, u"create index ix_beside on " + Quoted(u"beside") + u" (n)");
    if (GetParam() == SystemKind::Postgres) {
        Execute(connection_, u"drop sequence if exists counted; create sequence counted");
        Execute(connection_, u"drop type if exists pair; create type pair as (a integer, b integer)");
        Execute(connection_,
                u"drop materialized view if exists kept; create materialized view kept as select 1 as one");
        EXPECT_EQ(Open(kColumns, About(kColumns, u"kept")).Get(kRecordCount).Long(), 1);
        EXPECT_EQ(Open(kColumns, {Value(), Text(u"information_schema"), Text(u"columns"), Text(u"table_name")})
                      .Get(kRecordCount)
                      .Long(),
                  1);
    }
    EXPECT_EQ(Open(kColumns, About(kColumns, u"open_to_null")).Get(kRecordCount).Long(), 2);
    for (const char16_t* const name : {u"ix_beside", u"beside_pkey", u"counted", u"pair"}) {
        EXPECT_EQ(Open(kColumns, About(kColumns, name)).Get(kRecordCount).Long(), 0) << ToUtf8(name);
    }
    // Nor the one that is asked for.
    const auto count = [&](const char16_t* table, const char16_t* column) {
        return Open(kColumns, {Value(), Value(), Text(table), Text(column)}).Get(kRecordCount).Long();
    };
    static constexpr struct {
        const char16_t* name;
        const char16_t* column;
    } kNone[] = {{u"counted", u"last_value"},
                 {u"counted", u"log_cnt"},
                 {u"counted", u"is_called"},
                 {u"ix_beside", u"n"},
                 {u"beside_pkey", u"id"},
                 {u"pair", u"a"},
                 {u"pair", u"b"}};
    for (const auto& row : kNone)
        EXPECT_EQ(count(row.name, row.column), 0) << ToUtf8(row.name) << " " << ToUtf8(row.column);
    Make(u"like_counted", u"last_value integer not null, log_cnt integer not null, is_called integer default 1");
    for (const char16_t* const column : {u"last_value", u"log_cnt", u"is_called"})
        EXPECT_EQ(count(u"like_counted", column), 1) << ToUtf8(column);
    EXPECT_EQ(Open(kColumns, About(kColumns, u"like_counted")).Get(kRecordCount).Long(), 3);
}

INSTANTIATE_TEST_SUITE_P(All, SchemaSystemsTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

class SchemaRightsTest : public SchemaSystemsTest {};

TEST_P(SchemaRightsTest, ShowsWhatTheServerShowsToAUserWithoutRights) {
    Execute(connection_, u"drop schema if exists closed cascade; drop role if exists guest");
    Execute(connection_, u"create role guest login password 'pw'");
    Execute(connection_,
            u"create schema closed; create table closed.secret (id integer primary key, n integer); "
            u"create index ix_secret on closed.secret (n)");
    std::string text = ConnectionString(SystemKind::Postgres);
    text.replace(text.find("UID=tester"), 10, "UID=guest");
    const Object guest = Object::Create(kConnectionClass);
    const Outcome opened = guest.Call(connection::kOpen, {Text(ToUtf16(text))});
    ASSERT_TRUE(opened.Ok()) << opened;
    // Its catalog is open to everybody; what is in the table is not.
    const Outcome columns =
        guest.Call(connection::kOpenSchema, {Number(kColumns), Array({Value(), Text(u"closed"), Text(u"secret")})});
    ASSERT_TRUE(columns.Ok()) << columns;
    EXPECT_EQ(columns.Result().Get(kRecordCount).Long(), 2);
    const Outcome read = guest.Call(connection::kExecute, {Text(u"select * from closed.secret")});
    EXPECT_FALSE(read.Ok());
    EXPECT_EQ(read.Error(), 0x80040E09u) << read;
    EXPECT_NE(ToUtf8(read.description).find(ToUtf8(u"权限不足")), std::string::npos) << read;
    guest.Call(connection::kClose);
    Execute(connection_, u"drop schema closed cascade; drop role guest");
}

INSTANTIATE_TEST_SUITE_P(Servers, SchemaRightsTest, ::testing::Values(SystemKind::Postgres), SystemName);

}  // namespace
}  // namespace tk::ado::test
