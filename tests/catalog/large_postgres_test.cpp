// A database of a server with a schema of real size, beside a schema that is nobody's business.
#include "catalog/large_schema.h"
#include "support/postgres_server.h"
#include "support/registered_class.h"

namespace tk::test {
namespace {

TEST(LargePostgresCatalog, IsListedWhole) {
    const Apartment apartment;
    PostgresServer server;
    CTDatabase database;
    ASSERT_EQ(database.Open(server.ConnectionString().c_str()), 1);
    ASSERT_EQ(database.ExecuteSQL("create schema tester"), 1);
    LargeSchema::Make(database, LargeSchema::System::Postgres);
    LargeSchema::ExpectListed(database);
    LargeSchema::ExpectColumnsOfAll(database, "tester");
    LargeSchema::ExpectAsToldBy(database, "tester",
                                "select table_name, column_name, ordinal_position from information_schema.columns "
                                "where table_schema = 'tester'");
    CStringArray indexes;
    EXPECT_EQ(database.GetAllIndexes(indexes), LargeSchema::kTables * LargeSchema::kIndexes);
    // The columns of indexes are no columns of the schema, whichever schema it is.
    EXPECT_EQ(database.ExecuteSQL("create schema \"库\""), 1);
    EXPECT_EQ(database.ExecuteSQL("create table \"库\".one (id integer primary key)"), 1);
    CTRecordset columns(&database);
    const COleDispatchDriver rowset(database.GetFieldSet(nullptr, "库"));
    ASSERT_EQ(columns.OpenField(rowset.m_lpDispatch), 1);
    EXPECT_EQ(columns.GetRecordCount(), 1);
}

}  // namespace
}  // namespace tk::test
