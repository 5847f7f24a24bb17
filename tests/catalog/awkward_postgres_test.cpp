// What the server's own catalog tells of awkward names, row for row.
#include "catalog/awkward_schema.h"
#include "support/postgres_server.h"
#include "support/registered_class.h"

namespace tk::test {
namespace {

// As a pattern its name is that of the other one, too.
constexpr char kSchema[] = "库.a%_'\"b";
constexpr char kQuoted[] = "\"库.a%_'\"\"b\"";
constexpr char kLiteral[] = "'库.a%_''\"b'";
constexpr char kOther[] = "\"库.aXX'\"\"b\"";

AwkwardSchema SchemaOf(const char* quoted) {
    return AwkwardSchema({.quote = '"',
                          .prefix = std::string(quoted) + ".",
                          .stamp = "timestamp",
                          .function = "returns integer language sql as 'select 1'",
                          .procedureEnd = "language sql as 'select 1'"});
}

class AwkwardPostgresCatalog : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        server_ = new PostgresServer;
        const Apartment apartment;
        CTDatabase database;
        ASSERT_EQ(database.Open(server_->ConnectionString().c_str()), 1) << database.GetLastErrorString();
        for (const char* schema : {kQuoted, kOther}) {
            const std::string create = std::string("create schema ") + schema;
            ASSERT_EQ(database.ExecuteSQL(create.c_str()), 1) << database.GetLastErrorString();
            SchemaOf(schema).Make(database);
        }
    }
    static void TearDownTestSuite() {
        delete server_;
        server_ = nullptr;
    }
    void SetUp() override { ASSERT_EQ(database_.Open(server_->ConnectionString().c_str()), 1); }

    Told Server(const std::string& sql) {
        std::string text = sql;
        const std::string mark = "$schema";
        text.replace(text.find(mark), mark.size(), kLiteral);
        return RowsOf(database_, text);
    }

    Apartment apartment_;
    CTDatabase database_;

private:
    static inline PostgresServer* server_ = nullptr;
};

constexpr std::size_t kTables = 15;

TEST_F(AwkwardPostgresCatalog, TablesAndViews) {
    const Told tables = Server(
        "select table_name, table_schema, table_catalog from information_schema.tables where table_schema = $schema "
        "and table_type = 'BASE TABLE'");
    ASSERT_EQ(tables.size(), kTables);
    const std::vector<const char*> columns = {"TABLE_NAME", "TABLE_SCHEMA", "TABLE_CATALOG"};
    EXPECT_EQ(RowsOf(database_, database_.GetObjectSet("TABLE", kSchema), columns), tables);
    const Told views = Server(
        "select table_name, table_schema, table_catalog from information_schema.views where table_schema = $schema");
    ASSERT_EQ(views.size(), kTables);
    EXPECT_EQ(RowsOf(database_, database_.GetObjectSet("VIEW", kSchema), columns), views);
}

TEST_F(AwkwardPostgresCatalog, Columns) {
    const Told told = Server(
        "select table_name, ordinal_position, column_name, table_schema, table_catalog, case is_nullable when 'YES' "
        "then 'True' else 'False' end, case when column_default is null then 'False' else 'True' end, column_default, "
        "character_maximum_length, case data_type when 'numeric' then numeric_precision end, case data_type when "
        "'numeric' then numeric_scale end, datetime_precision, case udt_name when 'int2' then 2 when 'int4' then 3 "
        "when 'float8' then 5 when 'numeric' then 131 when 'timestamp' then 135 else 129 end from "
        "information_schema.columns where table_schema = $schema");
    ASSERT_EQ(told.size(), kTables * (8 + 1)) << "of tables and views";
    const auto listed = [&](const char* table) {
        Told rows = RowsOf(database_, database_.GetFieldSet(table, kSchema),
                           {"TABLE_NAME", "ORDINAL_POSITION", "COLUMN_NAME", "TABLE_SCHEMA", "TABLE_CATALOG",
                            "IS_NULLABLE", "COLUMN_HASDEFAULT", "COLUMN_DEFAULT", "CHARACTER_MAXIMUM_LENGTH",
                            "NUMERIC_PRECISION", "NUMERIC_SCALE", "DATETIME_PRECISION", "DATA_TYPE"});
        // The server counts the bits of integers and reals.
        for (std::vector<std::string>& row : rows) {
            if (row.size() > 12 && row[12] != "131") row[9].clear();
        }
        return rows;
    };
    EXPECT_EQ(listed(nullptr), told);
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        EXPECT_EQ(listed(table.c_str()), Of(table, told));
        EXPECT_EQ(listed(("V " + table).c_str()), Of("V " + table, told));
    }
}

TEST_F(AwkwardPostgresCatalog, PrimaryKeys) {
    const Told told = Server(
        "select k.table_name, k.ordinal_position, k.column_name, k.constraint_name, k.table_schema, k.table_catalog "
        "from information_schema.key_column_usage k join information_schema.table_constraints c using "
        "(constraint_catalog, constraint_schema, constraint_name, table_name) where c.constraint_type = 'PRIMARY KEY' "
        "and k.table_schema = $schema");
    ASSERT_EQ(told.size(), kTables * 2);
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        EXPECT_EQ(RowsOf(database_, database_.GetPrimaryKeySet(table.c_str(), kSchema),
                         {"TABLE_NAME", "ORDINAL", "COLUMN_NAME", "PK_NAME", "TABLE_SCHEMA", "TABLE_CATALOG"}),
                  Of(table, told));
    }
}

// There is no schema to ask for: those of both.
TEST_F(AwkwardPostgresCatalog, ForeignKeys) {
    const Told told = RowsOf(
        database_,
        "select f.table_name, f.ordinal_position, f.column_name, f.constraint_name, f.table_schema, f.table_catalog, "
        "p.table_name, p.column_name, p.constraint_name, p.table_schema, p.table_catalog, r.update_rule, r.delete_rule "
        "from information_schema.referential_constraints r join information_schema.key_column_usage f on "
        "f.constraint_schema = r.constraint_schema and f.constraint_name = r.constraint_name join "
        "information_schema.key_column_usage p on p.constraint_schema = r.unique_constraint_schema and "
        "p.constraint_name = r.unique_constraint_name and p.ordinal_position = f.position_in_unique_constraint");
    ASSERT_EQ(told.size(), 2 * (kTables - 1) * 2);
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        EXPECT_EQ(RowsOf(database_, database_.GetForeignKeySet(table.c_str()),
                         {"FK_TABLE_NAME", "ORDINAL", "FK_COLUMN_NAME", "FK_NAME", "FK_TABLE_SCHEMA",
                          "FK_TABLE_CATALOG", "PK_TABLE_NAME", "PK_COLUMN_NAME", "PK_NAME", "PK_TABLE_SCHEMA",
                          "PK_TABLE_CATALOG", "UPDATE_RULE", "DELETE_RULE"}),
                  Of(table, told));
    }
}

TEST_F(AwkwardPostgresCatalog, Indexes) {
    const Told told = Server(
        "select t.relname, i.relname, k.place, a.attname, case when x.indisprimary then 'True' else 'False' end, case "
        "when x.indisunique then 'True' else 'False' end, n.nspname, current_database() from pg_index x join pg_class "
        "i on i.oid = x.indexrelid join pg_class t on t.oid = x.indrelid join pg_namespace n on n.oid = t.relnamespace "
        "cross join unnest(x.indkey) with ordinality k(number, place) join pg_attribute a on a.attrelid = t.oid and "
        "a.attnum = k.number where n.nspname = $schema");
    ASSERT_EQ(told.size(), kTables * (2 + 2 + 1));
    const std::vector<const char*> columns = {"TABLE_NAME",  "INDEX_NAME", "ORDINAL_POSITION", "COLUMN_NAME",
                                              "PRIMARY_KEY", "UNIQUE",     "TABLE_SCHEMA",     "TABLE_CATALOG"};
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        const Told of = Of(table, told);
        EXPECT_EQ(RowsOf(database_, database_.GetIndexSet(table.c_str(), nullptr, kSchema), columns), of);
        for (const std::string& name : {"IX " + table, "UX%" + table, "PK " + table}) {
            Told one = of;
            std::erase_if(one, [&](const std::vector<std::string>& row) { return row[1] != name; });
            EXPECT_EQ(RowsOf(database_, database_.GetIndexSet(table.c_str(), name.c_str(), kSchema), columns), one);
        }
    }
}

TEST_F(AwkwardPostgresCatalog, Procedures) {
    const Told told =
        Server("select routine_name, routine_schema from information_schema.routines where routine_schema = $schema");
    ASSERT_EQ(told.size(), (kTables - 1) * 2);
    EXPECT_EQ(RowsOf(database_, database_.GetProcedureSet(kSchema), {"PROCEDURE_NAME", "PROCEDURE_SCHEMA"}), told);
}

// The schemata of the server itself are left out; of other databases a session sees nothing.
TEST_F(AwkwardPostgresCatalog, SchemataAndDatabases) {
    const Told schemata = RowsOf(database_,
                                 "select schema_name from information_schema.schemata where schema_name not in "
                                 "('information_schema', 'pg_catalog', 'pg_toast')");
    ASSERT_EQ(schemata.size(), 3u);
    EXPECT_EQ(RowsOf(database_, database_.GetSchemaSet(), {"SCHEMA_NAME"}), schemata);
    EXPECT_EQ(RowsOf(database_, database_.GetDbNameSet(), {"CATALOG_NAME"}),
              RowsOf(database_, "select catalog_name from information_schema.information_schema_catalog_name"));
}

// A column that was dropped leaves a gap in the numbers.
TEST_F(AwkwardPostgresCatalog, ColumnsBehindADroppedOne) {
    ASSERT_EQ(database_.ExecuteSQL("create table public.gaps (a integer, b integer, c integer, d integer)"), 1);
    ASSERT_EQ(database_.ExecuteSQL("alter table public.gaps drop column b"), 1);
    const Told told = RowsOf(database_,
                             "select column_name, ordinal_position from information_schema.columns where table_name = "
                             "'gaps'");
    EXPECT_EQ(RowsOf(database_, database_.GetFieldSet("gaps", "public"), {"COLUMN_NAME", "ORDINAL_POSITION"}), told);
    EXPECT_EQ(RowsOf(database_, database_.GetFieldSet("gaps", nullptr), {"COLUMN_NAME", "ORDINAL_POSITION"}), told);
    COleSafeArray one;
    one.CreateOneDim(VT_VARIANT, 4);
    for (long position = 2; position < 4; ++position) {
        COleVariant text(position == 2 ? "gaps" : "d", VT_BSTR);
        one.PutElement(&position, &text);
    }
    constexpr long kColumns = 4;
    EXPECT_EQ(RowsOf(database_, database_.OpenSchema(kColumns, one), {"COLUMN_NAME", "ORDINAL_POSITION"}),
              Of("d", told));
}

}  // namespace
}  // namespace tk::test
