// tools/tkdb/progress.h - a line on standard error that tells how far a long work has come.
//
// Nothing is shown when standard error is no terminal or the work ends within half a second.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tk::tools {

/// Of work that comes in steps: "rows: 120000 (400000 /s)".
class Progress {
public:
    explicit Progress(std::string label);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance(std::size_t count = 1);

private:
    void Draw();

    std::string label_;
    std::size_t done_ = 0;
    long long started_;
    long long drawn_ = 0;
    bool terminal_;
    bool visible_ = false;
};

/// Of work that somebody else does in one call: "writing: 12.5 MB, 3 s".
class ByteProgress {
public:
    /// @param bytes  tells how many there are by now; called on a thread of its own, does not throw
    ByteProgress(std::string label, std::function<std::uintmax_t()> bytes);
    ~ByteProgress();
    ByteProgress(const ByteProgress&) = delete;
    ByteProgress& operator=(const ByteProgress&) = delete;

private:
    void Watch();

    std::string label_;
    std::function<std::uintmax_t()> bytes_;
    std::mutex lock_;
    std::condition_variable over_;
    bool isOver_ = false;
    std::thread watcher_;
};

}  // namespace tk::tools
