// ado/rowset/fetch_pool.h - the threads that fetch ahead of the readers; few, kept for the next result, ended when
// idle.
//
// A job that no thread has begun yet can be taken back by whoever waits for it, so a full pool delays nobody for good.
// One that waits for a server is not for a thread that has patience to keep: it gets one of its own.
#pragma once

#include <atomic>
#include <memory>

#include "ado/odbc/fork.h"

namespace tk::ado {

class FetchJob {
public:
    virtual ~FetchJob() = default;

    /// On a thread of the pool; never throws.
    virtual void RunJob() noexcept = 0;

    /// From any thread, at the end of the process: RunJob returns soon.
    virtual void AbortJob() noexcept = 0;

    /// True when it mostly sleeps until a server answers: it gets a thread although all usual ones are busy.
    virtual bool WaitsForServer() const noexcept = 0;

    /// Claims a waiting job; the one who gets true runs it, or hands it in again.
    bool Claim() noexcept { return isWaiting_.exchange(false, std::memory_order_acq_rel); }

private:
    friend class FetchPool;
    std::atomic<bool> isWaiting_ = false;
};

class FetchPool {
public:
    static FetchPool& Instance();

    /// Hands the job in; a thread claims it soon, unless somebody else does.
    /// @returns false when there is no thread and none can be made: the pool forgets the job, which is
    ///          left to whoever claims it
    bool Submit(std::shared_ptr<FetchJob> job);

private:
    friend class PerProcess<FetchPool>;
    FetchPool();
    ~FetchPool();
    void ShutDown() noexcept;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tk::ado
