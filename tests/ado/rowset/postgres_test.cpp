#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "ado/odbc/odbc_api.h"
#include "ado/rowset/postgres_test.h"
#include "ado/support/utf8.h"

namespace tk::ado {
namespace {

using test::Do;
using test::Postgres;
using test::Query;
using test::Show;
using test::Utf8;

TEST_F(Postgres, ReadsEveryColumnType) {
    const auto session = Open();
    Do(*session, "drop table if exists item");
    Do(*session,
       "create table item (i integer primary key, sm smallint, bi bigint, b boolean, r real, d double precision, "
       "n numeric(12,2), wide numeric(40,5), vc varchar(20), c char(5), tx text, by bytea, dt date, tm time(6), "
       "ts timestamp, g uuid, j json)");
    Do(*session, Utf8(u8"insert into item values (1, -2, 9007199254740993, true, 1.5, 0.1, 12.50, "
                      "12345678901234567890123456789012345.12345, '中文é€𠀀', 'ab', 'long', '\\x4142ff', '2003-07-04', "
                      "'13:05:09.25', '2003-07-04 13:05:09.123456', 'a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11', '{}')"));
    Do(*session, "insert into item (i) values (2)");
    const struct {
        LONG type;
        std::string value;
    } expected[] = {
        {3, "I4 1"},
        {2, "I2 -2"},
        {20, "DECIMAL 9007199254740993"},
        {11, "BOOL true"},
        {4, "R4 1.5"},
        {5, "R8 0.10000000000000001"},
        {131, "DECIMAL 12.50"},
        {131, "BSTR 12345678901234567890123456789012345.12345"},
        {200, "BSTR " + Utf8(u8"中文é€𠀀")},
        {129, "BSTR ab   "},
        {201, "BSTR long"},
        {205, "BYTES 4142ff"},
        {133, "DATE 2003-07-04 00:00:00"},
        {134, "DATE 1899-12-30 13:05:09.25"},
        {135, "DATE 2003-07-04 13:05:09.123"},
        {72, "BSTR {A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11}"},
    };
    for (const char* sql : {"select * from item order by i", "select * from item where i > 0 order by i"}) {
        SCOPED_TRACE(sql);
        const auto rows = Query(session, sql);
        ASSERT_EQ(rows->CountRows(), 2u);
        for (std::size_t column = 0; column < std::size(expected); ++column) {
            SCOPED_TRACE(column);
            EXPECT_EQ(rows->Columns()[column].type, expected[column].type);
            EXPECT_EQ(Show(*rows, 0, column), expected[column].value);
            EXPECT_EQ(Show(*rows, 1, column), column == 0 ? "I4 2" : "NULL");
        }
        EXPECT_EQ(rows->At(0, 14).integer, 123456000);  // every digit of the second is kept
    }
}

TEST_F(Postgres, ShowsMomentsThatAreNoDateAsTexts) {
    const auto session = Open();
    Do(*session, "drop table if exists moment");
    Do(*session, "create table moment (id integer primary key, d date, ts timestamp, tz timestamptz)");
    const struct {
        const char* label;
        const char* value;
        const char* date;
        const char* stamp;
    } rows[] = {
        {"plain", "'2003-07-04'", "DATE 2003-07-04 00:00:00", "DATE 2003-07-04 00:00:00"},
        {"infinity", "'infinity'", "BSTR infinity", "BSTR infinity"},
        {"-infinity", "'-infinity'", "BSTR -infinity", "BSTR -infinity"},
        {"five digits", "'20000-02-03'", "BSTR 20000-02", "BSTR 20000-02"},
        {"today", "current_date", nullptr, nullptr},
        {"yesterday", "current_date - 1", nullptr, nullptr},
        {"a year ago today", "(current_date - interval '1 year')::date", nullptr, nullptr},
        {"last day", "'9999-12-31'", "DATE 9999-12-31 00:00:00", "DATE 9999-12-31 00:00:00"},
        {"before our era", "'0044-03-15 BC'", nullptr, "BSTR 0044-03-15 00:00:00 BC"},
        {"early", "'0050-01-01'", "BSTR 0050-01-01", "BSTR 0050-01-01 00:00:00"},
        {"null", "null", "NULL", "NULL"},
    };
    int count = 0;
    for (const auto& row : rows) {
        const std::string value = "(" + std::string(row.value) + ")";
        const std::string number = std::to_string(++count);
        Do(*session, "insert into moment select " + number + ", " + value + "::text::date, " + value +
                         "::text::timestamp, " + value + "::text::timestamptz");
    }
    const auto texts = Query(session, "select d::text from moment order by id");
    for (const char* sql : {"select * from moment order by id", "select * from moment"}) {
        SCOPED_TRACE(sql);
        const auto read = Query(session, sql);
        ASSERT_EQ(read->CountRows(), std::size(rows));
        for (std::size_t i = 0; i < std::size(rows); ++i) {
            SCOPED_TRACE(rows[i].label);
            if (rows[i].stamp == nullptr) {
                // A moment that is today or was a year ago is looked at twice and stays a date.
                const std::string date = Show(*texts, i, 0).substr(5);
                for (std::size_t column = 1; column <= 3; ++column)
                    EXPECT_EQ(Show(*read, i, column), "DATE " + date + " 00:00:00");
                continue;
            }
            if (rows[i].date != nullptr) {
                EXPECT_EQ(Show(*read, i, 1), rows[i].date);
            }
            EXPECT_EQ(Show(*read, i, 2), rows[i].stamp);
            EXPECT_EQ(Show(*read, i, 3), rows[i].stamp);
        }
    }
    EXPECT_EQ(Show(*Query(session, "select '9999-12-31 23:59:59'::timestamp"), 0, 0), "DATE 9999-12-31 23:59:59");
}

TEST_F(Postgres, ReadsManyMomentsOfToday) {
    const auto session = Open();
    const auto rows = Query(session,
                            "select i, current_date, current_date::timestamp, case when i % 100 = 0 then "
                            "'infinity'::timestamp else current_date + i * interval '1 second' end, "
                            "current_date::text from generate_series(1, 3000) i");
    ASSERT_EQ(rows->CountRows(), 3000u);
    const std::string today = "DATE " + Show(*rows, 0, 4).substr(5) + " 00:00:00";
    for (std::size_t i = 0; i < 3000; ++i) {
        ASSERT_EQ(Show(*rows, i, 1), today);
        ASSERT_EQ(Show(*rows, i, 2), today);
        ASSERT_EQ(Show(*rows, i, 3) == "BSTR infinity", (i + 1) % 100 == 0) << i;
    }
}

TEST_F(Postgres, ReadsResultsOfEverySizeWhole) {
    const auto session = Open();
    for (const int count : {0, 1, 15, 16, 17, 255, 256, 257, 1023, 1024, 1279, 1280, 1281, 4000, 20000}) {
        for (const char* limit : {"", " where true"}) {
            SCOPED_TRACE(std::to_string(count) + limit);
            const auto rows = Query(session,
                                    "select i, 'n'||i as name, case when i % 3 <> 0 then i end as third from "
                                    "generate_series(1," +
                                        std::to_string(count) + ") i" + limit);
            std::size_t row = 0;
            for (; rows->HasRow(row); ++row) {
                ASSERT_EQ(rows->At(row, 0).integer, static_cast<long long>(row) + 1);
                ASSERT_EQ(rows->TextAt(row, 1), "n" + std::to_string(row + 1));
                ASSERT_EQ(rows->IsNull(row, 2), (row + 1) % 3 == 0);
            }
            EXPECT_EQ(row, static_cast<std::size_t>(count));
        }
    }
}

TEST_F(Postgres, ReadsTextsAndBytesOfEveryLength) {
    const auto session = Open();
    Do(*session, "drop table if exists texts");
    Do(*session, "create table texts (id integer, short varchar(60000), note text, data bytea)");
    const std::size_t lengths[] = {0,    1,    31,   32,    33,    254,   255,   256,   257,     1022, 1023,  1024,
                                   1025, 4096, 8191, 32767, 32768, 65535, 65536, 65537, 1000000, 1,    300000};
    int id = 0;
    for (const std::size_t length : lengths) {
        const std::string size = std::to_string(length);
        Do(*session, "insert into texts values (" + std::to_string(++id) + ", repeat('s', least(" + size +
                         ", 60000)), repeat('x', " + size + "), decode(repeat('00', " + size + "), 'hex'))");
    }
    for (const char* sql : {"select id, short, note, data from texts order by id",
                            "select id, short, note, data from texts order by id limit 99"}) {
        SCOPED_TRACE(sql);
        const auto rows = Query(session, sql);
        ASSERT_EQ(rows->CountRows(), std::size(lengths));
        for (std::size_t row = 0; row < std::size(lengths); ++row) {
            SCOPED_TRACE(lengths[row]);
            EXPECT_TRUE(rows->TextAt(row, 1) == std::string(std::min<std::size_t>(lengths[row], 60000), 's'));
            EXPECT_TRUE(rows->TextAt(row, 2) == std::string(lengths[row], 'x'));
            EXPECT_TRUE(rows->At(row, 3).text == std::string(lengths[row], '\0'));
        }
    }
}

TEST_F(Postgres, GivesSmallNumbersForCounts) {
    const auto session = Open();
    EXPECT_EQ(Show(*Query(session, "select count(*) from generate_series(1,10)"), 0, 0), "I4 10");
    EXPECT_EQ(Show(*Query(session, "select 5000000000"), 0, 0), "DECIMAL 5000000000");
}

TEST_F(Postgres, TellsBaseTablesAndKeys) {
    const auto session = Open();
    Do(*session, "drop table if exists owner");
    Do(*session, "create table owner (id serial primary key, name varchar(20) not null)");
    const auto rows = Query(session, "select name as n, id, upper(name) as u from owner");
    rows->DescribeOrigins();
    const auto& columns = rows->Columns();
    EXPECT_EQ(columns[0].baseTable, "owner");
    EXPECT_EQ(columns[0].baseColumn, "name");
    EXPECT_FALSE(columns[0].isKey);
    EXPECT_EQ(columns[1].baseColumn, "id");
    EXPECT_TRUE(columns[1].isKey);
    EXPECT_TRUE(columns[1].isAutoIncrement);
    EXPECT_TRUE(columns[2].isExpression);
}

TEST_F(Postgres, ReportsWhatTheServerSays) {
    const auto session = Open();
    Do(*session, "drop table if exists dup");
    Do(*session, "create table dup (id integer primary key, name varchar(3))");
    Do(*session, "insert into dup values (1, 'a')");
    const struct {
        const char* sql;
        unsigned code;
        std::u16string_view start;
    } rows[] = {
        {"selec 1", 0x80040E14, u"语法错误："},
        {"select * from missing", 0x80040E37, u"对象不存在："},
        {"select missing from dup", 0x80040E14, u"对象不存在："},
        {"insert into dup values (1, 'b')", 0x80040E2F, u"违反约束："},
        {"insert into dup values (2, 'abcd')", 0x80040E57, u"数据溢出："},
        {"select 'x'::integer", 0x80040E07, u"ERROR"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sql);
        std::u16string text;
        EXPECT_EQ(Failure([&] { Query(session, row.sql); }, &text), row.code);
        EXPECT_TRUE(text.starts_with(row.start));
    }
}

TEST_F(Postgres, KeepsAServersTimeLimit) {
    const auto session = Open();
    ExecuteOptions options;
    options.timeoutSeconds = 1;
    std::u16string text;
    EXPECT_EQ(Failure([&] { session->Execute("select pg_sleep(20)", options); }, &text), 0x80040E31u);
    EXPECT_TRUE(text.starts_with(u"超时："));
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST_F(Postgres, IsCancelledFromAnotherThread) {
    const auto session = Open();
    std::thread canceller([&] {
        usleep(300'000);
        session->Cancel();
    });
    std::u16string text;
    EXPECT_EQ(Failure([&] { session->Execute("select pg_sleep(20)", {}); }, &text), 0x80040E4Eu);
    canceller.join();
    EXPECT_TRUE(text.starts_with(u"已取消："));
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST_F(Postgres, GivesSeveralResultsOneAfterTheOther) {
    const auto session = Open();
    Do(*session, "drop table if exists batch");
    auto rows = Query(session,
                      "create table batch (id integer); insert into batch values (1),(2); select * from batch; "
                      "select 'end'");
    // The first result has no rows: the fetch is the caller's to skip.
    Statement first = session->Execute("select 1 as a; update batch set id = id + 1; select 'end' as b", {});
    rows = RowSet::Fetch(std::move(first), session, {});
    EXPECT_EQ(Show(*rows, 0, 0), "I4 1");
    auto next = rows->TakeNextResult();
    ASSERT_NE(next, nullptr);
    EXPECT_FALSE(next->HasRows());
    EXPECT_EQ(next->RowsAffected(), 2);
    ASSERT_TRUE(next->MoreResults());
    ASSERT_TRUE(next->HasRows());
    rows = RowSet::Fetch(std::move(*next), session, {});
    EXPECT_EQ(Show(*rows, 0, 0), "BSTR end");
    EXPECT_EQ(rows->TakeNextResult(), nullptr);
}

TEST_F(Postgres, SendsParametersByTheirColumnsType) {
    const auto session = Open();
    Do(*session, "drop table if exists par");
    Do(*session,
       "create table par (i integer, n numeric(12,2), vc varchar(20), ts timestamp, dt date, b boolean, by bytea, "
       "g uuid, bi bigint)");
    Do(*session,
       "insert into par values (1, 12.50, 'a', '2003-07-04 13:05:09.123456', '2003-07-04', true, '\\x00ff', "
       "'a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11', 9007199254740993)");
    const auto rows = Query(session, "select * from par");
    const auto& columns = rows->Columns();
    // Every cell finds its own row again.
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string name(columns[i].name.begin(), columns[i].name.end());
        SCOPED_TRACE(name);
        Parameter parameter;
        parameter.cell = rows->At(0, i);
        parameter.column = &columns[i];
        EXPECT_EQ(RowSet::Fetch(session->Execute("select 1 from par where " + name + " = ?",
                                                 std::span<const Parameter>(&parameter, 1), {}),
                                session, {})
                      ->CountRows(),
                  1u);
    }
    // NULLs and texts reach columns of every type.
    VARIANT null = {};
    null.vt = VT_NULL;
    VARIANT text = {};
    const char16_t* const texts[] = {u"7", u"3.25", u"b", u"2004-01-02 03:04:05", u"2004-01-02", u"1"};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string name(columns[i].name.begin(), columns[i].name.end());
        SCOPED_TRACE(name);
        Parameter parameter;
        parameter.value = &null;
        parameter.column = &columns[i];
        EXPECT_EQ(session->Execute("update par set " + name + " = ?", std::span<const Parameter>(&parameter, 1), {})
                      .RowsAffected(),
                  1);
        if (i >= std::size(texts)) continue;
        text.vt = VT_BSTR;
        text.bstrVal = SysAllocString(texts[i]);
        parameter.value = &text;
        EXPECT_EQ(session->Execute("update par set " + name + " = ?", std::span<const Parameter>(&parameter, 1), {})
                      .RowsAffected(),
                  1);
        VariantClear(&text);
    }
    const auto changed = Query(session, "select * from par");
    EXPECT_EQ(Show(*changed, 0, 0), "I4 7");
    EXPECT_EQ(Show(*changed, 0, 1), "DECIMAL 3.25");
    EXPECT_EQ(Show(*changed, 0, 2), "BSTR b");
    EXPECT_EQ(Show(*changed, 0, 3), "DATE 2004-01-02 03:04:05");
    EXPECT_EQ(Show(*changed, 0, 5), "BOOL true");
    EXPECT_EQ(Show(*changed, 0, 6), "NULL");
}

TEST_F(Postgres, KeepsTransactionsAndStreamingApart) {
    const auto session = Open();
    Do(*session, "drop table if exists big");
    Do(*session, "create table big as select i, 'n'||i as name from generate_series(1,20000) i");
    session->Begin(0x1000);
    Do(*session, "delete from big where i > 15000");
    const auto rows = Query(session, "select * from big");
    Do(*session, "delete from big");
    session->Rollback();
    EXPECT_EQ(rows->CountRows(), 15000u);
    EXPECT_EQ(Query(session, "select * from big")->CountRows(), 20000u);
    EXPECT_EQ(Show(*Query(session, "select count(*) from big"), 0, 0), "I4 20000");
}

// The driver rolls all of it back without a word, and would go on in another one.
TEST_F(Postgres, LosesATransactionOverATextThatCannotBeRead) {
    const auto session = Open();
    Do(*session, "drop table if exists kept");
    Do(*session, "create table kept (i integer)");
    for (const char* sql : {"insrt into kept values (2)", "select * from kept wher i = 1", "select i wher i = 1"}) {
        SCOPED_TRACE(sql);
        session->Begin(0x1000);
        Do(*session, "insert into kept values (1)");
        std::u16string text;
        EXPECT_EQ(Failure([&] { Query(session, sql); }, &text), 0x80040E14u);
        EXPECT_NE(text.find(u"syntax error"), std::u16string::npos);
        EXPECT_EQ(Failure([&] { Do(*session, "insert into kept values (3)"); }), 0x8004D019u);
        EXPECT_EQ(Failure([&] { session->Commit(); }), 0x8004D019u);
        EXPECT_FALSE(session->InTransaction());
        EXPECT_EQ(Show(*Query(session, "select count(*) from kept"), 0, 0), "I4 0");
    }
    // Other failures leave it as it was.
    session->Begin(0x1000);
    Do(*session, "set local work_mem = '5MB'");
    Do(*session, "delete from kept");  // none
    EXPECT_NE(Failure([&] { Query(session, "select no_such_column from kept where i = 1"); }), S_OK);
    Do(*session, "insert into kept values (1)");
    EXPECT_NE(Failure([&] { Do(*session, "insert into kept values ('x')"); }), S_OK);
    EXPECT_NE(Failure([&] { Do(*session, "insert into no_such_table values (1)"); }), S_OK);
    session->Commit();
    EXPECT_EQ(Show(*Query(session, "select count(*) from kept"), 0, 0), "I4 1");
}

TEST_F(Postgres, CanBeDroppedAtAnyMomentOfItsFetch) {
    const auto session = Open();
    for (int delay = 0; delay < 20; ++delay) {
        const auto rows = Query(session, "select i, repeat('x', 50) from generate_series(1,50000) i", {true, 0});
        usleep(static_cast<useconds_t>(delay) * 1000);
    }
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST_F(Postgres, SurvivesSessionsThatTheServerEnded) {
    Open().reset();
    ASSERT_EQ(SessionCache::Instance().IdleCount(), 1u);
    server_->EndSessions();
    {
        const auto session = Open();
        EXPECT_EQ(Query(session, "select 1 where true")->CountRows(), 1u);  // replaced without a word
    }
    const auto session = Open();
    session->Begin(0x1000);
    Query(session, "select 1");
    server_->EndSessions();
    std::u16string text;
    EXPECT_EQ(Failure([&] { session->Commit(); }, &text), 0x80004005u);  // the driver itself reports success
    EXPECT_TRUE(text.starts_with(u"连接失败："));
    EXPECT_FALSE(session->InTransaction());
    // The transaction is over; what comes next runs on a new connection.
    EXPECT_EQ(Query(session, "select 1 where true")->CountRows(), 1u);
    EXPECT_FALSE(session->IsDead());
}

TEST_F(Postgres, NeverStartsAWriteOnASessionThatTheServerEndedWhileItWasIdle) {
    const auto before = Open();
    Do(*before, "drop table if exists written");
    Do(*before, "create table written (id integer)");
    // Two idle connections, both fresh: neither has been idle for long enough to be asked when it is handed out.
    const auto leaveTwo = [&] {
        auto first = Open();
        auto second = Open();
    };
    leaveTwo();
    server_->EndSessions();
    EXPECT_EQ(Do(*Open(), "insert into written values (1)"), 1);
    leaveTwo();
    server_->EndSessions();
    {
        const auto session = Open();
        session->Begin(0x1000);
        EXPECT_EQ(Do(*session, "insert into written values (2)"), 1);
        session->Commit();
    }
    EXPECT_EQ(Show(*Query(Open(), "select count(*) from written"), 0, 0), "I4 2");
}

TEST_F(Postgres, KeepsNoConnectionThatIsChangedAsSoonAsItReplacesALostOne) {
    for (const char* change :
         {"set application_name to 'changed'", "select set_config('application_name', 'changed', false)"}) {
        SCOPED_TRACE(change);
        Open().reset();
        server_->EndSessions();
        {
            const auto session = Open();
            static_cast<void>(session->Execute(change, {}));
        }
        EXPECT_EQ(Show(*Query(Open(),
                              "select count(*) from pg_settings where name = 'application_name' and setting = "
                              "'changed'"),
                       0, 0),
                  "I4 0");
    }
}

TEST_F(Postgres, AsksForNoSignOfLifeBeforeAQuery) {
    Open().reset();
    static OdbcApi table;
    table = OdbcApi();
    static std::atomic<int> executions;
    executions = 0;
    table.ExecDirect = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) -> SQLRETURN {
        ++executions;
        return SQLExecDirect(statement, text, length);
    };
    const OdbcApi& former = SetOdbcForTest(table);
    {
        const auto session = Open();
        EXPECT_EQ(Query(session, "select 1 where true")->CountRows(), 1u);
        EXPECT_EQ(executions, 1);
        Do(*session, "create temp table once (id integer)");  // the query has shown that the connection lives
        EXPECT_EQ(executions, 2);
    }
    SetOdbcForTest(former);
}

TEST_F(Postgres, NamesTheServerThatIsNotThere) {
    std::u16string text;
    const unsigned code = Failure(
        [] {
            Session::Open(test::Settings("Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=x;UID=u;PWD=p"));
        },
        &text);
    EXPECT_EQ(code, 0x80004005u);
    EXPECT_TRUE(text.starts_with(u"连接失败："));
}

}  // namespace
}  // namespace tk::ado
