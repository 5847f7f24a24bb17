// pool_fixture.h - pools over scripted automation objects, with the event log, the speaker and the clock in the test's
// hands.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "driver/driver_fixture.h"
#include "tkkernel/session.h"
#include "tkkernel/session_statistics.h"
#include "util/platform_calls.h"

namespace tk::test {

/// A record of the event log: its kind and its texts in one.
inline std::string ErrorRecord(const std::string& text) {
    return "error " + text + "\r\n";
}
inline std::string WarningRecord(const std::string& title, const std::string& text) {
    return "warning " + title + "\r\n" + text;
}

inline constexpr char kNotOpenText[] = "数据库会话没有打开,终端没有调用OpenSQL接口.";
inline constexpr char kNoConnectionText[] = "没有引用数据库会话事务，即没有调用BeginTrans接口.";
inline constexpr char kOccupiedText[] = "数据库会话已经完全被占有并且打开,没有可以使用的会话.";

inline std::string ServerFault(const std::string& place) {
    return "数据库服务器出现异常,面临崩溃危险[异常位置:" + place + "]";
}
inline std::string ClientFault(const std::string& place) {
    return "数据库客户端出现异常,面临崩溃危险[异常位置:" + place + "]";
}

class PoolTest : public DriverTest {
protected:
    PoolTest() {
        calls_.clock = [this] {
            if (const auto fault = std::exchange(clockFault_, nullptr)) fault();
            return tick_;
        };
    }

    /// Announces the objects of so many sessions: all connections are one object, and so are all recordsets.
    void Announce(int sessions);
    /// Registers the classes anew, without the objects announced so far. One after the other: Wine refuses a class that
    /// is registered already.
    void RegisterAgain() {
        connections_.reset();
        recordsets_.reset();
        connections_ = std::make_unique<RegisteredClass>(kConnectionClass);
        recordsets_ = std::make_unique<RegisteredClass>(kRecordsetClass);
    }
    /// Opens a pool of so many sessions, four at least; journal and log are empty afterwards.
    void Open(CTDataServer& server, int sessions = 4);
    using DriverTest::Open;

    /// The records of the log since the last look.
    Lines TakeLog();

    DWORD tick_ = 1'000'000;
    void (*clockFault_)() = nullptr;  // happens at the next look at the clock, once
    PlatformCalls calls_;
};

/// "sessions free-connections free-recordsets"
std::string Configuration(CTDataServer& server);

}  // namespace tk::test
