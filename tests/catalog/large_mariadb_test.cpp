// A database of a server with a schema of real size.
#include "catalog/large_schema.h"
#include "support/mariadb_server.h"
#include "support/registered_class.h"

namespace tk::test {
namespace {

TEST(LargeMariaDbCatalog, IsListedWhole) {
    const Apartment apartment;
    MariaDbServer server;
    CTDatabase database;
    ASSERT_EQ(database.Open(server.ConnectionString().c_str()), 1);
    LargeSchema::Make(database, LargeSchema::System::MariaDb);
    LargeSchema::ExpectListed(database);
    LargeSchema::ExpectColumnsOfAll(database, nullptr);
    LargeSchema::ExpectAsToldBy(database, nullptr,
                                "select table_name, column_name, ordinal_position from information_schema.columns "
                                "where table_schema = 'test'");
}

}  // namespace
}  // namespace tk::test
