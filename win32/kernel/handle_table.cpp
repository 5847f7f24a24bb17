#include "win32/kernel/handle_table.h"

#include <pthread.h>

#include <mutex>
#include <new>

#include "win32/kernel/mutex_list.h"
#include "win32/kernel/thread_owner.h"
#include "winbase.h"

namespace tk::kernel {
namespace {

constexpr std::uint32_t kIndexBits = 18;
constexpr std::uint32_t kEntriesOfChunk = 1024;
constexpr std::uint32_t kChunks = (1u << kIndexBits) / kEntriesOfChunk;
constexpr std::uint32_t kMostGeneration = (1u << 11) - 1;
constexpr std::uint32_t kNone = UINT32_MAX;
/// So many closed entries wait before the first of them is used again.
constexpr std::uint32_t kLeastFree = 256;

constexpr std::uint64_t kOpen = std::uint64_t{1} << 31;
constexpr std::uint64_t kCalls = kOpen - 1;

constexpr std::uint32_t GenerationOf(std::uint64_t life) noexcept {
    return static_cast<std::uint32_t>(life >> 32);
}

struct Table {
    std::atomic<HandleEntry*> chunks[kChunks] = {};
    std::mutex gate;  // of what follows
    std::uint32_t made = 0;
    std::uint32_t firstFree = kNone;
    std::uint32_t lastFree = kNone;
    std::uint32_t freeCount = 0;
    std::uint32_t firstGeneration = 1;  // of entries that were never used
};

constinit Table theTable;
/// Entries that no handle finds any more. Calls at work still use them, and a leak checker is to find them.
constinit std::atomic<HandleEntry*> dropped[kChunks] = {};

Table& TheTable() noexcept {
    return theTable;
}

HandleEntry* EntryAt(Table& table, std::uint32_t index) noexcept {
    HandleEntry* chunk = table.chunks[index / kEntriesOfChunk].load(std::memory_order_acquire);
    return chunk != nullptr ? chunk + index % kEntriesOfChunk : nullptr;
}

/// @return kNone when there is no memory, or every handle is in use
std::uint32_t TakeIndex(Table& table) noexcept {
    const std::lock_guard lock(table.gate);
    const std::uint32_t chunk = table.made / kEntriesOfChunk;
    const bool room = chunk < kChunks;
    if (table.freeCount >= kLeastFree || (!room && table.freeCount != 0)) {
        const std::uint32_t index = table.firstFree;
        table.firstFree = EntryAt(table, index)->nextFree;
        if (table.firstFree == kNone) table.lastFree = kNone;
        --table.freeCount;
        return index;
    }
    if (!room) return kNone;
    if (table.made % kEntriesOfChunk == 0) {
        auto* entries = new (std::nothrow) HandleEntry[kEntriesOfChunk];
        if (entries == nullptr) return kNone;
        for (std::uint32_t i = 0; i < kEntriesOfChunk; ++i)
            entries[i].life.store(std::uint64_t{table.firstGeneration} << 32, std::memory_order_relaxed);
        table.chunks[chunk].store(entries, std::memory_order_release);
    }
    return table.made++;
}

/// The handle is closed and nobody works on it any more.
void Recycle(HandleEntry& entry, std::uint32_t index) noexcept {
    Closable* thing = std::exchange(entry.thing, nullptr);
    const std::uint32_t generation = GenerationOf(entry.life.load(std::memory_order_relaxed)) % kMostGeneration + 1;
    entry.life.store(std::uint64_t{generation} << 32, std::memory_order_release);
    {
        Table& table = TheTable();
        const std::lock_guard lock(table.gate);
        entry.nextFree = kNone;
        HandleEntry* last = table.lastFree != kNone ? EntryAt(table, table.lastFree) : nullptr;
        (last != nullptr ? last->nextFree : table.firstFree) = index;
        table.lastFree = index;
        ++table.freeCount;
    }
    thing->DropUse();
}

struct Decoded {
    std::uint32_t index;
    std::uint32_t generation;
};

/// A generation of 0 is no handle.
Decoded Decode(HANDLE handle) noexcept {
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    if ((number & 3) != 0 || number >> 31 != 0) return {0, 0};
    const auto bits = static_cast<std::uint32_t>(number >> 2);
    return {bits & ((1u << kIndexBits) - 1), bits >> kIndexBits};
}

[[gnu::destructor]] void AtExit() noexcept {
    DropAllHandles();
    NamedObjects::Leave();
}

// A handle is of the process that made it: a child has none, whatever it copied.
void InChild() noexcept {
    // Its own handles are other numbers than the copied ones.
    constexpr std::uint32_t kStep = 509;
    const std::uint32_t generation = (TheTable().firstGeneration + kStep) % kMostGeneration + 1;
    DropAllHandles();
    (new (&TheTable()) Table)->firstGeneration = generation;
    ForgetMutexes();
    RenewPrivateDispatcher();
    RenewThreadNumbers();
    NamedObjects::Forget();
}

[[gnu::constructor]] void AtLoad() noexcept {
    pthread_atfork(nullptr, nullptr, InChild);
}

}  // namespace

HANDLE OpenHandle(Closable* thing, DWORD access, bool inherit) noexcept {
    Table& table = TheTable();
    const std::uint32_t index = TakeIndex(table);
    if (index == kNone) {
        thing->DropUse();
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    HandleEntry& entry = *EntryAt(table, index);
    entry.thing = thing;
    entry.access = access;
    entry.flags.store(inherit ? HANDLE_FLAG_INHERIT : 0, std::memory_order_relaxed);
    const std::uint64_t life = entry.life.load(std::memory_order_relaxed);
    entry.life.store(life | kOpen, std::memory_order_release);
    const std::uintptr_t number = (std::uintptr_t{GenerationOf(life)} << kIndexBits | index) << 2;
    return reinterpret_cast<HANDLE>(number);
}

bool ShutHandle(HANDLE handle) noexcept {
    const auto [index, generation] = Decode(handle);
    HandleEntry* entry = generation != 0 ? EntryAt(TheTable(), index) : nullptr;
    if (entry != nullptr) {
        std::uint64_t life = entry->life.load(std::memory_order_acquire);
        while (GenerationOf(life) == generation && (life & kOpen) != 0 &&
               (entry->flags.load(std::memory_order_relaxed) & HANDLE_FLAG_PROTECT_FROM_CLOSE) == 0) {
            if (!entry->life.compare_exchange_weak(life, life & ~kOpen, std::memory_order_acq_rel)) continue;
            if ((life & kCalls) == 0) Recycle(*entry, index);
            return true;
        }
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return false;
}

void DropAllHandles() noexcept {
    for (std::uint32_t i = 0; i < kChunks; ++i) {
        HandleEntry* chunk = TheTable().chunks[i].exchange(nullptr, std::memory_order_acq_rel);
        if (chunk != nullptr) dropped[i].store(chunk, std::memory_order_relaxed);
    }
}

EntryUse::EntryUse(HANDLE handle) noexcept : entry_(nullptr) {
    const auto [index, generation] = Decode(handle);
    HandleEntry* entry = generation != 0 ? EntryAt(TheTable(), index) : nullptr;
    if (entry == nullptr) return;
    std::uint64_t life = entry->life.load(std::memory_order_acquire);
    while (GenerationOf(life) == generation && (life & kOpen) != 0) {
        if (!entry->life.compare_exchange_weak(life, life + 1, std::memory_order_acq_rel)) continue;
        entry_ = entry;
        index_ = index;
        return;
    }
}

EntryUse::~EntryUse() {
    if (entry_ == nullptr) return;
    const std::uint64_t life = entry_->life.fetch_sub(1, std::memory_order_acq_rel);
    if ((life & kOpen) == 0 && (life & kCalls) == 1) Recycle(*entry_, index_);
}

HandleUse::HandleUse(HANDLE handle, DWORD access) noexcept : entry_(handle) {
    Check(entry_ ? entry_->thing->AsTarget() : nullptr, access);
}

HandleUse::HandleUse(HANDLE handle, Kind kind, DWORD access) noexcept : entry_(handle) {
    Target* target = entry_ ? entry_->thing->AsTarget() : nullptr;
    Check(target != nullptr && target->GetKind() == kind ? target : nullptr, access);
}

void HandleUse::Check(Target* target, DWORD access) noexcept {
    if (target == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
    } else if ((entry_->access & access) != access) {
        SetLastError(ERROR_ACCESS_DENIED);
    } else {
        target_ = target;
    }
}

}  // namespace tk::kernel
