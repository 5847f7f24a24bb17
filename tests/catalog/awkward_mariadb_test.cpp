// What the server's own catalog tells of awkward names, row for row.
#include "catalog/awkward_schema.h"
#include "support/mariadb_server.h"
#include "support/registered_class.h"

namespace tk::test {
namespace {

/// The tables stand in the database of the connection and in one whose name is a pattern of it.
class AwkwardMariaDbCatalog : public ::testing::Test {
protected:
    static AwkwardSchema SchemaOf(const char* prefix) {
        return AwkwardSchema({.quote = '`',
                              .prefix = prefix,
                              .stamp = "datetime(3)",
                              .function = "returns integer deterministic return 1",
                              .procedureEnd = "select 1"});
    }
    static void SetUpTestSuite() {
        server_ = new MariaDbServer;
        const Apartment apartment;
        CTDatabase database;
        ASSERT_EQ(database.Open(server_->ConnectionString().c_str()), 1) << database.GetLastErrorString();
        ASSERT_EQ(database.ExecuteSQL("create database `te%_`"), 1) << database.GetLastErrorString();
        SchemaOf("").Make(database);
        SchemaOf("`te%_`.").Make(database);
    }
    static void TearDownTestSuite() {
        delete server_;
        server_ = nullptr;
    }
    void SetUp() override { ASSERT_EQ(database_.Open(server_->ConnectionString().c_str()), 1); }

    Apartment apartment_;
    CTDatabase database_;

private:
    static inline MariaDbServer* server_ = nullptr;
};

constexpr std::size_t kTables = 15;

TEST_F(AwkwardMariaDbCatalog, TablesAndViews) {
    const Told tables =
        RowsOf(database_,
               "select table_name, table_schema from information_schema.tables where table_schema = 'test' "
               "and table_type = 'BASE TABLE'");
    ASSERT_EQ(tables.size(), kTables);
    EXPECT_EQ(RowsOf(database_, database_.GetObjectSet("TABLE", nullptr), {"TABLE_NAME", "TABLE_CATALOG"}), tables);
    const Told views =
        RowsOf(database_, "select table_name, table_schema from information_schema.views where table_schema = 'test'");
    ASSERT_EQ(views.size(), kTables);
    EXPECT_EQ(RowsOf(database_, database_.GetObjectSet("VIEW", nullptr), {"TABLE_NAME", "TABLE_CATALOG"}), views);
}

TEST_F(AwkwardMariaDbCatalog, Columns) {
    const Told told = RowsOf(
        database_,
        "select table_name, ordinal_position, column_name, table_schema, case is_nullable when 'YES' then 'True' else "
        "'False' end, case when column_default is null or column_default = 'NULL' then 'False' else 'True' end, case "
        "when column_default <> 'NULL' then column_default end, character_maximum_length, case data_type when "
        "'decimal' then numeric_precision end, case data_type when 'decimal' then numeric_scale end, case data_type "
        "when 'smallint' then 2 when 'int' then 3 when 'double' then 5 when 'decimal' then 131 when 'datetime' then "
        "135 else 130 end from information_schema.columns where table_schema = 'test'");
    ASSERT_EQ(told.size(), kTables * (8 + 1)) << "of tables and views";
    const auto listed = [&](const char* table) {
        Told rows = RowsOf(
            database_, database_.GetFieldSet(table, nullptr),
            {"TABLE_NAME", "ORDINAL_POSITION", "COLUMN_NAME", "TABLE_CATALOG", "IS_NULLABLE", "COLUMN_HASDEFAULT",
             "COLUMN_DEFAULT", "CHARACTER_MAXIMUM_LENGTH", "NUMERIC_PRECISION", "NUMERIC_SCALE", "DATA_TYPE"});
        // Of integers and reals the one counts digits as they are shown, the other as they are stored.
        for (std::vector<std::string>& row : rows) {
            if (row.size() > 10 && row[10] != "131") row[8].clear();
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

TEST_F(AwkwardMariaDbCatalog, PrimaryKeys) {
    const Told told = RowsOf(database_,
                             "select table_name, ordinal_position, column_name, constraint_name, table_schema from "
                             "information_schema.key_column_usage where constraint_name = 'PRIMARY' and table_schema = "
                             "'test'");
    ASSERT_EQ(told.size(), kTables * 2);
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        EXPECT_EQ(RowsOf(database_, database_.GetPrimaryKeySet(table.c_str(), nullptr),
                         {"TABLE_NAME", "ORDINAL", "COLUMN_NAME", "PK_NAME", "TABLE_CATALOG"}),
                  Of(table, told));
    }
}

TEST_F(AwkwardMariaDbCatalog, ForeignKeys) {
    const Told told =
        RowsOf(database_,
               "select k.table_name, k.ordinal_position, k.column_name, k.constraint_name, k.table_schema, "
               "k.referenced_table_name, k.referenced_column_name, k.referenced_table_schema, "
               "replace(r.update_rule, 'RESTRICT', 'NO ACTION'), replace(r.delete_rule, 'RESTRICT', 'NO ACTION') from "
               "information_schema.key_column_usage k join information_schema.referential_constraints r on "
               "r.constraint_schema = k.constraint_schema and r.constraint_name = k.constraint_name and r.table_name = "
               "k.table_name where k.table_schema = 'test'");
    ASSERT_EQ(told.size(), (kTables - 1) * 2);
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        EXPECT_EQ(RowsOf(database_, database_.GetForeignKeySet(table.c_str()),
                         {"FK_TABLE_NAME", "ORDINAL", "FK_COLUMN_NAME", "FK_NAME", "FK_TABLE_CATALOG", "PK_TABLE_NAME",
                          "PK_COLUMN_NAME", "PK_TABLE_CATALOG", "UPDATE_RULE", "DELETE_RULE"}),
                  Of(table, told));
    }
}

TEST_F(AwkwardMariaDbCatalog, Indexes) {
    const Told told = RowsOf(database_,
                             "select table_name, index_name, seq_in_index, column_name, case index_name when 'PRIMARY' "
                             "then 'True' else 'False' end, case non_unique when 0 then 'True' else 'False' end, "
                             "table_schema from information_schema.statistics where table_schema = 'test'");
    ASSERT_GE(told.size(), kTables * (2 + 2 + 1));
    const std::vector<const char*> columns = {"TABLE_NAME",  "INDEX_NAME", "ORDINAL_POSITION", "COLUMN_NAME",
                                              "PRIMARY_KEY", "UNIQUE",     "TABLE_CATALOG"};
    for (const std::string& table : AwkwardSchema::Tables()) {
        SCOPED_TRACE(table);
        const Told of = Of(table, told);
        EXPECT_EQ(RowsOf(database_, database_.GetIndexSet(table.c_str(), nullptr, nullptr), columns), of);
        for (const std::string& name : {"IX " + table, "UX%" + table, std::string("PRIMARY")}) {
            Told one = of;
            std::erase_if(one, [&](const std::vector<std::string>& row) { return row[1] != name; });
            EXPECT_EQ(RowsOf(database_, database_.GetIndexSet(table.c_str(), name.c_str(), nullptr), columns), one);
        }
    }
}

TEST_F(AwkwardMariaDbCatalog, ProceduresAndDatabases) {
    const Told told =
        RowsOf(database_,
               "select routine_name, routine_schema from information_schema.routines where routine_schema = 'test'");
    ASSERT_EQ(told.size(), kTables * 2 - 2);
    EXPECT_EQ(RowsOf(database_, database_.GetProcedureSet(nullptr), {"PROCEDURE_NAME", "PROCEDURE_CATALOG"}), told);
    EXPECT_EQ(RowsOf(database_, database_.GetDbNameSet(), {"CATALOG_NAME"}),
              RowsOf(database_, "select schema_name from information_schema.schemata"));
}

// Restrictions are applied as they stand: without schemata there is nothing in the user's.
TEST_F(AwkwardMariaDbCatalog, NothingIsInASchema) {
    const CString before = database_.GetLastErrorString();
    ASSERT_STREQ(database_.GetCurSchema(), "tester");
    CStringArray names;
    EXPECT_EQ(database_.GetAllProcedures(names), 1);
    EXPECT_EQ(database_.GetAllIndexes(names), 0);
    EXPECT_EQ(names.GetSize(), 0);
    const std::vector<const char*> columns = {"TABLE_CATALOG"};
    EXPECT_EQ(RowsOf(database_, database_.GetObjectSet("TABLE", "tester"), columns), Told());
    EXPECT_EQ(RowsOf(database_, database_.GetFieldSet("plain", "tester"), columns), Told());
    EXPECT_EQ(RowsOf(database_, database_.GetPrimaryKeySet("plain", "tester"), columns), Told());
    EXPECT_EQ(RowsOf(database_, database_.GetIndexSet("plain", nullptr, "tester"), columns), Told());
    EXPECT_EQ(database_.IsProcedureExist("P plain"), 0);
    EXPECT_STREQ(database_.GetLastErrorString(), before);
}

}  // namespace
}  // namespace tk::test
