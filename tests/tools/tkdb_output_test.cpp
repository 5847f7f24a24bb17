// What becomes of the program's output: on a device without room, and on a pipe that nobody reads any more.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tkdb_run.h"

namespace {

using namespace tk::tools::test;
using testing::HasSubstr;

constexpr char kNoRoom[] = "tkdb: cannot write standard output: No space left on device\n";

class TkdbOutput : public Tkdb {
protected:
    void SetUp() override {
        Tkdb::SetUp();
        ASSERT_EQ(RunTkdb("exec " + connection_ +
                          " 'create table item (id integer primary key, name varchar(20))'"
                          " 'create index item_name on item (name)'"
                          " 'create view items as select id from item'"
                          " \"insert into item values (1,'a'),(2,'b')\"")
                      .code,
                  0);
        std::ofstream(File("script.sql")) << "CREATE TABLE ITEM (ID INT NOT NULL)\n";
    }

    std::string File(const char* name) const { return std::string(folder_) + "/" + name; }

    static std::string Content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// The arguments with the database in the place of @ and the test's folder in the place of #.
    std::string Filled(std::string arguments) const {
        for (std::size_t at; (at = arguments.find('@')) != std::string::npos;)
            arguments.replace(at, 1, connection_);
        for (std::size_t at; (at = arguments.find('#')) != std::string::npos;)
            arguments.replace(at, 1, folder_);
        return arguments;
    }

    std::string Count(const char* table) const {
        return RunTkdb("query " + connection_ + " 'select count(*) from " + table + "' --format markdown").output;
    }
};

// Of a driver that gives each row when it is asked for: the query never ends.
constexpr char kEndless[] =
    "query @';StepAPI=1' 'with recursive n(i) as (select 1 union all select i + 1 from n) select i from n' ";

TEST_F(TkdbOutput, CommandsWithoutRoomForTheirOutputTellItAndExitWithThree) {
    static const struct {
        const char* label;
        const char* arguments;
    } kRows[] = {
        {"query, table", "query @ 'select * from item'"},
        {"query, csv", "query @ 'select * from item' --format csv"},
        {"query, json", "query @ 'select * from item' --format json"},
        {"query, markdown", "query @ 'select * from item' --format markdown"},
        {"query of no rows", "query @ 'select * from item where id > 9'"},
        {"query of a text longer than any buffer", "query @ 'select hex(zeroblob(500000)) as x' --format csv"},
        {"exec", "exec @ \"update item set name = 'c'\""},
        {"exec in a transaction", "exec -t @ \"update item set name = 'd'\""},
        {"export, which tells the rows", "export @ item -o #/item.csv"},
        {"tables", "tables @"},
        {"views", "views @"},
        {"describe", "describe @ item"},
        {"script", "script @ --dialect oracle item"},
        {"indexes", "indexes @ --dialect oracle item"},
        {"count", "count @ item"},
        {"convert", "convert --from mssql --to oracle #/script.sql"},
        {"copy", "copy @ item 'Driver=SQLite3;Database=#/copy.db'"},
        {"load", "load @ 'select 1' --requests 2"},
        {"load, metrics", "load @ 'select 1' --requests 2 --metrics"},
        {"text", "text pinyin abc"},
        {"demo", "demo"},
        {"version", "--version"},
        {"help", "--help"},
        {"help of a command", "query --help"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome outcome = RunTkdb(Filled(row.arguments), "2>&1 >/dev/full");
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.output, kNoRoom);
    }
}

TEST_F(TkdbOutput, TheReasonOutlastsATextThatIsWrittenAtOnce) {
    std::ofstream(File("long.sql")) << "CREATE TABLE ITEM (ID INT NOT NULL)\n" << std::string(100'000, '\n');
    const Outcome outcome = RunTkdb(Filled("convert --from mssql --to mssql #/long.sql"), "2>&1 >/dev/full");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.output, kNoRoom);
}

TEST_F(TkdbOutput, FilesThatCannotBeWrittenAreToldInTheSameWords) {
    for (const char* arguments :
         {"export @ item --format csv -o /nowhere/file", "load @ 'select 1' --requests 1 --plot /nowhere/file"}) {
        SCOPED_TRACE(arguments);
        const Outcome outcome = RunTkdb(Filled(arguments), "2>&1 >/dev/null");
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.output, "tkdb: cannot write /nowhere/file: No such file or directory\n");
    }
}

TEST_F(TkdbOutput, WorkOnTheDatabaseIsDoneAlsoWhenItsReportIsLost) {
    std::string statements;
    for (int i = 10; i < 310; ++i)  // the reports are more than a buffer holds
        statements += " 'insert into item values (" + std::to_string(i) + ", null)'";
    EXPECT_EQ(RunTkdb("exec -t " + connection_ + statements, ">/dev/full 2>&1").code, 3);
    EXPECT_THAT(Count("item"), HasSubstr("| 302 |"));
    EXPECT_EQ(RunTkdb(Filled("export @ item -o #/item.csv"), ">/dev/full 2>&1").code, 3);
    EXPECT_THAT(Content(File("item.csv")), HasSubstr("\r\n309,\r\n"));
}

TEST_F(TkdbOutput, AFailureOfTheCommandItselfKeepsItsExitCode) {
    const Outcome outcome = RunTkdb(Filled("exec @ 'delete from item' 'delete from missing'"), "2>&1 >/dev/full");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.output, HasSubstr("no such table: missing"));
    EXPECT_THAT(outcome.output, HasSubstr(kNoRoom));
    EXPECT_EQ(RunTkdb("text currency 1 abc", ">/dev/full 2>&1").code, 2);
    EXPECT_EQ(RunTkdb(Filled("query @ 'select * from missing'"), "2>/dev/full").code, 1)
        << "nor does it matter whether the reason can be told";
}

TEST_F(TkdbOutput, ResultsWithoutEndStopWhenThereIsNoRoomForThem) {
    for (const char* format : {"table", "csv", "json", "markdown"}) {
        SCOPED_TRACE(format);
        const Outcome outcome = RunTkdb(Filled(kEndless) + "--format " + format, "2>&1 >/dev/full", "timeout 60 ");
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.output, kNoRoom);
    }
    EXPECT_EQ(RunTkdb("text pinyin", "2>&1 >/dev/full", "yes abc | timeout 60 ").output, kNoRoom);
}

TEST_F(TkdbOutput, AReaderThatWentAwayEndsItWithoutAWord) {
    static const struct {
        const char* label;
        const char* before;
        std::string arguments;
        const char* line;
        const char* code;  // as the shell tells it
    } kRows[] = {
        {"query", "{ ", kEndless, "i\n", "141\n"},
        {"text", "{ yes 1 | ", "text number --format 0", "1\n", "141\n"},
        {"query, the signal ignored", "trap '' PIPE; { ", kEndless, "i\n", "0\n"},
        {"text, the signal ignored", "trap '' PIPE; { yes 1 2>/dev/null | ", "text number --format 0", "1\n", "0\n"},
    };
    signal(SIGPIPE, SIG_DFL);  // a shell cannot undo what it was started with
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome outcome =
            RunTkdb(Filled(row.arguments), Filled("2>#/errors; echo $? >#/code; } | head -n 1").c_str(),
                    (std::string(row.before) + "timeout 60 ").c_str());
        EXPECT_EQ(outcome.output, row.line);
        EXPECT_EQ(Content(File("code")), row.code);
        EXPECT_EQ(Content(File("errors")), "");
    }
}

}  // namespace
