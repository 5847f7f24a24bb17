#include "ado/odbc/statement_kind.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tk::ado {
namespace {

TEST(InspectStatement, TellsReadingLargeAndSessionChangingTexts) {
    constexpr bool kYes = true;
    constexpr bool kNo = false;
    const struct {
        const char* text;
        bool reading;
        bool large;
        bool changes;
    } rows[] = {
        {"select * from item", kYes, kYes, kNo},
        {"  SELECT a, b FROM item ORDER BY a  ", kYes, kYes, kNo},
        {"select * from item;", kYes, kYes, kNo},
        {"select * from item where id = 1", kYes, kNo, kNo},
        {"select * from item limit 5", kYes, kNo, kNo},
        {"select top 5 * from item", kYes, kNo, kNo},
        {"select count(*) from item", kYes, kNo, kNo},
        {"select count from item", kYes, kYes, kNo},
        {"select kind, sum(x) from item group by kind", kYes, kNo, kNo},
        {"select 1", kYes, kNo, kNo},
        {"select 'where' from item", kYes, kYes, kNo},
        {"select \"limit\" from item", kYes, kYes, kNo},
        {"select [where] from item", kYes, kYes, kNo},
        {"-- where\nselect * from item /* limit */", kYes, kYes, kNo},
        {"select replace(a,'x','y') from item", kYes, kYes, kNo},
        {"values (1),(2)", kNo, kNo, kNo},  // some drivers do not take it for one either
        {"with a as (select 1) select * from a", kYes, kYes, kNo},
        {"with a as (select 1) delete from t", kNo, kNo, kNo},
        {"select * from t for update", kNo, kNo, kNo},
        {"select * from a; delete from b", kNo, kNo, kYes},
        {"select * into t2 from t", kNo, kNo, kYes},
        {"select set_config('x','y',false)", kNo, kNo, kYes},
        {"SELECT SET_CONFIG('x','y',FALSE)", kNo, kNo, kYes},
        {"select xxt_config('x','y',false)", kYes, kNo, kNo},  // its last eight letters are the same
        {"SELECT a FROM t RETURNING a", kYes, kNo, kNo},
        {"select a from t xxturning a", kYes, kYes, kNo},
        {"select pg_advisory_lock(1)", kNo, kNo, kYes},
        {"select @x := 1", kNo, kNo, kYes},
        {"select * from #t", kNo, kNo, kYes},
        {"select 'a@b' from item", kYes, kYes, kNo},
        {"insert into item values (1)", kNo, kNo, kNo},
        {"update item set temp = 1", kNo, kNo, kNo},
        {"delete from item", kNo, kNo, kNo},
        {"create table item (id integer)", kNo, kNo, kNo},
        {"create temp table item (id integer)", kNo, kNo, kYes},
        {"create temporary view v as select 1", kNo, kNo, kYes},
        {"drop table item", kNo, kNo, kNo},
        {"alter session set x = 1", kNo, kNo, kYes},
        {"set names gbk", kNo, kNo, kYes},
        {"begin", kNo, kNo, kYes},
        {"savepoint a", kNo, kNo, kNo},
        {"rollback to savepoint a", kNo, kNo, kNo},
        {"release savepoint a", kNo, kNo, kNo},
        {"rollback and chain", kNo, kNo, kYes},
        {"pragma foreign_keys = 1", kNo, kNo, kYes},
        {"{call p(1)}", kNo, kNo, kYes},
        {"exec p", kNo, kNo, kYes},
        {"", kNo, kNo, kYes},
        {"select 'never closed", kYes, kNo, kNo},
        {"/* never closed", kNo, kNo, kYes},
    };
    for (std::size_t i = 0; i < 2 * std::size(rows); ++i) {  // the second time, many are known
        const auto& row = rows[i % std::size(rows)];
        SCOPED_TRACE(row.text);
        const StatementKind kind = Inspect(row.text);
        EXPECT_EQ(kind.isReading, row.reading);
        EXPECT_EQ(kind.isLikelyLarge, row.large);
        EXPECT_EQ(kind.changesSession, row.changes);
    }
}

TEST(InspectStatement, TellsWhatMayChangeTables) {
    for (const char* text :
         {"create table item (id integer)", "alter table item add a integer", "drop table item", "rollback",
          "rollback to savepoint a", "truncate item", "set search_path = aside", "create temp table item (id integer)",
          "select * into t2 from t", "begin", "call p()", "insert into item values (1); drop table item",
          "select set_config('x','y',false)", "explain analyze create table t2 as select a from t",
          "select enter_tenant('x')", "select \"f\"(1) as a", ""}) {
        EXPECT_TRUE(Inspect(text).mayDefine) << text;
    }
    for (const char* text : {"select * from item", "insert into item values (1)", "update item set a = 1",
                             "delete from item", "insert into item values (f(1))", "select f(a) from item", "select 1",
                             "with a as (select 1) select * from a", "values (1)", "select * from item for update"}) {
        EXPECT_FALSE(Inspect(text).mayDefine) << text;
    }
}

TEST(InspectStatement, TellsWhatShowsTables) {
    for (const char* text :
         {"select * from item", "SELECT a\nFROM item;", "with a as (select * from item) select * from a",
          "select * from item as temp", "select * from item where a = @b", "select count(*) from item limit 5",
          "(select a from item)", "select id, merge from item", "select * from item for update",
          "select a, (select max(b) from other) from item", "explain select * from item"}) {
        EXPECT_TRUE(Inspect(text).readsTables) << text;
    }
    for (const char* text :
         {"select 1", "select 'from'", "values (1)", "pragma table_info(item)", "insert into item select * from other",
          "delete from item", "update item set a = 1 from b", "with a as (select * from item) delete from item",
          "select * from item; select 1", "create table a as select * from item", "begin", ""}) {
        EXPECT_FALSE(Inspect(text).readsTables) << text;
    }
}

TEST(InspectStatement, TellsWhatDefinesForCertain) {
    for (const char* text : {"create table item (id integer)", "ALTER TABLE item ADD a integer", "drop view v"}) {
        EXPECT_TRUE(Inspect(text).defines) << text;
    }
    for (const char* text : {"savepoint a", "rollback to savepoint a", "begin", "commit", "analyze", "select f()",
                             "select drop from item", "insert into item values (1)", ""}) {
        EXPECT_FALSE(Inspect(text).defines) << text;
    }
}

TEST(InspectStatement, TellsTheSameOfATextWhoseLikeItKnows) {
    static constexpr const char* kParts[] = {
        "select",     "from",   "where", "limit ", "count", "count(", ")",    "insert", "delete ", "into",
        "for update", "create", "drop",  "temp",   "union", "set",    "with", "(",      ",",       " ",
        "\n",         "=",      "'x'",   "'it''s", "''",    "'",      "\"",   "\"a\"",  "[a 1]",   "[it's]",
        "`b`",        "[",      "]",     "1",      "23",    "1from",  "4.5",  "-",      "--",      "/*",
        "*/",         "/",      "\\",    "$1",     ";",     "@v",     "#t",   "name",   "n1",      "\xE4\xB8\xAD",
        "'a;b'",      "'--'"};
    std::mt19937 random(20261123);
    const auto below = [&](std::size_t end) { return random() % end; };
    std::size_t known = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string one;
        std::string other;  // with other numbers and other texts in the same places
        for (std::size_t count = 1 + below(12); count > 0; --count) {
            const std::string part = kParts[below(std::size(kParts))];
            one += part + (below(3) == 0 ? "" : " ");
            other = one;
        }
        bool isQuoted = false;
        for (std::size_t i = 0; i < other.size(); ++i) {
            if (other[i] == '\'') isQuoted = !isQuoted;
            if (other[i] >= '0' && other[i] <= '9') other[i] = static_cast<char>('0' + below(10));
            if (isQuoted && other[i] == 'x') other.replace(i, 1, "select;--@ from");
        }
        const std::uint64_t form = Inspect(one).form;
        const StatementKind kind = Inspect(other);
        if (kind.form == 0 || kind.form != form) continue;
        ++known;
        const StatementKind read = Inspect(other + " --");  // never known
        ASSERT_EQ(read.form, 0u);
        EXPECT_EQ(kind.isReading, read.isReading) << other;
        EXPECT_EQ(kind.readsTables, read.readsTables) << other;
        EXPECT_EQ(kind.isLikelyLarge, read.isLikelyLarge) << other;
        EXPECT_EQ(kind.defines, read.defines) << other;
        EXPECT_EQ(kind.mayDefine, read.mayDefine) << other;
        EXPECT_EQ(kind.changesSession, read.changesSession) << other;
    }
    EXPECT_GT(known, 3'000u);
}

TEST(InspectStatement, TellsWhatALimitCanBeWrittenBehind) {
    for (const char* text : {"select * from item", "SELECT a FROM item where b in (1, 2) order by a", "select 1",
                             "(select 1) union select 2", "select 'limit', \"for\" from item"}) {
        EXPECT_TRUE(Inspect(text).takesLimit) << text;
    }
    for (const char* text :
         {"select * from item limit 5", "select * from item for update", "select * from item lock in share mode",
          "select * from item offset 3 rows", "select * from item procedure analyse()", "select 1 into @a",
          "select * from item;", "select * from item -- all", "/* all */ select * from item",
          "select * from item # all", "with a as (select 1) select * from a", "values (1)", "show tables",
          "explain select 1", "call p()", "insert into item select * from item", "update item set a = 1", ""}) {
        EXPECT_FALSE(Inspect(text).takesLimit) << text;
    }
}

}  // namespace
}  // namespace tk::ado
