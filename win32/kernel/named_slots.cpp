#include <fcntl.h>

#include <algorithm>
#include <new>

#include "win32/kernel/named_memory_file.h"
#include "win32/kernel/named_objects.h"
#include "win32/kernel/thread_owner.h"

namespace tk::kernel {

bool NamedObjects::Back(std::size_t offset, std::size_t size) noexcept {
    return posix_fallocate(file_.Get(), static_cast<off_t>(offset), static_cast<off_t>(size)) == 0;
}

bool NamedObjects::HasHolder(const Slot& slot) const noexcept {
    return std::ranges::any_of(slot.holders,
                               [](const auto& bits) { return bits.load(std::memory_order_relaxed) != 0; });
}

std::uint32_t NamedObjects::Find(std::u16string_view name, std::uint32_t hash, Hold& hold) noexcept {
    for (;;) {
        std::uint32_t at = Header().buckets[hash % kBuckets];
        while (at != kNoSlot) {
            const Slot& slot = SlotAt(at);
            if (slot.hash == hash && std::u16string_view(slot.name, slot.nameLength) == name) break;
            at = slot.next;
        }
        if (at == kNoSlot) return kNoSlot;
        // It is there as long as one of its holders lives.
        const Slot& slot = SlotAt(at);
        std::uint32_t ended = kNoSlot;
        for (std::uint32_t process = 0; process < kMostProcesses; ++process) {
            const std::uint64_t bits = slot.holders[process / 64].load(std::memory_order_relaxed);
            if (bits == 0) {
                process |= 63;
                continue;
            }
            if ((bits >> process % 64 & 1) == 0) continue;
            if (process == process_ || Lives(file_.Get(), process)) return at;
            ended = process;
            break;
        }
        if (ended == kNoSlot) return kNoSlot;  // freed objects are not in their bucket
        SweepProcess(ended, hold);
    }
}

std::uint32_t NamedObjects::MakeSlot(std::u16string_view name, std::uint32_t hash, const Initial& initial) noexcept {
    MemoryHeader& header = Header();
    if (header.freeSlots == kNoSlot) {
        constexpr std::uint32_t kStep = 64;
        static_assert(kMostNamed % kStep == 0);
        if (header.slotsBacked == kMostNamed) return kNoSlot;
        if (!Back(kSlotsAt + header.slotsBacked * sizeof(Slot), kStep * sizeof(Slot))) return kNoSlot;
        for (std::uint32_t i = header.slotsBacked + kStep; i-- > header.slotsBacked;) {
            SlotAt(i).next = header.freeSlots;
            header.freeSlots = i;
        }
        header.slotsBacked += kStep;
    }
    const std::uint32_t number = header.freeSlots;
    Slot& slot = SlotAt(number);
    header.freeSlots = slot.next;

    State& state = *new (&slot.state) State;
    state.kind = initial.kind;
    state.manual = initial.manual;
    state.limit = initial.limit;
    state.recursion.store(1, std::memory_order_relaxed);
    state.word.store(Word{initial.value} << 32, std::memory_order_relaxed);
    for (auto& bits : slot.holders)
        bits.store(0, std::memory_order_relaxed);
    slot.holders[process_ / 64].store(std::uint64_t{1} << process_ % 64, std::memory_order_relaxed);
    slot.hash = hash;
    slot.nameLength = static_cast<std::uint32_t>(name.size());
    std::ranges::copy(name, slot.name);
    slot.used.store(1, std::memory_order_release);  // whole from here on, also for who comes after a crash

    slot.next = header.buckets[hash % kBuckets];
    header.buckets[hash % kBuckets] = number;
    ++header.slotsUsed;
    return number;
}

void NamedObjects::FreeSlot(std::uint32_t number) noexcept {
    Slot& slot = SlotAt(number);
    std::uint32_t* link = &Header().buckets[slot.hash % kBuckets];
    while (*link != kNoSlot && *link != number)
        link = &SlotAt(*link).next;
    if (*link == number) *link = slot.next;
    slot.used.store(0, std::memory_order_release);
    slot.next = Header().freeSlots;
    Header().freeSlots = number;
    --Header().slotsUsed;
}

void NamedObjects::DropHolder(std::uint32_t number, std::uint32_t process) noexcept {
    Slot& slot = SlotAt(number);
    slot.holders[process / 64].fetch_and(~(std::uint64_t{1} << process % 64), std::memory_order_relaxed);
    if (!HasHolder(slot)) FreeSlot(number);
}

Record* NamedObjects::ClaimRecord() noexcept {
    MemoryHeader& header = Header();
    for (std::uint32_t i = 0; i < header.recordsBacked; ++i) {
        const std::uint32_t number = (recordHint_ + i) % header.recordsBacked;
        Record& record = RecordNumber(number);
        if (record.status.load(std::memory_order_acquire) != kFree) continue;
        recordHint_ = number;
        record.process = Process();
        record.status.store(kFilling, std::memory_order_relaxed);
        return &record;
    }
    constexpr std::uint32_t kStep = 16;
    static_assert(kMostRecords % kStep == 0);
    if (header.recordsBacked == kMostRecords) return nullptr;
    if (!Back(kRecordsAt + header.recordsBacked * sizeof(Record), kStep * sizeof(Record))) return nullptr;
    Record& record = RecordNumber(header.recordsBacked);
    header.recordsBacked += kStep;
    record.process = Process();
    record.status.store(kFilling, std::memory_order_relaxed);
    return &record;
}

}  // namespace tk::kernel
