// program_run.h - a program that runs beside the test, and what it prints.
//
//   ProgramRun watch(Warehouse("watch 60"));
//   while (watch.Line() != "ready") ...
//   EXPECT_EQ(watch.Wait(), 0);
#pragma once

#include <cstdio>
#include <string>

namespace tk::test {

/// Starts a command line of the system's shell. @return its output, for ClosePipe
std::FILE* OpenPipe(const std::string& command);
/// Waits for its end. @return its exit code
int ClosePipe(std::FILE* pipe);

class ProgramRun {
public:
    explicit ProgramRun(const std::string& command) : pipe_(OpenPipe(command)) {}
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;
    ~ProgramRun() { Wait(); }

    /// The next line with its end; "" behind the last one.
    std::string Line() {
        std::string line;
        for (int unit; pipe_ != nullptr && (unit = std::fgetc(pipe_)) != EOF;) {
            if (unit != '\r') line += static_cast<char>(unit);
            if (unit == '\n') break;
        }
        return line;
    }
    /// All that is still to come.
    std::string Rest() {
        std::string text;
        for (std::string line; !(line = Line()).empty();)
            text += line;
        return text;
    }
    /// @return its exit code; what it still prints is dropped
    int Wait() {
        if (pipe_ == nullptr) return code_;
        Rest();
        code_ = ClosePipe(pipe_);
        pipe_ = nullptr;
        return code_;
    }

private:
    std::FILE* pipe_;
    int code_ = -1;
};

}  // namespace tk::test
