#include "win32/kernel/named_objects.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "win32/kernel/immortal.h"
#include "win32/kernel/named_memory_file.h"
#include "win32/kernel/thread_owner.h"
#include "win32/system/system_call_error.h"
#include "winerror.h"

namespace tk::kernel {

namespace {

/// What this process uses. The gate is held while the file is opened and closed: closing one descriptor of a file gives
/// back the locks that the process has through another.
struct Uses {
    std::mutex gate;
    NamedObjects* objects = nullptr;
    std::unordered_map<std::uint32_t, std::uint32_t> bySlot;
    bool left = false;
};

Uses& TheUses() noexcept {
    return Immortal<Uses>();
}

DWORD ErrorOfFile(int error) noexcept {
    switch (error) {
        case ENOENT:  // a folder without which names cannot be shared
        case ENOTDIR:
            return ERROR_NOT_SUPPORTED;
        case ENOSPC:
        case ENOMEM:
            return ERROR_NO_SYSTEM_RESOURCES;
        default:
            return system::ErrorFromErrno(error);
    }
}

bool PrepareHeader(MemoryHeader& header) noexcept {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    const int result = pthread_mutex_init(&header.lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (result != 0) {
        errno = result;
        return false;
    }
    header.freeSlots = kNoSlot;
    for (std::uint32_t& bucket : header.buckets)
        bucket = kNoSlot;
    header.magic.store(kMagic, std::memory_order_release);  // last: a file without it is filled again
    return true;
}

bool Prepare(int descriptor) noexcept {
    if (ftruncate(descriptor, kMemorySize) != 0) return false;
    // Backed by memory before it is touched: a full file system is an error here and a bus error later.
    const int result = posix_fallocate(descriptor, 0, kSlotsAt);
    if (result != 0) {
        errno = result;
        return false;
    }
    void* at = mmap(nullptr, kSlotsAt, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (at == MAP_FAILED) return false;
    auto& header = *static_cast<MemoryHeader*>(at);
    const std::uint64_t magic = header.magic.load(std::memory_order_acquire);
    bool right = magic == kMagic;
    if (magic == 0) right = PrepareHeader(header);
    if (magic != 0 && !right) errno = ENOEXEC;
    const int error = errno;
    munmap(at, kSlotsAt);
    errno = error;
    return right;
}

std::uint32_t HashOf(std::u16string_view name) noexcept {
    std::uint32_t hash = 2'166'136'261;
    for (const char16_t unit : name)
        hash = (hash ^ unit) * 16'777'619;
    return hash;
}

}  // namespace

NamedObjects::Locked NamedObjects::Lock(std::int64_t end) noexcept {
    // Held for microseconds, unless its process is stopped or does not get a processor. The shorter time is for who has
    // no time: to give up at once would say of a signalled object that it is not.
    constexpr std::int64_t kShortest = 250'000'000;
    constexpr std::int64_t kLongest = 5'000'000'000;
    pthread_mutex_t* lock = &Header().lock;
    int result = pthread_mutex_trylock(lock);
    if (result == EBUSY) {
        const std::int64_t patience = std::clamp(end - Now(CLOCK_MONOTONIC), kShortest, kLongest);
        const std::int64_t last = Now(CLOCK_REALTIME) + patience;
        const timespec until = {last / 1'000'000'000, last % 1'000'000'000};
        result = pthread_mutex_timedlock(lock, &until);
    }
    if (result == 0) return Locked::kYes;
    if (result != EOWNERDEAD) return Locked::kNo;
    pthread_mutex_consistent(lock);
    if (log_->committed.load(std::memory_order_acquire) != 0) CarryOut(*log_);
    RebuildSlots();
    RelinkRecords();
    return Locked::kRecovered;
}

void NamedObjects::Unlock() noexcept {
    pthread_mutex_unlock(&Header().lock);
}

NamedObjects::Attached NamedObjects::Attach(const std::string& path, DWORD* error) {
    const Opened opened = OpenMemoryFile(path, Prepare, file_);
    if (opened == Opened::kRetry) return Attached::kRetry;
    void* at = opened == Opened::kDone ? mmap(nullptr, kMemorySize, PROT_READ | PROT_WRITE, MAP_SHARED, file_.Get(), 0)
                                       : MAP_FAILED;
    if (at == MAP_FAILED) {
        *error = ErrorOfFile(errno);
        return Attached::kFailed;
    }
    path_ = path;
    base_ = static_cast<char*>(at);
    log_ = &Header().log;
    lastTicket_ = &Header().lastTicket;
    Attached attached = Attached::kFailed;
    {
        Hold hold(*this);
        if (!hold) {
            *error = ERROR_TIMEOUT;
        } else if (Header().dead.load(std::memory_order_relaxed) != 0) {
            RemoveMemoryFile(path_, file_.Get());  // who marked it may have ended before
            attached = Attached::kRetry;
        } else {
            SweepDead(hold);
            if (ClaimProcess()) {
                attached = Attached::kDone;
            } else {
                *error = ERROR_NO_SYSTEM_RESOURCES;
            }
        }
    }
    if (attached != Attached::kDone) Unmap();
    return attached;
}

bool NamedObjects::ClaimProcess() noexcept {
    for (std::uint32_t process = 0; process < kMostProcesses; ++process) {
        if (Header().processes[process].load(std::memory_order_relaxed) != 0) continue;
        if (!ClaimLife(file_.Get(), process)) continue;  // its last owner is about to end
        Header().processes[process].store(1, std::memory_order_release);
        process_ = process;
        return true;
    }
    return false;
}

void NamedObjects::Unmap() noexcept {
    if (base_ != nullptr) munmap(base_, kMemorySize);
    base_ = nullptr;
    file_ = system::FileDescriptor();
}

void NamedObjects::Detach() noexcept {
    {
        // Without the lock the others find out by themselves: the life of this process ends with the descriptor.
        Hold hold(*this);
        if (hold) {
            SweepDead(hold);
            Header().processes[process_].store(0, std::memory_order_relaxed);
            if (Header().slotsUsed == 0) {
                Header().dead.store(1, std::memory_order_release);
                RemoveMemoryFile(path_, file_.Get());
            }
        }
    }
    Unmap();
}

NamedUse NamedObjects::Use(std::u16string_view name, Kind kind, const Initial* initial, bool ownedInitially) {
    Uses& uses = TheUses();
    const std::lock_guard lock(uses.gate);
    NamedUse use;
    if (uses.left) {
        use.error = ERROR_NOT_SUPPORTED;
        return use;
    }
    if (uses.objects == nullptr) {
        auto objects = std::unique_ptr<NamedObjects, void (*)(NamedObjects*)>(
            new NamedObjects, [](NamedObjects* unused) { delete unused; });
        const std::string path = MemoryFilePath();
        Attached attached = Attached::kRetry;
        for (int tries = 0; attached == Attached::kRetry && tries < 1000; ++tries)
            attached = objects->Attach(path, &use.error);
        if (attached == Attached::kRetry) use.error = ERROR_BUSY;
        if (attached != Attached::kDone) return use;
        uses.objects = objects.release();
    }
    NamedObjects& objects = *uses.objects;
    bool counted = false;
    {
        Hold hold(objects);
        if (!hold) {
            use.error = ERROR_TIMEOUT;
        } else {
            const std::uint32_t hash = HashOf(name);
            std::uint32_t slot = objects.Find(name, hash, hold);
            use.existed = slot != kNoSlot;
            if (use.existed && objects.SlotAt(slot).state.kind != kind) {
                use.error = ERROR_INVALID_HANDLE;
            } else if (!use.existed && initial == nullptr) {
                use.error = ERROR_FILE_NOT_FOUND;
            } else {
                try {
                    if (slot == kNoSlot) {
                        Initial start = *initial;
                        if (ownedInitially) start.value = OwnerOfThread(objects.Process());
                        slot = objects.MakeSlot(name, hash, start);
                    }
                    if (slot == kNoSlot) {
                        use.error = ERROR_NO_SYSTEM_RESOURCES;
                    } else {
                        ++uses.bySlot[slot];
                        counted = true;
                        Slot& found = objects.SlotAt(slot);
                        found.holders[objects.process_ / 64].fetch_or(std::uint64_t{1} << objects.process_ % 64,
                                                                      std::memory_order_release);
                    }
                } catch (const std::bad_alloc&) {
                    use.error = ERROR_NOT_ENOUGH_MEMORY;
                    if (slot != kNoSlot && !use.existed) objects.FreeSlot(slot);
                }
            }
            if (counted) {
                use.objects = &objects;
                use.slot = slot;
            }
        }
    }
    if (uses.bySlot.empty()) {
        objects.Detach();
        delete uses.objects;
        uses.objects = nullptr;
    }
    return use;
}

void NamedObjects::Release(NamedObjects& objects, std::uint32_t slot) noexcept {
    Uses& uses = TheUses();
    const std::lock_guard lock(uses.gate);
    if (uses.objects != &objects) return;  // given back already, at the end of the process
    const auto found = uses.bySlot.find(slot);
    if (--found->second != 0) return;
    uses.bySlot.erase(found);
    {
        Hold hold(objects);
        if (hold) {
            State& state = objects.SlotAt(slot).state;
            // Nobody of this process could release it any more.
            if (state.kind == Kind::kMutex &&
                ProcessOfOwner(ValueOf(state.word.load(std::memory_order_relaxed))) == objects.Process()) {
                objects.Abandon(state, hold);
            }
            objects.DropHolder(slot, objects.process_);
        }
    }
    if (uses.bySlot.empty()) {
        objects.Detach();
        delete uses.objects;
        uses.objects = nullptr;
    }
}

void NamedObjects::Leave() noexcept {
    Uses& uses = TheUses();
    const std::lock_guard lock(uses.gate);
    uses.left = true;
    NamedObjects* objects = uses.objects;
    uses.objects = nullptr;
    if (objects == nullptr) return;
    Hold hold(*objects);
    if (!hold) return;
    // Threads that still wait for these objects are left asleep, and their records to who sweeps behind this process.
    objects->SweepRecords(objects->process_, kGone);
    objects->SweepSlots(objects->process_, hold);
    objects->SweepDead(hold);
    if (objects->Header().slotsUsed == 0) {
        objects->Header().dead.store(1, std::memory_order_release);
        RemoveMemoryFile(objects->path_, objects->file_.Get());
    }
    // The memory stays mapped: other threads may still be running.
}

void NamedObjects::Forget() noexcept {
    Uses& uses = TheUses();
    if (uses.objects != nullptr) uses.objects->Unmap();
    // Neither the gate nor the list is known to be whole: another thread may have been at them.
    new (&uses) Uses;
}

}  // namespace tk::kernel
