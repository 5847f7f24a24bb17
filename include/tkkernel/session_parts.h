// tkkernel/session_parts.h - what a CTDataServer (session.h) is made of; programs have no use for it.
//
// Threads: every change is made with the part's own latch shut. Find, FindFirst and what they return are for
// who holds the server's lock, or is alone.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class CTDataDriver;

namespace tk::session {

/// Shuts a list or a map for a few instructions that neither wait nor enter anything else. Nearly always its user holds
/// the server's lock as well, so a mutex of the system would only cost time.
class Latch {
public:
    void lock() noexcept {
        if (shut_.exchange(true, std::memory_order_acquire)) [[unlikely]]
            Wait();
    }
    void unlock() noexcept { shut_.store(false, std::memory_order_release); }

private:
    void Wait() noexcept;

    std::atomic<bool> shut_ = false;
};

/// The sessions that nobody holds: given back at the tail, lent from the head. One session may be here twice.
class FreeList {
public:
    /// Room for so many sessions; up to there Append does not allocate.
    void Reserve(std::size_t count);
    void Append(CTDataDriver* session);
    CTDataDriver* TakeHead();  ///< @return null when there is none
    /// The session that was taken last goes back to the head.
    void PutBack(CTDataDriver* session);
    CTDataDriver* GetHead();  ///< @return null when there is none
    void RemoveAll();
    std::size_t GetCount() const noexcept { return count_.load(std::memory_order_relaxed); }

private:
    std::size_t At(std::size_t place) const noexcept;
    void Grow(std::size_t count);

    Latch latch_;
    std::vector<CTDataDriver*> ring_;
    std::size_t head_ = 0;
    std::atomic<std::size_t> count_ = 0;
};

/// Who holds a session since when.
struct Lease {
    DWORD tick;  ///< Of GetTickCount.
    void* owner;
    DWORD kind;  ///< 0 a connection, else a recordset.
};

/// The leases by session, in an order that is part of the interface: by bucket, in each the latest first.
class LeaseMap {
public:
    struct Entry {
        CTDataDriver* session;
        Lease lease;
        Entry* next;
    };

    /// Room for so many leases; up to there Set does not allocate.
    void Reserve(std::size_t count);
    /// Records a lease, or replaces the one the session has, in its place.
    void Set(CTDataDriver* session, const Lease& lease);
    /// @return 0 when the session has none
    int Remove(CTDataDriver* session);
    void RemoveAll();
    const Entry* Find(CTDataDriver* session) const noexcept;
    std::size_t GetCount() const noexcept { return count_; }

    /// @return the first entry, in the map's order, that matches; null when none does
    template <typename Matches>
    const Entry* FindFirst(const Matches& matches) const {
        for (const Entry* chain : buckets_) {
            for (const Entry* entry = chain; entry != nullptr; entry = entry->next) {
                if (matches(*entry)) return entry;
            }
        }
        return nullptr;
    }

private:
    static constexpr std::size_t kBuckets = 17;
    static std::size_t BucketOf(const CTDataDriver* session) noexcept {
        return (reinterpret_cast<std::uintptr_t>(session) >> 4) % kBuckets;
    }

    void Grow(std::size_t count);

    Latch latch_;
    Entry* buckets_[kBuckets] = {};
    Entry* unused_ = nullptr;
    std::vector<std::unique_ptr<Entry[]>> blocks_;
    std::size_t allocated_ = 0;
    std::size_t count_ = 0;
};

/// What happened to the sessions of one kind. Written under the server's lock, read at any time.
struct KindCounters {
    std::atomic<std::uint64_t> loans = 0;  ///< from the free list
    std::atomic<std::uint64_t> returns = 0;
    std::atomic<std::uint64_t> takeovers = 0;  ///< leases taken back by force
    std::atomic<std::uint64_t> doubled = 0;    ///< of them, those whose session was put on the free list as well
    std::atomic<std::uint64_t> shared = 0;     ///< loans of a session that somebody held already
    std::atomic<std::uint64_t> refusals = 0;   ///< nothing free and nothing to take back
};

struct Counters {
    KindCounters databases;
    KindCounters recordsets;
    std::atomic<std::uint64_t> refusedClosed = 0;  ///< asked for while the pool was not open
    std::atomic<std::uint64_t> faults = 0;
};

}  // namespace tk::session
