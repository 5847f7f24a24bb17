// The named objects of this user, shared by processes: found by name, held by handles, swept behind processes that
// ended.
#pragma once

#include <string>
#include <string_view>

#include "win32/kernel/dispatcher.h"
#include "win32/kernel/named_memory.h"
#include "win32/system/file_descriptor.h"

namespace tk::kernel {

/// What a new object starts with.
struct Initial {
    Kind kind;
    std::uint32_t value = 0;
    std::uint32_t manual = 0;
    std::uint32_t limit = 0;
};

class NamedObjects;

/// One process-wide use of a named object.
struct NamedUse {
    NamedObjects* objects = nullptr;
    std::uint32_t slot = kNoSlot;
    bool existed = false;
    DWORD error = 0;  ///< when there are no objects

    State& GetState() const noexcept;
};

class NamedObjects final : public Dispatcher {
public:
    /// Opens the object of that name, or makes it when `initial` says how.
    /// @param name  cleaned, 1 to 260 characters
    /// @param ownedInitially  a new mutex belongs to the calling thread
    /// @return in error: 2 not there (without `initial`), 6 another kind has the name, 1450 no room, ...
    static NamedUse Use(std::u16string_view name, Kind kind, const Initial* initial, bool ownedInitially);
    /// Gives one use back; the last one of the last process ends the object.
    static void Release(NamedObjects& objects, std::uint32_t slot) noexcept;
    /// At the end of the process: everything of this process is given back, and nothing can be opened any more.
    static void Leave() noexcept;
    /// In a child of fork: the parent's objects are not the child's.
    static void Forget() noexcept;

    /// This process as an owner of mutexes: what goes above the number of a thread.
    std::uint32_t Process() const noexcept { return process_ + 1; }

    // With the lock:

    /// A record for a wait, free again when its status says so. @return null with no room left
    Record* ClaimRecord() noexcept;
    /// Takes everything from processes that ended.
    void SweepDead(Hold& hold) noexcept;
    /// Whether the owner of a mutex, of another process, still lives.
    bool OwnerLives(std::uint32_t owner) const noexcept;

    Slot& SlotAt(std::uint32_t slot) const noexcept {
        return *reinterpret_cast<Slot*>(base_ + kSlotsAt + slot * sizeof(Slot));
    }

private:
    NamedObjects() = default;
    ~NamedObjects() override = default;

    enum class Attached { kDone, kRetry, kFailed };
    Attached Attach(const std::string& path, DWORD* error);
    void Detach() noexcept;
    void Unmap() noexcept;

    Locked Lock(std::int64_t end) noexcept override;
    void Unlock() noexcept override;
    void Recover(Hold& hold) noexcept override;
    void Missed(std::uint32_t process) noexcept override;

    bool ClaimProcess() noexcept;
    bool Back(std::size_t offset, std::size_t size) noexcept;
    MemoryHeader& Header() const noexcept { return *reinterpret_cast<MemoryHeader*>(base_); }
    Record& RecordNumber(std::uint32_t number) const noexcept {
        return *reinterpret_cast<Record*>(base_ + kRecordsAt + number * sizeof(Record));
    }

    std::uint32_t Find(std::u16string_view name, std::uint32_t hash, Hold& hold) noexcept;
    std::uint32_t MakeSlot(std::u16string_view name, std::uint32_t hash, const Initial& initial) noexcept;
    void FreeSlot(std::uint32_t slot) noexcept;
    void DropHolder(std::uint32_t slot, std::uint32_t process) noexcept;
    bool HasHolder(const Slot& slot) const noexcept;
    void SweepProcess(std::uint32_t process, Hold& hold) noexcept;
    void SweepSlots(std::uint32_t process, Hold& hold) noexcept;
    void SweepRecords(std::uint32_t process, std::uint32_t statusAfter) noexcept;
    void GiveBack(const Record& record) noexcept;
    void OfferAll(Hold& hold) noexcept;
    void RebuildSlots() noexcept;
    void RelinkRecords() noexcept;

    std::string path_;
    system::FileDescriptor file_;
    std::uint32_t process_ = kMostProcesses;  // none yet
    std::uint32_t recordHint_ = 0;
};

inline State& NamedUse::GetState() const noexcept {
    return objects->SlotAt(slot).state;
}

}  // namespace tk::kernel
