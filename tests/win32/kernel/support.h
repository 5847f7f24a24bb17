// What the tests of kernel objects share: names of their own, threads that are known to wait, and a look at what is
// left.
#pragma once

#include <dirent.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "winbase.h"

namespace tk::test {

inline int EntriesIn(const std::string& folder) {
    int count = 0;
    DIR* entries = opendir(folder.c_str());
    while (const dirent* entry = entries != nullptr ? readdir(entries) : nullptr) {
        if (entry->d_name[0] != '.') ++count;
    }
    if (entries != nullptr) closedir(entries);
    return count;
}

/// Named objects in a folder of their own. A test that closes what it opens leaves the folder empty.
class KernelObjects : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/dev/shm/tk-kernel-test-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder_ = name;
        setenv("TKKERNEL_OBJECTS", name, 1);
    }
    void TearDown() override {
        EXPECT_EQ(EntriesIn(folder_), 0) << "something is left behind";
        unsetenv("TKKERNEL_OBJECTS");
        const std::string command = "rm -rf " + folder_;
        if (system(command.c_str()) != 0) ADD_FAILURE();
    }

    const std::string& Folder() const { return folder_; }

private:
    std::string folder_;
};

/// Closes itself.
class Handle {
public:
    Handle(HANDLE handle = nullptr) : handle_(handle) {}  // NOLINT(google-explicit-constructor)
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Handle& operator=(Handle other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Handle() {
        if (handle_ != nullptr) CloseHandle(handle_);
    }
    operator HANDLE() const { return handle_; }  // NOLINT(google-explicit-constructor)
    HANDLE Release() { return std::exchange(handle_, nullptr); }

private:
    HANDLE handle_;
};

inline Handle AutoEvent(const char* name = nullptr) {
    return CreateEventA(nullptr, FALSE, FALSE, name);
}
inline Handle ManualEvent(const char* name = nullptr) {
    return CreateEventA(nullptr, TRUE, FALSE, name);
}

/// Whether a task sleeps on the record of its wait, and not on some lock before that.
inline bool SleepsInAWait(const std::string& task) {
    std::ifstream call(task + "/syscall");
    std::string number;
    std::string address;
    std::string operation;
    std::string expected;
    if (!(call >> number >> address >> operation >> expected)) return number.empty();  // nobody may look: believe it
    constexpr unsigned long kWaitUntil = 9;                                            // FUTEX_WAIT_BITSET
    return number == std::to_string(SYS_futex) && (std::stoul(operation, nullptr, 16) & 0x7F) == kWaitUntil &&
           std::stoul(expected, nullptr, 16) == 2;
}

/// A thread that can be known to sleep in a wait.
class Waiter {
public:
    explicit Waiter(std::function<DWORD()> wait)
        : thread_([this, wait = std::move(wait)] {
              id_.store(static_cast<int>(syscall(SYS_gettid)));
              result_ = wait();
              done_.store(true);
          }) {}
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;
    ~Waiter() {
        if (thread_.joinable()) thread_.join();
    }

    /// Returns once the thread sleeps, or has come back already.
    void UntilAsleep() {
        while (!done_.load() && !Sleeps())
            usleep(1000);
    }
    bool IsDone() const { return done_.load(); }
    DWORD Result() {
        thread_.join();
        return result_;
    }

private:
    /// In the system's futex call, not merely off the processor.
    bool Sleeps() const {
        if (id_.load() == 0) return false;
        const std::string task = "/proc/self/task/" + std::to_string(id_.load());
        std::ifstream status(task + "/stat");
        std::string text((std::istreambuf_iterator<char>(status)), std::istreambuf_iterator<char>());
        const std::size_t paren = text.rfind(')');
        if (paren == std::string::npos || text.compare(paren, 3, ") S") != 0) return false;
        return SleepsInAWait(task);
    }

    std::atomic<int> id_{0};
    std::atomic<bool> done_{false};
    DWORD result_ = 0;
    std::thread thread_;
};

template <typename Body>
auto OnThread(Body body) {
    decltype(body()) result{};
    std::thread([&] { result = body(); }).join();
    return result;
}

/// Fails and bends system calls made for kernel objects.
struct Faults {
    int fullAfter = -1;      // so many times more memory is had, then none; -1: always
    int signalWhenFull = 0;  // what the process does to itself then, with the lock in its hands
    // A clock reads so many nanoseconds less than the system's: sleeps of whole seconds end that much earlier.
    static inline std::atomic<std::int64_t> clockBehind{0};
    static inline std::atomic<std::int64_t> wallClockBehind{0};
    static inline std::atomic<int> repairs{0};  // how often the lock of a process that ended was taken over
};
Faults& TheFaults();

}  // namespace tk::test
