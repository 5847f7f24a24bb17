#include <gtest/gtest.h>

#include "ado/support/odbc_faults.h"
#include "ado/support/sqlite_file.h"

namespace tk::ado {
namespace {

using test::OdbcFaults;
using test::SqliteFile;

constexpr const char* kInjected = "the call failed";

bool IsInjected(const AdoError& error) {
    return error.Description().find(u"the call failed") != std::u16string::npos && error.Records().size() == 1 &&
           error.Records()[0].nativeError == 4711;
}

/// Runs the work with its first call failing, then its second, and so on until a run makes fewer calls than that. Each
/// failure either is reported with the driver's text or does not matter; nothing stays allocated.
template <class Work>
void FailEachCall(const SqliteFile& file, Work&& work) {
    long reported = 0;
    for (long number = 1;; ++number) {
        SCOPED_TRACE("call " + std::to_string(number) + ": " + kInjected);
        ASSERT_LT(number, 2000);
        SessionCache::Instance().Clear();
        OdbcFaults faults;
        faults.FailCall(number);
        bool hasThrown = false;
        try {
            work();
        } catch (const AdoError& error) {
            hasThrown = true;
            EXPECT_TRUE(IsInjected(error)) << error.what();
        }
        const bool hasFailed = faults.HasFailed();
        faults.FailCall(0);
        EXPECT_TRUE(hasFailed || !hasThrown);
        reported += hasThrown ? 1 : 0;
        SessionCache::Instance().Clear();
        EXPECT_EQ(faults.OpenHandles(), 0);
        EXPECT_NO_THROW(work());  // the file is as good as before
        SessionCache::Instance().Clear();
        EXPECT_EQ(faults.OpenHandles(), 0);
        if (!hasFailed) break;
    }
    EXPECT_GT(reported, 0);
    static_cast<void>(file);
}

class FaultInjection : public testing::Test {
protected:
    FaultInjection() {
        const auto session = file_.Open();
        test::Do(*session, "create table item (id integer primary key, name varchar(20), note text)");
        test::Do(*session,
                 "insert into item with recursive s(i) as (select 1 union all select i+1 from s where i<600) "
                 "select i, 'n'||i, case when i = 7 then hex(zeroblob(2000)) end from s");
    }
    SqliteFile file_;
};

TEST_F(FaultInjection, OpenAndExecute) {
    FailEachCall(file_, [&] {
        const auto session = file_.Open();
        session->Execute("update item set name = 'x' where id = 1", {});
    });
}

TEST_F(FaultInjection, FetchOfOneRow) {
    FailEachCall(file_, [&] {
        const auto session = file_.Open();
        const auto rows = test::Query(session, "select * from item where id = 7");
        EXPECT_EQ(rows->CountRows(), 1u);
    });
}

TEST_F(FaultInjection, FetchOfManyRowsOnAWorker) {
    // The first calls, where the fetch begins, and some in the middle and at the end of it.
    for (const long number : {1L, 2L, 10L, 30L, 60L, 100L, 300L, 400L, 500L, 600L, 640L, 650L}) {
        SCOPED_TRACE(number);
        SessionCache::Instance().Clear();
        OdbcFaults faults;
        bool hasThrown = false;
        faults.FailCall(number);
        try {
            const auto session = file_.Open();
            const auto rows = test::Query(session, "select id, name from item");
            std::size_t count = 0;
            while (rows->HasRow(count))
                ++count;
            EXPECT_EQ(count, 600u);
        } catch (const AdoError& error) {
            hasThrown = true;
            EXPECT_TRUE(IsInjected(error)) << error.what();
        }
        EXPECT_TRUE(faults.HasFailed() || !hasThrown);
        faults.FailCall(0);
        SessionCache::Instance().Clear();
        EXPECT_EQ(faults.OpenHandles(), 0);
    }
}

TEST_F(FaultInjection, KeepsTheRowsThatHaveArrived) {
    const auto session = file_.Open("X=1");
    static OdbcApi table;
    table = OdbcApi();
    static std::atomic<int> fetches;
    fetches = 0;
    table.Fetch = [](SQLHSTMT statement) -> SQLRETURN { return ++fetches > 400 ? SQL_ERROR : SQLFetch(statement); };
    const OdbcApi& former = SetOdbcForTest(table);
    const auto rows = test::Query(session, "select id, name from item where id > 0");
    EXPECT_TRUE(rows->HasRow(100));
    EXPECT_EQ(test::Show(*rows, 100, 0), "I4 101");
    EXPECT_THROW(rows->CountRows(), AdoError);
    EXPECT_THROW(rows->HasRow(599), AdoError);
    EXPECT_EQ(test::Show(*rows, 255, 0), "I4 256");
    EXPECT_TRUE(rows->IsComplete());
    EXPECT_LE(rows->ArrivedRows(), 400u);
    SetOdbcForTest(former);
}

TEST_F(FaultInjection, Transaction) {
    FailEachCall(file_, [&] {
        const auto session = file_.Open();
        session->Begin(0x1000);
        session->Execute("update item set name = 'x' where id = 1", {});
        session->Commit();
    });
}

TEST_F(FaultInjection, Parameters) {
    FailEachCall(file_, [&] {
        const auto session = file_.Open();
        std::vector<VARIANT> values(2);
        values[0].vt = VT_I4;
        values[0].lVal = 1;
        values[1].vt = VT_NULL;
        session->Execute("update item set note = ? where id = ?", values, {});
    });
}

TEST_F(FaultInjection, CatalogAndOrigins) {
    FailEachCall(file_, [&] {
        const auto session = file_.Open();
        const auto rows = test::Query(session, "select id, name from item where id < 3");
        rows->DescribeOrigins();  // never fails
        EXPECT_EQ(rows->CountRows(), 2u);
    });
}

}  // namespace
}  // namespace tk::ado
