#include "ado/rowset/fetch_pool.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace tk::ado {
namespace {

constexpr std::size_t kMostThreads = 8;
constexpr std::size_t kMostWithWaiting = 64;  // those included that mostly sleep
constexpr auto kIdleTime = std::chrono::seconds(30);
constexpr auto kExitPatience = std::chrono::seconds(2);

}  // namespace

struct FetchPool::Impl {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable ended;
    std::deque<std::shared_ptr<FetchJob>> waiting;
    std::vector<std::shared_ptr<FetchJob>> running;
    std::size_t threads = 0;
    std::size_t idle = 0;
    bool stop = false;

    void Work() {
        std::unique_lock lock(mutex);
        for (;;) {
            ++idle;
            const bool hasWork = wake.wait_for(lock, kIdleTime, [this] { return stop || !waiting.empty(); });
            --idle;
            if (stop || !hasWork) break;
            auto job = std::move(waiting.front());
            waiting.pop_front();
            const bool isMine = job->Claim();
            if (isMine) running.push_back(job);
            lock.unlock();
            if (isMine) job->RunJob();
            lock.lock();
            if (isMine) std::erase(running, job);
            lock.unlock();
            job.reset();  // its last owner may close a connection
            lock.lock();
        }
        --threads;
        // Notified under the lock: after it the pool counts on this thread no more.
        ended.notify_all();
    }
};

FetchPool::FetchPool() : impl_(std::make_unique<Impl>()) {}

FetchPool::~FetchPool() = default;

FetchPool& FetchPool::Instance() {
    // Never destroyed: threads that outlast the patience at exit still use it.
    static constinit PerProcess<FetchPool> instance;
    static const struct AtExit {
        ~AtExit() {
            if (FetchPool* const own = instance.Existing()) own->ShutDown();
        }
    } atExit;
    return instance.Get();
}

bool FetchPool::Submit(std::shared_ptr<FetchJob> job) {
    const bool mostlySleeps = job->WaitsForServer();
    const std::lock_guard lock(impl_->mutex);
    if (impl_->stop) {
        job->isWaiting_.store(true, std::memory_order_release);
        return false;
    }
    auto& waiting = impl_->waiting;
    const auto place = waiting.emplace(mostlySleeps ? waiting.begin() : waiting.end(), std::move(job));
    // Behind what may fail, and seen by the threads, which look at the queue under the lock.
    (*place)->isWaiting_.store(true, std::memory_order_release);
    if (impl_->idle >= waiting.size()) {
        impl_->wake.notify_one();
        return true;
    }
    if (impl_->threads >= (mostlySleeps ? kMostWithWaiting : kMostThreads)) return true;
    try {
        std::thread([impl = impl_.get()] { impl->Work(); }).detach();
        ++impl_->threads;
    } catch (const std::exception&) {
        // No thread, or no memory for one.
        if (impl_->threads > 0) return true;  // one that is busy takes it later
        waiting.erase(place);                 // nobody would take it off: its rows would stay for good
        return false;
    }
    return true;
}

void FetchPool::ShutDown() noexcept {
    std::unique_lock lock(impl_->mutex);
    impl_->stop = true;
    const auto running = impl_->running;
    lock.unlock();
    impl_->wake.notify_all();
    for (const auto& job : running)
        job->AbortJob();
    lock.lock();
    impl_->ended.wait_for(lock, kExitPatience, [this] { return impl_->threads == 0; });
}

}  // namespace tk::ado
