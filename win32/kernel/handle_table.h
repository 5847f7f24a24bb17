// Handles: numbers for things, found without a lock.
//
//   const HandleUse use(handle, Kind::kEvent, EVENT_MODIFY_STATE);
//   if (!use) return FALSE;  // the last error says why
//   use->GetState()...       // stays until `use` goes, even when the handle is closed meanwhile
//
// A handle is four times (generation, index of an entry). The generation of an entry changes when its handle is closed,
// and closed entries queue up before they are used again, so a stale handle finds nothing.
#pragma once

#include <utility>

#include "win32/kernel/target.h"
#include "windef.h"

namespace tk::kernel {

struct HandleEntry {
    std::atomic<std::uint64_t> life{0};  // generation, open, calls at work
    Closable* thing = nullptr;
    DWORD access = 0;
    std::atomic<DWORD> flags{0};
    std::uint32_t nextFree = 0;
};

/// Gives a thing a handle and takes over the caller's use of it. @return null with the last error; the use is dropped
HANDLE OpenHandle(Closable* thing, DWORD access, bool inherit) noexcept;
/// @return false with ERROR_INVALID_HANDLE
bool ShutHandle(HANDLE handle) noexcept;
/// No handle finds anything from now on: the process ends, or is a child of fork.
void DropAllHandles() noexcept;

/// A call at work on what a handle stands for.
class EntryUse {
public:
    explicit EntryUse(HANDLE handle) noexcept;
    EntryUse(EntryUse&& other) noexcept : entry_(std::exchange(other.entry_, nullptr)), index_(other.index_) {}
    EntryUse& operator=(EntryUse&&) = delete;
    ~EntryUse();

    explicit operator bool() const noexcept { return entry_ != nullptr; }
    HandleEntry& operator*() const noexcept { return *entry_; }
    HandleEntry* operator->() const noexcept { return entry_; }

private:
    HandleEntry* entry_;
    std::uint32_t index_ = 0;
};

/// As above, for a kernel object. The last error is ERROR_INVALID_HANDLE or ERROR_ACCESS_DENIED when it cannot be had.
class HandleUse {
public:
    HandleUse(HANDLE handle, DWORD access) noexcept;  // of any kind
    HandleUse(HANDLE handle, Kind kind, DWORD access) noexcept;

    explicit operator bool() const noexcept { return target_ != nullptr; }
    Target* operator->() const noexcept { return target_; }
    Target& operator*() const noexcept { return *target_; }

private:
    void Check(Target* target, DWORD access) noexcept;

    EntryUse entry_;
    Target* target_ = nullptr;
};

}  // namespace tk::kernel
