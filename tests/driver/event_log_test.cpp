// The wrappers leave the event log to the application.
#include <unistd.h>

#include "driver/driver_fixture.h"
#include "support/environment.h"
#include "support/temporary_folder.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

class DriverEventLog : public DriverTest {
protected:
    bool HasRecords() const { return access(path_.c_str(), F_OK) == 0; }

    TemporaryFolder folder_;
    std::string path_ = folder_.File("events.jsonl");
    Variable variable_{"TKKERNEL_EVENT_LOG", path_.c_str()};
};

TEST_F(DriverEventLog, FailingMembersWriteNoRecord) {
    CTDatabase database;
    Open(database);
    connection_->On(Call(6)).Fails("失败");
    connection_->On(Call(10)).Fails("失败");
    EXPECT_EQ(database.ExecuteSQL("x"), 0);
    EXPECT_EQ(database.Open("x"), 0);
    CTRecordset recordset;
    Bind(recordset);
    records_->On(Call(1022)).Fails("失败");
    records_->On(Get(0)).Fails("失败");
    EXPECT_EQ(recordset.OpenSQL("x", 1), 0);
    EXPECT_EQ(recordset.GetIntValue("A"), 0);
    EXPECT_FALSE(HasRecords());
    AddErrorLog("失败", 0, 0, nullptr);
    EXPECT_TRUE(HasRecords()) << "what the application writes is there";
}

}  // namespace
}  // namespace tk::test
