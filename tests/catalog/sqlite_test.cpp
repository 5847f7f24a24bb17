// The catalog of a real file: names in Chinese, in two cases, with blanks and quotes in them; and files that stand in
// for other systems, with the tables that those are asked for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/listed_names.h"
#include "catalog/odd_circumstances.h"
#include "support/registered_class.h"
#include "support/temporary_folder.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Fields = CTArray<_tagFIELDINFO, _tagFIELDINFO&>;

class SqliteCatalog : public ::testing::Test {
protected:
    /// Opens the file, as another system when a name is given.
    void Open(CTDatabase& database, const char* dbmsName = nullptr) {
        std::string connection = "Driver=SQLite3;Database=" + folder_.File("库存.db") + ";Timeout=5000";
        if (dbmsName != nullptr) connection += std::string(";DBMS Name=") + dbmsName;
        ASSERT_EQ(database.Open(connection.c_str()), 1) << Error(database);
    }
    static std::string Error(CTDatabase& database) { return std::string(database.GetLastErrorString()); }

    void SetUp() override {
        CTDatabase database;
        Open(database);
        static constexpr const char* kStatements[] = {
            "create table \"订单\" (\"编号\" integer primary key, \"名称\" varchar(20) not null, \"单价\" "
            "numeric(10,2) "
            "default 0, \"日期\" timestamp default current_timestamp)",
            "create table \"Order Lines\" (OrderId integer not null references \"订单\" (\"编号\"), Line smallint not "
            "null, "
            "Item char(8) default 'x', Memo text, Raw blob, Big bigint, Price double, primary key (OrderId, Line))",
            "create table \"a\"\"b'c\" (\"d e\" integer not null, other integer references \"订单\", back integer "
            "references \"订单\" (\"编号\"))",
            "create table Counted (Id integer primary key autoincrement)",
            "create view \"视图\" as select \"编号\" from \"订单\"",
            "create index \"IX_名称\" on \"订单\" (\"名称\")",
        };
        for (const char* statement : kStatements)
            ASSERT_EQ(database.ExecuteSQL(statement), 1) << Error(database);
    }

    Apartment apartment_;
    TemporaryFolder folder_;
};

TEST_F(SqliteCatalog, ListsTablesAndViews) {
    CTDatabase database;
    Open(database);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllTables(ar); }),
                ElementsAre("Counted", "Order Lines", "a\"b'c", "订单"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllViews(ar); }), ElementsAre("视图"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllObjects(ar, "SYSTEM TABLE"); }),
                ElementsAre("sqlite_sequence"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllObjects(ar, "SYNONYM"); }), IsEmpty());
}

TEST_F(SqliteCatalog, ListsColumnsTypesAndNothingThatAFileHasNot) {
    CTDatabase database;
    Open(database);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("订单", ar); }),
                ElementsAre("编号", "名称", "单价", "日期"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("a\"b'c", ar); }),
                ElementsAre("d e", "other", "back"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("视图", ar); }), ElementsAre("编号"));
    CStringArray none;
    EXPECT_EQ(database.GetAllFields("no such", none), 0);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetTypeNames(ar); }), ::testing::Contains("varchar"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllDatabases(ar); }), IsEmpty());
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetSchemas(ar); }), IsEmpty());
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllSchemas(ar); }), ElementsAre(""));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllProcedures(ar); }), IsEmpty());
    EXPECT_EQ(database.IsProcedureExist("P"), 0);
}

TEST_F(SqliteCatalog, KnowsKeys) {
    CTDatabase database;
    Open(database);
    EXPECT_STREQ(database.GetPrimaryKey("订单"), "编号");
    EXPECT_STREQ(database.GetPrimaryKey("Order Lines"), "OrderId,Line");
    EXPECT_STREQ(database.GetPrimaryKey("a\"b'c"), "");
    EXPECT_STREQ(database.GetPrimaryKey("no such"), "");
    EXPECT_STREQ(database.GetPrimaryKeyName("订单"), "") << "keys have no names here";
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("Order Lines", ar); }),
                ElementsAre("FK_Order Lines_0"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("a\"b'c", ar); }),
                ElementsAre("FK_a\"b'c_0", "FK_a\"b'c_1"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("订单", ar); }), IsEmpty());
}

TEST_F(SqliteCatalog, IndexesAreRowsOfTheirRowset) {
    CTDatabase database;
    Open(database);
    CTRecordset indexes(&database);
    COleDispatchDriver rowset(database.GetIndexSet("订单", "IX_名称", nullptr));
    ASSERT_EQ(indexes.OpenField(rowset.m_lpDispatch), 1);
    ASSERT_EQ(indexes.GetRecordCount(), 1);
    EXPECT_STREQ(indexes.GetStringValue("INDEX_NAME"), "IX_名称");
    EXPECT_STREQ(indexes.GetStringValue("COLUMN_NAME"), "名称");
}

TEST_F(SqliteCatalog, ListsTheIndexesOfAllTables) {
    CTDatabase database;
    Open(database);
    ASSERT_EQ(database.ExecuteSQL("create index \"ix 2\" on \"Order Lines\" (Item, Line)"), 1);
    CStringArray names;
    EXPECT_EQ(database.GetAllIndexes(names), 2);
    EXPECT_STREQ(names[0], "ix 2");
    EXPECT_STREQ(names[1], "IX_名称");
}

TEST_F(SqliteCatalog, ExistenceIsAskedInTheNamesOwnCase) {
    CTDatabase database;
    Open(database);
    static const struct {
        const char* name;
        int exists;
    } kRows[] = {{"订单", 1},    {"视图", 1}, {"Order Lines", 1}, {"a\"b'c", 1}, {"sqlite_sequence", 1},
                 {"no such", 0}, {"", 0},     {"order lines", 0}, {"单", 0},     {"%", 0}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(database.IsTableExist(row.name), row.exists);
        EXPECT_EQ(database.IsViewExist(row.name), row.exists);
    }
    EXPECT_EQ(database.IsFieldNull("订单", "名称"), 1) << "of the key that stands first";
    EXPECT_EQ(database.IsFieldNull("Counted", "Id"), 1);
    EXPECT_EQ(database.IsFieldNull("no such", "x"), 0);
}

TEST_F(SqliteCatalog, WritesTheTableInTheDialectAskedFor) {
    static const struct {
        const char* dbmsName;
        const char* orders;
        const char* lines;
    } kRows[] = {
        {"Microsoft SQL Server",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\tINT\t\t NOT NULL,\r\n"
         "\t\"名称\"\tVARCHAR (20)\t\t NOT NULL,\r\n"
         "\t\"单价\"\tNUMERIC (10,2)\tDEFAULT (0),\r\n"
         "\t\"日期\"\tDATETIME\tDEFAULT (CURRENT_TIMESTAMP) ,\r\n"
         "\tPRIMARY KEY (\"编号\"))",
         "CREATE TABLE \"ORDER LINES\" (\r\n"
         "\t\"ORDERID\"\tINT\t\t NOT NULL,\r\n"
         "\t\"LINE\"\tSMALLINT\t\t NOT NULL,\r\n"
         "\t\"ITEM\"\tCHAR (8)\tDEFAULT ('X'),\r\n"
         "\t\"MEMO\"\tTEXT,\r\n"
         "\t\"RAW\"\tIMAGE,\r\n"
         "\t\"BIG\"\tUNKNOWN,\r\n"
         "\t\"PRICE\"\tFLOAT ,\r\n"
         "\tPRIMARY KEY (\"ORDERID\",\"LINE\"))"},
        {"Adaptive Server Enterprise",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\tINT\t\t NOT NULL,\r\n"
         "\t\"名称\"\tCHAR (20)\t\t NOT NULL,\r\n"
         "\t\"单价\"\tNUMERIC (10,2)\tDEFAULT (0),\r\n"
         "\t\"日期\"\tTIMESTAMP\tDEFAULT (CURRENT_TIMESTAMP) ,\r\n"
         "\tPRIMARY KEY (\"编号\"))",
         "CREATE TABLE \"ORDER LINES\" (\r\n"
         "\t\"ORDERID\"\tINT\t\t NOT NULL,\r\n"
         "\t\"LINE\"\tSMALLINT\t\t NOT NULL,\r\n"
         "\t\"ITEM\"\tVARCHAR (8)\tDEFAULT ('X'),\r\n"
         "\t\"MEMO\"\tTEXT,\r\n"
         "\t\"RAW\"\tIMAGE,\r\n"
         "\t\"BIG\"\tUNSIGNED BIGINT,\r\n"
         "\t\"PRICE\"\tDOUBLE ,\r\n"
         "\tPRIMARY KEY (\"ORDERID\",\"LINE\"))"},
        {"DB2/LINUX",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\tINT\t\t NOT NULL,\r\n"
         "\t\"名称\"\tVARCHAR (20)\t\t NOT NULL,\r\n"
         "\t\"单价\"\tDECIMAL (10,2)\tWITH DEFAULT 0,\r\n"
         "\t\"日期\"\tTIMESTAMP\tWITH DEFAULT CURRENT_TIMESTAMP ,\r\n"
         "\tPRIMARY KEY (\"编号\"))",
         "CREATE TABLE \"ORDER LINES\" (\r\n"
         "\t\"ORDERID\"\tINT\t\t NOT NULL,\r\n"
         "\t\"LINE\"\tSMALLINT\t\t NOT NULL,\r\n"
         "\t\"ITEM\"\tCHAR (8)\tWITH DEFAULT 'X',\r\n"
         "\t\"MEMO\"\tVARCHAR (2147483647),\r\n"
         "\t\"RAW\"\tBLOB (2147483647),\r\n"
         "\t\"BIG\"\tBIGINT,\r\n"
         "\t\"PRICE\"\tDOUBLE ,\r\n"
         "\tPRIMARY KEY (\"ORDERID\",\"LINE\"))"},
        {"Oracle",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\tFLOAT (10,0)\t\t NOT NULL,\r\n"
         "\t\"名称\"\tVARCHAR2 (20)\t\t NOT NULL,\r\n"
         "\t\"单价\"\tNUMBER (10,2)\tDEFAULT (0),\r\n"
         "\t\"日期\"\tDATE\tDEFAULT (CURRENT_TIMESTAMP) ,\r\n"
         "\tPRIMARY KEY (\"编号\"))",
         "CREATE TABLE \"ORDER LINES\" (\r\n"
         "\t\"ORDERID\"\tFLOAT (10,0)\t\t NOT NULL,\r\n"
         "\t\"LINE\"\tFLOAT (5,0)\t\t NOT NULL,\r\n"
         "\t\"ITEM\"\tCHAR (8)\tDEFAULT ('X'),\r\n"
         "\t\"MEMO\"\tLONG,\r\n"
         "\t\"RAW\"\tLONG,\r\n"
         "\t\"BIG\"\tUNKNOWN,\r\n"
         "\t\"PRICE\"\tFLOAT (15,0) ,\r\n"
         "\tPRIMARY KEY (\"ORDERID\",\"LINE\"))"},
        {"SQLite",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\t\t\t NOT NULL,\r\n"
         "\t\"名称\"\t\t\t NOT NULL,\r\n"
         "\t\"单价\"\t,\r\n"
         "\t\"日期\"\t ,\r\n"
         "\tPRIMARY KEY (\"编号\"))",
         "CREATE TABLE \"ORDER LINES\" (\r\n"
         "\t\"ORDERID\"\t\t\t NOT NULL,\r\n"
         "\t\"LINE\"\t\t\t NOT NULL,\r\n"
         "\t\"ITEM\"\t,\r\n"
         "\t\"MEMO\"\t,\r\n"
         "\t\"RAW\"\t,\r\n"
         "\t\"BIG\"\t,\r\n"
         "\t\"PRICE\"\t ,\r\n"
         "\tPRIMARY KEY (\"ORDERID\",\"LINE\"))"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.dbmsName);
        CTDatabase database;
        Open(database, row.dbmsName);
        EXPECT_STREQ(database.GetTableStruct("订单"), row.orders);
        EXPECT_STREQ(database.GetTableStruct("Order Lines"), row.lines);
        EXPECT_STREQ(database.GetTableStruct("no such"), "CREATE TABLE \"NO SUCH\" ( )");
    }
}

TEST_F(SqliteCatalog, DescribesTheColumnsOfATable) {
    CTDatabase database;
    Open(database, "MS SQL Server");
    Fields fields;
    ASSERT_EQ(database.GetTableStruct("订单", fields), 1) << Error(database);
    ASSERT_EQ(fields.GetSize(), 4);
    const _tagFIELDINFO& key = fields[0];
    EXPECT_STREQ(key.szName, "编号");
    EXPECT_STREQ(key.szType, "INT");
    EXPECT_EQ(key.nPrecision, 10);
    EXPECT_STREQ(key.szNull, " NOT NULL");
    EXPECT_EQ(key.nNullable, 0);
    EXPECT_EQ(key.nPrimaryKey, 1);
    EXPECT_EQ(key.nOrdinal, 1);
    EXPECT_STREQ(key.szTable, "订单");
    EXPECT_STREQ(key.szSchema, "");
    EXPECT_STREQ(key.szCatalog, "");
    const _tagFIELDINFO& price = fields[2];
    EXPECT_STREQ(price.szName, "单价");
    EXPECT_STREQ(price.szType, "NUMERIC (10,2)");
    EXPECT_EQ(price.nPrecision, 10);
    EXPECT_EQ(price.nScale, 2);
    EXPECT_EQ(price.nHasDefault, -1);
    EXPECT_STREQ(price.szDefault, "0");
    EXPECT_STREQ(price.szNull, "");
    EXPECT_EQ(price.nNullable, -1);
    EXPECT_EQ(price.nPrimaryKey, 0);
    EXPECT_EQ(fields[1].nSize, 20);
    EXPECT_EQ(database.GetTableStruct("no such", fields), 1);
    EXPECT_EQ(fields.GetSize(), 0);
}

TEST_F(SqliteCatalog, FindsADescriptionByNumberAndByName) {
    CTDatabase database;
    Open(database, "ORACLE");
    CTRecordset columns(&database);
    COleDispatchDriver rowset(database.GetFieldSet("订单", nullptr));
    ASSERT_EQ(columns.OpenField(rowset.m_lpDispatch), 1);
    _tagFIELDINFO field = {};
    EXPECT_EQ(columns.GetFieldInfo("单价", &field), 1);
    EXPECT_STREQ(field.szType, "NUMBER (10,2)");
    EXPECT_EQ(columns.GetFieldInfo("no such", &field), 0);
    EXPECT_EQ(columns.GetFieldInfo(0L, &field), 0) << "behind the last row nothing is looked for";
    columns.MoveFirst();
    EXPECT_EQ(columns.GetFieldInfo(1L, &field), 1);
    EXPECT_STREQ(field.szName, "名称");
    EXPECT_EQ(columns.GetFieldInfo(4L, &field), 0);
    EXPECT_EQ(columns.GetFieldInfo("编号", &field), 1);
    EXPECT_EQ(field.nOrdinal, 1);

    // Of no rows there is no first one to go to.
    CTRecordset none(&database);
    COleDispatchDriver empty(database.GetFieldSet("no such", nullptr));
    ASSERT_EQ(none.OpenField(empty.m_lpDispatch), 1);
    const CString before = none.GetLastErrorString();
    EXPECT_EQ(none.GetFieldInfo("编号", &field), 0);
    EXPECT_EQ(none.GetFieldInfo(0L, &field), 0);
    EXPECT_EQ(none.GetFieldInfoCurrent(&field), 0);
    EXPECT_STREQ(none.GetFieldsStruct(), "");
    EXPECT_STREQ(none.GetLastErrorString(), before);
}

TEST_F(SqliteCatalog, TellsNothingOfATableThatIsGone) {
    CTDatabase database;
    CTDatabase other;
    Open(database, "Microsoft SQL Server");
    Open(other);
    ExpectNothingOfATableThatIsGone(database, other);
}

TEST_F(SqliteCatalog, LongNamesAreCutInRecordsAlone) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    ExpectLongNamesAreCutInRecordsAlone(database, 200, "\"");
}

TEST_F(SqliteCatalog, AClosedConnectionTellsNothing) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    database.Close();
    ExpectNothingOfAClosedConnection(database);
}

// ---- a file that stands in for Oracle ------------------------------------------------------------------------------

TEST_F(SqliteCatalog, AnOracleStandInListsItsObjects) {
    CTDatabase database;
    Open(database, "ORACLE");
    CStringArray names;
    EXPECT_EQ(database.GetAllTables(names), 0);
    EXPECT_THAT(Error(database), HasSubstr("no such table: OBJ"));
    ASSERT_EQ(database.ExecuteSQL("create table OBJ (OBJECT_ID integer primary key, OBJECT_NAME varchar(128), "
                                  "OBJECT_TYPE varchar(18))"),
              1);
    EXPECT_EQ(database.GetAllTables(names), 0) << "an empty list";
    ASSERT_EQ(database.ExecuteSQL("insert into OBJ (OBJECT_NAME, OBJECT_TYPE) values ('订单', 'TABLE'), "
                                  "('V_STOCK', 'VIEW'), ('Mixed Case', 'TABLE'), ('P_SAVE', 'PROCEDURE'), "
                                  "('P;1', 'PROCEDURE')"),
              1);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllTables(ar); }), ElementsAre("订单", "Mixed Case"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllViews(ar); }), ElementsAre("V_STOCK"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllProcedures(ar); }), ElementsAre("P_SAVE", "P;1"));
    EXPECT_EQ(database.GetAllObjects(names, "PACKAGE"), 0);
}

}  // namespace
}  // namespace tk::test
