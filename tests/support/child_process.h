// child_process.h - the test program once more, as another process that does a job.
//
//   int Hold(ChildTalk& talk) { ... talk.Say("ready"); talk.Hear(); return 0; }
//   const ChildJob kJobs[] = {{"hold", Hold}};
//   int main(int argc, char** argv) { return RunTestsOrJob(argc, argv, kJobs); }
//
//   ChildProcess child("hold");
//   ASSERT_EQ(child.Hear(), "ready");
//   child.Kill();  // as a power cut would
//
// Lines go both ways; both ends hear "" when the other is gone.
#pragma once

#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace tk::test {

class ChildProcess {
public:
    explicit ChildProcess(const std::string& job);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Kills it when it still runs.
    ~ChildProcess();

    void Say(const std::string& line);
    std::string Hear();
    void Kill();
    // POSIX alone:
    int Id() const;
    /// Stops it where it is, and lets it go on.
    void Stop();
    void Continue();
    /// Lets it end by itself. @return its exit code, -1 when it was killed
    int Wait();

private:
    struct System;
    std::unique_ptr<System> system_;
};

/// The child's end.
class ChildTalk {
public:
    static void Say(const std::string& line) {
        std::fputs((line + "\n").c_str(), stdout);
        std::fflush(stdout);
    }
    static std::string Hear() {
        std::string line;
        for (int unit = std::getchar(); unit != EOF && unit != '\n'; unit = std::getchar()) {
            if (unit != '\r') line += static_cast<char>(unit);
        }
        return line;
    }
};

struct ChildJob {
    const char* name;
    int (*run)(ChildTalk& talk);
};

/// The body of main.
int RunTestsOrJob(int argc, char** argv, std::span<const ChildJob> jobs);

}  // namespace tk::test
