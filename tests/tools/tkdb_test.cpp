// The program as a user runs it: its output, its exit codes, its errors.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "tkdb_run.h"

namespace {

using namespace tk::tools::test;
using testing::HasSubstr;

/// The same with a terminal for its output; interrupted once it has printed the text there.
Outcome RunOnTerminalUntil(const std::string& text, const std::string& arguments) {
    Outcome outcome;
    const std::string command = std::string("export LC_ALL=C.UTF-8; exec ") + TKDB_PROGRAM + " " + arguments;
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        alarm(60);  // what never prints it ends with a signal
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    std::array<char, 4096> buffer;
    bool isInterrupted = false;
    for (ssize_t n; (n = read(terminal, buffer.data(), buffer.size())) > 0;) {
        outcome.output.append(buffer.data(), static_cast<std::size_t>(n));
        if (isInterrupted || outcome.output.find(text) == std::string::npos) continue;
        kill(child, SIGINT);
        isInterrupted = true;
    }
    close(terminal);
    int status = 0;
    if (waitpid(child, &status, 0) == child && WIFEXITED(status)) outcome.code = WEXITSTATUS(status);
    return outcome;
}

TEST_F(Tkdb, ExecReportsTheRowsOfEachStatement) {
    const Outcome outcome =
        RunTkdb("exec " + connection_ +
                " 'create table t (id integer, name varchar(20))' \"insert into t values (1,'a'),(2,'b')\"");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.output, HasSubstr("2 row(s): insert into t values"));
}

TEST_F(Tkdb, QueryPrintsRowsInEachFormat) {
    ASSERT_EQ(RunTkdb("exec " + connection_ +
                      " 'create table t (id integer, name varchar(20))' "
                      "\"insert into t values (1,'\xE4\xB8\xAD'),(2,null)\"")
                  .code,
              0);
    const std::string query = "query " + connection_ + " 'select id, name from t order by id'";
    EXPECT_EQ(RunTkdb(query).output, "id  name\n--  ----\n 1  \xE4\xB8\xAD\n 2\n");
    EXPECT_EQ(RunTkdb(query + " --format csv").output, "id,name\r\n1,\xE4\xB8\xAD\r\n2,\r\n");
    EXPECT_EQ(RunTkdb(query + " --format json").output,
              "[\n  {\"id\": 1, \"name\": \"\xE4\xB8\xAD\"},\n  {\"id\": 2, \"name\": null}\n]\n");
    EXPECT_EQ(RunTkdb(query + " --format markdown").output,
              "| id | name |\n| --- | --- |\n| 1 | \xE4\xB8\xAD |\n| 2 |  |\n");
    EXPECT_EQ(RunTkdb(query + " --max-rows 1 --format csv").output, "id,name\r\n1,\xE4\xB8\xAD\r\n");
}

TEST_F(Tkdb, KeepsCharactersOutsideGbk) {
    const Outcome outcome = RunTkdb("query " + connection_ + " \"select char(0x20000) as x\" --format csv");
    EXPECT_EQ(outcome.output, "x\r\n\xF0\xA0\x80\x80\r\n");
}

TEST_F(Tkdb, TellsTheReasonOnStandardErrorAndExitsWithOne) {
    const Outcome outcome = RunTkdb("query " + connection_ + " 'select * from missing'", "2>&1 >/dev/null");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.output, HasSubstr("no such table: missing"));
    EXPECT_EQ(RunTkdb("exec 'Driver=NoSuchDriver' 'select 1'").code, 1);
}

// ---- export --------------------------------------------------------------------------------------------------------

class TkdbExport : public Tkdb {
protected:
    void SetUp() override {
        Tkdb::SetUp();
        ASSERT_EQ(RunTkdb("exec " + connection_ +
                          " 'create table item (id integer, name varchar(20), price double, made timestamp)'"
                          " \"insert into item values (1,'\xE4\xB8\xAD, ' || char(0x20000),1.5,'2020-02-29 13:45:06'),"
                          "(2,'',0.1,null),(3,null,-2,'1999-12-31')\"")
                      .code,
                  0);
    }

    std::string File(const std::string& name) const { return std::string(folder_) + "/" + name; }

    Outcome Export(const std::string& source, const std::string& file, const std::string& options = "") {
        return RunTkdb("export " + connection_ + " \"" + source + "\" -o '" + File(file) + "' " + options);
    }

    static std::string Content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static bool IsUnfinished(const std::string& name) { return name.starts_with(".tkdb-"); }

    /// What lies in the folder beside the database.
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            names.insert(entry.path().filename());
        names.erase("t.db");
        return names;
    }
};

TEST_F(TkdbExport, WritesEachTextFormInUtf8) {
    EXPECT_EQ(Export("item", "o.csv").output, "3 row(s): " + File("o.csv") + "\n");
    EXPECT_EQ(Content(File("o.csv")),
              "id,name,price,made\r\n1,\"\xE4\xB8\xAD, \xF0\xA0\x80\x80\",1.5,2020-02-29 13:45:06\r\n"
              "2,\"\",0.1,\r\n3,,-2,1999-12-31 00:00:00\r\n");
    EXPECT_EQ(Export("item", "o.json").code, 0);
    EXPECT_EQ(Content(File("o.json")),
              "[\n  {\"id\": 1, \"name\": \"\xE4\xB8\xAD, \xF0\xA0\x80\x80\", \"price\": 1.5, \"made\": "
              "\"2020-02-29 13:45:06\"},\n  {\"id\": 2, \"name\": \"\", \"price\": 0.1, \"made\": null},\n"
              "  {\"id\": 3, \"name\": null, \"price\": -2, \"made\": \"1999-12-31 00:00:00\"}\n]\n");
    EXPECT_EQ(Export("item", "o.MD").code, 0) << "the case of the extension does not matter";
    EXPECT_EQ(Content(File("o.MD")),
              "| id | name | price | made |\n| --- | --- | --- | --- |\n"
              "| 1 | \xE4\xB8\xAD, \xF0\xA0\x80\x80 | 1.5 | 2020-02-29 13:45:06 |\n| 2 |  | 0.1 |  |\n"
              "| 3 |  | -2 | 1999-12-31 00:00:00 |\n");
    EXPECT_EQ(Names(), (std::set<std::string>{"o.csv", "o.json", "o.MD"})) << "nothing else is left";
}

TEST_F(TkdbExport, TakesQueriesAndNamesOfTables) {
    static const struct {
        const char* label;
        const char* source;
        const char* content;
    } kRows[] = {
        {"query", "select id from item where id > 1 order by id", "id\r\n2\r\n3\r\n"},
        {"query without blanks", "select(1)as\tn", "n\r\n1\r\n"},
        {"table of a schema", "main.one", "n\r\n1\r\n"},
        {"table with an odd name", "select", "n\r\n7\r\n"},
        {"no rows", "select id from item where id > 9", "id\r\n"},
    };
    ASSERT_EQ(RunTkdb("exec " + connection_ + " 'create table one (n integer)' 'insert into one values (1)' " +
                      "'create table \"select\" (n integer)' 'insert into \"select\" values (7)'")
                  .code,
              0);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Export(row.source, "out", "--format csv").code, 0);
        EXPECT_EQ(Content(File("out")), row.content);
    }
}

TEST_F(TkdbExport, AFailureLeavesTheOldFile) {
    ASSERT_EQ(Export("select 1 as n", "o.csv").code, 0);
    EXPECT_EQ(Export("missing", "o.csv").code, 1);
    EXPECT_EQ(Export("delete from item", "o.csv").code, 2) << "a statement without rows";
    EXPECT_EQ(Content(File("o.csv")), "n\r\n1\r\n");
    EXPECT_EQ(Names(), std::set<std::string>{"o.csv"});
}

TEST_F(TkdbExport, WhatCannotBeWrittenIsToldWithItsReason) {
    const std::string file = "export " + connection_ + " item --format csv -o ";
    EXPECT_THAT(RunTkdb(file + "/nowhere/x.csv", "2>&1").output, HasSubstr("No such file or directory"));
    EXPECT_EQ(RunTkdb(file + "/nowhere/x.csv").code, 3);
    EXPECT_THAT(RunTkdb(file + folder_, "2>&1").output, HasSubstr("Is a directory"));
    EXPECT_EQ(RunTkdb(file + "/dev/full").code, 3);
    EXPECT_EQ(RunTkdb(file + "''").code, 3);
    EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(TkdbExport, TheFormHasToBeKnown) {
    EXPECT_EQ(Export("item", "o.txt").code, 2);
    EXPECT_EQ(Export("item", "o.csv", "--format pdf").code, 2);
    EXPECT_EQ(RunTkdb("export " + connection_ + " item").code, 2);
    EXPECT_EQ(RunTkdb("export " + connection_).code, 2);
    EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(TkdbExport, FullDisksLeaveTheOldFile) {
    ASSERT_EQ(Export("select 1 as n", "o.csv").code, 0);
    // A limit on the size of files stands for the full disk.
    const Outcome outcome = RunTkdb(
        "export " + connection_ +
            " 'with recursive n(i) as (select 1 union all select i + 1 from n where i < 200000) select i from n' "
            "-o " +
            File("o.csv"),
        "2>&1", "ulimit -f 200; trap '' XFSZ; ");
    EXPECT_EQ(outcome.code, 3) << outcome.output;
    EXPECT_EQ(Content(File("o.csv")), "n\r\n1\r\n");
    EXPECT_EQ(Names(), std::set<std::string>{"o.csv"});
}

TEST_F(TkdbExport, AnInterruptionLeavesTheOldFile) {
    ASSERT_EQ(Export("select 1 as n", "o.csv").code, 0);
    // Of a driver that gives each row when it is asked for: the query never ends, and the export begins all the same.
    RunningTkdb program(
        "export " + connection_ +
        "';StepAPI=1' 'with recursive n(i) as (select 1 union all select i + 1 from n) select i from n' -o " +
        File("o.csv"));
    // From the moment that the new file has a place, the export is under way.
    ASSERT_TRUE(program.WaitUntil([&] { return std::ranges::any_of(Names(), IsUnfinished); }));
    program.Signal(SIGINT);
    const Outcome outcome = program.Finish();
    EXPECT_EQ(outcome.code, 130);
    EXPECT_THAT(outcome.output, HasSubstr("o.csv is as it was"));
    EXPECT_EQ(Content(File("o.csv")), "n\r\n1\r\n");
    EXPECT_EQ(Names(), std::set<std::string>{"o.csv"});
}

TEST_F(TkdbExport, LongExportsTellHowFarTheyAre) {
    const Outcome outcome = RunOnTerminalUntil(
        "rows: ",
        "export " + connection_ +
            "';StepAPI=1' 'with recursive n(i) as (select 1 union all select i + 1 from n) select i from n' -o " +
            File("o.csv"));
    EXPECT_EQ(outcome.code, 130);
    EXPECT_THAT(outcome.output, testing::ContainsRegex("rows: [0-9]+ \\([0-9]+ /s\\)"));
}

// ---- text ----------------------------------------------------------------------------------------------------------

TEST_F(Tkdb, TextConvertsItsArguments) {
    static const struct {
        const char* label;
        const char* arguments;
        const char* output;
    } kRows[] = {
        // U+58F9 U+62FE U+5143 U+96F6 U+4F0D U+89D2 U+6574
        {"currency", "currency 10.5",
         "\xE5\xA3\xB9\xE6\x8B\xBE\xE5\x85\x83\xE9\x9B\xB6\xE4\xBC\x8D\xE8\xA7\x92\xE6\x95\xB4\n"},
        // U+4F0D U+89D2 U+96F6 U+5206
        {"every place", "currency --mode 2 0.5", "\xE4\xBC\x8D\xE8\xA7\x92\xE9\x9B\xB6\xE5\x88\x86\n"},
        // U+96F6, U+5341, U+4E00
        {"numerals", "numeral 0 10 12", "\xE9\x9B\xB6\n\xE5\x8D\x81\n\xE4\xB8\x80\n"},
        {"pinyin", "pinyin '\xE4\xB8\xAD\xE5\x9B\xBD' ABC ''", "ZG\nvABC\nv\n"},
        {"date", "date '2007-09-29 08:05:03'", "2007/09/29 08:05:03\n"},
        {"date by a format", "date 2007-09-29 --format DD.MM.YY", "29.09.07\n"},
        {"number", "number --format '#,##0.00' 1234.5 -1", "1,234.50\n-1.00\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome outcome = RunTkdb(std::string("text ") + row.arguments);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.output, row.output);
    }
}

TEST_F(Tkdb, TextReadsLinesWhenThereAreNoArguments) {
    EXPECT_EQ(RunTkdb("text pinyin", "2>/dev/null", "printf 'ABC\n\xE4\xB8\xAD\n' | ").output, "vABC\nZ\n");
    EXPECT_EQ(RunTkdb("text pinyin </dev/null").output, "");
}

TEST_F(Tkdb, TextTellsWhatItCannotReadAndGoesOn) {
    static const char* const kRows[] = {"currency abc 1",
                                        "currency 1x 1",
                                        "currency '' 1",
                                        "numeral -- -1 0",
                                        "numeral 1.5 0",
                                        "numeral 40000 0",
                                        "date tomorrow 2000-01-01",
                                        "date 2001-02-29 2000-01-01",
                                        "number --format '%s' 1",
                                        "number --format 0 x 1"};
    for (const char* arguments : kRows) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(RunTkdb(std::string("text ") + arguments).code, 2);
        EXPECT_THAT(RunTkdb(std::string("text ") + arguments, "2>&1 >/dev/null").output, HasSubstr("cannot read"));
    }
    EXPECT_NE(RunTkdb("text currency abc 1").output, "");
    EXPECT_EQ(RunTkdb("text").code, 2);
    EXPECT_EQ(RunTkdb("text number 1").code, 2) << "a number needs a format";
    EXPECT_EQ(RunTkdb("text currency --mode 3 1").code, 2);
}

// ---- scripts and usage ---------------------------------------------------------------------------------------------

TEST_F(Tkdb, RunsAScriptAllOrNothing) {
    const std::string script = std::string(folder_) + "/s.sql";
    std::FILE* file = std::fopen(script.c_str(), "w");
    std::fputs("create table t (id integer primary key); insert into t values (1); insert into t values (1);", file);
    std::fclose(file);
    EXPECT_EQ(RunTkdb("exec -t " + connection_ + " -f " + script).code, 1);
    EXPECT_EQ(RunTkdb("query " + connection_ + " 'select count(*) as n from sqlite_master' --format csv").output,
              "n\r\n0\r\n");
}

TEST_F(Tkdb, ExitsWithTwoOnWrongUsage) {
    EXPECT_EQ(RunTkdb("").code, 2);
    EXPECT_EQ(RunTkdb("frobnicate").code, 2);
    EXPECT_EQ(RunTkdb("query " + connection_ + " 'select 1' --format pdf").code, 2);
    EXPECT_EQ(RunTkdb("exec " + connection_).code, 2);
    EXPECT_EQ(RunTkdb("exec " + connection_ + " -f /nowhere.sql").code, 2);
    EXPECT_EQ(RunTkdb("--help").code, 0);
}

TEST_F(Tkdb, DemoLoadsTheIsoListsAndWorksWithThem) {
    const Outcome outcome = RunTkdb("demo");
    EXPECT_EQ(outcome.code, 0);
    // U+4E2D U+56FD, from the Chinese names of the countries, and a province's code among the subdivisions.
    EXPECT_THAT(outcome.output, HasSubstr("CN-XZ"));
    EXPECT_THAT(outcome.output, HasSubstr("UNIQUE constraint failed: currency.code"));
}

}  // namespace
