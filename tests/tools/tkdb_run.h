// tests/tools/tkdb_run.h - runs the program as a user does, on a database of the test's own.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace tk::tools::test {

struct Outcome {
    int code = -1;
    std::string output;
};

/// @param before  what stands in front of the program on its command line
inline Outcome RunTkdb(const std::string& arguments, const char* redirect = "2>/dev/null", const char* before = "") {
    Outcome outcome;
    const std::string command =
        std::string("export LC_ALL=C.UTF-8; ") + before + TKDB_PROGRAM + " " + arguments + " " + redirect;
    std::FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer;
    for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        outcome.output.append(buffer.data(), n);
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class Tkdb : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(mkdtemp(folder_), nullptr);
        connection_ = std::string("'Driver=SQLite3;Database=") + folder_ + "/t.db'";
    }
    void TearDown() override { ASSERT_EQ(std::system((std::string("rm -rf ") + folder_).c_str()), 0); }

    char folder_[24] = "/tmp/tkdb-test-XXXXXX";
    std::string connection_;
};

}  // namespace tk::tools::test
