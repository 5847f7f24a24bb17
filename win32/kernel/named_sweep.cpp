#include <algorithm>
#include <array>

#include "win32/kernel/named_memory_file.h"
#include "win32/kernel/named_objects.h"
#include "win32/kernel/thread_owner.h"

namespace tk::kernel {

bool NamedObjects::OwnerLives(std::uint32_t owner) const noexcept {
    const std::uint32_t process = ProcessOfOwner(owner);
    return process == 0 || process == Process() || Lives(file_.Get(), process - 1);
}

void NamedObjects::Missed(std::uint32_t process) noexcept {
    if (process == Process() || Lives(file_.Get(), process - 1)) return;
    Hold hold(*this, Now(CLOCK_MONOTONIC));  // not worth a wait: others sweep as well
    if (hold) SweepDead(hold);
}

void NamedObjects::SweepDead(Hold& hold) noexcept {
    for (std::uint32_t process = 0; process < kMostProcesses; ++process) {
        if (Header().processes[process].load(std::memory_order_relaxed) == 0) continue;
        if (process != process_ && !Lives(file_.Get(), process)) SweepProcess(process, hold);
    }
}

/// A grant that its thread did not live to see belongs to the next one.
void NamedObjects::GiveBack(const Record& record) noexcept {
    const std::uint32_t index = record.status.load(std::memory_order_relaxed) & kIndexMask;
    const bool all = record.mode == WaitFor::kAll;
    for (std::uint32_t i = all ? 0 : index; i < (all ? record.count : index + 1); ++i) {
        State& state = StateAt(record.blocks[i].object);
        if (state.kind == Kind::kMutex) continue;  // abandoned with all the others of its process
        if (state.manual != 0) continue;           // the wait had taken nothing
        Freeze(state);
        const Word word = state.word.load(std::memory_order_relaxed);
        const std::uint32_t most = state.kind == Kind::kSemaphore ? state.limit : 1;
        if (ValueOf(word) < most && ResetsOf(word) == record.blocks[i].resets) SetValue(state, ValueOf(word) + 1);
        Thaw(state);
    }
}

void NamedObjects::SweepRecords(std::uint32_t process, std::uint32_t statusAfter) noexcept {
    for (std::uint32_t i = 0; i < Header().recordsBacked; ++i) {
        Record& record = RecordNumber(i);
        const std::uint32_t status = record.status.load(std::memory_order_acquire);
        if (status == kFree || record.process != process + 1) continue;
        if (status == kWaiting || status == kPoked || status == kLeft) Dequeue(record);
        if ((status & kGranted) != 0) GiveBack(record);
        record.status.store(statusAfter, std::memory_order_release);
    }
}

void NamedObjects::SweepProcess(std::uint32_t process, Hold& hold) noexcept {
    SweepRecords(process, kFree);
    SweepSlots(process, hold);
    Header().processes[process].store(0, std::memory_order_release);
}

void NamedObjects::SweepSlots(std::uint32_t process, Hold& hold) noexcept {
    for (std::uint32_t i = 0; i < Header().slotsBacked; ++i) {
        Slot& slot = SlotAt(i);
        if (slot.used.load(std::memory_order_acquire) == 0) continue;
        State& state = slot.state;
        if (state.kind == Kind::kMutex &&
            ProcessOfOwner(ValueOf(state.word.load(std::memory_order_relaxed))) == process + 1) {
            Abandon(state, hold);
        }
        if ((slot.holders[process / 64].load(std::memory_order_relaxed) >> process % 64 & 1) != 0) {
            DropHolder(i, process);
        }
    }
    OfferAll(hold);
}

void NamedObjects::OfferAll(Hold& hold) noexcept {
    for (std::uint32_t i = 0; i < Header().slotsBacked; ++i) {
        Slot& slot = SlotAt(i);
        if (slot.used.load(std::memory_order_acquire) == 0 || slot.state.first == 0) continue;
        Offer(slot.state, hold);
        Thaw(slot.state);
    }
}

void NamedObjects::Recover(Hold& hold) noexcept {
    SweepDead(hold);
    OfferAll(hold);
}

void NamedObjects::RebuildSlots() noexcept {
    MemoryHeader& header = Header();
    std::ranges::fill(header.buckets, kNoSlot);
    header.freeSlots = kNoSlot;
    header.slotsUsed = 0;
    for (std::uint32_t i = header.slotsBacked; i-- > 0;) {
        Slot& slot = SlotAt(i);
        slot.state.first = 0;
        slot.state.last = 0;
        const bool used = slot.used.load(std::memory_order_acquire) != 0 && HasHolder(slot);
        slot.used.store(used ? 1 : 0, std::memory_order_relaxed);
        std::uint32_t& list = used ? header.buckets[slot.hash % kBuckets] : header.freeSlots;
        slot.next = list;
        list = i;
        if (used) ++header.slotsUsed;
    }
}

void NamedObjects::RelinkRecords() noexcept {
    std::array<std::uint16_t, kMostRecords> waiting;
    std::size_t count = 0;
    for (std::uint32_t i = 0; i < Header().recordsBacked; ++i) {
        Record& record = RecordNumber(i);
        const std::uint32_t status = record.status.load(std::memory_order_acquire);
        if (status == kWaiting || status == kPoked) {
            waiting[count++] = static_cast<std::uint16_t>(i);
            *lastTicket_ = std::max(*lastTicket_, record.ticket);
        } else if (status == kFilling || status == kLeft) {
            record.status.store(kFree, std::memory_order_release);
        }
    }
    std::sort(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(count),
              [this](std::uint16_t a, std::uint16_t b) { return RecordNumber(a).ticket < RecordNumber(b).ticket; });
    for (std::size_t i = 0; i < count; ++i) {
        Record& record = RecordNumber(waiting[i]);
        for (std::uint32_t j = 0; j < record.count; ++j)
            LinkLast(StateAt(record.blocks[j].object), record.blocks[j]);
    }
    for (std::uint32_t i = 0; i < Header().slotsBacked; ++i) {
        Slot& slot = SlotAt(i);
        if (slot.used.load(std::memory_order_relaxed) == 0) continue;
        if (slot.state.first != 0) {
            Freeze(slot.state);
        } else {
            Thaw(slot.state);
        }
    }
}

}  // namespace tk::kernel
