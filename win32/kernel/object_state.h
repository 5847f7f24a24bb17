// The state of a kernel object and of a wait for objects, as they lie in memory, shared or not.
//
// A thread that has to wait leaves a record with one block for each object; the blocks of an object form its queue,
// first come first served. Whoever signals the object takes the signal on behalf of the first one whose wait that
// satisfies, and wakes it. So a signal reaches exactly those the platform's rules say, and waiting for all objects
// takes all or nothing.
#pragma once

#include <atomic>
#include <cstdint>

namespace tk::kernel {

enum class Kind : std::uint32_t { kEvent, kSemaphore, kMutex, kTimer };

/// Distance from the start of the memory that the objects of one dispatcher share; 0 is nothing.
using Ref = std::uint64_t;

// An object's word: its value in the upper half, flags in the lower. The value: an event or a timer is signalled (1) or
// not (0), a semaphore's count, the owner of a mutex (0 when it is free).
using Word = std::uint64_t;
inline constexpr Word kOne = Word{1} << 32;
inline constexpr Word kFlags = kOne - 1;
/// The word changes under the dispatcher's lock only: somebody is queued, or looks at several objects at once. Without
/// it a single exchange of the word does.
inline constexpr Word kSlow = 1;
/// The last owner of the mutex ended without releasing it.
inline constexpr Word kAbandoned = 2;
/// The flags from here on count, around and around, how often an event or a timer was reset: a signal that was given
/// out before does not come back.
inline constexpr Word kReset = 0x100;

constexpr std::uint32_t ValueOf(Word word) noexcept {
    return static_cast<std::uint32_t>(word >> 32);
}
constexpr Word WithValue(Word word, std::uint32_t value) noexcept {
    return (word & kFlags) | (Word{value} << 32);
}
constexpr Word WhenReset(Word word) noexcept {
    return (word & (kReset - 1)) | ((word + kReset) & kFlags & ~(kReset - 1));
}
constexpr Word ResetsOf(Word word) noexcept {
    return word & kFlags & ~(kReset - 1);
}
static_assert(WhenReset(WithValue(ResetsOf(~Word{0}) | kSlow, 1)) == kSlow);

inline constexpr int kMostBlocks = 64;

struct alignas(64) State {
    std::atomic<Word> word{0};
    Kind kind{};
    std::uint32_t manual = 0;                 // event, timer: a wait leaves it signalled
    std::uint32_t limit = 0;                  // semaphore
    std::atomic<std::uint32_t> recursion{0};  // mutex: how often its owner took it
    Ref first = 0;                            // the queue
    Ref last = 0;
    std::atomic<std::int64_t> due{INT64_MAX};  // timer: the next signal in nanoseconds
    std::atomic<std::uint32_t> wallClock{0};   // timer: `due` follows the system's clock
    std::atomic<std::int64_t> period{0};       // timer: nanoseconds; 0 for a single signal
};

struct Block {
    Ref object;
    union {
        Ref next;
        Word resets;  // of the object, once the wait is granted and out of the queue
    };
    Ref previous;
    Ref record;
};

// What a record's status says. A granted one holds the index of the object as well.
inline constexpr std::uint32_t kFree = 0;
inline constexpr std::uint32_t kFilling = 1;
inline constexpr std::uint32_t kWaiting = 2;
inline constexpr std::uint32_t kPoked = 3;  // its thread is to look again
inline constexpr std::uint32_t kLeft = 4;   // its thread went away and could not unlink it
inline constexpr std::uint32_t kGone = 5;   // its process is at its end; the thread does not wake up any more
inline constexpr std::uint32_t kGranted = 0x100;
inline constexpr std::uint32_t kGrantedAbandoned = 0x80;
inline constexpr std::uint32_t kIndexMask = 0x3F;

enum class WaitFor : std::uint32_t {
    kAny,
    kAll,
    kLook,  // the thread decides itself: some of its objects are out of this dispatcher's sight
};

/// One wait of one thread.
struct Record {
    std::atomic<std::uint32_t> status{kFree};  // the thread sleeps on it
    std::uint32_t process = 0;                 // of shared objects: whose record it is
    std::uint32_t owner = 0;                   // what the thread puts into a mutex
    WaitFor mode{};
    std::uint32_t count = 0;
    std::uint64_t ticket = 0;                       // the order of arrival
    std::atomic<std::uint32_t>* sleeper = nullptr;  // private records: the status the thread sleeps on
    bool sleeperShared = false;
    Block blocks[kMostBlocks];
};

}  // namespace tk::kernel
