#include "ado/odbc/watchdog.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "ado/odbc/coarse_clock.h"
#include "ado/odbc/fork.h"
#include "ado/odbc/moments.h"

namespace tk::ado {
namespace {

constexpr auto kInterval = std::chrono::milliseconds(200);
constexpr int kQuietRounds = 25;  // five seconds without a guard: sleep until the next one

// Deadlines below this are states of a slot.
constexpr std::int64_t kIdle = 0;
constexpr std::int64_t kFiring = 1;
constexpr std::int64_t kFired = 2;

}  // namespace

/// The place of one target; slots are never freed, only handed on.
struct WatchSlot {
    const unsigned owner = ForkGeneration();  // a child process does not use its parent's
    std::atomic<std::int64_t> deadline{kIdle};
    Expiring* target = nullptr;  // written under the lock, while idle
};

class Watchdog {
public:
    /// Of all targets that may wait, or of all that do not.
    static Watchdog& Of(const Expiring& target) {
        // Never destroyed: calls may run while static objects end. At exit their threads end.
        static constinit PerProcess<Watchdog> instances[2];
        static const struct AtExit {
            ~AtExit() {
                for (const auto& instance : instances) {
                    if (Watchdog* const own = instance.Existing()) own->ShutDown();
                }
            }
        } atExit;
        return instances[target.mayWait_ == Expiring::MayWait::Yes ? 1 : 0].Get();
    }

    void ShutDown() {
        {
            const std::lock_guard lock(mutex_);
            stop_ = true;
        }
        wake_.notify_all();
        if (thread_.joinable()) thread_.join();
    }

    WatchSlot* Enter(std::int64_t deadline, Expiring& target) {
        if (target.slot_ == nullptr || target.slot_->owner != ForkGeneration()) target.slot_ = TakeSlot(target);
        WatchSlot* const slot = target.slot_;
        // Before the look at isAsleep_, as the thread sets that before its last look at the slots: one sees the other.
        slot->deadline.store(deadline, std::memory_order_seq_cst);
        if (!isAsleep_.load(std::memory_order_seq_cst)) return slot;
        try {
            Wake();
        } catch (...) {
            Leave(slot);
            throw;
        }
        return slot;
    }

    static void Leave(WatchSlot* slot) noexcept {
        std::int64_t seen = slot->deadline.load(std::memory_order_acquire);
        Moments moments;
        // A call under way uses the target: wait for its end, which is a matter of one call.
        while (seen != kFired && (seen == kFiring || !slot->deadline.compare_exchange_weak(seen, kIdle))) {
            if (seen != kFiring) continue;
            moments.Wait();
            seen = slot->deadline.load(std::memory_order_acquire);
        }
        slot->deadline.store(kIdle, std::memory_order_relaxed);
    }

    void GiveBack(WatchSlot* slot) noexcept {
        if (slot->owner != ForkGeneration()) return;
        const std::lock_guard lock(mutex_);
        free_.push_back(slot);  // has room for every slot there is
    }

private:
    WatchSlot* TakeSlot(Expiring& target) {
        const std::lock_guard lock(mutex_);
        if (free_.empty()) {
            free_.reserve(slots_.size() + 1);
            slots_.emplace_back();
            free_.push_back(&slots_.back());
        }
        WatchSlot* const slot = free_.back();
        free_.pop_back();
        slot->target = &target;
        return slot;
    }

    void Wake() {
        {
            const std::lock_guard lock(mutex_);
            if (!thread_.joinable() && !stop_) thread_ = std::thread([this] { Run(); });
            isAsleep_ = false;
        }
        wake_.notify_one();
    }

    /// How long the thread may sleep: less than usual where a call is due before that.
    std::chrono::nanoseconds Interval() const noexcept {
        std::int64_t interval = std::chrono::nanoseconds(kInterval).count();
        const std::int64_t now = CoarseNow();
        for (const WatchSlot& slot : slots_) {
            const std::int64_t deadline = slot.deadline.load(std::memory_order_relaxed);
            if (deadline > kFired) interval = std::clamp(deadline - now, kMillisecond, interval);
        }
        return std::chrono::nanoseconds(interval);
    }

    bool IsAnyWatched() const noexcept {
        for (const WatchSlot& slot : slots_) {
            if (slot.deadline.load(std::memory_order_seq_cst) != kIdle) return true;
        }
        return false;
    }

    void Run() {
        std::unique_lock lock(mutex_);
        int quiet = 0;
        while (!stop_) {
            quiet = IsAnyWatched() ? 0 : quiet + 1;
            if (quiet > kQuietRounds) {
                isAsleep_.store(true, std::memory_order_seq_cst);
                if (!IsAnyWatched()) wake_.wait(lock, [this] { return stop_ || !isAsleep_; });
                isAsleep_ = false;
                quiet = 0;
            } else {
                wake_.wait_for(lock, Interval(), [this] { return stop_; });
            }
            for (std::size_t i = 0; i < slots_.size() && !stop_; ++i) {
                WatchSlot& slot = slots_[i];
                std::int64_t deadline = slot.deadline.load(std::memory_order_acquire);
                if (deadline <= kFired || deadline > CoarseNow()) continue;
                if (!slot.deadline.compare_exchange_strong(deadline, kFiring)) continue;
                Expiring* target = slot.target;
                lock.unlock();
                const int again = target->Expire();
                slot.deadline.store(again > 0 ? CoarseNow() + again * kMillisecond : kFired, std::memory_order_release);
                lock.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<WatchSlot> slots_;
    std::vector<WatchSlot*> free_;
    std::atomic<bool> isAsleep_ = true;  // or not begun
    bool stop_ = false;
    std::thread thread_;
};

Expiring::~Expiring() {
    if (slot_ != nullptr) Watchdog::Of(*this).GiveBack(std::exchange(slot_, nullptr));
}

void WatchdogGuard::Prepare() {
    struct Nobody final : Expiring {
        Nobody() noexcept : Expiring(MayWait::No) {}
        int Expire() noexcept override { return 0; }
    };
    Watchdog::Of(Nobody());
}

void WatchdogGuard::Begin(LONG seconds, Expiring& target, int milliseconds) {
    slot_ = Watchdog::Of(target).Enter(CoarseNow() + seconds * kSecond + milliseconds * kMillisecond, target);
}

void WatchdogGuard::End() noexcept {
    Watchdog::Leave(std::exchange(slot_, nullptr));
}

}  // namespace tk::ado
