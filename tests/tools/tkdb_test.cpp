// The program as a user runs it: its output, its exit codes, its errors.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using testing::HasSubstr;

struct Outcome {
    int code = -1;
    std::string output;
};

Outcome RunTkdb(const std::string& arguments, const char* redirect = "2>/dev/null") {
    Outcome outcome;
    const std::string command = std::string("LC_ALL=C.UTF-8 ") + TKDB_PROGRAM + " " + arguments + " " + redirect;
    std::FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer;
    for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        outcome.output.append(buffer.data(), n);
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class Tkdb : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(mkdtemp(folder_), nullptr);
        connection_ = std::string("'Driver=SQLite3;Database=") + folder_ + "/t.db'";
    }
    void TearDown() override { ASSERT_EQ(std::system((std::string("rm -rf ") + folder_).c_str()), 0); }

    char folder_[24] = "/tmp/tkdb-test-XXXXXX";
    std::string connection_;
};

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
