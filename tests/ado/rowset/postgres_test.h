// postgres_test.h - a test on the process's PostgreSQL server, skipped where none is installed.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "ado/odbc/session_cache.h"
#include "ado/support/postgres_server.h"
#include "ado/support/sqlite_file.h"

namespace tk::test {

class Postgres : public testing::Test {
protected:
    void SetUp() override {
        server_ = PostgresServer::Instance();
        if (server_ == nullptr) GTEST_SKIP() << "no PostgreSQL server is installed";
        ado::SessionCache::Instance().Clear();
    }
    void TearDown() override { ado::SessionCache::Instance().Clear(); }

    std::shared_ptr<ado::Session> Open(std::string_view more = {}) const {
        return ado::Session::Open(Settings(server_->Connection(more)));
    }

    template <class Call>
    static unsigned Failure(Call&& call, std::u16string* description = nullptr) {
        try {
            call();
            return S_OK;
        } catch (const ado::AdoError& error) {
            if (description != nullptr) *description = error.Description();
            return static_cast<unsigned>(error.Code());
        }
    }

    const PostgresServer* server_ = nullptr;
};

}  // namespace tk::test
