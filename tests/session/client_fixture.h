// client_fixture.h - a client of an open pool over scripted objects.
#pragma once

#include <string>

#include "session/pool_fixture.h"

namespace tk::test {

class DataClient : public PoolTest {
protected:
    void SetUp() override {
        Open(server_, 4);
        client_.Invoke(&server_);
    }
    void TearDown() override {
        client_.Revoke();
        server_.CloseDatabase();
        PoolTest::TearDown();
    }

    void Borrow() {
        ASSERT_EQ(client_.BeginTrans(), 1);
        ASSERT_EQ(client_.OpenSQL("select 1", 10, 1), 1) << client_.GetLastErrorString();
        client_.SetLastErrorString("");
        ASSERT_EQ(Configuration(server_), "4 3 3");
        journal_.Take();
    }

    std::string Error() { return std::string(client_.GetLastErrorString()); }

    CTDataServer server_;
    CTDataClient client_;
};

}  // namespace tk::test
