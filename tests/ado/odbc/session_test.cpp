#include "ado/odbc/session.h"

#include <gtest/gtest.h>

#include <fstream>

#include "ado/odbc/odbc_api.h"
#include "ado/support/sqlite_file.h"
#include "ado/support/utf8.h"

namespace tk::ado {
namespace {

using test::Do;
using test::Query;
using test::Show;
using test::SqliteFile;
using test::Utf8;

/// The HRESULT of what the call throws; S_OK when it throws nothing.
template <class Call>
unsigned Failure(Call&& call, std::u16string* description = nullptr) {
    try {
        call();
        return S_OK;
    } catch (const AdoError& error) {
        if (description != nullptr) *description = error.Description();
        return static_cast<unsigned>(error.Code());
    }
}

TEST(Session, CountsTheRowsThatStatementsChange) {
    const SqliteFile file;
    const auto session = file.Open();
    EXPECT_EQ(Do(*session, "create table item (id integer primary key, name varchar(20))"), 0);
    EXPECT_EQ(Do(*session, "insert into item values (1, 'a')"), 1);
    EXPECT_EQ(Do(*session, "insert into item select 2, 'b' union all select 3, 'c'"), 2);
    EXPECT_EQ(Do(*session, "update item set name = 'x' where id > 1"), 2);
    EXPECT_EQ(Do(*session, "delete from item where id = 99"), 0);
    const Statement query = session->Execute("select * from item", {});
    EXPECT_TRUE(query.HasRows());
    EXPECT_EQ(query.RowsAffected(), -1);
}

TEST(Session, TellsTheDriverAndItsQuote) {
    const SqliteFile file;
    const auto session = file.Open("DBMS Name=Oracle");
    EXPECT_STREQ(session->Profile().name, "sqlite");
    EXPECT_EQ(session->Quote(), "\"");
    EXPECT_EQ(session->InfoText(SQL_DRIVER_NAME), "sqlite3odbc.so");
    EXPECT_EQ(session->InfoText(SQL_DATABASE_NAME), file.File());
    EXPECT_EQ(session->InfoNumber(SQL_TXN_CAPABLE), 2u);
    EXPECT_EQ(session->InfoText(60000), "");
    EXPECT_EQ(session->InfoNumber(60000), 0u);
    EXPECT_EQ(session->Properties().dbmsName, "Oracle");
    EXPECT_FALSE(session->IsDead());
    EXPECT_EQ(session->CurrentCatalog(), file.File());
}

TEST(Session, ShowsItsStringWithoutThePassword) {
    const SqliteFile file;
    const auto session = file.Open("PWD=secret;X=1");
    EXPECT_EQ(session->DisplayString(), "Driver=SQLite3;Database=" + file.File() + ";X=1");
    const auto open = file.Open("PWD=secret;Persist Security Info=True");
    EXPECT_EQ(open->DisplayString(),
              "Driver=SQLite3;Database=" + file.File() + ";PWD=secret;Persist Security Info=True");
}

TEST(Session, ReportsWhatTheDriverSays) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer primary key, name varchar(20) not null)");
    Do(*session, "insert into item values (1, 'a')");
    const struct {
        const char* label;
        const char* sql;
        unsigned code;
        std::u16string_view start;
    } rows[] = {
        {"syntax", "selec 1", 0x80040E14, u"语法错误：near \"selec\": syntax error"},
        {"no table", "select * from missing", 0x80040E37, u"对象不存在：no such table: missing"},
        {"no column", "select what from item", 0x80040E14, u"对象不存在：no such column: what"},
        {"duplicate key", "insert into item values (1, 'b')", 0x80040E2F, u"违反约束：UNIQUE constraint failed"},
        {"not null", "insert into item values (2, null)", 0x80040E2F, u"违反约束：NOT NULL constraint failed"},
        {"two statements", "select 1; select 2", 0x80040E14, u"语法错误：only one SQL statement allowed"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        std::u16string text;
        EXPECT_EQ(Failure([&] { session->Execute(row.sql, {}); }, &text), row.code);
        EXPECT_EQ(text.substr(0, row.start.size()), row.start);
    }
    EXPECT_EQ(Query(session, "select count(*) from item")->CountRows(), 1u);  // still of use
}

TEST(Session, ReportsWhatCannotBeOpened) {
    const SqliteFile file;
    std::u16string text;
    EXPECT_EQ(Failure([&] { file.Open("NoCreat=1"); }, &text), 0x80004005u);
    EXPECT_EQ(text.substr(0, 5), u"连接失败：");
    EXPECT_EQ(Failure([] { Session::Open(test::Settings("Driver=NoSuchDriver")); }, &text), 0x80004005u);
    EXPECT_EQ(text.substr(0, 5), u"连接失败：");
    EXPECT_NE(text.find(u"NoSuchDriver"), std::u16string::npos);
    EXPECT_EQ(Failure([] { Session::Open(test::Settings("DSN=NoSuchSource")); }, &text), 0x80004005u);
    EXPECT_EQ(text.substr(0, 5), u"连接失败：");
    EXPECT_EQ(Failure([] { Session::Open(test::Settings("Provider=Nonsense")); }), 0x800A0E7Au);
    EXPECT_EQ(Failure([] { Session::Open(test::Settings("Provider=MSPersist")); }), 0x800A0E7Au);
}

TEST(Session, RefusesStringsThatAreTooLongForADriver) {
    const SqliteFile file;
    std::u16string text;
    EXPECT_EQ(Failure([&] { file.Open("X=" + std::string(40'000, 'x')); }, &text), 0x800A0BB9u);
    // 65,536 more than a short string would be cut to a string that opens.
    EXPECT_EQ(Failure([&] { file.Open("X=" + std::string(65'536, 'x')); }), 0x800A0BB9u);
    EXPECT_EQ(Failure([&] { file.Open("X=" + std::string(30'000, 'x')); }), static_cast<unsigned>(S_OK));
    EXPECT_FALSE(std::filesystem::exists(file.File() + "x"));
}

TEST(Session, ReportsDamagedAndProtectedFiles) {
    const SqliteFile file;
    std::ofstream(file.File()) << "This is no database, but it is long enough to be read as a header of one, says the "
                                  "test; and a little more of it follows here.";
    const auto session = file.Open();
    std::u16string text;
    EXPECT_EQ(Failure([&] { session->Execute("select * from item", {}); }, &text), 0x80004005u);
    EXPECT_EQ(text.substr(0, 5), u"连接失败：");
    EXPECT_NE(text.find(u"not a database"), std::u16string::npos);

    const SqliteFile locked;
    const auto first = locked.Open("Timeout=50");
    Do(*first, "create table item (id integer)");
    const auto second = locked.Open("Timeout=50;Application Name=second");
    first->Begin(0x1000);
    Do(*first, "insert into item values (1)");
    EXPECT_EQ(Failure([&] { Do(*second, "insert into item values (2)"); }, &text), 0x80040E38u);
    EXPECT_EQ(text.substr(0, 5), u"并发冲突：");
    first->Rollback();
    EXPECT_EQ(Do(*second, "insert into item values (2)"), 1);
}

TEST(SessionTransaction, CommitsAndRollsBack) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer)");
    session->Begin(0x1000);
    EXPECT_TRUE(session->InTransaction());
    Do(*session, "insert into item values (1)");
    session->Rollback();
    EXPECT_FALSE(session->InTransaction());
    EXPECT_EQ(Show(*Query(session, "select count(*) from item"), 0, 0), "I4 0");
    session->Begin(0x100000);
    Do(*session, "insert into item values (1)");
    session->Commit();
    Do(*session, "insert into item values (2)");  // auto-commit again
    EXPECT_EQ(Show(*Query(file.Open("X=1"), "select count(*) from item"), 0, 0), "I4 2");
}

TEST(SessionTransaction, HasOneLevel) {
    const SqliteFile file;
    const auto session = file.Open();
    EXPECT_EQ(Failure([&] { session->Commit(); }), 0x8004D00Eu);
    EXPECT_EQ(Failure([&] { session->Rollback(); }), 0x8004D00Eu);
    session->Begin(0x1000);
    std::u16string text;
    EXPECT_EQ(Failure([&] { session->Begin(0x1000); }, &text), 0x8004D013u);
    EXPECT_EQ(text, u"该会话上已有一个事务,不能再开始另一个。");
    session->Rollback();
}

std::string Ids(const std::shared_ptr<Session>& session) {
    const auto rows = Query(session, "select group_concat(id) from (select id from item order by id)");
    return Show(*rows, 0, 0);
}

/// A table with a row 1, whose key undoes the whole transaction when it is given twice.
void CreateUndoing(Session& session) {
    Do(session, "create table item (id integer primary key on conflict rollback)");
    Do(session, "insert into item values (1)");
}

TEST(SessionTransaction, LetsNothingRunAfterTheDatabaseHasUndoneIt) {
    const SqliteFile file;
    const auto session = file.Open();
    CreateUndoing(*session);
    for (const bool commits : {true, false}) {
        SCOPED_TRACE(commits);
        session->Begin(0x1000);
        Do(*session, "insert into item values (2)");
        EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (1)"); }), 0x80040E2Fu);
        std::u16string text;
        EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (3)"); }, &text), 0x8004D019u);
        EXPECT_EQ(text, u"数据库已撤销该事务,请先回滚。");
        EXPECT_EQ(Failure([&] { Query(session, "select * from item"); }), 0x8004D019u);
        EXPECT_TRUE(session->InTransaction());
        if (commits) {
            EXPECT_EQ(Failure([&] { session->Commit(); }), 0x8004D019u);
        } else {
            session->Rollback();
        }
        EXPECT_FALSE(session->InTransaction());
        EXPECT_EQ(Ids(session), "BSTR 1");
    }
    session->Begin(0x1000);
    Do(*session, "insert into item values (4)");
    session->Commit();
    Do(*session, "insert into item values (5)");
    EXPECT_EQ(Ids(session), "BSTR 1,4,5");
}

TEST(SessionTransaction, IsUndoneWithWhatAFailureHasLeftInIt) {
    const SqliteFile file;
    const auto session = file.Open();
    CreateUndoing(*session);
    session->Begin(0x1000);
    EXPECT_EQ(Failure([&] { Do(*session, "insert or fail into item values (7), (8), (1)"); }), 0x80040E2Fu);
    EXPECT_EQ(Ids(session), "BSTR 1,7,8");
    EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (1)"); }), 0x80040E2Fu);
    EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (9)"); }), 0x8004D019u);
    EXPECT_EQ(Failure([&] { session->Commit(); }), 0x8004D019u);
    EXPECT_EQ(Ids(session), "BSTR 1");
    // As its first statement, too.
    session->Begin(0x1000);
    EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (1)"); }), 0x80040E2Fu);
    EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (9)"); }), 0x8004D019u);
    session->Rollback();
    EXPECT_EQ(Ids(session), "BSTR 1");
}

TEST(SessionTransaction, GoesOnWhenTheDatabaseHasUndoneTheStatementAlone) {
    const SqliteFile file;
    const auto session = file.Open();
    CreateUndoing(*session);
    session->Begin(0x1000);
    Do(*session, "insert into item values (2)");
    EXPECT_EQ(Failure([&] { Do(*session, "insert or abort into item values (1)"); }), 0x80040E2Fu);
    EXPECT_EQ(Failure([&] { Do(*session, "insert into no_such_table values (1)"); }), 0x80040E37u);
    Do(*session, "insert into item values (3)");
    session->Commit();
    EXPECT_EQ(Ids(session), "BSTR 1,2,3");
}

// The database undoes all of the transaction when a statement that writes is interrupted.
TEST(SessionTransaction, LetsNothingRunAfterAStatementWasEndedThatWrote) {
    const SqliteFile file;
    const auto session = file.Open();
    CreateUndoing(*session);
    session->Begin(0x1000);
    Do(*session, "insert into item values (2)");
    ExecuteOptions options;
    options.timeoutSeconds = 1;
    EXPECT_EQ(Failure([&] {
                  session->Execute(
                      "insert into item with recursive up(n) as (select 100 union all select n + 1 from "
                      "up) select n from up",
                      options);
              }),
              0x80040E31u);
    EXPECT_EQ(Failure([&] { Do(*session, "insert into item values (3)"); }), 0x8004D019u);
    session->Rollback();
    EXPECT_EQ(Ids(session), "BSTR 1");
}

TEST(SessionTransaction, IsFollowedByAnotherWhereATextHasEndedIt) {
    const SqliteFile file;
    const auto session = file.Open();
    CreateUndoing(*session);
    session->Begin(0x1000);
    Do(*session, "insert into item values (2)");
    Do(*session, "commit");
    Do(*session, "insert into item values (3)");
    session->Rollback();
    EXPECT_EQ(Ids(session), "BSTR 1,2");
    session->Begin(0x1000);
    Do(*session, "insert into item values (3)");
    Do(*session, "rollback");
    Do(*session, "insert into item values (4)");
    session->Commit();
    EXPECT_EQ(Ids(session), "BSTR 1,2,4");
    session->Begin(0x1000);
    Do(*session, "commit");
    session->Rollback();
    EXPECT_FALSE(session->InTransaction());
}

TEST(SessionTransaction, EndsAlthoughNobodyHasNoticedItsEnd) {
    const SqliteFile file;
    const auto session = file.Open();
    CreateUndoing(*session);
    session->Begin(0x1000);
    Do(*session, "insert into item values (2)");
    ASSERT_TRUE(session->Physical().RunText("rollback"));
    session->Rollback();
    EXPECT_FALSE(session->InTransaction());
    session->Begin(0x1000);
    Do(*session, "insert into item values (3)");
    ASSERT_TRUE(session->Physical().RunText("rollback"));
    EXPECT_EQ(Failure([&] { session->Commit(); }), 0x8004D019u);
    EXPECT_FALSE(session->InTransaction());
    Do(*session, "insert into item values (5)");
    EXPECT_EQ(Ids(session), "BSTR 1,5");
    session->Begin(0x1000);
    session->Commit();
}

TEST(SessionTransaction, StaysOpenWhenTheCommitFails) {
    const SqliteFile file;
    const auto writer = file.Open("Timeout=50");
    Do(*writer, "create table item (id integer)");
    const auto reader = file.Open("Timeout=50;Application Name=reader");
    reader->Begin(0x1000);
    EXPECT_EQ(Query(reader, "select * from item where id = 1")->CountRows(), 0u);
    writer->Begin(0x1000);
    Do(*writer, "insert into item values (1)");
    const unsigned code = Failure([&] { writer->Commit(); });
    if (code != S_OK) {  // the reader's lock is in the way
        EXPECT_EQ(code, 0x80040E38u);
        EXPECT_TRUE(writer->InTransaction());
        reader->Commit();
        writer->Commit();
    }
    EXPECT_FALSE(writer->InTransaction());
    EXPECT_EQ(Show(*Query(file.Open("X=1"), "select count(*) from item"), 0, 0), "I4 1");
}

TEST(SessionTransaction, EndsWithTheSession) {
    const SqliteFile file;
    {
        const auto session = file.Open();
        Do(*session, "create table item (id integer)");
        session->Begin(0x1000);
        Do(*session, "insert into item values (1)");
    }
    EXPECT_EQ(Show(*Query(file.Open(), "select count(*) from item"), 0, 0), "I4 0");
}

TEST(SessionParameters, SendsEachTypeOfValue) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (a integer, b double, c varchar(50), d timestamp, e blob, f bit, g bigint)");
    const std::string chinese = Utf8(u8"中文é€𠀀");
    const std::u16string wide = u"中文é€𠀀";
    std::vector<VARIANT> values(7);
    values[0].vt = VT_I4;
    values[0].lVal = -7;
    values[1].vt = VT_R8;
    values[1].dblVal = 1.25;
    values[2].vt = VT_BSTR;
    values[2].bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    values[3].vt = VT_DATE;
    values[3].date = 37806.5;
    values[4].vt = VT_ARRAY | VT_UI1;
    values[4].parray = SafeArrayCreateVector(VT_UI1, 0, 3);
    std::memcpy(values[4].parray->pvData, "A\0\xFF", 3);
    values[5].vt = VT_BOOL;
    values[5].boolVal = VARIANT_TRUE;
    values[6].vt = VT_I8;
    values[6].llVal = 9007199254740993;
    EXPECT_EQ(session->Execute("insert into item values (?,?,?,?,?,?,?)", values, {}).RowsAffected(), 1);
    for (VARIANT& value : values)
        VariantClear(&value);

    for (VARIANT& value : values)
        value.vt = VT_NULL;
    EXPECT_EQ(session->Execute("insert into item values (?,?,?,?,?,?,?)", values, {}).RowsAffected(), 1);

    const auto rows = Query(session, "select * from item");
    ASSERT_EQ(rows->CountRows(), 2u);
    EXPECT_EQ(Show(*rows, 0, 0), "I4 -7");
    EXPECT_EQ(Show(*rows, 0, 1), "R8 1.25");
    EXPECT_EQ(Show(*rows, 0, 2), "BSTR " + chinese);
    EXPECT_EQ(Show(*rows, 0, 3), "DATE 2003-07-04 12:00:00");
    EXPECT_EQ(Show(*rows, 0, 4), "BYTES 4100ff");
    EXPECT_EQ(Show(*rows, 0, 5), "BOOL true");
    EXPECT_EQ(Show(*rows, 0, 6), "DECIMAL 9007199254740993");
    for (std::size_t column = 0; column < 7; ++column)
        EXPECT_EQ(Show(*rows, 1, column), "NULL");
}

TEST(SessionParameters, SendsCellsAsTheyWereRead) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer primary key, d timestamp, c varchar(10), n numeric(12,2))");
    Do(*session, "insert into item values (1, '2003-07-04 13:05:09.123456', 'a''b', 12.5)");
    const auto rows = Query(session, "select * from item");
    std::vector<Parameter> parameters(4);
    for (std::size_t i = 0; i < 4; ++i) {
        parameters[i].cell = rows->At(0, i);
        parameters[i].column = &rows->Columns()[i];
    }
    const auto found = session->Execute("select id from item where id = ? and d = ? and c = ? and n = ?",
                                        std::span<const Parameter>(parameters), {});
    EXPECT_EQ(RowSet::Fetch(session->Execute("select id from item where id = ? and d = ? and c = ? and n = ?",
                                             std::span<const Parameter>(parameters), {}),
                            session, {})
                  ->CountRows(),
              1u);
}

TEST(SessionParameters, RefusesWhatNoDatabaseTakes) {
    const SqliteFile file;
    const auto session = file.Open();
    std::vector<VARIANT> values(1);
    values[0].vt = VT_DISPATCH;
    values[0].pdispVal = nullptr;
    EXPECT_EQ(Failure([&] { session->Execute("select ?", values, {}); }), 0x800A0D5Du);
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST(SessionCatalog, ListsTablesColumnsAndKeys) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, Utf8(u8"create table 物料 (编号 integer primary key, 名称 varchar(20))"));
    CatalogCall call;
    call.function = CatalogCall::Function::Tables;
    call.table = Utf8(u8"物料");
    auto rows = RowSet::Fetch(session->Catalog(call, {}), session, {});
    ASSERT_EQ(rows->CountRows(), 1u);
    EXPECT_EQ(Show(*rows, 0, 2), "BSTR " + Utf8(u8"物料"));
    EXPECT_EQ(Show(*rows, 0, 3), "BSTR TABLE");
    call.function = CatalogCall::Function::Columns;
    rows = RowSet::Fetch(session->Catalog(call, {}), session, {});
    ASSERT_EQ(rows->CountRows(), 2u);
    EXPECT_EQ(Show(*rows, 1, 3), "BSTR " + Utf8(u8"名称"));
    call.function = CatalogCall::Function::PrimaryKeys;
    rows = RowSet::Fetch(session->Catalog(call, {}), session, {});
    ASSERT_EQ(rows->CountRows(), 1u);
    EXPECT_EQ(Show(*rows, 0, 3), "BSTR " + Utf8(u8"编号"));
    call.function = CatalogCall::Function::TypeInfo;
    EXPECT_GT(RowSet::Fetch(session->Catalog(call, {}), session, {})->CountRows(), 10u);
}

TEST(SessionSideConnection, SeesWhatTheSessionHasCommittedAndNothingElseBehavesDifferently) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer primary key, name varchar(20))");
    Do(*session,
       "insert into item with recursive s(i) as (select 1 union all select i+1 from s where i<3000) "
       "select i, 'n'||i from s");
    EXPECT_EQ(Query(session, "select * from item")->CountRows(), 3000u);
    session->Begin(0x1000);
    Do(*session, "delete from item where id > 10");
    EXPECT_EQ(Query(session, "select * from item")->CountRows(), 10u);  // its own changes
    session->Rollback();
    EXPECT_EQ(Query(session, "select * from item")->CountRows(), 3000u);
    Do(*session, "create temp table item2 as select * from item where id < 5");
    EXPECT_EQ(Query(session, "select * from item2")->CountRows(), 4u);  // only on the session's own connection
    // A computed column has its type only where the driver holds the result.
    const auto computed = Query(session, "select id + 1, name from item");
    EXPECT_EQ(computed->Columns()[0].type, 3);
}

TEST(SessionSideConnection, LetsTheSessionWriteWhileItReads) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer primary key, name varchar(20))");
    Do(*session,
       "insert into item with recursive s(i) as (select 1 union all select i+1 from s where i<50000) "
       "select i, 'n'||i from s");
    const auto rows = Query(session, "select * from item");
    EXPECT_EQ(Do(*session, "update item set name = 'x'"), 50000);
    EXPECT_EQ(rows->CountRows(), 50000u);
    EXPECT_EQ(Show(*rows, 49999, 1), "BSTR n50000");
}

}  // namespace
}  // namespace tk::ado
