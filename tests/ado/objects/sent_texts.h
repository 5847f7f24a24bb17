// tests/ado/objects/sent_texts.h - records the statement texts that go to the driver while it lives.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "ado/odbc/odbc_api.h"
#include "ado/support/own_questions.h"

namespace tk::ado::test {

class SentTexts {
public:
    SentTexts() : former_(SetOdbcForTest(Recording())) { Take(); }
    ~SentTexts() { SetOdbcForTest(former_); }
    SentTexts(const SentTexts&) = delete;
    SentTexts& operator=(const SentTexts&) = delete;

    /// What has been sent since the last call, in order; a prepared text counts once.
    static std::vector<std::string> Take() {
        const std::lock_guard lock(Guard());
        return std::exchange(List(), {});
    }

private:
    static std::mutex& Guard() {
        static std::mutex guard;
        return guard;
    }
    static std::vector<std::string>& List() {
        static std::vector<std::string> list;
        return list;
    }
    static void Keep(const SQLCHAR* text, SQLINTEGER length) {
        const auto* start = reinterpret_cast<const char*>(text);
        const std::lock_guard lock(Guard());
        List().push_back(length == SQL_NTS ? std::string(start) : std::string(start, static_cast<std::size_t>(length)));
    }
    static const OdbcApi& Recording() {
        static const OdbcApi recording = [] {
            OdbcApi api;
            api.ExecDirect = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
                if (!tk::test::IsOwnQuestion(text)) Keep(text, length);
                return ::SQLExecDirect(statement, text, length);
            };
            api.Prepare = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
                Keep(text, length);
                return ::SQLPrepare(statement, text, length);
            };
            return api;
        }();
        return recording;
    }

    const OdbcApi& former_;
};

}  // namespace tk::ado::test
