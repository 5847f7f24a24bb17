// Tables of a file database that another session, or another program, has changed: seen as they are now.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ado/odbc/odbc_api.h"
#include "ado/odbc/physical_connection.h"
#include "ado/support/own_questions.h"
#include "database_test.h"
#include "sent_texts.h"

namespace tk::ado::test {
namespace {

/// Another program's connection: no session of this one hears of what it does.
class Outsider {
public:
    explicit Outsider(const std::u16string& text) : connection_({.odbcString = ToUtf8(text)}) {}

    bool CanDo(const char* sql) { return connection_.RunText(sql); }

    void Do(const char* sql) {
        EXPECT_TRUE(CanDo(sql)) << sql;
        usleep(20000);  // what happened some milliseconds ago is known to have happened
    }

private:
    PhysicalConnection connection_;
};

/// Does something beside a call of the driver: once.
class Meanwhile {
public:
    enum class When { BeforeText, BehindText, BeforePrepared, BeforeQuestion, BehindCommit };

    Meanwhile(When when, std::function<void()> act, const char* text = "") : former_(SetOdbcForTest(Table())) {
        when_ = when;
        text_ = text;
        act_ = std::move(act);
    }
    ~Meanwhile() {
        EXPECT_FALSE(act_) << "it was not asked for";
        act_ = nullptr;
        SetOdbcForTest(former_);
    }
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;

    /// Whose call it is.
    static SQLHSTMT Statement() { return statement_; }

    /// And then something else.
    static void Then(When when, std::function<void()> act) {
        when_ = when;
        act_ = std::move(act);
    }

private:
    static void Act(When when, bool isMeant = true) {
        if (when == when_ && isMeant && act_) std::exchange(act_, nullptr)();
    }
    static const OdbcApi& Table() {
        static const OdbcApi table = [] {
            OdbcApi made;
            made.ExecDirect = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
                const bool isMeant = reinterpret_cast<char*>(text) == text_;
                statement_ = statement;
                Act(When::BeforeText, isMeant);
                Act(When::BeforeQuestion, tk::test::IsOwnQuestion(text));
                const SQLRETURN result = ::SQLExecDirect(statement, text, length);
                Act(When::BehindText, isMeant);
                return result;
            };
            made.Execute = [](SQLHSTMT statement) {
                Act(When::BeforePrepared);
                return ::SQLExecute(statement);
            };
            made.EndTran = [](SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT completion) {
                const SQLRETURN result = ::SQLEndTran(kind, handle, completion);
                Act(When::BehindCommit);
                return result;
            };
            return made;
        }();
        return table;
    }

    static inline When when_;
    static inline SQLHSTMT statement_;
    static inline std::string text_;
    static inline std::function<void()> act_;
    const OdbcApi& former_;
};

class ChangedTablesTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        connection_ = Connect();
        other_ = Connect();
        Execute(connection_, u"create table goods (id integer, price double)");
        Execute(connection_, u"insert into goods values (1, 2.5)");
    }

    /// Other columns under the same name.
    static void Change(const Object& on) {
        Execute(on, u"drop table goods");
        Execute(on, u"create table goods (code text, name text, price double)");
        Execute(on, u"insert into goods values ('A', 'tea', 9.75)");
    }

    /// The names of the columns, and the first row by these names.
    static std::string Show(const Object& rows) {
        if (!rows) return "nothing";
        std::string text;
        const Object fields = rows.Get(recordset::kFields).Result();
        const LONG count = fields.Get(collection::kCount).Long();
        for (LONG i = 0; i < count; ++i) {
            const std::string name = fields.Get(collection::kItem, {Number(i)}).Result().Get(field::kName).Utf8();
            text += (i == 0 ? "" : ",") + name + "=" + ValueOf(rows, ToUtf16(name));
        }
        return text;
    }
    static void Begin(const Object& on, bool byText) {
        if (byText) return Execute(on, u"begin");
        EXPECT_TRUE(on.Call(connection::kBeginTrans).Ok());
    }

    /// On the session's own connection, and in the way of results that may be large.
    static std::string Look(const Object& on) {
        const std::string one = Show(OpenRows(on, u"select * from goods where 1 = 1", 1));
        const std::string many = Show(OpenRows(on, u"select * from goods", 1));
        EXPECT_EQ(one, many);
        return one;
    }

    /// A recordset that connects by itself.
    std::string LookByText() const {
        const Object rows = Object::Create(kRecordsetClass);
        const Outcome opened =
            rows.Call(recordset::kOpen, {Text(u"goods"), Text(ConnectionText()), Number(3), Number(3), Number(2)});
        EXPECT_TRUE(opened.Ok()) << opened;
        return Show(rows);
    }

    static constexpr const char* kBefore = "id=1,price=2.5";
    static constexpr const char* kAfter = "code=A,name=tea,price=9.75";
    Object connection_;
    Object other_;
};

TEST_F(ChangedTablesTest, AreSeenByAnotherSession) {
    EXPECT_EQ(Look(other_), kBefore);
    Change(connection_);
    EXPECT_EQ(Look(other_), kAfter);
    EXPECT_EQ(Look(connection_), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenOnAConnectionThatWasKept) {
    EXPECT_EQ(LookByText(), kBefore);
    Change(connection_);
    EXPECT_EQ(LookByText(), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenByARequery) {
    const Object rows = OpenRows(other_, u"select * from goods");
    EXPECT_EQ(Show(rows), kBefore);
    Change(connection_);
    const Outcome again = rows.Call(recordset::kRequery);
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Show(rows), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenAfterTheTransactionThatChangedThem) {
    for (const DISPID end : {connection::kRollbackTrans, connection::kCommitTrans}) {
        SCOPED_TRACE(end);
        EXPECT_EQ(Look(other_), kBefore);
        ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
        Change(connection_);
        EXPECT_EQ(Look(connection_), kAfter);
        EXPECT_EQ(Look(other_), kBefore);
        const Outcome ended = connection_.Call(end);
        ASSERT_TRUE(ended.Ok()) << ended;
        const char* const now = end == connection::kCommitTrans ? kAfter : kBefore;
        EXPECT_EQ(Look(other_), now);
        EXPECT_EQ(Look(connection_), now);
    }
}

TEST_F(ChangedTablesTest, AreSeenAfterTheTextThatEndsATransaction) {
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"begin");
    Change(connection_);
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"commit");
    EXPECT_EQ(Look(other_), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenByTheFirstQueryOfATransaction) {
    for (const bool isText : {false, true}) {
        SCOPED_TRACE(isText);
        const std::string before = Look(other_);
        const auto end = [&] {
            isText ? Execute(other_, u"commit") : static_cast<void>(other_.Call(connection::kCommitTrans));
        };
        Begin(other_, isText);
        Execute(connection_, isText ? u"alter table goods add column b integer default 8"
                                    : u"alter table goods add column a integer default 7");
        EXPECT_EQ(Look(other_), before + (isText ? ",b=8" : ",a=7"));
        end();
        Begin(other_, isText);
        Outsider outsider(ConnectionText());
        outsider.Do(isText ? "alter table goods add column d integer default 8"
                           : "alter table goods add column c integer default 7");
        EXPECT_EQ(Look(other_), before + (isText ? ",b=8,d=8" : ",a=7,c=7"));
        end();
    }
}

// Looking for changes takes the locks of a reader, which a transaction keeps.
TEST_F(ChangedTablesTest, AreNotLookedForInATransactionByATextWithoutTables) {
    usleep(20000);
    ASSERT_TRUE(other_.Call(connection::kBeginTrans).Ok());
    EXPECT_EQ(Ask(other_, u"select 1 as x"), "1");
    Execute(connection_, u"insert into goods values (2, 3.5)");
    const Outcome written = other_.Call(connection::kExecute, {Text(u"insert into goods values (3, 4.5)")});
    EXPECT_TRUE(written.Ok()) << written;
    ASSERT_TRUE(other_.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
}

TEST_F(ChangedTablesTest, AreSeenByAQueryThatHasWaitedForTheChange) {
    for (const bool isOwn : {true, false}) {
        SCOPED_TRACE(isOwn);
        Outsider outsider(ConnectionText());
        const auto change = [&](const char* sql) { isOwn ? Execute(connection_, ToUtf16(sql)) : outsider.Do(sql); };
        const std::string before = Look(other_);
        change("begin exclusive");
        change(isOwn ? "alter table goods add column a integer default 7"
                     : "alter table goods add column b integer default 8");
        std::thread committing([&] {
            usleep(300'000);
            change("commit");
        });
        const std::string seen = Show(OpenRows(other_, u"select * from goods where 1 = 1", 1));
        committing.join();
        EXPECT_EQ(seen, before + (isOwn ? ",a=7" : ",b=8"));
    }
}

TEST_F(ChangedTablesTest, AreSeenByAQueryBesideTheChange) {
    const std::string before = Look(other_);
    const auto change = [&] { Execute(connection_, u"alter table goods add column a integer default 7"); };
    {
        const Meanwhile meanwhile(Meanwhile::When::BeforeText, change, "select * from goods where 1 = 1");
        EXPECT_EQ(Show(OpenRows(other_, u"select * from goods where 1 = 1", 1)), before + ",a=7");
    }
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods where id > ?"));
    made.Put(command::kPrepared, Value::Boolean(true));
    const auto show = [&] { return Show(made.Call(command::kExecute, {Omitted(), Array({Number(0)})}).Result()); };
    EXPECT_EQ(show(), before + ",a=7");
    const Meanwhile meanwhile(Meanwhile::When::BeforePrepared,
                              [&] { Execute(connection_, u"alter table goods add column b integer default 8"); });
    EXPECT_EQ(show(), before + ",a=7,b=8");
    EXPECT_EQ(show(), before + ",a=7,b=8");
}

TEST_F(ChangedTablesTest, WaitForAQueryThatPasses) {
    const std::string before = Look(other_);
    std::atomic<bool> isChanged = false;
    bool wasChanged = true;
    std::thread changing;
    {
        const Meanwhile meanwhile(
            Meanwhile::When::BeforeText,
            [&] {
                changing = std::thread([&] {
                    Execute(connection_, u"alter table goods add column a integer default 7");
                    isChanged = true;
                });
                usleep(50'000);
                wasChanged = isChanged;
            },
            "select * from goods where 1 = 1");
        Show(OpenRows(other_, u"select * from goods where 1 = 1", 1));
    }
    changing.join();
    EXPECT_FALSE(wasChanged);
    EXPECT_EQ(Look(other_), before + ",a=7");
}

TEST_F(ChangedTablesTest, StayWhileAQueryIsRunOnceMore) {
    Outsider outsider(u"Driver=SQLite3;Timeout=50;Database=" + ToUtf16((folder_ / "test.db").string()));
    const std::string before = Look(other_);
    constexpr const char* kText = "select * from goods where 1 = 1";
    bool isRefused = false;
    const Meanwhile meanwhile(
        Meanwhile::When::BeforeText,
        [&] {
            Execute(connection_, u"alter table goods add column a integer default 7");
            Meanwhile::Then(Meanwhile::When::BeforeText,
                            [&] { isRefused = !outsider.CanDo("alter table goods add column b integer default 8"); });
        },
        kText);
    EXPECT_EQ(Show(OpenRows(other_, ToUtf16(kText), 1)), before + ",a=7");
    EXPECT_TRUE(isRefused);
}

TEST_F(ChangedTablesTest, LoseNoCancellationWhileTheyAreLookedAt) {
    EXPECT_EQ(Look(other_), kBefore);
    usleep(20000);
    const Meanwhile meanwhile(Meanwhile::When::BeforeQuestion,
                              [&] { std::thread([&] { other_.Call(connection::kCancel); }).join(); });
    const Outcome cancelled = other_.Call(connection::kExecute, {Text(u"select * from goods where 1 = 1")});
    EXPECT_EQ(cancelled.Error(), 0x80040E4Eu) << cancelled;
}

// As it does when memory is short, for one.
TEST_F(ChangedTablesTest, OfADatabaseInMemorySurviveAQueryThatItUndoes) {
    const Object inMemory = Object::Create(kConnectionClass);
    ASSERT_TRUE(inMemory.Call(connection::kOpen, {Text(u"Driver=SQLite3;Database=:memory:")}).Ok());
    inMemory.Put(connection::kCursorLocation, Number(3));
    Execute(inMemory, u"create table item (id integer)");
    Execute(inMemory, u"insert into item values (1)");
    usleep(20000);
    {
        const Meanwhile meanwhile(
            Meanwhile::When::BeforeText,
            [] {
                std::string undo = "rollback";
                ::SQLExecDirect(Meanwhile::Statement(), reinterpret_cast<SQLCHAR*>(undo.data()), SQL_NTS);
                ::SQLFreeStmt(Meanwhile::Statement(), SQL_CLOSE);
            },
            FindProfile("sqlite").definitions->release);
        EXPECT_EQ(Ask(inMemory, u"select count(*) from item"), "1");
    }
    EXPECT_EQ(Ask(inMemory, u"select count(*) from item"), "1");
    Execute(inMemory, u"begin");
    Execute(inMemory, u"insert into item values (2)");
    Execute(inMemory, u"rollback");
    EXPECT_EQ(Ask(inMemory, u"select count(*) from item"), "1");
}

TEST_F(ChangedTablesTest, AreSeenBeforeTheSessionThatChangedThemGoesOn) {
    const std::string before = Look(other_);
    std::string seen;
    const auto look = [&] { seen = Look(other_); };
    {
        const Meanwhile meanwhile(Meanwhile::When::BehindText, look,
                                  "alter table goods add column a integer default 7");
        Execute(connection_, u"alter table goods add column a integer default 7");
    }
    EXPECT_EQ(seen, before + ",a=7");
    ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
    Execute(connection_, u"alter table goods add column b integer default 8");
    Look(other_);
    const Meanwhile meanwhile(Meanwhile::When::BehindCommit, look);
    ASSERT_TRUE(connection_.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(seen, before + ",a=7,b=8");
}

// Each of two queries beside the change: what the first one has found tells nothing to the second one.
TEST_F(ChangedTablesTest, AreSeenByWhoeverAsksWhileTheyAreBeingChanged) {
    for (int i = 0; i < 10; ++i) {
        const std::string before = Look(other_);
        const std::string text = "alter table goods add column a" + std::to_string(i) + " integer default 7";
        std::string seen;
        {
            const Meanwhile meanwhile(
                Meanwhile::When::BeforeText,
                [&] {
                    EXPECT_EQ(Look(other_), before);
                    Meanwhile::Then(Meanwhile::When::BehindText, [&] { seen = Look(other_); });
                },
                text.c_str());
            Execute(connection_, ToUtf16(text));
        }
        EXPECT_EQ(seen, before + ",a" + std::to_string(i) + "=7");
    }
}

// The driver would read behind the end of its row.
TEST_F(ChangedTablesTest, MayHaveFewerColumns) {
    const auto make = [&](int columns, bool hasRow) {
        std::string names = "'x' as c0";
        for (int i = 1; i < columns; ++i)
            names += ", 'x' as c" + std::to_string(i);
        Execute(connection_, u"drop table goods");
        Execute(connection_, ToUtf16("create table goods as select " + names + (hasRow ? "" : " where 1 = 0")));
    };
    Outsider outsider(ConnectionText());
    for (const bool hasRow : {true, false}) {
        for (const auto& [many, few] : {std::pair(5, 2), std::pair(4, 3), std::pair(12, 1)}) {
            SCOPED_TRACE(many);
            make(many, hasRow);
            const Object rows = OpenRows(other_, u"select * from goods where 1 = 1", 1);
            EXPECT_EQ(rows.Get(recordset::kFields).Result().Get(collection::kCount).Long(), many);
            make(few, hasRow);
            rows.Call(recordset::kRequery);
            EXPECT_EQ(rows.Get(recordset::kFields).Result().Get(collection::kCount).Long(), few);
        }
    }
    outsider.Do("drop table goods");
    outsider.Do("create table goods as select 'x' as c0");
    EXPECT_EQ(Look(other_), "c0=x");
}

// Changes of tables that it does not name are no reason to run a query again.
TEST_F(ChangedTablesTest, DoNotKeepAQueryFromItsEnd) {
    Execute(connection_,
            u"create table big as with recursive up(n) as (select 1 union all select n + 1 from up where n < 2000) "
            u"select n from up");
    std::atomic<bool> isOver = false;
    std::thread defining([&] {
        const Object own = Connect();
        while (!isOver) {
            own.Call(connection::kExecute, {Text(u"create table if not exists scratch (x)")});
            usleep(5000);
            own.Call(connection::kExecute, {Text(u"drop table if exists scratch")});
            usleep(5000);
        }
    });
    other_.Put(connection::kCommandTimeout, Number(60));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Ask(other_, u"select count(*) from big a, big b where a.n + b.n > 3"), "3999997");
    isOver = true;
    defining.join();
}

TEST_F(ChangedTablesTest, StayAsALargeResultHasFoundThem) {
    Outsider outsider(u"Driver=SQLite3;Timeout=50;Database=" + ToUtf16((folder_ / "test.db").string()));
    const std::string before = Look(other_);
    bool isRefused = false;
    const Meanwhile meanwhile(
        Meanwhile::When::BeforeText,
        [&] { isRefused = !outsider.CanDo("alter table goods add column stock integer default 7"); },
        "select * from goods as large");
    EXPECT_EQ(Show(OpenRows(other_, u"select * from goods as large", 1)), before);
    EXPECT_TRUE(isRefused);
    outsider.Do("alter table goods add column stock integer default 7");
    EXPECT_EQ(Look(other_), before + ",stock=7");
}

TEST_F(ChangedTablesTest, AreSeenInAttachedDatabases) {
    const std::string file = (folder_ / "side.db").string();
    Outsider outsider(u"Driver=SQLite3;Database=" + ToUtf16(file));
    outsider.Do("create table wares (id integer)");
    outsider.Do("insert into wares values (1)");
    Execute(other_, ToUtf16("attach '" + file + "' as \"the \"\"side\""));
    const auto show = [&](const char16_t* text) { return Show(OpenRows(other_, text, 1)); };
    EXPECT_EQ(show(u"select * from wares"), "id=1");
    outsider.Do("alter table wares add column stock integer default 7");
    EXPECT_EQ(show(u"select * from wares"), "id=1,stock=7");
    outsider.Do("alter table wares rename column stock to held");
    EXPECT_EQ(show(u"select * from \"the \"\"side\".wares where 1 = 1"), "id=1,held=7");
    Change(connection_);
    EXPECT_EQ(show(u"select * from goods"), kAfter);
    // The name is one of the main database's now, and of the attached one's again.
    Execute(connection_, u"create table wares (name text)");
    Execute(connection_, u"insert into wares values ('tea')");
    EXPECT_EQ(show(u"select * from wares"), "name=tea");
    Execute(connection_, u"drop table wares");
    EXPECT_EQ(show(u"select * from wares"), "id=1,held=7");
    Execute(other_, u"begin");
    outsider.Do("alter table wares rename column held to stock");
    EXPECT_EQ(show(u"select * from wares"), "id=1,stock=7");
    Execute(other_, u"commit");
    // Forgotten with everything else, and not needed by the first query of a transaction.
    Execute(other_, u"create temp table own (x)");
    outsider.Do("alter table wares rename column stock to held");
    Begin(other_, false);
    EXPECT_EQ(show(u"select * from goods"), kAfter);
    EXPECT_EQ(show(u"select * from wares"), "id=1,held=7");
    EXPECT_TRUE(other_.Call(connection::kCommitTrans).Ok());
}

TEST_F(ChangedTablesTest, OfADatabaseThatIsNotAskedMayBeLocked) {
    const std::string file = (folder_ / "side.db").string();
    Outsider outsider(u"Driver=SQLite3;Database=" + ToUtf16(file));
    outsider.Do("create table wares (id integer)");
    const Object hasty = Connect(u";Timeout=300");
    Execute(hasty, ToUtf16("attach '" + file + "' as side"));
    EXPECT_EQ(Look(hasty), kBefore);
    outsider.Do("begin exclusive");
    EXPECT_EQ(Look(hasty), kBefore);
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, hasty.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods where id >= ? and price > ?"));
    EXPECT_EQ(Show(made.Call(command::kExecute, {Omitted(), Array({Number(1), Number(2)})}).Result()), kBefore);
    Change(connection_);
    EXPECT_EQ(Look(hasty), kAfter);
    const Outcome asked = hasty.Call(connection::kExecute, {Text(u"select * from goods, wares")});
    EXPECT_NE(asked.description.find(u"database is locked"), std::u16string::npos) << asked;
    outsider.Do("commit");
    EXPECT_EQ(Look(hasty), kAfter);
}

TEST_F(ChangedTablesTest, ThatATransactionDoesNotReadStayUnlocked) {
    for (const bool isWal : {false, true}) {
        SCOPED_TRACE(isWal);
        const Object on = Connect();
        if (isWal) Execute(on, u"pragma journal_mode=wal");
        Execute(on, u"create temp table own (x)");
        Execute(on, u"insert into own values (1)");
        usleep(20000);
        ASSERT_TRUE(on.Call(connection::kBeginTrans).Ok());
        EXPECT_EQ(Show(OpenRows(on, u"select * from own", 1)), "x=1");
        EXPECT_EQ(Ask(on, u"with one as (select 1 as x) select x from one"), "1");
        Execute(connection_, u"insert into goods values (3, 3)");
        Execute(on, u"insert into goods values (4, 4)");
        EXPECT_TRUE(on.Call(connection::kCommitTrans).Ok());
    }
}

TEST_F(ChangedTablesTest, OfAnUnreadableDatabaseMatterToWhoAsksIt) {
    const std::string file = (folder_ / "side.db").string();
    const Object on = Connect();
    Execute(on, ToUtf16("attach '" + file + "' as side"));
    Execute(on, u"create table side.wares (id integer)");
    EXPECT_EQ(Look(on), kBefore);
    usleep(20000);
    std::ofstream(file) << std::string(4096, '?');
    EXPECT_EQ(Look(on), kBefore);
    const Outcome asked = on.Call(connection::kExecute, {Text(u"select * from wares")});
    EXPECT_NE(asked.description.find(u"file is not a database"), std::u16string::npos) << asked;
    Execute(on, u"detach side");
    EXPECT_EQ(Look(on), kBefore);
}

TEST_F(ChangedTablesTest, AreSeenByTextsThatMayTouchTheSession) {
    EXPECT_EQ(Look(other_), kBefore);
    Change(connection_);
    EXPECT_EQ(Show(OpenRows(other_, u"select * from goods as temp", 1)), kAfter);
    EXPECT_EQ(Show(OpenRows(connection_, u"select * from goods as session where '@' <> '#'", 1)), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenWhereTheDriverStepsThroughRows) {
    const Object stepping = Connect(u";StepAPI=1");
    EXPECT_EQ(Look(stepping), kBefore);
    Change(connection_);
    EXPECT_EQ(Look(stepping), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenInMemoryToo) {
    const std::string file = (folder_ / "side.db").string();
    Outsider outsider(u"Driver=SQLite3;Database=" + ToUtf16(file));
    outsider.Do("create table wares (id integer)");
    outsider.Do("insert into wares values (1)");
    const Object inMemory = Object::Create(kConnectionClass);
    ASSERT_TRUE(inMemory.Call(connection::kOpen, {Text(u"Driver=SQLite3;Database=:memory:")}).Ok());
    inMemory.Put(connection::kCursorLocation, Number(3));
    Execute(inMemory, ToUtf16("attach '" + file + "' as side"));
    EXPECT_EQ(Show(OpenRows(inMemory, u"select * from wares", 1)), "id=1");
    outsider.Do("alter table wares add column stock integer default 7");
    EXPECT_EQ(Show(OpenRows(inMemory, u"select * from wares", 1)), "id=1,stock=7");
}

TEST_F(ChangedTablesTest, AreWrittenAsTheyAre) {
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"alter table goods add column stock integer default 7");
    Execute(other_, u"insert into goods values (2, 3.5, 8)");
    EXPECT_EQ(Ask(other_, u"select count(*) from goods"), "2");
    Outsider outsider(ConnectionText());
    outsider.Do("alter table goods add column name text");
    Execute(other_, u"insert into goods select 3, 4.5, 9, 'tea' union all select 4, 5.5, 9, 'milk'");
    EXPECT_EQ(Ask(other_, u"select count(*) from goods"), "4");
    // What does not fit is said once, and nothing is done.
    const Outcome refused = other_.Call(connection::kExecute, {Text(u"insert into goods values (5)")});
    EXPECT_NE(refused.description.find(u"table goods has 4 columns but 1 values were supplied"), std::u16string::npos)
        << refused;
    EXPECT_EQ(Ask(other_, u"select count(*) from goods"), "4");
    // A transaction gets no lock by that.
    ASSERT_TRUE(other_.Call(connection::kBeginTrans).Ok());
    EXPECT_FALSE(other_.Call(connection::kExecute, {Text(u"insert into goods values (5)")}).Ok());
    Execute(connection_, u"insert into goods values (5, 6.5, 9, 'tea')");
    Execute(other_, u"insert into goods values (6, 7.5, 9, 'milk')");
    ASSERT_TRUE(other_.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(Ask(other_, u"select count(*) from goods"), "6");
}

/// Another program gets an exclusive lock before a query looks at its tables.
class LockBeforeLook {
public:
    explicit LockBeforeLook(const std::u16string& text)
        : outsider_(text), meanwhile_(Meanwhile::When::BeforeQuestion, [this] {
              outsider_.Do("begin exclusive");
              isLocked = true;
          }) {}

    void Release() { outsider_.Do("commit"); }

    std::atomic<bool> isLocked = false;

private:
    Outsider outsider_;
    Meanwhile meanwhile_;
};

TEST_F(ChangedTablesTest, AreLookedAtWhenALockIsGone) {
    const std::string before = Look(other_);
    usleep(20000);
    LockBeforeLook lock(ConnectionText());
    std::thread releasing([&] {
        while (!lock.isLocked)
            usleep(1000);
        usleep(300'000);
        lock.Release();
    });
    EXPECT_EQ(Show(OpenRows(other_, u"select * from goods where 1 = 1", 1)), before);
    releasing.join();
}

TEST_F(ChangedTablesTest, AreWaitedForNoLongerThanTheTimeForLocks) {
    const Object hasty = Connect(u";Timeout=300");
    EXPECT_EQ(Look(hasty), kBefore);
    usleep(20000);
    LockBeforeLook lock(ConnectionText());
    const Outcome opened = hasty.Call(connection::kExecute, {Text(u"select * from goods where 1 = 1")});
    EXPECT_NE(opened.description.find(u"database is locked"), std::u16string::npos) << opened;
    lock.Release();
    EXPECT_EQ(Look(hasty), kBefore);
}

TEST_F(ChangedTablesTest, AreWaitedForNoLongerThanTheStatementMayTake) {
    const Object patient = Connect(u";Timeout=20000");
    EXPECT_EQ(Look(patient), kBefore);
    usleep(20000);
    patient.Put(connection::kCommandTimeout, Number(1));
    LockBeforeLook lock(ConnectionText());
    const Outcome opened = patient.Call(connection::kExecute, {Text(u"select * from goods where 1 = 1")});
    EXPECT_EQ(opened.Error(), 0x80040E31u) << opened;
    lock.Release();
    EXPECT_EQ(Look(patient), kBefore);
}

TEST_F(ChangedTablesTest, AreWaitedForInsideOfTheTimeThatTheStatementMayTake) {
    const Object patient = Connect(u";Timeout=20000");
    EXPECT_EQ(Look(patient), kBefore);
    usleep(20000);
    patient.Put(connection::kCommandTimeout, Number(2));
    LockBeforeLook lock(ConnectionText());
    std::thread releasing([&] {
        while (!lock.isLocked)
            usleep(1000);
        usleep(1'500'000);
        lock.Release();
    });
    const DWORD start = GetTickCount();
    const Outcome opened =
        patient.Call(connection::kExecute,
                     {Text(u"with recursive up(n) as (select 1 union all select n + 1 from up) select count(*) "
                           u"from up, goods")});
    releasing.join();
    EXPECT_EQ(opened.Error(), 0x80040E31u) << opened;
    EXPECT_LT(GetTickCount() - start, 3200u);
}

TEST_F(ChangedTablesTest, AreWaitedForNoLongerThanUntilACancellation) {
    const Object patient = Connect(u";Timeout=20000");
    EXPECT_EQ(Look(patient), kBefore);
    usleep(20000);
    LockBeforeLook lock(ConnectionText());
    std::thread cancelling([&] {
        while (!lock.isLocked)
            usleep(1000);
        usleep(50000);
        patient.Call(connection::kCancel);
    });
    const Outcome opened = patient.Call(connection::kExecute, {Text(u"select * from goods where 1 = 1")});
    cancelling.join();
    EXPECT_EQ(opened.Error(), 0x80040E4Eu) << opened;
    lock.Release();
    EXPECT_EQ(Look(patient), kBefore);
}

TEST_F(ChangedTablesTest, AreSeenByAPreparedCommand) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods"));
    made.Put(command::kPrepared, Value::Boolean(true));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Show(made.Call(command::kExecute).Result()), kBefore);
    Change(connection_);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Show(made.Call(command::kExecute).Result()), kAfter);
    // By the session itself as well.
    Execute(other_, u"alter table goods add column stock integer default 7");
    EXPECT_EQ(Show(made.Call(command::kExecute).Result()), std::string(kAfter) + ",stock=7");
}

TEST_F(ChangedTablesTest, AreSeenByAPreparedCommandBehindAnotherQuery) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods"));
    made.Put(command::kPrepared, Value::Boolean(true));
    EXPECT_EQ(Show(made.Call(command::kExecute).Result()), kBefore);
    Change(connection_);
    EXPECT_EQ(Look(other_), kAfter);
    EXPECT_EQ(Show(made.Call(command::kExecute).Result()), kAfter);
    // With its rows still there.
    Object rows = made.Call(command::kExecute).Result();
    Execute(connection_, u"alter table goods add column stock integer default 7");
    EXPECT_EQ(Look(other_), std::string(kAfter) + ",stock=7");
    rows = Object();
    EXPECT_EQ(Show(made.Call(command::kExecute).Result()), std::string(kAfter) + ",stock=7");
}

TEST_F(ChangedTablesTest, AreSeenByAPreparedCommandOfWhatWasUndone) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods"));
    made.Put(command::kPrepared, Value::Boolean(true));
    for (const bool isText : {false, true}) {
        SCOPED_TRACE(isText);
        Begin(other_, isText);
        Execute(other_, u"alter table goods add column undone integer default 7");
        EXPECT_TRUE(Show(made.Call(command::kExecute).Result()).ends_with(",undone=7"));
        isText ? Execute(other_, u"rollback") : static_cast<void>(other_.Call(connection::kRollbackTrans));
        // Counted as the change that was undone.
        Execute(connection_, isText ? u"alter table goods add column n integer default 8"
                                    : u"alter table goods add column m integer default 8");
        const std::string now = Show(made.Call(command::kExecute).Result());
        EXPECT_TRUE(now.ends_with(isText ? ",m=8,n=8" : ",m=8")) << now;
    }
}

TEST_F(ChangedTablesTest, AreSeenAfterTheDatabaseHasUndoneOthers) {
    Execute(connection_, u"create unique index one on goods (id)");
    for (const bool isText : {false, true}) {
        SCOPED_TRACE(isText);
        const std::string before = Look(other_);
        const Object made = Object::Create(kCommandClass);
        made.PutRef(command::kActiveConnection, other_.AsValue());
        made.Put(command::kCommandText, Text(u"select * from goods"));
        made.Put(command::kPrepared, Value::Boolean(true));
        Begin(other_, isText);
        Execute(other_, u"alter table goods add column undone integer default 7");
        EXPECT_EQ(Show(made.Call(command::kExecute).Result()), before + ",undone=7");
        EXPECT_FALSE(other_.Call(connection::kExecute, {Text(u"insert or rollback into goods (id) values (1)")}).Ok());
        if (!isText) other_.Call(connection::kRollbackTrans);
        // Counted as the change that was undone.
        Execute(connection_, isText ? u"alter table goods add column n integer default 8"
                                    : u"alter table goods add column m integer default 8");
        EXPECT_EQ(Show(made.Call(command::kExecute).Result()), before + (isText ? ",n=8" : ",m=8"));
    }
}

// A definition that fails is none of other tables.
TEST_F(ChangedTablesTest, AreDefinedOnce) {
    const SentTexts sent;
    EXPECT_FALSE(connection_.Call(connection::kExecute, {Text(u"create table goods (x)")}).Ok());
    EXPECT_FALSE(connection_.Call(connection::kExecute, {Text(u"drop table nosuch")}).Ok());
    EXPECT_EQ(sent.Take(), (std::vector<std::string>{"create table goods (x)", "drop table nosuch"}));
}

TEST_F(ChangedTablesTest, AreSeenInLargeResults) {
    const auto fill = [&](const char16_t* row) {
        std::u16string text = u"insert into goods select ";
        text += row;
        text +=
            u" from (with recursive up(n) as (select 1 union all select n + 1 from up where n < 20000) select n "
            u"from up)";
        Execute(connection_, text);
    };
    fill(u"1, 2.5");
    for (int i = 0; i < 2; ++i) {
        const Object rows = OpenRows(other_, u"select * from goods", 1);
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 20001);
        EXPECT_EQ(Show(rows), kBefore);
    }
    Change(connection_);
    fill(u"'A', 'tea', 9.75");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Look(other_), kAfter);
}

TEST_F(ChangedTablesTest, OfAnotherProgramAreSeenSomeMillisecondsLater) {
    EXPECT_EQ(Look(other_), kBefore);
    Outsider outsider(ConnectionText());
    outsider.Do("alter table goods add column stock integer default 7");
    EXPECT_EQ(Look(other_), std::string(kBefore) + ",stock=7");
    const Object rows = OpenRows(connection_, u"select * from goods");
    outsider.Do("alter table goods rename column stock to held");
    const Outcome again = rows.Call(recordset::kRequery);
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Show(rows), std::string(kBefore) + ",held=7");
    EXPECT_EQ(LookByText(), std::string(kBefore) + ",held=7");
}

// Whatever a query shows, each value stands under its own name.
TEST_F(ChangedTablesTest, AreNeverMixedWithWhatTheyWere) {
    Execute(connection_, u"drop table goods");
    Execute(connection_, u"create table goods as select 'a' as a, 'b' as b");
    constexpr int kRows = 150;
    std::atomic<int> seen = 0;
    std::atomic<int> changes = 0;
    std::thread changing([&] {
        for (; seen < kRows; ++changes) {
            connection_.Call(connection::kBeginTrans);
            Execute(connection_, u"drop table goods");
            Execute(connection_, changes % 2 != 0 ? u"create table goods as select 'a' as a, 'b' as b"
                                                  : u"create table goods as select 'b' as b, 'c' as c, 'a' as a");
            connection_.Call(connection::kCommitTrans);
            usleep(static_cast<useconds_t>(changes % 7) * 300);
        }
    });
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods"));
    made.Put(command::kPrepared, Value::Boolean(true));
    const auto check = [&](const Object& rows) {
        const std::string row = Show(rows);
        EXPECT_TRUE(row == "a=a,b=b" || row == "b=b,c=c,a=a") << row;
        ++seen;
    };
    while (seen < kRows) {
        check(OpenRows(other_, u"select * from goods where 1 = 1", 1));
        // One that has not been seen to be small.
        check(OpenRows(other_, u"select * from goods as g" + ToUtf16(std::to_string(seen)), 1));
        check(made.Call(command::kExecute).Result());
    }
    changing.join();
    EXPECT_GT(changes, 5);
}

TEST_F(ChangedTablesTest, AreUpdatedByTheirNewColumns) {
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"drop table goods");
    Execute(connection_, u"create table goods (price double, id integer primary key)");
    Execute(connection_, u"insert into goods values (3, 8)");
    const Object rows = OpenRows(other_, u"select * from goods");
    EXPECT_EQ(Show(rows), "price=3,id=8");
    PutValue(rows, u"price", Number(4));
    const Outcome updated = rows.Call(recordset::kUpdate);
    EXPECT_TRUE(updated.Ok()) << updated;
    EXPECT_EQ(Look(connection_), "price=4,id=8");
}

}  // namespace
}  // namespace tk::ado::test
