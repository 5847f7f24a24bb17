#include "session/pool_fixture.h"

#include <algorithm>

namespace tk::test {

void PoolTest::Announce(int sessions) {
    connection_->On(Get(0)).Returns(Text("DSN=stock"));
    connection_->On(Get(18)) = Script();
    connection_->On(Get(18)).Returns(Long(1));
    connection_->On(Get(500)) = Script();
    connection_->On(Get(500)).Returns(Object(MakeProperties({{"DBMS Name", Text("Oracle")}}).Get()));
    for (int i = 0; i < sessions; ++i) {
        connections_->Give(connection_.Get());
        recordsets_->Give(records_.Get());
    }
}

void PoolTest::Open(CTDataServer& server, int sessions) {
    Announce(std::max(sessions, 4));
    ASSERT_EQ(server.OpenDatabase("stock", "sa", "secret", static_cast<short>(sessions)), 1)
        << server.GetLastErrorString();
    journal_.Take();
    calls_.TakeRecords();
}

Lines PoolTest::TakeLog() {
    Lines lines;
    for (const LogRecord& record : calls_.TakeRecords()) {
        std::string line = record.type == EVENTLOG_ERROR_TYPE     ? "error "
                           : record.type == EVENTLOG_WARNING_TYPE ? "warning "
                                                                  : "other ";
        for (const std::string& text : record.strings)
            line += text;
        lines.push_back(std::move(line));
    }
    return lines;
}

std::string Configuration(CTDataServer& server) {
    short sessions = -1;
    short databases = -1;
    short recordsets = -1;
    EXPECT_EQ(server.GetConfiguration(sessions, databases, recordsets), 1);
    return std::to_string(sessions) + " " + std::to_string(databases) + " " + std::to_string(recordsets);
}

}  // namespace tk::test
