// A copy that is killed in the middle, and the run after it, on every database system that it goes to.
#include <signal.h>
#include <tkkernel/tkkernel.h>
#include <unistd.h>

#include <ctime>
#include <functional>
#include <memory>

#include "support/mariadb_server.h"
#include "support/postgres_server.h"
#include "support/registered_class.h"
#include "support/temporary_folder.h"
#include "tools/tkdb_run.h"

namespace tk::tools::test {
namespace {

using tk::test::Apartment;
using tk::test::MariaDbServer;
using tk::test::PostgresServer;
using tk::test::TemporaryFolder;

constexpr char kProgram[] = TKDB_PROGRAM;

/// Looks at it again and again.
bool Comes(const std::function<bool()>& condition) {
    const std::time_t end = std::time(nullptr) + 60;
    while (!condition()) {
        if (std::time(nullptr) > end) return false;
        usleep(2000);
    }
    return true;
}

std::string First(CTDatabase& database, const char* query) {
    CTRecordset rows(&database);
    if (rows.OpenSQL(query, 1) == 0 || rows.GetEof()) return "nothing";
    return std::string(rows.GetStringValue(0L));
}

class TkdbCopy : public testing::Test {
protected:
    void SetUp() override {
        CTDatabase source;
        ASSERT_EQ(source.Open(source_.c_str()), 1);
        static constexpr const char* kStatements[] = {
            "create table item (id integer primary key, name varchar(40) not null)",
            "insert into item with recursive r(i) as (select 1 union all select i + 1 from r where i < 60000) "
            "select i, 'name ' || i from r",
            "create index item_name on item (name)",
        };
        for (const char* const statement : kStatements)
            ASSERT_EQ(source.ExecuteSQL(statement), 1) << statement;
    }
    pid_t Start(const std::string& target) const {
        const pid_t child = fork();
        if (child != 0) return child;
        std::freopen("/dev/null", "w", stdout);
        execl(kProgram, kProgram, "copy", source_.c_str(), "item", target.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    /// @return whether it was still at work
    static bool Kill(pid_t child) {
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        return WIFSIGNALED(status);
    }
    /// The run after a killed one, and one more.
    void ExpectWholeCopy(const std::string& target) const {
        const std::string copy = "copy '" + source_ + "' item '" + target + "'";
        EXPECT_EQ(RunTkdb(copy, "2>&1").output, "item: 60000 row(s)\n");
        EXPECT_EQ(RunTkdb("tables '" + target + "' --format csv", "2>&1").output, "table\r\nitem\r\n");
        EXPECT_EQ(RunTkdb("query '" + target +
                          "' 'select sum(id) as ids, min(name) as first, max(name) as last from item' --format csv")
                      .output,
                  "ids,first,last\r\n1800030000,name 1,name 9999\r\n");
        EXPECT_EQ(RunTkdb("indexes '" + target + "' item --dialect mssql").output,
                  "CREATE INDEX \"ITEM_NAME\" ON \"ITEM\" (\"NAME\")\n");
        EXPECT_EQ(RunTkdb(copy).output, "item: there already\n");
    }

    Apartment apartment_;
    TemporaryFolder folder_;
    std::string source_ = "Driver=SQLite3;Database=" + folder_.File("source.db");
};

TEST_F(TkdbCopy, BeginsAgainInAFileAfterItWasKilled) {
    const std::string file = folder_.File("target.db");
    const std::string target = "Driver=SQLite3;Database=" + file;
    CTDatabase reader;
    ASSERT_EQ(reader.Open(target.c_str()), 1);
    ASSERT_EQ(reader.ExecuteSQL("create table item_before (id integer)"), 1);
    ASSERT_EQ(reader.ExecuteSQL("drop table item_before"), 1);
    // Nobody commits while another one reads.
    reader.BeginTrans();
    ASSERT_EQ(First(reader, "select count(*) from sqlite_master"), "0");
    const pid_t copy = Start(target);
    EXPECT_TRUE(Comes([&] { return access((file + "-journal").c_str(), F_OK) == 0; }));
    EXPECT_TRUE(Kill(copy));
    reader.RollbackTrans();
    ExpectWholeCopy(target);
}

TEST_F(TkdbCopy, BeginsAgainOnPostgresAfterItWasKilled) {
    PostgresServer server;
    const std::string target = server.ConnectionString();
    CTDatabase other;
    CTDatabase watcher;
    ASSERT_EQ(other.Open(target.c_str()), 1);
    ASSERT_EQ(watcher.Open(target.c_str()), 1);
    // The rows are in when the name of the index has to be waited for.
    other.BeginTrans();
    ASSERT_EQ(other.ExecuteSQL("create table other (id integer)"), 1);
    ASSERT_EQ(other.ExecuteSQL("create index item_name on other (id)"), 1);
    const pid_t copy = Start(target);
    EXPECT_TRUE(Comes([&] { return First(watcher, "select count(*) from pg_locks where not granted") == "1"; }));
    EXPECT_TRUE(Kill(copy));
    other.RollbackTrans();
    ExpectWholeCopy(target);
}

TEST_F(TkdbCopy, BeginsAgainOnMariaDbAfterItWasKilled) {
    MariaDbServer server;
    const std::string target = server.ConnectionString();
    CTDatabase other;
    ASSERT_EQ(other.Open(target.c_str()), 1);
    const pid_t copy = Start(target);
    EXPECT_TRUE(Comes([&] {
        return First(other, "select count(*) from information_schema.tables where table_schema = 'test'") == "1";
    }));
    // Nobody writes any more.
    EXPECT_EQ(other.ExecuteSQL("flush tables with read lock"), 1);
    EXPECT_TRUE(Kill(copy));
    EXPECT_EQ(other.ExecuteSQL("unlock tables"), 1);
    EXPECT_EQ(other.IsTableExist("item"), 0);
    ExpectWholeCopy(target);
    // The same for a table that is replaced: the former one is there until then.
    EXPECT_EQ(other.ExecuteSQL("delete from item where id > 1"), 1);
    EXPECT_EQ(RunTkdb("copy '" + source_ + "' item '" + target + "'").code, 1);
    EXPECT_EQ(RunTkdb("copy --replace '" + source_ + "' item '" + target + "'").output, "item: 60000 row(s)\n");
    EXPECT_EQ(RunTkdb("tables '" + target + "' --format csv").output, "table\r\nitem\r\n");
}

class TkdbCopyToMariaDb : public TkdbCopy {
protected:
    void SetUp() override {
        TkdbCopy::SetUp();
        ASSERT_EQ(other_.Open(target_.c_str()), 1);
    }
    void Do(const char* statement) { ASSERT_EQ(other_.ExecuteSQL(statement), 1) << statement; }
    std::string Tables() {
        return First(other_,
                     "select group_concat(table_name order by table_name) from information_schema.tables "
                     "where table_schema = database()");
    }

    MariaDbServer server_;
    std::string target_ = server_.ConnectionString();
    std::string copy_ = "copy '" + source_ + "' item '" + target_ + "'";
    CTDatabase other_;
};

TEST_F(TkdbCopyToMariaDb, LeavesATableAloneThatOthersReferTo) {
    Do("create table item (id bigint primary key, above bigint references item (id))");
    Do("insert into item values (1, 1), (2, 1)");
    Do("create table child (item bigint, foreign key (item) references item (id))");
    Do("insert into child values (2)");
    const Outcome refused = RunTkdb(copy_ + " --replace", "2>&1");
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.output, "tkdb: item: cannot be replaced, as test.child refers to it\n");
    EXPECT_EQ(Tables(), "child,item");
    EXPECT_EQ(First(other_, "select count(*) from item"), "2");
    EXPECT_NE(other_.ExecuteSQL("insert into child values (2)"), 0);
    // A reference from a table to itself goes with it.
    Do("drop table child");
    EXPECT_EQ(RunTkdb(copy_ + " --replace", "2>&1").output, "item: 60000 row(s)\n");
    EXPECT_EQ(Tables(), "item");
}

TEST_F(TkdbCopyToMariaDb, PutsATableBackThatCannotBeDropped) {
    // The child is in a database that the user of the copy does not see.
    Do("create table item (id bigint primary key)");
    Do("insert into item values (1), (2)");
    Do("create database hidden");
    Do("create table hidden.child (item bigint, foreign key (item) references test.item (id))");
    Do("create user guest identified by 'pw'");
    Do("grant all on test.* to guest");
    std::string target = target_;
    target.replace(target.find("tester"), 6, "guest");
    const Outcome refused = RunTkdb("copy --replace '" + source_ + "' item '" + target + "'", "2>&1");
    EXPECT_EQ(refused.code, 1) << refused.output;
    EXPECT_EQ(Tables(), "item");
    EXPECT_EQ(First(other_, "select count(*) from item"), "2");
    EXPECT_EQ(First(other_,
                    "select group_concat(referenced_table_name) from information_schema.key_column_usage "
                    "where table_schema = 'hidden' and table_name = 'child'"),
              "item");
}

TEST_F(TkdbCopyToMariaDb, ReplacesNothingByScriptsThatCannotBeUndone) {
    Do("set global sql_mode = 'ANSI_QUOTES'");
    Do("create table ITEM (ID bigint primary key)");
    Do("insert into ITEM values (1), (2)");
    const Outcome refused =
        RunTkdb("copy --replace '" + source_ + ";DBMS Name=Oracle' item '" + target_ + ";DBMS Name=Oracle'", "2>&1");
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.output, "tkdb: item: cannot be replaced, as dropping a table cannot be undone there\n");
    EXPECT_EQ(Tables(), "ITEM");
    EXPECT_EQ(First(other_, "select count(*) from ITEM"), "2");
}

TEST_F(TkdbCopyToMariaDb, DropsWhatARunLeftThatWasKilledAtItsEnd) {
    ASSERT_EQ(RunTkdb(copy_).code, 0);
    Do("create table tkdb_old_2841a0c596d6f426 (id bigint)");
    EXPECT_EQ(RunTkdb(copy_).output, "item: there already\n");
    EXPECT_EQ(Tables(), "item");
}

TEST_F(TkdbCopyToMariaDb, RefusesATableThatAnotherRunIsCopying) {
    const pid_t first = Start(target_);
    EXPECT_TRUE(Comes([&] { return Tables() != "nothing" && !Tables().empty(); }));
    kill(first, SIGSTOP);
    const std::string made = Tables();
    const Outcome second = RunTkdb(copy_, "2>&1");
    EXPECT_EQ(second.code, 1);
    EXPECT_EQ(second.output, "tkdb: item: another run is copying it\n");
    EXPECT_EQ(Tables(), made);
    kill(first, SIGCONT);
    int status = 0;
    waitpid(first, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(RunTkdb(copy_, "2>&1").output, "item: there already\n");
    EXPECT_EQ(Tables(), "item");
}

}  // namespace
}  // namespace tk::tools::test
