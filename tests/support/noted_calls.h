// noted_calls.h - what a stand-in for the platform was asked, one text a call, in order.
#pragma once

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace tk::test {

struct NotedCalls {
    std::vector<std::string> calls;

    /// @param format  as of printf; what is longer than 299 bytes is cut
    template <typename... Values>
    void Note(const char* format, Values... values) {
        char text[300];
        std::snprintf(text, sizeof(text), format, values...);
        calls.emplace_back(text);
    }

    /// What was asked since the last time.
    std::vector<std::string> Take() { return std::exchange(calls, {}); }
};

}  // namespace tk::test
