// CREATE TABLE scripts and the records of a table's columns.
#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

using Fields = CTArray<_tagFIELDINFO, _tagFIELDINFO&>;

Row ColumnRow(const char* name, long type, bool nullable, const char* defaultText = nullptr, long size = 20) {
    return {
        {"COLUMN_NAME", Text(name)},
        {"TABLE_NAME", Text("T")},
        {"COLUMN_HASDEFAULT", Flag(defaultText != nullptr)},
        {"COLUMN_DEFAULT", defaultText == nullptr ? Null() : Text(defaultText)},
        {"IS_NULLABLE", Flag(nullable)},
        {"DATA_TYPE", Integer(VT_UI2, type)},
        {"CHARACTER_MAXIMUM_LENGTH", Long(size)},
    };
}

class TableScript : public CatalogTest {
protected:
    void SetUp() override { Open(database_, "Microsoft SQL Server"); }
    void TearDown() override {
        held_.reset();
        keyRows_ = {};
        CatalogTest::TearDown();
    }

    /// The table has this key and these columns: two rowsets, and two recordsets that show them.
    void Table(std::vector<const char*> keys, std::vector<Row> columns) {
        auto keyRows = Make("keys");
        auto position = std::make_shared<std::size_t>(0);
        std::vector<Held<ScriptedObject>> rows;
        for (const char* key : keys)
            rows.push_back(MakeFields({{"COLUMN_NAME", Text(key)}}));
        const std::size_t count = rows.size();
        keyRows->On(Get(1006)).Does([position, count](const Arguments&) { return Flag(*position >= count); });
        keyRows->On(Call(1018)).Does([position](const Arguments&) { return ++*position, Nothing(); });
        keyRows->On(Get(0)).Does([position, rows](const Arguments&) { return Object(rows.at(*position).Get()); });
        keyRows_ = keyRows;
        recordsets_->Give(keyRows.Get());
        Show(std::move(columns));
    }

    std::unique_ptr<CTDatabase> held_ = std::make_unique<CTDatabase>();
    CTDatabase& database_ = *held_;
    Held<ScriptedObject> keyRows_;
};

TEST_F(TableScript, ATableWithAKey) {
    Table({"ID"}, {ColumnRow("ID", 3, false), ColumnRow("NAME", 129, true)});
    EXPECT_STREQ(database_.GetTableStruct("T"),
                 "CREATE TABLE \"T\" (\r\n\t\"ID\"\tINT\t\t NOT NULL,\r\n\t\"NAME\"\tVARCHAR (20) ,\r\n\tPRIMARY KEY "
                 "(\"ID\"))");
    EXPECT_EQ(ErrorOf(database_), "返回编码:[0x00000000]操作完全成功。");
}

TEST_F(TableScript, AsksForTheKeyThenForTheColumns) {
    Table({"ID"}, {ColumnRow("ID", 3, false)});
    journal_.Take();
    database_.GetTableStruct("Orders");
    EXPECT_THAT(
        Calls(),
        ElementsAre("connection.get 18", "connection.call 19 (I4 28, VARIANT[] {EMPTY, EMPTY, BSTR \"Orders\"})",
                    "connection.get 18", "connection.get 0", "connection.get 18",                                 //
                    "keys.putref 1056 (UNKNOWN rowset)", "keys.get 1006", "keys.get 0", "keys.call 1018",         //
                    "keys.get 1006", "keys.get 1054",                                                             //
                    "connection.get 18",                                                                          //
                    "connection.get 18", "connection.call 19 (I4 4, VARIANT[] {EMPTY, EMPTY, BSTR \"Orders\"})",  //
                    "connection.get 18", "connection.get 0", "connection.get 18",                                 //
                    "records.putref 1056 (UNKNOWN rowset)",                                                       //
                    "records.get 1006", "records.call 1020", "records.get 1010",                                  //
                    "records.get 1006", "records.get 0", "records.get 0", "records.get 0", "records.get 0",       //
                    "records.get 0", "records.get 0", "records.get 0", "records.get 0", "records.get 0",          //
                    "records.get 0", "records.get 0", "records.get 0", "records.get 0",                           //
                    "records.call 1018", "records.get 1054"));
}

TEST_F(TableScript, EverythingIsInCapitals) {
    Table({"编号", "line"}, {ColumnRow("编号", 3, false), ColumnRow("line", 2, false),
                             ColumnRow("at", 135, true, "getdate()"), ColumnRow("memo", 129, true, "'none ａ'")});
    EXPECT_STREQ(database_.GetTableStruct("orders_订单"),
                 "CREATE TABLE \"ORDERS_订单\" (\r\n\t\"编号\"\tINT\t\t NOT NULL,\r\n\t\"LINE\"\tSMALLINT\t\t NOT "
                 "NULL,\r\n\t\"AT\"\tDATETIME\tDEFAULT (GETDATE()),\r\n\t\"MEMO\"\tVARCHAR (20)\tDEFAULT ('NONE Ａ') "
                 ",\r\n\tPRIMARY KEY (\"编号\",\"LINE\"))");
}

TEST_F(TableScript, WithoutAKeyTheBlankStays) {
    Table({}, {ColumnRow("ID", 3, true)});
    EXPECT_STREQ(database_.GetTableStruct("T"), "CREATE TABLE \"T\" (\r\n\t\"ID\"\tINT )");
    Table({}, {});
    EXPECT_STREQ(database_.GetTableStruct("T"), "CREATE TABLE \"T\" ( )");
    Table({""}, {});
    EXPECT_STREQ(database_.GetTableStruct(nullptr), "CREATE TABLE \"\" ( )");
    Table({"A,B"}, {});
    EXPECT_STREQ(database_.GetTableStruct("100%s"), "CREATE TABLE \"100%S\" ( ,\r\n\tPRIMARY KEY (\"A\",\"B\"))");
}

TEST_F(TableScript, TheSystemDecidesTypesAndDefaults) {
    static const struct {
        const char* dbmsName;
        const char* script;
    } kRows[] = {
        {"MS SQL Server", "CREATE TABLE \"T\" (\r\n\t\"A\"\tREAL\t\t NOT NULL\tDEFAULT (1) )"},
        {"Adaptive Server", "CREATE TABLE \"T\" (\r\n\t\"A\"\tFLOAT\t\t NOT NULL\tDEFAULT (1) )"},
        {"DB2/NT", "CREATE TABLE \"T\" (\r\n\t\"A\"\tREAL\t\t NOT NULL\tWITH DEFAULT 1 )"},
        {"Oracle", "CREATE TABLE \"T\" (\r\n\t\"A\"\tFLOAT (0,0)\t\t NOT NULL\tDEFAULT (1) )"},
        {"PostgreSQL", "CREATE TABLE \"T\" (\r\n\t\"A\"\t\t\t NOT NULL )"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.dbmsName);
        Open(database_, row.dbmsName);
        Table({}, {ColumnRow("A", 4, false, "1")});
        EXPECT_STREQ(database_.GetTableStruct("T"), row.script);
    }
}

TEST_F(TableScript, AKeyThatCannotBeHadIsNone) {
    Table({}, {ColumnRow("ID", 3, true)});
    Script& schemas = connection_->On(Call(19));
    schemas = Script();
    schemas.Fails("不支持").Then().Returns(Object(rowset_.Get()));
    keyRows_ = {};
    recordsets_ = nullptr;
    recordsets_ = std::make_unique<RegisteredClass>(kRecordsetClass);
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database_.GetTableStruct("T"), "CREATE TABLE \"T\" (\r\n\t\"ID\"\tINT )");
}

TEST_F(TableScript, ColumnsThatCannotBeHadAreAFailure) {
    Fields fields;
    _tagFIELDINFO field = {};
    fields.Add(field);
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_STREQ(database_.GetTableStruct("T"), "");
    EXPECT_EQ(ErrorOf(database_), Failure("不支持", "OpenSchema 出错!"));
    EXPECT_EQ(database_.GetTableStruct("T", fields), 0);
    EXPECT_EQ(fields.GetSize(), 0) << "emptied before";
    connection_->On(Get(18)).Fails("断开");
    EXPECT_STREQ(database_.GetTableStruct("T"), "");
    EXPECT_EQ(ErrorOf(database_), Failure("断开", "T"));
    EXPECT_EQ(database_.GetTableStruct("T", fields), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("断开", "T"));
}

TEST_F(TableScript, AConnectionThatIsNotOpenIsAFailure) {
    CTDatabase closed;
    Fields fields;
    EXPECT_STREQ(closed.GetTableStruct("T"), "");
    EXPECT_EQ(ErrorOf(closed), "数据库没有打开或打开失败,系统没有合法调用Open方法！");
    EXPECT_EQ(closed.GetTableStruct("T", fields), 0);
    EXPECT_EQ(ErrorOf(closed), "数据库没有打开或打开失败,系统没有合法调用Open方法！");
}

// ---- records -------------------------------------------------------------------------------------------------------

TEST_F(TableScript, RecordsOfAllColumns) {
    Table({"ID", "LINE"},
          {ColumnRow("ID", 3, false), ColumnRow("line", 2, false), ColumnRow("NAME", 129, true, "'x'")});
    Fields fields;
    _tagFIELDINFO before = {};
    for (int i = 0; i < 5; ++i)
        fields.Add(before);
    EXPECT_EQ(database_.GetTableStruct("T", fields), 1);
    ASSERT_EQ(fields.GetSize(), 3);
    EXPECT_STREQ(fields.GetAt(0).szName, "ID");
    EXPECT_STREQ(fields.GetAt(0).szType, "INT");
    EXPECT_EQ(fields.GetAt(0).nPrimaryKey, 1);
    EXPECT_EQ(fields.GetAt(1).nPrimaryKey, 1) << "whatever the case";
    EXPECT_STREQ(fields.GetAt(2).szName, "NAME");
    EXPECT_STREQ(fields.GetAt(2).szType, "VARCHAR (20)");
    EXPECT_STREQ(fields.GetAt(2).szDefault, "'x'");
    EXPECT_STREQ(fields.GetAt(2).szTable, "T");
    EXPECT_EQ(fields.GetAt(2).nPrimaryKey, 0);
    EXPECT_EQ(fields.GetAt(2).nReserved, 0);
}

TEST_F(TableScript, APartOfAKeysNameIsMarkedToo) {
    Table({"USERID", "编号"}, {ColumnRow("ID", 3, false), ColumnRow("USERID", 3, false), ColumnRow("号", 3, true),
                               ColumnRow("D,编", 3, true), ColumnRow("", 3, true), ColumnRow("USERIDS", 3, true)});
    Fields fields;
    EXPECT_EQ(database_.GetTableStruct("T", fields), 1);
    ASSERT_EQ(fields.GetSize(), 6);
    static constexpr int kMarks[] = {1, 1, 1, 1, 0, 0};
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(fields.GetAt(i).szName);
        EXPECT_EQ(fields.GetAt(i).nPrimaryKey, kMarks[i]);
    }
}

TEST_F(TableScript, ATableWithoutColumnsHasNoRecords) {
    Table({}, {});
    Fields fields;
    EXPECT_EQ(database_.GetTableStruct("NOSUCH", fields), 1);
    EXPECT_EQ(fields.GetSize(), 0);
}

TEST_F(TableScript, AFailingWalkIsReported) {
    Table({}, {ColumnRow("ID", 3, false), ColumnRow("NAME", 129, true)});
    records_->On(Call(1018)) = Script();
    records_->On(Call(1018)).Fails("不能移动");
    Fields fields;
    EXPECT_EQ(database_.GetTableStruct("订单", fields), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("不能移动", "订单"));
    Table({}, {ColumnRow("ID", 3, false)});
    records_->On(Get(1006)) = Script();
    records_->On(Get(1006)).Fails("断开");
    EXPECT_EQ(database_.GetTableStruct("T", fields), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("断开", "GetFieldInfo!"));
}

}  // namespace
}  // namespace tk::test
