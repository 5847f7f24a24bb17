// The behaviour of connections and recordsets on a real database, the same for every system.
#include "driver/end_to_end.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

#include "support/held.h"
#include "support/registered_class.h"
#include "support/values.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kOpened[] = "返回编码:[0x00000000]操作完全成功，但没有结果集返回。";
constexpr char kReadFailed[] = "可能数据源绑定错误!试着用 OpenField()打开数据源";

constexpr const char* kRows[] = {
    "insert into stock values (1, '螺丝', 1.5, 10, 9007199254740993, '2020-02-29 13:45:06', 'first', %s)",
    "insert into stock values (2, 'bolt', 2.25, -3, -5, NULL, NULL, %s)",
    "insert into stock values (3, '垫圈', 0.0, 0, 0, '1999-12-31 00:00:00', '', NULL)",
    "insert into stock values (4, 'nut', 100.0, 7, 1, '2000-01-01 00:00:00', '中文 note', %s)",
    "insert into stock values (5, '誠|\\', -0.5, 7, 12, '2021-06-15 08:00:00', 'It''s', %s)",
};

COleVariant Owned(VARIANT value) {
    COleVariant owner;
    owner.Attach(value);
    return owner;
}

class EndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(database_->Open(TheSystem().connection.c_str()), 1) << Error(*database_);
        database_->ExecuteSQL("drop table if exists stock");
        ASSERT_EQ(database_->ExecuteSQL(TheSystem().createStock), 1) << Error(*database_);
        const char* sold[] = {"true", "false", "", "true", "false"};
        for (int i = 0; i < 5; ++i)
            ASSERT_EQ(database_->ExecuteEx(kRows[i], sold[i]), 1) << Error(*database_);
    }

    template <typename Wrapper>
    static std::string Error(Wrapper& wrapper) {
        return std::string(wrapper.GetLastErrorString());
    }

    /// Opens the whole table by its key.
    void OpenStock(CTRecordset& recordset, int readOnly = 1) {
        ASSERT_EQ(recordset.OpenDatabase(database_.get()), 1) << Error(recordset);
        ASSERT_EQ(recordset.OpenSQL("select * from stock order by id", readOnly), 1) << Error(recordset);
        EXPECT_EQ(Error(recordset), kOpened);
    }

    /// The identifiers of the records, in the order they are shown in.
    static std::vector<int> Ids(CTRecordset& recordset) {
        std::vector<int> ids;
        if (recordset.GetBof() && recordset.GetEof()) return ids;
        for (recordset.MoveFirst(); !recordset.GetEof(); recordset.MoveNext())
            ids.push_back(recordset.GetIntValue("id"));
        return ids;
    }

    long Count(const char* where) {
        CTRecordset recordset(database_.get());
        CString sql;
        sql.Format("select * from stock where %s", where);
        EXPECT_EQ(recordset.OpenSQL(sql, 1), 1) << Error(recordset);
        return recordset.GetRecordCount();
    }

    Apartment apartment_;
    std::unique_ptr<CTDatabase> database_ = std::make_unique<CTDatabase>();
};

using Numbers = std::vector<int>;

// ---- connections -------------------------------------------------------------------------------------------------

TEST_F(EndToEnd, AnOpenConnectionAnswersQuestions) {
    EXPECT_EQ(database_->IsOpen(), 1);
    EXPECT_EQ(database_->GetState(), 1);
    EXPECT_STREQ(database_->GetDbmsName(), TheSystem().dbmsName);
    EXPECT_STREQ(database_->GetDBMS(), TheSystem().tag);
    EXPECT_STREQ(database_->GetDriverName(), "Microsoft OLE DB Provider for ODBC Drivers");
    EXPECT_STRNE(database_->GetCurDbName(), "");
    EXPECT_STRNE(database_->GetVersion(), "");
    EXPECT_EQ(database_->GetCommandTimeout(), 1800);
    EXPECT_EQ(database_->GetConnectionTimeout(), 20);
    EXPECT_EQ(database_->GetCursorLocation(), 3);
    EXPECT_STREQ(database_->GetConnectionType(), "ADO");
    EXPECT_STREQ(database_->GetPropertyValue("No Such Property"), "");
}

TEST_F(EndToEnd, AClosedConnectionCanBeOpenedAgain) {
    database_->Close();
    EXPECT_EQ(database_->IsOpen(), 0);
    EXPECT_STREQ(database_->GetDbmsName(), "");
    EXPECT_EQ(database_->ExecuteSQL("delete from stock"), 0);
    EXPECT_THAT(Error(*database_), EndsWith("\r\ndelete from stock"));
    database_->Close();
    EXPECT_EQ(database_->Open(TheSystem().connection.c_str()), 1);
    EXPECT_STREQ(database_->GetDbmsName(), TheSystem().dbmsName);
    EXPECT_EQ(database_->ExecSQL("delete from stock"), 5);
}

TEST_F(EndToEnd, OpeningAnOpenConnectionFailsAndLeavesItOpen) {
    EXPECT_EQ(database_->Open(TheSystem().connection.c_str()), 0);
    EXPECT_THAT(Error(*database_), EndsWith("\r\n打开数据库失败"));
    EXPECT_EQ(database_->IsOpen(), 1);
}

TEST_F(EndToEnd, WhatCannotBeConnectedNamesTheDriversReason) {
    static constexpr const char* kConnections[] = {"DSN=no-such-source", "Driver={No Such Driver}",
                                                   "Provider=No.Such.Provider;Data Source=x", "=;=;==", "nonsense"};
    for (const char* connection : kConnections) {
        SCOPED_TRACE(connection);
        CTDatabase other;
        EXPECT_EQ(other.Open(connection), 0);
        EXPECT_THAT(Error(other), EndsWith("\r\n打开数据库失败"));
        EXPECT_GT(Error(other).size(), std::string("\r\n打开数据库失败").size()) << "a reason stands before it";
        EXPECT_EQ(other.IsOpen(), 0);
        EXPECT_EQ(other.Open(TheSystem().connection.c_str()), 1) << "and the object stays usable";
    }
    CTDatabase other;
    EXPECT_EQ(other.Open("no-such-source", "me", "secret"), 0);
    EXPECT_THAT(Error(other), EndsWith("\r\n打开数据库失败"));
    EXPECT_THAT(Error(other), ::testing::Not(HasSubstr("secret")));
}

TEST_F(EndToEnd, ADataSourceIsOpenedByName) {
    char folder[] = "/tmp/tkdriver-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string file = std::string(folder) + "/odbc.ini";
    std::FILE* ini = std::fopen(file.c_str(), "w");
    ASSERT_NE(ini, nullptr);
    std::fputs(("[stock]\n" + TheSystem().odbcDataSource).c_str(), ini);
    std::fclose(ini);
    setenv("ODBCINI", file.c_str(), 1);
    CTDatabase source;
    EXPECT_EQ(source.Open("stock", TheSystem().dataSourceUser, TheSystem().dataSourcePassword), 1) << Error(source);
    EXPECT_STREQ(source.GetServer(), "stock");
    EXPECT_STREQ(source.GetUser(), TheSystem().dataSourceUser);
    CTRecordset recordset;
    EXPECT_EQ(recordset.OpenDatabase("stock", TheSystem().dataSourceUser, TheSystem().dataSourcePassword), 1)
        << Error(recordset);
    EXPECT_STREQ(recordset.GetDBMS(), TheSystem().tag);
    unsetenv("ODBCINI");
    std::remove(file.c_str());
    rmdir(folder);
}

TEST_F(EndToEnd, StatementsTellTheRowsTheyTouched) {
    EXPECT_EQ(database_->ExecSQL("update stock set amount = amount + %d where id > %d", 1, 2), 3);
    EXPECT_EQ(database_->ExecSQL("update stock set amount = 0 where id = 99"), 0);
    EXPECT_EQ(database_->ExecuteSQL("update stock set amount = 0 where id = 99"), 1);
    EXPECT_EQ(database_->ExecuteSQL("select 1"), 1);
    EXPECT_EQ(database_->ExecuteEx("insert into stock (id, name) values (%d, '%s')", 6, "新"), 1);
    EXPECT_EQ(Count("name = '新'"), 1);
}

TEST_F(EndToEnd, AFailingStatementNamesTheDriversReasonAndItself) {
    EXPECT_EQ(database_->ExecuteSQL("select * from no_such_table"), 0);
    EXPECT_THAT(Error(*database_), HasSubstr(TheSystem().unknownTable));
    EXPECT_THAT(Error(*database_), EndsWith("\r\nselect * from no_such_table"));
    EXPECT_EQ(database_->ExecSQL("insert into stock (id) values (%d)", 1), 0);
    EXPECT_THAT(Error(*database_), HasSubstr(TheSystem().duplicateKey));
    EXPECT_THAT(Error(*database_), EndsWith("\r\ninsert into stock (id) values (1)"));
    EXPECT_EQ(database_->ExecuteSQL("selekt"), 0);
    EXPECT_EQ(database_->GetRecordset("selekt"), nullptr);
    EXPECT_EQ(database_->ExecuteSQL("update stock set amount = 1"), 1) << "the connection stays usable";
}

TEST_F(EndToEnd, EmptyStatementsDoNoHarm) {
    for (const char* sql : {"", " ", static_cast<const char*>(nullptr)}) {
        database_->ExecuteSQL(sql);
        EXPECT_EQ(database_->IsOpen(), 1);
    }
}

TEST_F(EndToEnd, TransactionsKeepOrTakeBack) {
    EXPECT_EQ(database_->BeginTrans(), 1);
    EXPECT_EQ(database_->ExecSQL("delete from stock where id = 1"), 1);
    database_->RollbackTrans();
    EXPECT_EQ(Count("id = 1"), 1);
    EXPECT_EQ(database_->BeginTrans(), 1);
    EXPECT_EQ(database_->ExecSQL("delete from stock where id = 1"), 1);
    database_->CommitTrans();
    EXPECT_EQ(Count("id = 1"), 0);
}

TEST_F(EndToEnd, ATransactionThatIsNotOpenCannotBeEnded) {
    static constexpr void (*kCalls[])(CTDatabase&) = {
        [](CTDatabase& d) { d.CommitTrans(); },
        [](CTDatabase& d) { d.RollbackTrans(); },
    };
    for (const auto& call : kCalls) {
        try {
            call(*database_);
            ADD_FAILURE() << "no exception";
        } catch (CException* e) {
            e->Delete();
        }
    }
}

TEST_F(EndToEnd, AConnectionInsideATransactionRefusesToClose) {
    database_->BeginTrans();
    database_->ExecSQL("delete from stock where id = 1");
    database_->Close();
    EXPECT_THAT(Error(*database_), EndsWith("\r\n数据库没有打开或打开失败,无法关闭!"));
    EXPECT_EQ(database_->IsOpen(), 1);
    database_ = std::make_unique<CTDatabase>();  // released: what was not committed is taken back
    ASSERT_EQ(database_->Open(TheSystem().connection.c_str()), 1);
    EXPECT_EQ(Count("id = 1"), 1);
}

TEST_F(EndToEnd, ExecuteCommandIsNoPartOfAConnection) {
    EXPECT_EQ(database_->ExecuteCommand("delete from stock"), 0);
    EXPECT_THAT(Error(*database_), EndsWith("\r\ndelete from stock"));
    EXPECT_EQ(Count("1 = 1"), 5);
}

// ---- opening -----------------------------------------------------------------------------------------------------

TEST_F(EndToEnd, TablesAndQueriesAreOpened) {
    CTRecordset recordset(database_.get());
    EXPECT_STREQ(recordset.GetDBMS(), TheSystem().tag);
    EXPECT_EQ(recordset.OpenTable("stock", 1), 1) << Error(recordset);
    EXPECT_EQ(recordset.GetState(), 1);
    EXPECT_EQ(recordset.GetRecordCount(), 5);
    EXPECT_EQ(recordset.OpenSQL("select id from stock where id < 3", 0), 1) << "closed first, then opened";
    EXPECT_EQ(recordset.GetRecordCount(), 2);
    EXPECT_EQ(recordset.GetFieldCount(), 1);
    EXPECT_EQ(recordset.Close(), 1);
    EXPECT_EQ(recordset.GetState(), 0);
    EXPECT_EQ(recordset.Close(), 1);
    EXPECT_EQ(recordset.GetRecordCount(), -1);
    EXPECT_THAT(Error(recordset), EndsWith("\r\nGetRecordCount!"));
}

TEST_F(EndToEnd, WhatCannotBeOpenedNamesTheDriversReason) {
    CTRecordset recordset(database_.get());
    EXPECT_EQ(recordset.OpenTable("no_such_table", 1), 0);
    EXPECT_THAT(Error(recordset), HasSubstr(TheSystem().unknownTable));
    EXPECT_THAT(Error(recordset), EndsWith("\r\nOpen"));
    EXPECT_EQ(recordset.OpenSQL("selekt", 1), 0);
    EXPECT_THAT(Error(recordset), EndsWith("\r\nOpen"));
    EXPECT_EQ(recordset.GetState(), 0);
    EXPECT_EQ(recordset.OpenProcedure("no_such_procedure", 1), 0);
    EXPECT_EQ(recordset.OpenSQL("select 1", 1), 1) << Error(recordset);
}

TEST_F(EndToEnd, ARecordsetOpensAgainstAStringOfItsOwn) {
    CTRecordset recordset;
    EXPECT_EQ(recordset.OpenDatabase(TheSystem().connection.c_str(), ""), 1) << Error(recordset);
    EXPECT_STREQ(recordset.GetDBMS(), TheSystem().tag);
    EXPECT_EQ(recordset.OpenTable("stock", 1), 1) << Error(recordset);
    EXPECT_EQ(recordset.GetRecordCount(), 5);
    EXPECT_EQ(recordset.CloseDatabase(), 1);
    EXPECT_EQ(recordset.OpenTable("stock", 1), 0);
}

TEST_F(EndToEnd, ARecordsetOfAQueryIsTakenOver) {
    CTRecordset recordset(database_->GetRecordset("select * from stock order by id"));
    EXPECT_EQ(Ids(recordset), (Numbers{1, 2, 3, 4, 5}));
}

TEST_F(EndToEnd, ARecordsetShowsTheRowsOfAnother) {
    CTRecordset source;
    OpenStock(source);
    CTRecordset view;
    EXPECT_EQ(view.OpenField(source.GetDispatch()), 1) << Error(view);
    EXPECT_EQ(Ids(view), (Numbers{1, 2, 3, 4, 5}));
    source.MoveFirst();
    EXPECT_EQ(source.GetIntValue("id"), 1) << "each has its own position";
}

TEST_F(EndToEnd, SchemaRowsetsListColumns) {
    Held<IDispatch> rowset(database_->OpenSchema(4));
    ASSERT_TRUE(rowset) << Error(*database_);
    CTRecordset columns;
    EXPECT_EQ(columns.OpenField(rowset.Get()), 1) << Error(columns);
    EXPECT_EQ(columns.SetFilter("TABLE_NAME = 'stock'"), 1) << Error(columns);
    CStringArray names;
    EXPECT_EQ(columns.GetFieldNames(names), 8);
    ASSERT_EQ(names.GetSize(), 8);
    EXPECT_STREQ(names.GetAt(0), "id");
    EXPECT_STREQ(names.GetAt(7), "sold");
    EXPECT_EQ(database_->OpenSchema(12345), nullptr);
    EXPECT_THAT(Error(*database_), EndsWith("\r\nOpenSchema 时出错"));
}

// ---- values ------------------------------------------------------------------------------------------------------

TEST_F(EndToEnd, ValuesComeInTheirTypes) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(stock.GetIntValue("id"), 1);
    EXPECT_EQ(stock.GetIntValue("ID"), 1) << "names ignore case";
    EXPECT_EQ(stock.GetIntValue(0L), 1);
    EXPECT_STREQ(stock.GetStringValue("name"), "螺丝");
    EXPECT_STREQ(stock.GetStringValue(1L), "螺丝");
    EXPECT_STREQ(stock.GetStringValueStr("name"), "'螺丝'");
    EXPECT_EQ(stock.GetDoubleValue("price"), 1.5);
    EXPECT_STREQ(stock.GetStringValue("price"), "        1.5");
    EXPECT_EQ(stock.GetIntValue("amount"), 10);
    EXPECT_STREQ(stock.GetStringValue("total"), "9007199254740993");
    EXPECT_EQ(stock.GetDateValue("made"), 43890.0 + (13 * 3600 + 45 * 60 + 6) / 86400.0);
    EXPECT_STREQ(stock.GetStringValue("made"), "2020-02-29 13:45:06");
    EXPECT_STREQ(stock.GetStringValueStr("made"), "'2020-02-29 13:45:06'");
    EXPECT_STREQ(stock.GetStringValue("note"), "first");
    EXPECT_EQ(stock.GetCharValue("note"), 'f');
    EXPECT_EQ(stock.GetIntValue("sold"), 1);
    EXPECT_STREQ(stock.GetStringValue("sold"), "True");
    EXPECT_EQ(Describe(Owned(stock.GetValue("name"))), "BSTR \"螺丝\"");
    EXPECT_EQ(Describe(Owned(stock.GetValue(Short(0)))), "I4 1");
    EXPECT_EQ(Describe(Owned(stock.GetValue(Text("PRICE")))), "R8 1.5");
}

TEST_F(EndToEnd, NullsAreNullsAndTheirTextsAreEmpty) {
    CTRecordset stock;
    OpenStock(stock);
    stock.MoveNext();
    EXPECT_EQ(Describe(Owned(stock.GetValue("made"))), "NULL");
    EXPECT_EQ(Describe(Owned(stock.GetValue("note"))), "NULL");
    EXPECT_STREQ(stock.GetStringValue("note"), "");
    EXPECT_STREQ(stock.GetStringValueStr("note"), "");
    EXPECT_EQ(stock.GetDateValue("made"), 0.0);
    EXPECT_EQ(stock.GetIntValue("note"), 0);
    stock.MoveNext();
    EXPECT_EQ(Describe(Owned(stock.GetValue("note"))), "BSTR \"\"") << "an empty text is no null";
    EXPECT_EQ(Describe(Owned(stock.GetValue("sold"))), "NULL");
}

TEST_F(EndToEnd, CharactersWithASecondByteLikeASignComeBackWhole) {
    CTRecordset stock;
    OpenStock(stock);
    stock.MoveLast();
    EXPECT_STREQ(stock.GetStringValue("name"), "誠|\\");
    EXPECT_STREQ(stock.GetStringValue("note"), "It's");
    EXPECT_STREQ(stock.GetStringValueStr("note"), "'It''s'");
}

TEST_F(EndToEnd, AFieldThatDoesNotExistGivesTheDefault) {
    CTRecordset stock;
    OpenStock(stock);
    for (const long index : {-1L, 8L, 1000000L})
        EXPECT_EQ(Describe(Owned(stock.GetValue(index))), "EMPTY") << index;
    EXPECT_THAT(Error(stock), EndsWith(std::string("\r\n") + kReadFailed));
    for (const char* name : {"nothing", "", static_cast<const char*>(nullptr), "库"}) {
        EXPECT_EQ(Describe(Owned(stock.GetValue(name))), "EMPTY");
        EXPECT_STREQ(stock.GetStringValue(name), "");
        EXPECT_EQ(stock.GetIntValue(name), 0);
    }
    EXPECT_EQ(Describe(Owned(stock.GetValue(Null()))), "EMPTY");
    EXPECT_EQ(stock.GetIntValue("id"), 1) << "the recordset stays usable";
}

TEST_F(EndToEnd, FieldsTellTheirNames) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(stock.GetFieldCount(), 8);
    EXPECT_STREQ(stock.GetFieldName(1), "name");
    EXPECT_EQ(stock.GetFieldIndex("PRICE"), 2);
    EXPECT_EQ(stock.GetFieldIndex("nothing"), -1);
    EXPECT_EQ(stock.GetFieldType(Text("id")), 3);
    CString names;
    EXPECT_EQ(stock.GetAllFieldNames(names), 8);
    EXPECT_STREQ(names, "id,name,price,amount,total,made,note,sold");
    CStringArray list;
    EXPECT_EQ(stock.GetAllFieldNames(list), 8);
    EXPECT_STREQ(list.GetAt(7), "sold");
    CTField field = stock.GetField("name");
    EXPECT_STREQ(field.GetName(), "name");
    EXPECT_EQ(Describe(Owned(field.GetValue())), "BSTR \"螺丝\"");
    stock.MoveNext();
    EXPECT_EQ(Describe(Owned(field.GetValue())), "BSTR \"bolt\"") << "a field shows the current record";
    EXPECT_STREQ(stock.GetPropertyValue("Update Criteria"), "2");
}

// ---- navigation --------------------------------------------------------------------------------------------------

TEST_F(EndToEnd, MovesStopAtBothEnds) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(stock.GetAbsolutePosition(), 1);
    stock.MoveLast();
    EXPECT_EQ(stock.GetIntValue("id"), 5);
    stock.MoveNext();
    EXPECT_NE(stock.GetEof(), 0);
    EXPECT_EQ(Describe(Owned(stock.GetValue("id"))), "EMPTY");
    EXPECT_THAT(Error(stock), EndsWith(std::string("\r\n") + kReadFailed));
    try {
        stock.MoveNext();
        ADD_FAILURE() << "no exception";
    } catch (CException* e) {
        e->Delete();
    }
    stock.MovePrevious();
    EXPECT_EQ(stock.GetIntValue("id"), 5);
    stock.MoveFirst();
    stock.MovePrevious();
    EXPECT_NE(stock.GetBof(), 0);
    stock.MoveNext();
    EXPECT_EQ(stock.GetIntValue("id"), 1);
}

TEST_F(EndToEnd, MoveCountsFromAStart) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(stock.Move(2L, short{0}), 1);
    EXPECT_EQ(stock.GetIntValue("id"), 3);
    EXPECT_EQ(stock.Move(1L, short{1}), 1);
    EXPECT_EQ(stock.GetIntValue("id"), 2);
    EXPECT_EQ(stock.Move(-1L, short{2}), 1);
    EXPECT_EQ(stock.GetIntValue("id"), 4);
    EXPECT_EQ(stock.Move(100L, short{0}), 1);
    EXPECT_NE(stock.GetEof(), 0);
    EXPECT_EQ(stock.Move(1L, short{0}), 0) << "behind the last there is nowhere to go";
    EXPECT_THAT(Error(stock), EndsWith("\r\nCan not Move!"));
    EXPECT_EQ(stock.Move(-100L, short{0}), 1);
    EXPECT_NE(stock.GetBof(), 0);
}

TEST_F(EndToEnd, AnEmptyRecordsetIsAtBothEnds) {
    CTRecordset stock(database_.get());
    ASSERT_EQ(stock.OpenSQL("select * from stock where id < 0", 1), 1) << Error(stock);
    EXPECT_NE(stock.GetBof(), 0);
    EXPECT_NE(stock.GetEof(), 0);
    EXPECT_EQ(stock.GetRecordCount(), 0);
    EXPECT_EQ(stock.FindFirst("id = 1"), 0);
    EXPECT_EQ(stock.FindNext("id = 1"), 0);
    EXPECT_EQ(stock.Move(1L, short{0}), 0);
    EXPECT_EQ(stock.GetFieldCount(), 8);
    EXPECT_STREQ(stock.GetStringValue("name"), "");
}

TEST_F(EndToEnd, FindGoesToTheNextMatch) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(stock.FindFirst("amount = 7"), 1);
    EXPECT_EQ(stock.GetIntValue("id"), 4);
    EXPECT_EQ(stock.FindNext("amount = 7"), 1);
    EXPECT_EQ(stock.GetIntValue("id"), 5);
    EXPECT_EQ(stock.FindNext("amount = 7"), 1) << "a search was made";
    EXPECT_NE(stock.GetEof(), 0) << "and nothing found";
    EXPECT_EQ(stock.FindNext("amount = 7"), 0) << "at the end none is made";
    stock.MoveFirst();
    EXPECT_EQ(stock.Find("name = '垫圈'"), 1);
    EXPECT_EQ(stock.GetIntValue("id"), 3);
    stock.MoveFirst();
    EXPECT_EQ(stock.Find("no such column = 1"), 0);
    EXPECT_THAT(Error(stock), EndsWith("\r\nFind Error!"));
    EXPECT_EQ(stock.Find("id > 1 and id < 3"), 0) << "one comparison only";
    EXPECT_EQ(stock.Find(nullptr), 0);
}

TEST_F(EndToEnd, AFilterHidesRecords) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(stock.SetFilter("amount = 7"), 1);
    EXPECT_EQ(Ids(stock), (Numbers{4, 5}));
    EXPECT_EQ(stock.GetRecordCount(), 2);
    EXPECT_STREQ(stock.GetFilter(), "amount = 7");
    EXPECT_EQ(stock.SetFilter("name = '螺丝' or id = 3"), 1);
    EXPECT_EQ(Ids(stock), (Numbers{1, 3}));
    EXPECT_EQ(stock.SetFilter("id > 100"), 1);
    EXPECT_EQ(Ids(stock), Numbers());
    EXPECT_EQ(stock.SetFilter("id >"), 0);
    EXPECT_THAT(Error(stock), EndsWith("\r\nid >"));
    EXPECT_EQ(stock.SetFilter(""), 1);
    EXPECT_EQ(stock.GetRecordCount(), 5);
}

TEST_F(EndToEnd, SortReordersInMemory) {
    CTRecordset stock;
    OpenStock(stock);
    stock.SetSort("amount DESC, id");
    EXPECT_EQ(Ids(stock), (Numbers{1, 4, 5, 3, 2}));
    EXPECT_STREQ(stock.GetSort(), "amount DESC, id");
    stock.SetSort("");
    EXPECT_EQ(Ids(stock), (Numbers{1, 2, 3, 4, 5}));
}

TEST_F(EndToEnd, PagesCountRecords) {
    CTRecordset stock;
    OpenStock(stock);
    stock.SetPageSize(2);
    EXPECT_EQ(stock.GetPageCount(), 3);
    stock.SetAbsolutePage(2);
    EXPECT_EQ(stock.GetIntValue("id"), 3);
    stock.SetAbsolutePage(3);
    EXPECT_EQ(stock.GetIntValue("id"), 5);
    EXPECT_EQ(stock.GetAbsolutePage(), 3);
    try {
        stock.SetAbsolutePage(4);
        ADD_FAILURE() << "no exception";
    } catch (CException* e) {
        e->Delete();
    }
    stock.SetAbsolutePosition(2);
    EXPECT_EQ(stock.GetIntValue("id"), 2);
}

TEST_F(EndToEnd, BookmarksLeadBack) {
    CTRecordset stock;
    OpenStock(stock);
    stock.MoveNext();
    const COleVariant second = Owned(stock.GetBookmark());
    stock.MoveLast();
    const COleVariant last = Owned(stock.GetBookmark());
    EXPECT_EQ(stock.CompareBookmarks(second, last), 0);
    EXPECT_EQ(stock.CompareBookmarks(last, last), 1);
    EXPECT_EQ(stock.CompareBookmarks(last, second), 2);
    stock.SetBookmark(second);
    EXPECT_EQ(stock.GetIntValue("id"), 2);
    stock.Move(1L, second);
    EXPECT_EQ(stock.GetIntValue("id"), 3);
}

TEST_F(EndToEnd, ACloneHasItsOwnPosition) {
    CTRecordset stock;
    OpenStock(stock);
    stock.MoveLast();
    CTRecordset clone = stock.Clone(-1);
    EXPECT_EQ(clone.GetIntValue("id"), 1);
    clone.MoveNext();
    EXPECT_EQ(clone.GetIntValue("id"), 2);
    EXPECT_EQ(stock.GetIntValue("id"), 5);
    EXPECT_EQ(clone.Close(), 1);
    EXPECT_EQ(stock.GetState(), 1);
}

TEST_F(EndToEnd, RowsComeAsAnArrayOrAText) {
    CTRecordset stock(database_.get());
    ASSERT_EQ(stock.OpenSQL("select id, name from stock order by id", 1), 1) << Error(stock);
    COleVariant rows = Owned(stock.GetRows(2, Nothing(), Nothing()));
    ASSERT_EQ(V_VT(&rows), VT_ARRAY | VT_VARIANT);
    LONG place[2] = {1, 1};
    COleVariant cell;
    EXPECT_EQ(SafeArrayGetElement(V_ARRAY(&rows), place, &cell), S_OK);
    EXPECT_EQ(Describe(cell), "BSTR \"bolt\"");
    EXPECT_EQ(stock.GetIntValue("id"), 3) << "the next record that was not read";
    EXPECT_STREQ(stock.GetString(2, -1, ";", "/", ""), "3;垫圈/4;nut/5;誠|\\/");
    EXPECT_NE(stock.GetEof(), 0);
}

TEST_F(EndToEnd, ResultsFollowEachOther) {
    CTRecordset first(database_.get());
    if (!TheSystem().hasSeveralResults) {
        EXPECT_EQ(first.OpenSQL("select 1 as a; select 2 as a", 1), 0) << "this system takes one statement";
        ASSERT_EQ(first.OpenSQL("select 1 as a", 1), 1) << Error(first);
    } else {
        ASSERT_EQ(first.OpenSQL("select 1 as a; select 2 as a", 1), 1) << Error(first);
        EXPECT_EQ(first.GetIntValue("a"), 1);
        CTRecordset second = first.NextRecordset(nullptr);
        EXPECT_EQ(second.GetState(), 1);
        EXPECT_EQ(second.GetIntValue("a"), 2);
        CTRecordset none = second.NextRecordset(nullptr);
        EXPECT_EQ(none.GetState(), 0);
        return;
    }
    CTRecordset none = first.NextRecordset(nullptr);
    EXPECT_EQ(none.GetState(), 0);
}

TEST_F(EndToEnd, RequeryShowsWhatChangedMeanwhile) {
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(database_->ExecSQL("delete from stock where id = 1"), 1);
    EXPECT_EQ(stock.GetRecordCount(), 5);
    EXPECT_EQ(stock.Requery(), 1) << Error(stock);
    EXPECT_EQ(stock.GetRecordCount(), 4);
    EXPECT_EQ(stock.GetIntValue("id"), 2);
    database_->ExecuteSQL("drop table stock");
    EXPECT_EQ(stock.Requery(), 0);
    EXPECT_THAT(Error(stock), EndsWith("\r\nRequery 时出错!"));
}

// ---- changes -----------------------------------------------------------------------------------------------------

TEST_F(EndToEnd, ChangesAreWritten) {
    CTRecordset stock;
    OpenStock(stock, 0);
    stock.SetValue("name", Text("螺母'大'"));
    stock.SetValue(2L, Real(9.75));
    stock.Update();
    EXPECT_STREQ(stock.GetStringValue("name"), "螺母'大'");
    EXPECT_EQ(Count("id = 1 and name = '螺母''大''' and price = 9.75"), 1);
    stock.MoveNext();
    stock.SetValue("note", Text("gone"));
    stock.CancelUpdate();
    EXPECT_EQ(Count("note = 'gone'"), 0);
    stock.Update(Text("note"), Text("written"));
    EXPECT_EQ(Count("id = 2 and note = 'written'"), 1);
    stock.SetValue("note", Null());
    stock.MoveNext();  // a move writes what was changed
    EXPECT_EQ(Count("id = 2 and note is null"), 1);
    stock.Delete();
    EXPECT_EQ(Count("id = 3"), 0);
    EXPECT_EQ(Count("1 = 1"), 4);
}

TEST_F(EndToEnd, AReadOnlyRecordsetRefusesChanges) {
    CTRecordset stock;
    OpenStock(stock, 1);
    stock.SetValue("name", Text("x"));
    EXPECT_THAT(Error(stock), EndsWith("\r\nSetValue!"));
    EXPECT_STREQ(stock.GetStringValue("name"), "螺丝");
}

TEST_F(EndToEnd, ARowThatSomebodyElseChangedIsNotOverwritten) {
    CTRecordset stock;
    OpenStock(stock, 0);
    EXPECT_EQ(database_->ExecSQL("update stock set name = 'theirs' where id = 1"), 1);
    stock.SetValue("name", Text("mine"));
    try {
        stock.Update();
        ADD_FAILURE() << "no exception";
    } catch (CException* e) {
        e->Delete();
    }
    EXPECT_EQ(Count("name = 'theirs'"), 1);
    stock.CancelUpdate();
}

// ---- wrappers ----------------------------------------------------------------------------------------------------

TEST_F(EndToEnd, CopiesShareTheConnection) {
    {
        CTDatabase copy(*database_);
        EXPECT_EQ(copy.IsOpen(), 1);
        EXPECT_EQ(copy.ExecSQL("delete from stock where id = 1"), 1);
    }
    EXPECT_EQ(database_->IsOpen(), 0) << "the copy closed what both use";
}

TEST_F(EndToEnd, ACopyAnswersForTheSchema) {
    const long secondsBefore = database_->GetConnectionTimeout();
    CTDatabase copy(*database_);
    {
        const Held<IDispatch> rowset(copy.OpenSchema(20));
        EXPECT_TRUE(rowset) << Error(copy);
    }
    EXPECT_EQ(copy.GetConnectionTimeout(), secondsBefore);
    CStringArray tables;
    EXPECT_EQ(copy.GetAllTables(tables), 1) << Error(copy);
    EXPECT_EQ(copy.IsTableExist("stock"), 1) << Error(copy);
    EXPECT_GE(tables.GetSize(), 1);
    EXPECT_EQ(database_->IsOpen(), 1);
}

TEST_F(EndToEnd, TheLastErrorOfTheThreadIsKept) {
    constexpr DWORD kBefore = 0x2ABCDEF0;  // no function of the platform sets it
    static constexpr char kTwenty[] = "库存货物名称规格型号单位数量价格金额备注";
    const std::string update = std::string("update stock set note = '") + kTwenty + "' where id = 1";
    ASSERT_EQ(database_->ExecuteSQL(update.c_str()), 1) << Error(*database_);
    CTRecordset stock;
    OpenStock(stock);

    const struct {
        const char* label;
        std::function<void()> work;
    } kRows[] = {
        {"a text by name", [&] { EXPECT_STREQ(stock.GetStringValue("note"), kTwenty); }},
        {"a text by position", [&] { EXPECT_STREQ(stock.GetStringValue(6L), kTwenty); }},
        {"a literal",
         [&] { EXPECT_EQ(std::string(stock.GetStringValueStr("note")), "'" + std::string(kTwenty) + "'"); }},
        {"a value", [&] { EXPECT_EQ(Owned(stock.GetValue("note")).vt, VT_BSTR); }},
        {"a field that does not exist", [&] { EXPECT_STREQ(stock.GetStringValue(kTwenty), ""); }},
        {"moves",
         [&] {
             stock.MoveLast();
             stock.MoveFirst();
         }},
        {"a filter", [&] { EXPECT_EQ(stock.SetFilter("note = 'first'"), 1), stock.SetFilter(""); }},
        {"a filter that is refused", [&] { EXPECT_EQ(stock.SetFilter(kTwenty), 0); }},
        {"a statement", [&] { EXPECT_EQ(database_->ExecuteSQL(update.c_str()), 1); }},
        {"a statement that fails", [&] { EXPECT_EQ(database_->ExecuteSQL(kTwenty), 0); }},
        {"a query that fails",
         [&] {
             CTRecordset records(database_.get());
             EXPECT_EQ(records.OpenTable(kTwenty, 1), 0);
         }},
        {"a schema",
         [&] {
             CStringArray tables;
             EXPECT_EQ(database_->GetAllTables(tables), 1);
         }},
        {"another connection",
         [&] {
             CTDatabase other;
             EXPECT_EQ(other.Open(TheSystem().connection.c_str()), 1);
             CTRecordset records(&other);
             EXPECT_EQ(records.OpenSQL("select * from stock", 0), 1);
         }},
        {"a connection that fails",
         [&] {
             CTDatabase other;
             EXPECT_EQ(other.Open("Driver=库存货物名称规格型号单位"), 0);
         }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(kBefore);
        row.work();
        EXPECT_EQ(GetLastError(), kBefore);
    }
}

TEST_F(EndToEnd, ManyRecordsetsAreOpenAtOnce) {
    std::vector<std::unique_ptr<CTRecordset>> recordsets;
    for (int i = 0; i < 20; ++i) {
        recordsets.push_back(std::make_unique<CTRecordset>(database_.get()));
        ASSERT_EQ(recordsets.back()->OpenTable("stock", 1), 1) << Error(*recordsets.back());
    }
    for (auto& recordset : recordsets)
        EXPECT_EQ(recordset->GetRecordCount(), 5);
}

TEST_F(EndToEnd, LongAndWideTextsComeBackWhole) {
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += "库存x";
    ASSERT_EQ(database_->ExecuteEx("update stock set note = '%s' where id = 1", text.c_str()), 1) << Error(*database_);
    CTRecordset stock;
    OpenStock(stock);
    EXPECT_EQ(std::string(stock.GetStringValue("note")), text);
    EXPECT_EQ(std::string(stock.GetStringValueStr("note")), "'" + text + "'");
}

}  // namespace
}  // namespace tk::test
