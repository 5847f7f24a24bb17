// GetInput on a terminal and on a pipe: a child reads, this process types.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "tkkernel/util.h"

namespace {

/// Reads until the other side closes, ten seconds at most for each part.
std::string ReadAll(int file) {
    std::string all;
    char part[256];
    pollfd wait = {file, POLLIN, 0};
    while (poll(&wait, 1, 10000) > 0) {
        const ssize_t count = read(file, part, sizeof(part));
        if (count <= 0) break;
        all.append(part, static_cast<std::size_t>(count));
    }
    return all;
}

/// What a child whose standard input is `input` reports about one GetInput: "count:text".
class Reader {
public:
    explicit Reader(int input, int maximum) {
        int ends[2];
        if (pipe(ends) != 0) std::abort();
        child_ = fork();
        if (child_ == 0) {
            alarm(20);
            dup2(input, STDIN_FILENO);
            close(ends[0]);
            char buffer[64] = {};
            const int count = GetInput(buffer, maximum, '\r');
            const std::string report = std::to_string(count) + ":" + buffer;
            _exit(write(ends[1], report.data(), report.size()) > 0 ? 0 : 1);
        }
        close(ends[1]);
        report_ = ends[0];
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() {
        close(report_);
        waitpid(child_, nullptr, 0);
    }
    std::string Report() { return ReadAll(report_); }

private:
    pid_t child_ = -1;
    int report_ = -1;
};

TEST(GetInput, ReadsATerminalWithoutEcho) {
    const int keyboard = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(keyboard, 0);
    ASSERT_EQ(grantpt(keyboard), 0);
    ASSERT_EQ(unlockpt(keyboard), 0);
    const int terminal = open(ptsname(keyboard), O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    termios before;
    ASSERT_EQ(tcgetattr(terminal, &before), 0);
    {
        Reader reader(terminal, 32);
        // Type when the reader has turned the echo off: earlier keys would show as they would for any program.
        termios now = before;
        for (int tries = 0; tries < 1000 && (now.c_lflag & ECHO) != 0; ++tries) {
            usleep(10000);
            ASSERT_EQ(tcgetattr(terminal, &now), 0);
        }
        ASSERT_EQ(now.c_lflag & static_cast<tcflag_t>(ECHO | ICANON), 0U);
        ASSERT_EQ(write(keyboard, "ab\x03\r", 4), 4);
        EXPECT_EQ(reader.Report(), "3:ab\x03") << "Ctrl+C is a key like others";
    }
    termios after;
    ASSERT_EQ(tcgetattr(terminal, &after), 0);
    EXPECT_EQ(after.c_lflag, before.c_lflag) << "the terminal is as it was";
    EXPECT_EQ(after.c_iflag, before.c_iflag);
    close(terminal);
    close(keyboard);
}

TEST(GetInput, ReadsAPipeWhereThereIsNoTerminal) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "secret\rrest", 11), 11);
    EXPECT_EQ(Reader(ends[0], 32).Report(), "6:secret");
    close(ends[0]);
    close(ends[1]);
}

TEST(GetInput, EndsWithTheInput) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "abc", 3), 3);
    close(ends[1]);
    EXPECT_EQ(Reader(ends[0], 32).Report(), "3:abc");
    close(ends[0]);
}

}  // namespace
