// Lists of tables, views and procedures, and whether one of them exists.
#include "catalog/catalog_fixture.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

constexpr char kListFailed[] = "筛选数据对象出错";
constexpr char kCreated[] = "返回编码:[0x00000000]操作完全成功。";

class Database : public CTDatabase {
public:
    using CTDatabase::IsObjectExist;
};

class ObjectLists : public CatalogTest {
protected:
    /// The lines of an Oracle list, before the first row is read.
    static Lines Query(const char* type) {
        return {"connection.get 0",
                "connection.get 18",
                "records.get 1054",
                "records.put 1051 (I4 3)",
                std::string("records.call 1022 (BSTR \"SELECT OBJECT_NAME FROM OBJ WHERE OBJECT_TYPE='") + type +
                    "'\", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)",
                "records.put 1004 (I4 1000)"};
    }
    static Lines Begin(Lines lines, std::size_t count) {
        lines.resize(std::min(count, lines.size()));
        return lines;
    }

    CStringArray names_;
};

// ---- tables and views ----------------------------------------------------------------------------------------------

TEST_F(ObjectLists, AWalkBindsARecordsetToTheRowset) {
    Database database;
    Open(database, "Microsoft SQL Server");
    Show({{{"TABLE_NAME", Text("ORDERS")}}, {{"TABLE_NAME", Text("订单")}}});
    EXPECT_EQ(database.GetAllTables(names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("ORDERS", "订单"));
    EXPECT_THAT(journal_.Take(),
                ElementsAre("connection.get 18",                                                            //
                            "connection.call 19 (I4 20, VARIANT[] {EMPTY, EMPTY, EMPTY, BSTR \"TABLE\"})",  //
                            "connection.get 18",                                                            //
                            "connection.get 0", "connection.get 18",                                        //
                            "records.putref 1056 (UNKNOWN rowset)",                                         //
                            "records.get 1006",                                                             //
                            "records.get 0", "fields.get 0 (BSTR \"TABLE_NAME\")", "field.get 0",           //
                            "records.call 1018", "records.get 1006",                                        //
                            "records.get 0", "fields.get 0 (BSTR \"TABLE_NAME\")", "field.get 0",           //
                            "records.call 1018", "records.get 1006",                                        //
                            "records.get 1054"));
    EXPECT_EQ(ErrorOf(database), kCreated);
    EXPECT_EQ(rowset_->References(), 2u);
}

TEST_F(ObjectLists, AnOpenRecordsetIsClosedBehindTheWalk) {
    Database database;
    Open(database, "Microsoft SQL Server");
    Show({});
    records_->On(Get(1054)).Returns(Long(1));
    EXPECT_EQ(database.GetAllTables(names_), 1);
    const Lines lines = Calls();
    EXPECT_THAT(Lines(lines.end() - 2, lines.end()), ElementsAre("records.get 1054", "records.call 1014"));
    EXPECT_EQ(records_->References(), 1u);
}

TEST_F(ObjectLists, EachAsksForItsType) {
    static const struct {
        const char* label;
        int (*list)(CTDatabase&, CStringArray&);
        const char* type;
    } kRows[] = {
        {"tables", [](CTDatabase& d, CStringArray& a) { return d.GetAllTables(a); }, "BSTR \"TABLE\""},
        {"views", [](CTDatabase& d, CStringArray& a) { return d.GetAllViews(a); }, "BSTR \"VIEW\""},
        {"any", [](CTDatabase& d, CStringArray& a) { return d.GetAllObjects(a, "SYNONYM"); }, "BSTR \"SYNONYM\""},
        {"null", [](CTDatabase& d, CStringArray& a) { return d.GetAllObjects(a, nullptr); }, "EMPTY"},
    };
    Database database;
    Open(database, "Adaptive Server");
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({});
        journal_.Take();
        EXPECT_EQ(row.list(database, names_), 1) << "an empty list is a success";
        EXPECT_EQ(journal_.Take().at(1),
                  std::string("connection.call 19 (I4 20, VARIANT[] {EMPTY, EMPTY, EMPTY, ") + row.type + "})");
    }
}

TEST_F(ObjectLists, AppendWhatTheRowsetHas) {
    Database database;
    Open(database, "Microsoft SQL Server");
    names_.Add("before");
    Show({{{"TABLE_NAME", Text("T")}}, {{"TABLE_NAME", Text("T")}}, {{"TABLE_NAME", Null()}}, {{"OTHER", Text("x")}}});
    EXPECT_EQ(database.GetAllTables(names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("before", "T", "T", "", "")) << "twice the same, and no name at all";
}

TEST_F(ObjectLists, WithoutARowsetTheSystemsErrorIsTheDetail) {
    Database database;
    SetLastError(2);
    const std::string notFound(GetLastErrorText());
    SetLastError(2);
    EXPECT_EQ(database.GetAllTables(names_), 0);
    EXPECT_EQ(ErrorOf(database), "筛选数据对象出错\r\n" + notFound);
    EXPECT_EQ(connections_->Created(), 0);

    Open(database, "Microsoft SQL Server");
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_EQ(database.GetAllViews(names_), 0);
    EXPECT_THAT(ErrorOf(database), ::testing::StartsWith("筛选数据对象出错\r\n"));
    EXPECT_THAT(ErrorOf(database), ::testing::Not(::testing::HasSubstr("OpenSchema")));
    EXPECT_EQ(names_.GetSize(), 0);
}

TEST_F(ObjectLists, AFailureAtAnyStepIsReported) {
    static const struct {
        const char* label;
        Member member;
    } kRows[] = {{"end", Get(1006)}, {"next", Call(1018)}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Database database;
        Open(database, "Microsoft SQL Server");
        Show({{{"TABLE_NAME", Text("T")}}});
        records_->On(row.member) = Script();
        records_->On(row.member).Fails("断开");
        EXPECT_EQ(database.GetAllTables(names_), 0);
        EXPECT_EQ(ErrorOf(database), Failure("断开", kListFailed));
    }
}

TEST_F(ObjectLists, ARecordsetThatShowsNothingIsReported) {
    Database database;
    Open(database, "Microsoft SQL Server");
    Show({});
    records_->On(PutRef(1056)).Fails("没有接口");
    EXPECT_EQ(database.GetAllTables(names_), 0);
    EXPECT_EQ(ErrorOf(database), Failure("没有接口", "操作 OpenField 时出现异常!"));
    recordsets_->Refuse(E_ACCESSDENIED);
    EXPECT_EQ(database.GetAllTables(names_), 0);
    EXPECT_THAT(ErrorOf(database), ::testing::StartsWith("错误[0x80070005]:"));
}

// ---- Oracle --------------------------------------------------------------------------------------------------------

TEST_F(ObjectLists, OracleIsAskedByAQuery) {
    static const struct {
        const char* label;
        int (*list)(CTDatabase&, CStringArray&);
        const char* type;
    } kRows[] = {
        {"tables", [](CTDatabase& d, CStringArray& a) { return d.GetAllTables(a); }, "TABLE"},
        {"views", [](CTDatabase& d, CStringArray& a) { return d.GetAllViews(a); }, "VIEW"},
        {"procedures", [](CTDatabase& d, CStringArray& a) { return d.GetAllProcedures(a); }, "PROCEDURE"},
        {"any", [](CTDatabase& d, CStringArray& a) { return d.GetAllObjects(a, "a'b"); }, "a'b"},
        {"null", [](CTDatabase& d, CStringArray& a) { return d.GetAllObjects(a, nullptr); }, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Database database;
        Open(database, "oracle");
        Show({{{"FIRST", Text("P_SAVE;1")}, {"OBJECT_NAME", Text("x")}}, {{"FIRST", Text("订单")}}});
        journal_.Take();
        names_.RemoveAll();
        EXPECT_EQ(row.list(database, names_), 1);
        EXPECT_THAT(TextsOf(names_), ElementsAre("P_SAVE;1", "订单")) << "whole, and the first column alone";
        const Lines lines = Calls();
        EXPECT_EQ(Begin(lines, 6), Query(row.type));
        EXPECT_THAT(Lines(lines.begin() + 6, lines.end()),
                    ElementsAre("records.get 1006", "records.get 1006", "records.get 0", "records.call 1018",
                                "records.get 1006", "records.get 0", "records.call 1018", "records.get 1006",
                                "records.get 1054"));
        EXPECT_EQ(ErrorOf(database), kCreated);
    }
}

TEST_F(ObjectLists, AnEmptyListIsAFailureOnOracle) {
    Database database;
    Open(database, "ORACLE");
    Show({});
    EXPECT_EQ(database.GetAllTables(names_), 0);
    EXPECT_EQ(ErrorOf(database), kCreated);
}

TEST_F(ObjectLists, AQueryThatFailsIsReported) {
    Database database;
    Open(database, "ORACLE");
    Show({});
    records_->On(Call(1022)).Fails("表 OBJ 不存在");
    EXPECT_EQ(database.GetAllTables(names_), 0);
    EXPECT_EQ(ErrorOf(database), Failure("表 OBJ 不存在", "Open"));
    recordsets_->Give(records_.Get());
    records_->On(Call(1022)) = Script();
    records_->On(Get(1006)) = Script();
    records_->On(Get(1006)).Fails("断开");
    EXPECT_EQ(database.GetAllTables(names_), 0);
    EXPECT_EQ(ErrorOf(database), Failure("断开", kListFailed));
}

// ---- procedures ----------------------------------------------------------------------------------------------------

TEST_F(ObjectLists, ProceduresAreThoseOfTheCurrentSchemaWithoutTheirNumbers) {
    Database database;
    Open(database, "Microsoft SQL Server");
    names_.Add("before");
    Show({{{"PROCEDURE_NAME", Text("P_SAVE;1")}},
          {{"PROCEDURE_NAME", Text("P_LOAD")}},
          {{"PROCEDURE_NAME", Text("a;b;c")}},
          {{"PROCEDURE_NAME", Text(";1")}},
          {{"PROCEDURE_NAME", Text("保存;1")}},
          {{"PROCEDURE_NAME", Text("P_LOAD")}}});
    journal_.Take();
    EXPECT_EQ(database.GetAllProcedures(names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("before", "P_SAVE", "P_LOAD", "a", "", "保存", "P_LOAD"));
    const Lines lines = Calls();
    // the state for the schema's name comes first
    EXPECT_EQ(lines.at(2), "connection.call 19 (I4 16, VARIANT[] {EMPTY, BSTR \"dbo\"})");
}

TEST_F(ObjectLists, AUserWithoutANameHasProceduresWithoutASchema) {
    Database database;
    DriverTest::Open(database, {{"DBMS Name", Text("SQLite")}});
    Show({});
    EXPECT_EQ(database.GetAllProcedures(names_), 1);
    EXPECT_THAT(Calls(), ::testing::Contains("connection.call 19 (I4 16, VARIANT[] {EMPTY, BSTR \"\"})"));
}

TEST_F(ObjectLists, ProceduresOfAClosedConnectionAreNone) {
    Database database;
    EXPECT_EQ(database.GetAllProcedures(names_), 0);
    EXPECT_EQ(ErrorOf(database), "");
    Open(database, "DB2");
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_EQ(database.GetAllProcedures(names_), 0);
    EXPECT_EQ(ErrorOf(database), Failure("不支持", "OpenSchema 出错!"));
    connection_->On(Get(18)).Fails("断开");
    EXPECT_EQ(database.GetAllProcedures(names_), 0);
    EXPECT_EQ(ErrorOf(database), Failure("断开", kListFailed));
}

// ---- existence -----------------------------------------------------------------------------------------------------

TEST_F(ObjectLists, WhatHasColumnsExists) {
    for (const bool view : {false, true}) {
        SCOPED_TRACE(view ? "view" : "table");
        Database database;
        Open(database, "Microsoft SQL Server");
        const auto exists = [&](const char* name) {
            journal_.Take();
            return view ? database.IsViewExist(name) : database.IsTableExist(name);
        };
        Show({{{"COLUMN_NAME", Text("ID")}}, {{"COLUMN_NAME", Text("NAME")}}});
        EXPECT_EQ(exists("ORDERS"), 1);
        EXPECT_THAT(
            journal_.Take(),
            ElementsAre("connection.get 18", "connection.call 19 (I4 4, VARIANT[] {EMPTY, EMPTY, BSTR \"ORDERS\"})",
                        "connection.get 18", "connection.get 0", "connection.get 18",
                        "records.putref 1056 (UNKNOWN rowset)", "records.get 1006", "records.get 1054"));
        Show({});
        EXPECT_EQ(exists("NOSUCH"), 0);
        EXPECT_EQ(ErrorOf(database), kCreated);
        Show({{{"COLUMN_NAME", Text("ID")}}});
        records_->On(Get(1006)) = Script();
        records_->On(Get(1006)).Fails("断开");
        EXPECT_EQ(exists("ORDERS"), 0);
        connection_->On(Call(19)).Fails("不支持");
        EXPECT_EQ(exists("ORDERS"), 0);
        database.Close();
        connection_->On(Get(18)).Returns(Long(0));
        EXPECT_EQ(exists("ORDERS"), 0);
    }
}

TEST_F(ObjectLists, OtherTypesExistNowhereAndAskNothing) {
    Database database;
    Open(database, "Microsoft SQL Server");
    for (const char* type :
         {static_cast<const char*>(nullptr), "", "PROCEDURE", "TABLES", " TABLE", "SYSTEM TABLE", "VIE", "表"}) {
        SCOPED_TRACE(type == nullptr ? "null" : type);
        EXPECT_EQ(database.IsObjectExist("T", type), 0);
    }
    EXPECT_THAT(journal_.Take(), IsEmpty());
    for (const char* type : {"TABLE", "table", "Table", "VIEW", "view"}) {
        SCOPED_TRACE(type);
        Show({{{"COLUMN_NAME", Text("ID")}}});
        EXPECT_EQ(database.IsObjectExist("T", type), 1);
    }
}

TEST_F(ObjectLists, AProcedureIsAskedForWithItsSchemaInFront) {
    static const struct {
        const char* name;
        const char* restrictions;
    } kRows[] = {
        {"P_SAVE", "EMPTY, BSTR \"dbo\", BSTR \"P_SAVE\""},
        {"app.P_SAVE", "EMPTY, BSTR \"app\", BSTR \"app.P_SAVE\""},
        {"a.b.c", "EMPTY, BSTR \"a\", BSTR \"a.b.c\""},
        {".P", "EMPTY, BSTR \"\", BSTR \".P\""},
        {"P.", "EMPTY, BSTR \"P\", BSTR \"P.\""},
        {"库.保存", "EMPTY, BSTR \"库\", BSTR \"库.保存\""},
        {"", "EMPTY, BSTR \"dbo\", BSTR \"\""},
        {nullptr, "EMPTY, BSTR \"dbo\", EMPTY"},
    };
    Database database;
    Open(database, "Microsoft SQL Server");
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name == nullptr ? "null" : row.name);
        Show({{{"PROCEDURE_NAME", Text("x")}}});
        journal_.Take();
        EXPECT_EQ(database.IsProcedureExist(row.name), 1);
        EXPECT_THAT(Calls(), ::testing::Contains(std::string("connection.call 19 (I4 16, VARIANT[] {") +
                                                 row.restrictions + "})"));
        Show({});
        EXPECT_EQ(database.IsProcedureExist(row.name), 0);
    }
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_EQ(database.IsProcedureExist("P"), 0);
    connection_->On(Get(18)).Fails("断开");
    EXPECT_EQ(database.IsProcedureExist("P"), 0);
}

}  // namespace
}  // namespace tk::test
