#include "ado/odbc/session_cache.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>
#include <vector>

#include "ado/odbc/watchdog.h"

namespace tk::ado {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t kMostIdle = 16;

long long Microseconds(Clock::duration time) noexcept {
    return std::chrono::duration_cast<std::chrono::microseconds>(time).count();
}

bool IsSame(const SessionKey& first, const SessionKey& second) noexcept {
    return first == second || *first == *second;
}

}  // namespace

Lease::~Lease() {
    if (key_ == nullptr) return;
    SessionCache::Instance().Return(key_, std::move(connection_));
}

struct SessionCache::Impl {
    struct Idle {
        SessionKey key;
        std::unique_ptr<PhysicalConnection> connection;
        Clock::time_point since;
        bool isDoubted = false;
        bool isGivenUp = false;
    };

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<Idle> idle;  // those given up, then the longest idle first
    std::chrono::milliseconds limit = std::chrono::seconds(60);
    bool stop = false;
    bool isAsleep = false;  // the janitor waits without a limit
    std::thread janitor;

    /// Nobody gets the connections of that key any more.
    void GiveUp(const SessionKey& key) {
        const std::lock_guard lock(mutex);
        for (Idle& each : idle) {
            if (IsSame(each.key, key)) each.isGivenUp = true;
        }
        std::stable_partition(idle.begin(), idle.end(), [](const Idle& each) { return each.isGivenUp; });
        changed.notify_one();
    }

    /// Closes what has been idle too long; ends when nothing is left to watch.
    void RunJanitor() {
        std::unique_lock lock(mutex);
        while (!stop) {
            if (idle.empty()) {
                isAsleep = true;
                changed.wait(lock, [this] { return stop || !idle.empty(); });
                isAsleep = false;
                continue;
            }
            const auto due = idle.front().since + limit;
            if (Clock::now() < due && !idle.front().isGivenUp) {
                changed.wait_until(lock, due);
                continue;
            }
            auto expired = std::move(idle.front().connection);
            idle.erase(idle.begin());
            lock.unlock();
            expired.reset();  // talks to the server
            lock.lock();
        }
    }
};

SessionCache::SessionCache() : impl_(std::make_unique<Impl>()) {}

SessionCache::~SessionCache() = default;

void SessionCache::ShutDown() noexcept {
    {
        const std::lock_guard lock(impl_->mutex);
        impl_->stop = true;
    }
    impl_->changed.notify_all();
    if (impl_->janitor.joinable()) impl_->janitor.join();
    Clear();
}

SessionCache& SessionCache::Instance() {
    // Never destroyed: sessions of static objects may end after it. At exit it is emptied and keeps nothing any more.
    // A child leaves the parent's connections open: closing would tell the server that the parent is done with them.
    static constinit PerProcess<SessionCache> instance;
    static const struct AtExit {
        AtExit() { WatchdogGuard::Prepare(); }  // servers may hang then too
        ~AtExit() {
            if (SessionCache* const own = instance.Existing()) own->ShutDown();
        }
    } atExit;
    return instance.Get();
}

std::unique_ptr<PhysicalConnection> SessionCache::Take(const SessionKey& key) {
    for (;;) {
        std::unique_ptr<PhysicalConnection> found;
        Clock::time_point now;
        Clock::duration idleTime{};
        {
            const std::lock_guard lock(impl_->mutex);
            // The most recently used one: the most likely to be alive.
            const auto last = std::find_if(impl_->idle.rbegin(), impl_->idle.rend(), [&](const Impl::Idle& each) {
                return !each.isGivenUp && IsSame(each.key, key);
            });
            if (last == impl_->idle.rend()) return nullptr;
            found = std::move(last->connection);
            now = Clock::now();
            idleTime = last->isDoubted ? Clock::duration::max() : now - last->since;
            impl_->idle.erase(std::next(last).base());
        }
        if (found->IsUsable(Microseconds(idleTime), Microseconds(now.time_since_epoch()))) return found;
        // Nor will the others answer. Closing them may take time: the janitor does it.
        if (!found->Profile().isFileDatabase) impl_->GiveUp(key);
    }
}

void SessionCache::Return(const SessionKey& key, std::unique_ptr<PhysicalConnection> connection) noexcept try {
    if (connection == nullptr) return;
    if (connection->IsBroken()) Distrust(key);
    if (!connection->Reset()) return;
    std::unique_ptr<PhysicalConnection> surplus;
    const std::lock_guard lock(impl_->mutex);
    if (impl_->stop || impl_->limit.count() == 0) return;
    impl_->idle.reserve(impl_->idle.size() + 1);
    if (impl_->idle.size() >= kMostIdle) {
        surplus = std::move(impl_->idle.front().connection);
        impl_->idle.erase(impl_->idle.begin());
    }
    if (!impl_->janitor.joinable()) impl_->janitor = std::thread([impl = impl_.get()] { impl->RunJanitor(); });
    impl_->idle.push_back({key, std::move(connection), Clock::now()});
    if (impl_->isAsleep) impl_->changed.notify_one();
} catch (...) {
    // No memory or no thread for keeping it: it is closed.
}

void SessionCache::Distrust(const SessionKey& key) noexcept {
    const std::lock_guard lock(impl_->mutex);
    for (Impl::Idle& each : impl_->idle)
        each.isDoubted = each.isDoubted || IsSame(each.key, key);
}

void SessionCache::Clear() noexcept {
    std::vector<Impl::Idle> closing;
    const std::lock_guard lock(impl_->mutex);
    closing.swap(impl_->idle);
}

std::size_t SessionCache::IdleCount() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->idle.size();
}

void SessionCache::SetIdleLimit(long long milliseconds) {
    {
        const std::lock_guard lock(impl_->mutex);
        impl_->limit = std::chrono::milliseconds(milliseconds);
    }
    impl_->changed.notify_all();
}

}  // namespace tk::ado
