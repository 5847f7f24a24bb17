#include "win32/kernel/target.h"

#include <mutex>
#include <new>
#include <utility>

#include "win32/kernel/immortal.h"
#include "win32/kernel/mutex_list.h"
#include "win32/kernel/thread_owner.h"

namespace tk::kernel {

Target::Target(const Initial& initial, bool owned) noexcept
    : state_(&own_), kind_(initial.kind), dispatcher_(&PrivateDispatcher()) {
    own_.kind = initial.kind;
    own_.manual = initial.manual;
    own_.limit = initial.limit;
    const std::uint32_t value = owned ? OwnerOfThread(0) : initial.value;
    own_.recursion.store(1, std::memory_order_relaxed);
    own_.word.store(Word{value} << 32, std::memory_order_relaxed);
    if (kind_ == Kind::kMutex) AddMutex(*this);
}

Target::Target(const NamedUse& use) noexcept
    : state_(&use.GetState()), kind_(state_->kind), dispatcher_(use.objects), named_(use.objects), slot_(use.slot) {
    if (kind_ == Kind::kMutex) AddMutex(*this);
}

Target::~Target() {
    if (kind_ == Kind::kMutex) RemoveMutex(*this);
    if (named_ != nullptr) {
        NamedObjects::Release(*named_, slot_);
    } else {
        // Who satisfied the last wait may still be putting the object away.
        const Dispatcher::Hold hold(*dispatcher_);
    }
}

void Target::SetAlarm(system::FileDescriptor alarm) noexcept {
    static std::mutex gate;
    const std::lock_guard lock(gate);
    std::swap(alarm_, alarm);
}

std::uint32_t Target::Owner() const noexcept {
    if (kind_ != Kind::kMutex) return 0;
    return OwnerOfThread(named_ != nullptr ? named_->Process() : 0);
}

namespace {

struct MutexList {
    std::mutex gate;
    Target* first = nullptr;
};

MutexList& TheMutexes() noexcept {
    return Immortal<MutexList>();
}

}  // namespace

void AddMutex(Target& mutex) noexcept {
    MutexList& list = TheMutexes();
    const std::lock_guard lock(list.gate);
    mutex.nextMutex = list.first;
    if (list.first != nullptr) list.first->previousMutex = &mutex;
    list.first = &mutex;
}

void RemoveMutex(Target& mutex) noexcept {
    MutexList& list = TheMutexes();
    const std::lock_guard lock(list.gate);
    (mutex.previousMutex != nullptr ? mutex.previousMutex->nextMutex : list.first) = mutex.nextMutex;
    if (mutex.nextMutex != nullptr) mutex.nextMutex->previousMutex = mutex.previousMutex;
}

void AbandonMutexesOf(std::uint32_t thread) noexcept {
    MutexList& list = TheMutexes();
    const std::lock_guard lock(list.gate);
    for (Target* mutex = list.first; mutex != nullptr; mutex = mutex->nextMutex) {
        const std::uint32_t owner = ValueOf(mutex->GetState().word.load(std::memory_order_relaxed));
        const std::uint32_t process = mutex->GetNamed() != nullptr ? mutex->GetNamed()->Process() : 0;
        if (owner == 0 || ThreadOfOwner(owner) != thread || ProcessOfOwner(owner) != process) continue;
        Dispatcher::Hold hold(mutex->GetDispatcher());
        if (hold) mutex->GetDispatcher().Abandon(mutex->GetState(), hold);
    }
}

void ForgetMutexes() noexcept {
    new (&TheMutexes()) MutexList;
}

}  // namespace tk::kernel
