// Where ADO is there but no driver for the program's database: under Wine ADO has next to nothing behind it, and no
// words for its failures; on Windows the driver manager says that there is no such driver.
#include "tests/examples/warehouse_run.h"

using namespace tk::test;

namespace {

TEST(WarehouseWithoutADriver, SaysThatTheDatabaseCannotBeOpened) {
    const Outcome outcome = RunWarehouse("stock");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output.find("打不开数据库 Driver=SQLite3;Database=warehouse.db:"), 0u) << outcome.output;
    const std::string last = "打开数据库失败\n";
    ASSERT_GE(outcome.output.size(), last.size());
    EXPECT_EQ(outcome.output.substr(outcome.output.size() - last.size()), last);
}

}  // namespace
