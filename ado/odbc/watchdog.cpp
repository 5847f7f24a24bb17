#include "ado/odbc/watchdog.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace tk::ado {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kInterval = std::chrono::milliseconds(200);
constexpr int kQuietRounds = 25;  // five seconds without a guard: sleep until the next one

std::int64_t Now() {
    return Clock::now().time_since_epoch().count();
}

// Deadlines below this are states of a slot.
constexpr std::int64_t kIdle = 0;
constexpr std::int64_t kFiring = 1;
constexpr std::int64_t kFired = 2;

}  // namespace

/// One place for a running call; slots are never freed, only handed on.
struct WatchdogGuard::Slot {
    std::atomic<std::int64_t> deadline{kIdle};
    Expiring* target = nullptr;  // written while idle
};

class Watchdog {
public:
    using Slot = WatchdogGuard::Slot;

    static Watchdog& Instance() {
        // Never destroyed: calls may run while static objects end. At exit its thread ends.
        static Watchdog& instance = *new Watchdog;
        static const struct AtExit {
            ~AtExit() { instance.ShutDown(); }
        } atExit;
        return instance;
    }

    void ShutDown() {
        if (owner_ != getpid()) {  // a child process has the object but not the thread
            ForgetThread();
            return;
        }
        {
            const std::lock_guard lock(mutex_);
            stop_ = true;
        }
        wake_.notify_all();
        if (thread_.joinable()) thread_.join();
    }

    Slot* Enter(std::int64_t deadline, Expiring& target) {
        Slot* slot = nullptr;
        {
            const std::lock_guard lock(mutex_);
            if (owner_ != getpid()) {
                ForgetThread();
                owner_ = getpid();
                isAsleep_ = false;
            }
            if (free_.empty()) {
                slots_.emplace_back();
                slot = &slots_.back();
            } else {
                slot = free_.back();
                free_.pop_back();
            }
            slot->target = &target;
            slot->deadline.store(deadline, std::memory_order_release);
            ++active_;
            if (!thread_.joinable() && !stop_) thread_ = std::thread([this] { Run(); });
            if (!isAsleep_) return slot;
            isAsleep_ = false;
        }
        wake_.notify_one();
        return slot;
    }

    void Leave(Slot* slot) {
        std::int64_t seen = slot->deadline.load(std::memory_order_acquire);
        // A cancellation under way uses the target: wait for its end, which is a matter of one call.
        while (seen != kFired && (seen == kFiring || !slot->deadline.compare_exchange_weak(seen, kIdle))) {
            if (seen != kFiring) continue;
            std::this_thread::yield();
            seen = slot->deadline.load(std::memory_order_acquire);
        }
        slot->deadline.store(kIdle, std::memory_order_relaxed);
        const std::lock_guard lock(mutex_);
        free_.push_back(slot);
        --active_;
    }

private:
    void ForgetThread() {
        if (thread_.joinable()) thread_.detach();
    }

    void Run() {
        std::unique_lock lock(mutex_);
        int quiet = 0;
        while (!stop_) {
            quiet = active_ == 0 ? quiet + 1 : 0;
            if (quiet > kQuietRounds) {
                isAsleep_ = true;
                wake_.wait(lock, [this] { return stop_ || !isAsleep_; });
                quiet = 0;
            } else {
                wake_.wait_for(lock, kInterval, [this] { return stop_; });
            }
            for (std::size_t i = 0; i < slots_.size() && !stop_; ++i) {
                Slot& slot = slots_[i];
                std::int64_t deadline = slot.deadline.load(std::memory_order_acquire);
                if (deadline <= kFired || deadline > Now()) continue;
                if (!slot.deadline.compare_exchange_strong(deadline, kFiring)) continue;
                Expiring* target = slot.target;
                lock.unlock();  // the driver may talk to its server
                target->Expire();
                slot.deadline.store(kFired, std::memory_order_release);
                lock.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Slot> slots_;
    std::vector<Slot*> free_;
    std::size_t active_ = 0;
    bool isAsleep_ = false;
    bool stop_ = false;
    pid_t owner_ = getpid();
    std::thread thread_;
};

WatchdogGuard::WatchdogGuard(LONG seconds, Expiring& target) {
    if (seconds <= 0) return;
    slot_ = Watchdog::Instance().Enter(Now() + std::chrono::nanoseconds(std::chrono::seconds(seconds)).count(), target);
}

void WatchdogGuard::Finish() noexcept {
    if (slot_ != nullptr) Watchdog::Instance().Leave(std::exchange(slot_, nullptr));
}

}  // namespace tk::ado
