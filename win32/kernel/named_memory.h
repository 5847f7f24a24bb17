// How the named objects of one user lie in their shared memory file.
//
// What counts: the used slots with their names and states, who holds them (one bit for each process), the processes,
// and the records of waits. Everything else - the buckets, the queues, the numbers of things - is rebuilt when a
// process ended while it had the lock.
#pragma once

#include <pthread.h>

#include "win32/kernel/dispatcher.h"

namespace tk::kernel {

inline constexpr std::uint32_t kMostProcesses = 1024;
inline constexpr std::uint32_t kMostNamed = 65'536;
inline constexpr std::uint32_t kMostRecords = 4'096;
inline constexpr std::uint32_t kBuckets = 4'096;
inline constexpr std::uint32_t kMostName = 260;
inline constexpr std::uint32_t kNoSlot = UINT32_MAX;

struct Slot {
    State state;
    std::atomic<std::uint32_t> used{0};
    std::uint32_t next = kNoSlot;  // in its bucket, or in the list of free ones
    std::uint32_t hash = 0;
    std::uint32_t nameLength = 0;
    std::atomic<std::uint64_t> holders[kMostProcesses / 64];
    char16_t name[kMostName];
};

struct MemoryHeader {
    std::atomic<std::uint64_t> magic;
    pthread_mutex_t lock;
    /// The file was removed, or is to be: whoever maps it now starts over.
    std::atomic<std::uint32_t> dead;
    std::uint32_t slotsBacked;  // slots and records that memory was had for
    std::uint32_t recordsBacked;
    std::uint32_t slotsUsed;
    std::uint32_t freeSlots;  // a list
    std::uint64_t lastTicket;
    GrantLog log;
    std::atomic<std::uint32_t> processes[kMostProcesses];  // 1: somebody's
    std::uint32_t buckets[kBuckets];
};

// The number ends with what the layout depends on, so that libraries built differently do not meet in one file.
inline constexpr std::uint64_t kMagic =
    0x544B4F424A000000u | (sizeof(Slot) << 12 & 0xFFF000u) | (sizeof(MemoryHeader) & 0xFFFu);

constexpr std::size_t RoundedUp(std::size_t size) noexcept {
    return (size + 4095) / 4096 * 4096;
}
inline constexpr std::size_t kSlotsAt = RoundedUp(sizeof(MemoryHeader));
inline constexpr std::size_t kRecordsAt = kSlotsAt + RoundedUp(sizeof(Slot) * kMostNamed);
inline constexpr std::size_t kMemorySize = kRecordsAt + RoundedUp(sizeof(Record) * kMostRecords);

static_assert(std::atomic<Word>::is_always_lock_free);

}  // namespace tk::kernel
