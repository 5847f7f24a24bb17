// tests/tools/tkdb_run.h - runs the program as a user does, on a database of the test's own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

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

/// The program while it runs, its output and its errors together. Nothing here waits longer than a minute.
class RunningTkdb {
public:
    explicit RunningTkdb(const std::string& arguments) {
        const std::string command = std::string("export LC_ALL=C.UTF-8; exec ") + TKDB_PROGRAM + " " + arguments;
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return;
        child_ = fork();
        if (child_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            dup2(ends[1], STDERR_FILENO);
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
        close(ends[1]);
        output_ = ends[0];
    }
    RunningTkdb(const RunningTkdb&) = delete;
    RunningTkdb& operator=(const RunningTkdb&) = delete;
    ~RunningTkdb() {
        Signal(SIGKILL);
        if (child_ > 0) waitpid(child_, nullptr, 0);
        if (output_ >= 0) close(output_);
    }

    void Signal(int number) const {
        if (child_ > 0) kill(child_, number);
    }

    /// False when it has not come true after a minute.
    template <class Fact>
    bool WaitUntil(Fact fact) const {
        while (!fact()) {
            if (IsLate()) return false;
            poll(nullptr, 0, 5);
        }
        return true;
    }

    /// What it has written to the end, and its exit code; code -1 when it had to be killed.
    Outcome Finish() {
        Outcome outcome;
        std::array<char, 4096> buffer;
        for (pollfd ready = {output_, POLLIN, 0}; !IsLate();) {
            if (poll(&ready, 1, 100) <= 0) continue;
            const ssize_t n = read(output_, buffer.data(), buffer.size());
            if (n <= 0) break;
            outcome.output.append(buffer.data(), static_cast<std::size_t>(n));
        }
        int status = 0;
        if (IsLate()) Signal(SIGKILL);
        if (waitpid(child_, &status, 0) == child_ && WIFEXITED(status)) outcome.code = WEXITSTATUS(status);
        child_ = -1;
        return outcome;
    }

private:
    static time_t Seconds() {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec;
    }
    bool IsLate() const { return Seconds() > deadline_; }

    pid_t child_ = -1;
    int output_ = -1;
    time_t deadline_ = Seconds() + 60;
};

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
