// A file with a schema of real size.
#include "catalog/large_schema.h"
#include "support/registered_class.h"
#include "support/temporary_folder.h"

namespace tk::test {
namespace {

TEST(LargeSqliteCatalog, IsListedWhole) {
    const Apartment apartment;
    const TemporaryFolder folder;
    CTDatabase database;
    ASSERT_EQ(database.Open(("Driver=SQLite3;Database=" + folder.File("大.db")).c_str()), 1);
    LargeSchema::Make(database, LargeSchema::System::Sqlite);
    LargeSchema::ExpectListed(database);
    LargeSchema::ExpectColumnsOfAll(database, nullptr);
    LargeSchema::ExpectAsToldBy(database, nullptr,
                                "select m.name, c.name, c.cid + 1 from sqlite_master m join pragma_table_info(m.name) "
                                "c where m.type = 'table'");
    CStringArray indexes;
    EXPECT_EQ(database.GetAllIndexes(indexes), LargeSchema::kTables * LargeSchema::kIndexes);
}

}  // namespace
}  // namespace tk::test
