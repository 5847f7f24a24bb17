// tkkernel/session_parts.h - what a CTDataServer (session.h) is made of; programs have no use for it.
//
// Threads: for who holds the server's lock, unless it says otherwise.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class CTDataDriver;

namespace tk::session {

/// Sessions in one piece of memory, made one by one and ended one by one: the end of one may fault.
template <typename Object>
class SessionArray {
public:
    SessionArray() = default;
    SessionArray(SessionArray&& other) noexcept { Swap(other); }
    SessionArray& operator=(SessionArray&& other) noexcept {
        Swap(other);
        return *this;
    }
    ~SessionArray() { Free(); }

    /// Begins an array of so many, which has to be empty.
    void Allocate(std::size_t count) {
        first_ = std::allocator<Object>().allocate(count);
        allocated_ = count;
    }
    void Add() {
        std::construct_at(first_ + count_);
        ++count_;
    }
    /// @return the last one, which is the caller's to end; null when none is left
    Object* TakeLast() noexcept { return count_ != 0 ? first_ + --count_ : nullptr; }
    /// Gives the memory back. Sessions that are still there are never ended.
    void Free() noexcept {
        if (first_ != nullptr) std::allocator<Object>().deallocate(first_, allocated_);
        first_ = nullptr;
        count_ = 0;
    }

    Object* First() const noexcept { return first_; }  ///< Null until Allocate.
    std::size_t GetCount() const noexcept { return count_; }

private:
    void Swap(SessionArray& other) noexcept {
        std::swap(first_, other.first_);
        std::swap(allocated_, other.allocated_);
        std::swap(count_, other.count_);
    }

    Object* first_ = nullptr;
    std::size_t allocated_ = 0;
    std::size_t count_ = 0;
};

/// The sessions that nobody holds: given back at the tail, lent from the head. One session may be here twice.
class FreeList {
public:
    /// Room for so many sessions; up to there Append does not allocate.
    void Reserve(std::size_t count);
    void Append(CTDataDriver* session);
    CTDataDriver* TakeHead() noexcept;  ///< @return null when there is none
    void RemoveAll() noexcept;
    /// Any thread. @return null when there is none
    CTDataDriver* GetHead() const noexcept { return headSession_.load(std::memory_order_relaxed); }
    /// Any thread.
    std::size_t GetCount() const noexcept { return count_.load(std::memory_order_relaxed); }

private:
    std::size_t At(std::size_t place) const noexcept;

    std::vector<CTDataDriver*> ring_;
    std::size_t head_ = 0;
    std::atomic<std::size_t> count_ = 0;
    std::atomic<CTDataDriver*> headSession_ = nullptr;
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
    /// Records a lease, or replaces the one the session has, in its place. @return whether it had one
    bool Set(CTDataDriver* session, const Lease& lease);
    /// @return whether the session had one
    bool Remove(CTDataDriver* session) noexcept;
    void RemoveAll() noexcept;
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

    Entry* buckets_[kBuckets] = {};
    Entry* unused_ = nullptr;
    std::vector<std::unique_ptr<Entry[]>> blocks_;
    std::size_t allocated_ = 0;
    std::size_t count_ = 0;
};

/// What happened to the sessions of one kind. Written under the server's lock, read by any thread.
struct KindCounters {
    std::atomic<std::uint64_t> loans = 0;  ///< from the free list
    std::atomic<std::uint64_t> returns = 0;
    std::atomic<std::uint64_t> takeovers = 0;  ///< leases taken back by force
    std::atomic<std::uint64_t> doubled = 0;    ///< of them, those whose session was put on the free list as well
    std::atomic<std::uint64_t> shared = 0;     ///< loans of a session that somebody held already
    std::atomic<std::uint64_t> refusals = 0;   ///< nothing free and nothing to take back
    std::atomic<std::int64_t> twice = 0;       ///< doubled less shared, since the pool was opened
};

struct Counters {
    KindCounters databases;
    KindCounters recordsets;
    std::atomic<std::uint64_t> refusedClosed = 0;  ///< asked for while the pool was not open
    std::atomic<std::uint64_t> faults = 0;
    std::atomic<std::uint64_t> clientFaults = 0;
};

}  // namespace tk::session
