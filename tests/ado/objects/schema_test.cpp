// The catalog of a database as rowsets.
#include <gtest/gtest.h>

#include <fstream>

#include "ado/schema/declared_type.h"
#include "database_test.h"

#include "ado/odbc/odbc_api.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class SchemaTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        connection_ = Connect();
        Execute(connection_,
                u"create table maker (code char(4) not null, land varchar(30) not null, name nvarchar(40), "
                u"primary key (land, code))");
        Execute(connection_,
                u"create table 货物 (id integer primary key, name varchar(20) not null default 'x', "
                u"price numeric(12,2), born timestamp, body text, code char(4), land varchar(30), "
                u"foreign key (land, code) references maker (land, code) on delete cascade)");
        Execute(connection_, u"create unique index 货物_name on 货物 (name desc, price)");
        Execute(connection_, u"create view cheap as select * from 货物 where price < 10");
    }
    Object Schema(LONG number, const std::vector<Value>& restrictions = {}) const {
        const Outcome outcome = connection_.Call(connection::kOpenSchema, {Number(number), Array(restrictions)});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        return outcome.Result();
    }

    Object connection_;
};

TEST_F(SchemaTest, ListsTablesInOrderOfTypeAndName) {
    const Object tables = Schema(20);
    EXPECT_EQ(tables.Get(kLockType).Long(), 1);
    EXPECT_EQ(tables.Get(kFields).Result().Get(collection::kCount).Long(), 9);
    EXPECT_EQ(List(tables, {u"TABLE_NAME", u"TABLE_TYPE"}), ToUtf8(u"maker,TABLE;货物,TABLE;cheap,VIEW;"));
    EXPECT_EQ(List(Schema(20, {Value(), Value(), Text(u"货物")}), {u"TABLE_NAME"}), ToUtf8(u"货物;"));
    EXPECT_EQ(List(Schema(20, {Value(), Value(), Value(), Text(u"VIEW")}), {u"TABLE_NAME"}), "cheap;");
    // Texts compare exactly: a pattern is no name.
    EXPECT_EQ(List(Schema(20, {Value(), Value(), Text(u"m%")}), {u"TABLE_NAME"}), "");
    EXPECT_EQ(List(Schema(20, {Value(), Value(), Text(u"MAKER")}), {u"TABLE_NAME"}), "");
    EXPECT_TRUE(tables.Call(kRequery).Ok());
    EXPECT_EQ(tables.Get(kRecordCount).Long(), 3);
}

TEST_F(SchemaTest, ListsColumns) {
    const Object columns = Schema(4, {Value(), Value(), Text(u"货物")});
    EXPECT_EQ(columns.Get(kFields).Result().Get(collection::kCount).Long(), 28);
    EXPECT_EQ(List(columns, {u"COLUMN_NAME", u"ORDINAL_POSITION", u"DATA_TYPE", u"COLUMN_FLAGS", u"IS_NULLABLE"}),
              "id,1,3,20,0;name,2,129,4,0;price,3,131,116,-1;born,4,135,116,-1;body,5,129,228,-1;code,6,129,116,-1;"
              "land,7,129,100,-1;");
    columns.Call(kMoveFirst);
    EXPECT_EQ(List(columns, {u"COLUMN_NAME", u"CHARACTER_MAXIMUM_LENGTH", u"NUMERIC_PRECISION", u"NUMERIC_SCALE"}),
              "id,NULL,10,NULL;name,20,NULL,NULL;price,NULL,12,2;born,NULL,NULL,NULL;body,2147483647,NULL,NULL;"
              "code,4,NULL,NULL;land,30,NULL,NULL;");
    columns.Call(kMoveFirst);
    EXPECT_EQ(List(columns, {u"COLUMN_HASDEFAULT", u"COLUMN_DEFAULT"}),
              "0,NULL;-1,'x';0,NULL;0,NULL;0,NULL;0,NULL;0,NULL;");
    EXPECT_EQ(List(Schema(4, {Value(), Value(), Text(u"maker"), Text(u"name")}), {u"COLUMN_NAME", u"DATA_TYPE"}),
              "name,130;");
    EXPECT_EQ(columns.Get(kFields, {Text(u"ORDINAL_POSITION")}).Result().Get(field::kType).Long(), 19);
    columns.Call(kMoveFirst);
    EXPECT_EQ(columns.Get(kCollect, {Text(u"ORDINAL_POSITION")}).value.Type(), VT_I4);
    EXPECT_EQ(columns.Get(kCollect, {Text(u"DATA_TYPE")}).value.Type(), VT_I4);
    EXPECT_EQ(columns.Get(kCollect, {Text(u"IS_NULLABLE")}).value.Type(), VT_BOOL);
}

TEST_F(SchemaTest, ListsKeysInTheOrderOfTheirColumns) {
    EXPECT_EQ(List(Schema(28, {Value(), Value(), Text(u"maker")}), {u"TABLE_NAME", u"COLUMN_NAME", u"ORDINAL"}),
              "maker,land,1;maker,code,2;");
    EXPECT_EQ(List(Schema(28), {u"COLUMN_NAME"}), "");
    EXPECT_EQ(List(Schema(27, {Value(), Value(), Value(), Value(), Value(), Text(u"货物")}),
                   {u"PK_TABLE_NAME", u"PK_COLUMN_NAME", u"FK_TABLE_NAME", u"FK_COLUMN_NAME", u"ORDINAL",
                    u"DELETE_RULE", u"UPDATE_RULE"}),
              ToUtf8(u"maker,land,货物,land,1,CASCADE,NO ACTION;maker,code,货物,code,2,CASCADE,NO ACTION;"));
    EXPECT_EQ(List(Schema(27, {Value(), Value(), Text(u"maker")}), {u"FK_TABLE_NAME", u"ORDINAL"}),
              ToUtf8(u"货物,1;货物,2;"));
}

TEST_F(SchemaTest, ListsIndexes) {
    EXPECT_EQ(List(Schema(12, {Value(), Value(), Value(), Value(), Text(u"货物")}),
                   {u"INDEX_NAME", u"UNIQUE", u"PRIMARY_KEY", u"ORDINAL_POSITION", u"COLUMN_NAME", u"COLLATION"}),
              ToUtf8(u"货物_name,-1,0,1,name,2;货物_name,-1,0,2,price,1;"));
    EXPECT_EQ(List(Schema(12, {Value(), Value(), Value(), Value(), Text(u"maker")}),
                   {u"PRIMARY_KEY", u"ORDINAL_POSITION", u"COLUMN_NAME"}),
              "-1,1,land;-1,2,code;");
    EXPECT_EQ(List(Schema(12), {u"INDEX_NAME"}), "");
}

TEST_F(SchemaTest, ListsTypesAndEmptySchemas) {
    const Object types = Schema(22);
    EXPECT_EQ(types.Get(kFields).Result().Get(collection::kCount).Long(), 20);
    EXPECT_GT(types.Get(kRecordCount).Long(), 5);
    EXPECT_EQ(Schema(1).Get(kRecordCount).Long(), 0);
    EXPECT_EQ(Schema(17).Get(kRecordCount).Long(), 0);
    EXPECT_EQ(Schema(16).Get(kRecordCount).Long(), 0);
}

TEST_F(SchemaTest, ChecksItsArguments) {
    const auto error = [&](std::vector<Value> arguments) {
        return connection_.Call(connection::kOpenSchema, std::move(arguments)).Error();
    };
    EXPECT_EQ(error({Number(5)}), 3251u);
    EXPECT_EQ(error({Number(-1)}), 3251u);
    EXPECT_EQ(error({Number(20), Array(std::vector<Value>(5))}), 3001u);
    EXPECT_EQ(error({Number(20), Text(u"goods")}), 3001u);
    EXPECT_EQ(error({Number(20), Value(), Omitted()}), 0u);
    EXPECT_EQ(error({Number(20), Value::Null()}), 0u);
    EXPECT_EQ(error({Number(20), Array({Value::Null(), Value::Null()})}), 0u);
    EXPECT_EQ(error({Text(u"tables")}), static_cast<unsigned>(DISP_E_TYPEMISMATCH));
}

TEST(DeclaredType, ReadsWhatACreateTableSays) {
    static constexpr struct {
        const char* declaration;
        int sqlType;
        int size;
        int digits;
    } kRows[] = {
        {"INTEGER", SQL_INTEGER, 10, 0},         {"int", SQL_INTEGER, 10, 0},
        {"bigint", SQL_BIGINT, 19, 0},           {"numeric(12, 2)", SQL_NUMERIC, 12, 2},
        {"decimal(9)", SQL_DECIMAL, 9, 0},       {"varchar(20)", SQL_VARCHAR, 20, 0},
        {"VARCHAR", SQL_VARCHAR, 255, 0},        {"char(4)", SQL_CHAR, 4, 0},
        {"nvarchar (40)", SQL_WVARCHAR, 40, 0},  {"text", SQL_LONGVARCHAR, 0, 0},
        {"blob", SQL_LONGVARBINARY, 0, 0},       {"real", SQL_DOUBLE, 15, 0},
        {"double precision", SQL_DOUBLE, 15, 0}, {"boolean", SQL_BIT, 1, 0},
        {"date", SQL_TYPE_DATE, 10, 0},          {"datetime", SQL_TYPE_TIMESTAMP, 23, 3},
        {"time", SQL_TYPE_TIME, 8, 0},           {"", SQL_VARCHAR, 255, 0},
        {"POINT", SQL_INTEGER, 10, 0},           {"STRING", SQL_NUMERIC, 18, 0},
        {"varchar(-5)", SQL_VARCHAR, 0, 0},      {"varchar(99999999999)", SQL_VARCHAR, 0, 0},
        {"numeric(", SQL_NUMERIC, 0, 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.declaration);
        const DeclaredType type = ReadDeclaredType(row.declaration);
        EXPECT_EQ(type.sqlType, row.sqlType);
        EXPECT_EQ(type.size, row.size);
        EXPECT_EQ(type.digits, row.digits);
    }
}

TEST_F(SchemaTest, TellsTheTablesThatTheDatabaseMakesForItself) {
    Execute(connection_, u"create table counted (id integer primary key autoincrement)");
    EXPECT_EQ(List(Schema(20), {u"TABLE_CATALOG", u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE", u"DESCRIPTION"}),
              ToUtf8(u"NULL,NULL,sqlite_sequence,SYSTEM TABLE,NULL;NULL,NULL,counted,TABLE,NULL;"
                     u"NULL,NULL,maker,TABLE,NULL;NULL,NULL,货物,TABLE,NULL;NULL,NULL,cheap,VIEW,NULL;"));
    EXPECT_EQ(List(Schema(20, {Value(), Value(), Text(u"it's")}), {u"TABLE_NAME"}), "");
}

TEST_F(SchemaTest, SaysThatTheFileIsLocked) {
    const Object other = Connect(u";Timeout=200");
    Execute(connection_, u"begin exclusive");
    for (const LONG schema : {1, 4, 16, 17, 20}) {
        SCOPED_TRACE(schema);
        const Outcome outcome = other.Call(connection::kOpenSchema, {Number(schema)});
        EXPECT_FALSE(outcome.Ok());
        EXPECT_NE(ToUtf8(outcome.description).find("locked"), std::string::npos) << outcome;
    }
    Execute(connection_, u"commit");
    for (const LONG schema : {1, 4, 16, 17, 20}) {
        SCOPED_TRACE(schema);
        const Outcome outcome = other.Call(connection::kOpenSchema, {Number(schema)});
        EXPECT_TRUE(outcome.Ok()) << outcome;
    }
}

TEST_F(SchemaTest, SaysThatTheFileIsNoDatabase) {
    std::ofstream(folder_ / "text.db") << std::string(8192, 'x');
    const Object opened = Object::Create(kConnectionClass);
    const Outcome outcome =
        opened.Call(connection::kOpen, {Text(u"Driver=SQLite3;Database=" + ToUtf16((folder_ / "text.db").string()))});
    ASSERT_TRUE(outcome.Ok()) << outcome;
    for (const LONG schema : {1, 4, 16, 17, 20}) {
        SCOPED_TRACE(schema);
        const Outcome asked = opened.Call(connection::kOpenSchema, {Number(schema)});
        EXPECT_FALSE(asked.Ok());
        EXPECT_NE(ToUtf8(asked.description).find("not a database"), std::string::npos) << asked;
    }
    const Value none;
    for (const auto& [schema, restrictions] :
         {std::pair<LONG, Value>(12, Array({none, none, none, none, Text(u"t")})),
          std::pair<LONG, Value>(27, Array({none, none, none, none, none, Text(u"t")})),
          std::pair<LONG, Value>(28, Array({none, none, Text(u"t")}))}) {
        SCOPED_TRACE(schema);
        const Outcome asked = opened.Call(connection::kOpenSchema, {Number(schema), restrictions});
        EXPECT_NE(ToUtf8(asked.description).find("not a database"), std::string::npos) << asked;
    }
}

TEST_F(SchemaTest, SaysWhereAnIndexHasNull) {
    const Outcome order = connection_.Get(connection::kProperties)
                              .Result()
                              .Get(collection::kItem, {Text(u"NULL Collation Order")})
                              .Result()
                              .Get(0);
    ASSERT_TRUE(order.Ok()) << order;
    const Object indexes = Schema(12, {Value(), Value(), Value(), Value(), Text(u"货物")});
    EXPECT_EQ(indexes.Get(kFields, {Text(u"NULL_COLLATION")}).Result().Get(field::kType).Long(), 3);
    EXPECT_EQ(List(indexes, {u"NULL_COLLATION"}), order.Utf8() + ";" + order.Utf8() + ";");
}

}  // namespace
}  // namespace tk::ado::test
