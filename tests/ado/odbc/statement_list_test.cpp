#include "ado/odbc/statement_list.h"

#include <gtest/gtest.h>

#include <random>
#include <span>

namespace tk::ado {
namespace {

using Texts = std::vector<std::string>;

Texts TextsOf(std::string_view sql) {
    Texts texts;
    for (const ListedStatement& each : ListStatements(sql))
        texts.push_back((each.isProgram ? "program: " : "") + each.text);
    return texts;
}

TEST(ListStatements, LeavesASingleStatementAsItIs) {
    for (const char* text : {
             "",
             " ",
             ";",
             ";;",
             "-- only; a comment",
             "select 1",
             "select 1;",
             "select 1 ; -- and; that is all",
             "select ';'",
             "select 'it''s; fine'",
             R"(select 'a\';b')",
             R"(select "a\";b")",
             "select `a;b` from t",
             "select 1 # a; b",
             "select 1 /* a; b */",
             "/* a; b */ select 1",
             "call two();",
             "{call two()};",
             "create procedure p() select 1;",
             "begin not atomic select 1; select 2; end",
         }) {
        EXPECT_EQ(TextsOf(text), Texts()) << text;
    }
}

TEST(ListStatements, TakesATextApartAtItsSemicolons) {
    static const struct {
        const char* text;
        Texts statements;
    } kRows[] = {
        {"select 1; select 2", {"select 1", "select 2"}},
        {"select 1;select 2;", {"select 1", "select 2"}},
        {";; select 1;; select 2 ;", {"select 1", "select 2"}},
        {"/* a */ select 1 /* b; */ ; -- c;\n select 2 # d", {"select 1", "select 2"}},
        {"select ';', \";\", `;`; select '\\'; '; select 3", {"select ';', \";\", `;`", "select '\\'; '", "select 3"}},
        {"select '\\\\'; select 2", {"select '\\\\'", "select 2"}},
        {"select `\\`; select 2", {"select `\\`", "select 2"}},
        {"select 5--3; select 2", {"select 5--3", "select 2"}},
        {"select 1 --\n; select 2", {"select 1", "select 2"}},
        {"begin; insert into t values (1); commit", {"begin", "insert into t values (1)", "commit"}},
        {"start transaction; select 1", {"start transaction", "select 1"}},

        {"select '不完; 整", {}},
        {"select 1; select '不完; 整", {"select 1", "select '不完; 整"}},
        {"select 1; /* open", {}},
        {"; select 1", {"select 1"}},
        {"/* a */ ; select 1;", {"select 1"}},
        // What the server reads of a comment is a part of the statement, or one of its own.
        {"/*!40101 SET @a = 5 */; select 1; select @a", {"/*!40101 SET @a = 5 */", "select 1", "select @a"}},
        {"select 1 /*M! , 2; */; select 3", {"select 1 /*M! , 2; */", "select 3"}},
        {"create table event (begin int); select 1", {"create table event (begin int)", "select 1"}},
        {"create or replace table t (a int); select 1", {"create or replace table t (a int)", "select 1"}},
        {"create unique index function on t (a); select 1", {"create unique index function on t (a)", "select 1"}},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(TextsOf(row.text), row.statements) << row.text;
}

TEST(ListStatements, KeepsARoutineWithItsStatements) {
    static const struct {
        const char* text;
        Texts statements;
    } kRows[] = {
        {"create procedure p() begin select 1; select 2; end;",
         {"program: create procedure p() begin select 1; select 2; end"}},
        {"drop procedure if exists p; create procedure p() begin select 1; end",
         {"drop procedure if exists p", "program: create procedure p() begin select 1; end"}},
        {"CREATE OR REPLACE DEFINER=`a`@`%` FUNCTION f(x int) RETURNS int BEGIN RETURN x; END",
         {"program: CREATE OR REPLACE DEFINER=`a`@`%` FUNCTION f(x int) RETURNS int BEGIN RETURN x; END"}},
        {"create trigger g before insert on t for each row begin set @a=1; set @b=2; end",
         {"program: create trigger g before insert on t for each row begin set @a=1; set @b=2; end"}},
        {"create procedure p(a int) if a = 1 then select 1; else select 2; end if",
         {"program: create procedure p(a int) if a = 1 then select 1; else select 2; end if"}},
        {"alter event e do begin select 1; end", {"program: alter event e do begin select 1; end"}},
        {"create trigger g before insert on t for each row if (new.id < 0) then set new.id = 0; end if",
         {"program: create trigger g before insert on t for each row if (new.id < 0) then set new.id = 0; end if"}},
        {"create procedure p() if not exists (select 1) then select 2; end if; select 3",
         {"program: create procedure p() if not exists (select 1) then select 2; end if", "select 3"}},
        {"create procedure p() case 1 when 1 then select 1; end case; select 3",
         {"program: create procedure p() case 1 when 1 then select 1; end case", "select 3"}},
        {"create procedure p() for i in 1..3 do select i; end for; select 3",
         {"program: create procedure p() for i in 1..3 do select i; end for", "select 3"}},
        {"create procedure p() begin not atomic select 1; end; call p()",
         {"BEGIN NOT ATOMIC create procedure p() begin not atomic select 1; end; call p()\n;END"}},
        {"create procedure p() begin declare c cursor for select 1; declare exit handler for sqlexception begin end; "
         "while (1 = 0) do set @a = case 1 when 1 then if(1, 2, 3) end; end while; repeat set @b = repeat('a', 2); "
         "until 1 end repeat; l: loop leave l; end loop l; end; select 3",
         {"program: create procedure p() begin declare c cursor for select 1; declare exit handler for sqlexception "
          "begin end; while (1 = 0) do set @a = case 1 when 1 then if(1, 2, 3) end; end while; repeat set @b = "
          "repeat('a', 2); until 1 end repeat; l: loop leave l; end loop l; end",
          "select 3"}},
        {"begin insert into t values (1); end; select 3", {"program: begin insert into t values (1); end", "select 3"}},
        // A body of one statement ends where that ends.
        {"create procedure p() select * from t where (a = 1) for update; select 2",
         {"create procedure p() select * from t where (a = 1) for update", "select 2"}},
        {"create function f() returns int return case when 1 then 2 end; select f()",
         {"create function f() returns int return case when 1 then 2 end", "select f()"}},
        {"create function f() returns text return repeat('a', 3); select f()",
         {"create function f() returns text return repeat('a', 3)", "select f()"}},
        {"create procedure p() select 1; select 2", {"create procedure p() select 1", "select 2"}},
        {"create function if not exists f(a int) returns int return if(a > 1, 2, 3); select f(1)",
         {"create function if not exists f(a int) returns int return if(a > 1, 2, 3)", "select f(1)"}},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(TextsOf(row.text), row.statements) << row.text;
}

TEST(ListStatements, MakesABlockOfWhatMayHaveSeveralResults) {
    static const struct {
        const char* text;
        Texts statements;
    } kRows[] = {
        {"call two(); select 3; select 4;", {"BEGIN NOT ATOMIC call two(); select 3; select 4\n;END"}},
        {"/* a */ select 1; call two(); select 3 -- last", {"BEGIN NOT ATOMIC select 1; call two(); select 3\n;END"}},
        {"select 1; call two()", {"BEGIN NOT ATOMIC select 1; call two()\n;END"}},
        {"{call two()}; select 3", {"BEGIN NOT ATOMIC call two() ; select 3\n;END"}},
        {"select 1; { CALL two({d '2003-07-04'}) };",
         {"BEGIN NOT ATOMIC select 1;   CALL two({d '2003-07-04'})\n;END"}},
        {"{call two()}; {call two()}", {"BEGIN NOT ATOMIC call two() ;  call two()\n;END"}},
        {"{call two(; select 3", {"{call two(", "select 3"}},
        {"select {fn now()}; select 3", {"select {fn now()}", "select 3"}},
        {"{? = call one()}; select 3", {"{? = call one()}", "select 3"}},
        {"if 1 = 1 then select 3; end if", {"BEGIN NOT ATOMIC if 1 = 1 then select 3; end if\n;END"}},
        {"again: loop leave again; end loop", {"BEGIN NOT ATOMIC again: loop leave again; end loop\n;END"}},
        {"set statement max_statement_time = 5 for call two(); select 3",
         {"BEGIN NOT ATOMIC set statement max_statement_time = 5 for call two(); select 3\n;END"}},
        {"select 1; begin not atomic select 2; select 3; end",
         {"BEGIN NOT ATOMIC select 1; begin select 2; select 3; end\n;END"}},
        {"/* so */ begin not atomic select 2; end;", {"begin not atomic select 2; end"}},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(TextsOf(row.text), row.statements) << row.text;
}

TEST(ListStatements, MakesABlockOfWhatHasRowsThatTheDriverDoesNotSee) {
    static const struct {
        const char* text;
        Texts statements;
    } kRows[] = {
        {"optimize table t", {"BEGIN NOT ATOMIC optimize table t\n;END"}},
        {"-- tidy\n REPAIR TABLE t;", {"BEGIN NOT ATOMIC REPAIR TABLE t\n;END"}},
        {"values (1), (2)", {"BEGIN NOT ATOMIC values (1), (2)\n;END"}},
        {"((values (1)) union select 2)", {"BEGIN NOT ATOMIC ((values (1)) union select 2)\n;END"}},
        {"select 1; optimize table t; select 2", {"BEGIN NOT ATOMIC select 1; optimize table t; select 2\n;END"}},
        {"help 'select'", {"BEGIN NOT ATOMIC help 'select'\n;END"}},
        {"xa recover", {"BEGIN NOT ATOMIC xa recover\n;END"}},
        {"set statement max_statement_time=5 for select 1",
         {"BEGIN NOT ATOMIC set statement max_statement_time=5 for select 1\n;END"}},
        {"set session max_statement_time=5", {}},
        {"xa start 'a'", {}},
        {"load index into cache t", {"BEGIN NOT ATOMIC load index into cache t\n;END"}},
        {"load data infile 'a' into table t", {}},
        {"cache index t in hot", {"BEGIN NOT ATOMIC cache index t in hot\n;END"}},
        {"insert into t values (1)", {}},
        {"analyze table t", {}},
        {"`values`", {}},
        {"(", {}},
        {"", {}},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(TextsOf(row.text), row.statements) << row.text;
}

TEST(ListStatements, CountsTheMarkersOfEach) {
    const auto list =
        ListStatements("insert into t values (?, '?', `?`, ?); /* ? */ select 1; delete from t where a = ? # ?");
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].markers, 2u);
    EXPECT_EQ(list[1].markers, 0u);
    EXPECT_EQ(list[2].markers, 1u);
}

/// A text of random pieces, the same in each run.
std::string RandomText(std::mt19937& random, std::span<const std::string_view> pieces) {
    std::string text;
    for (std::size_t i = random() % 24; i > 0; --i)
        text += pieces[random() % pieces.size()];
    return text;
}

/// Without what makes a block of it.
std::string_view Given(std::string_view text) {
    if (!text.starts_with("BEGIN NOT ATOMIC ")) return text;
    return text.substr(17, text.size() - 17 - 5);
}

TEST(ListStatements, LosesNothingOfAnyText) {
    static constexpr std::string_view kPieces[] = {"select", " ",   ";",       "\n",         "?",    "(",    ")",  "if",
                                                   "begin",  "end", "create ", "procedure ", "then", "case", "库", ","};
    const auto letters = [](std::string_view text) {
        std::string kept;
        for (const char each : text) {
            if (each != ' ' && each != '\n' && each != ';') kept += each;
        }
        return kept;
    };
    std::mt19937 random(20);
    int lists = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = RandomText(random, kPieces);
        std::string joined;
        for (const ListedStatement& each : ListStatements(text))
            joined += Given(each.text);
        if (joined.empty()) continue;
        ++lists;
        ASSERT_EQ(letters(joined), letters(text)) << text;
    }
    EXPECT_GT(lists, 5000);
}

TEST(ListStatements, KeepsEachPieceOfAnyTextWhole) {
    static constexpr std::string_view kPieces[] = {"select", " ",      ";",         "'",  "\"",   "`", "\\", "--",
                                                   "\n",     "#",      "/*",        "*/", "/*!",  "?", "(",  "begin",
                                                   "end",    "create", "procedure", "if", "call", ":", "库"};
    std::mt19937 random(20);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = RandomText(random, kPieces);
        SCOPED_TRACE(text);
        std::size_t at = 0;
        for (const ListedStatement& each : ListStatements(text)) {
            const std::string_view own = Given(each.text);
            ASSERT_FALSE(own.empty());
            const std::size_t found = text.find(own, at);
            ASSERT_NE(found, std::string::npos) << own;
            at = found + own.size();
        }
    }
}

}  // namespace
}  // namespace tk::ado
