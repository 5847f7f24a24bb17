#include "win32/kernel/wait.h"

#include <algorithm>
#include <optional>

#include "win32/kernel/thread_owner.h"
#include "winbase.h"

namespace tk::kernel {
namespace {

enum class Tried { kTaken, kTakenAbandoned, kNot, kUnclear };

bool IsDue(const State& timer) noexcept {
    const std::int64_t due = timer.due.load(std::memory_order_acquire);
    if (due == Moment::kNever) return false;
    return Now(timer.wallClock.load(std::memory_order_relaxed) != 0 ? CLOCK_REALTIME : CLOCK_MONOTONIC) >= due;
}

/// Takes one object without the lock, if that can be done and decided.
Tried TryTake(Target& target) noexcept {
    State& state = target.GetState();
    const std::uint32_t owner = target.Owner();
    Word word = state.word.load(std::memory_order_acquire);
    for (;;) {
        if ((word & kSlow) != 0) return Tried::kUnclear;
        if (!IsSignalled(state, word, owner)) {
            const Kind kind = target.GetKind();
            if (kind == Kind::kTimer && IsDue(state)) return Tried::kUnclear;
            // Its owner may have ended with its process.
            if (kind == Kind::kMutex && target.GetNamed() != nullptr) return Tried::kUnclear;
            return Tried::kNot;
        }
        if (state.kind == Kind::kMutex && ValueOf(word) == owner) {
            state.recursion.fetch_add(1, std::memory_order_relaxed);
            return Tried::kTaken;
        }
        const Word taken = WhenTaken(state, word, owner);
        if (taken != word && !state.word.compare_exchange_weak(word, taken, std::memory_order_acq_rel)) continue;
        if (state.kind != Kind::kMutex) return Tried::kTaken;
        state.recursion.store(1, std::memory_order_relaxed);
        return (word & kAbandoned) != 0 ? Tried::kTakenAbandoned : Tried::kTaken;
    }
}

DWORD Taken(int index, bool abandoned) noexcept {
    return (abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0) + static_cast<DWORD>(index);
}

/// One wait that the quick look did not decide.
class SlowWait {
public:
    SlowWait(const WaitSet& set, DWORD milliseconds) noexcept : set_(set) {
        for (int i = 0; i < set.count; ++i) {
            Target& target = *set.targets[i];
            if (target.GetNamed() != nullptr) named_ = target.GetNamed();
            if (target.GetNamed() == nullptr) private_ = &target.GetDispatcher();
            if (target.GetKind() == Kind::kTimer) hasTimer_ = true;
        }
        if (milliseconds != INFINITE) end_ = Now(CLOCK_MONOTONIC) + milliseconds * std::int64_t{1'000'000};
        patient_ = milliseconds != 0;
    }

    DWORD Run() noexcept {
        while (sleeper_ == nullptr) {
            if (const auto result = LookFirst()) return *result;
        }
        for (;;) {
            Sleep();
            const std::uint32_t status = sleeper_->load(std::memory_order_acquire);
            if (status == kGone) continue;  // for good
            if ((status & kGranted) != 0) return Granted(status);
            if (const auto result = LookOnceMore()) return *result;
        }
    }

private:
    struct Locks {
        explicit Locks(SlowWait& wait) noexcept {
            if (wait.named_ != nullptr) named.emplace(*wait.named_, wait.end_);
            if (wait.private_ != nullptr && *this) own.emplace(*wait.private_);
        }
        explicit operator bool() const noexcept { return !named || *named; }
        Dispatcher::Hold& Of(const Target& target) noexcept { return target.GetNamed() != nullptr ? *named : *own; }

        // Given back in the opposite order: behind the end of the named lock it may be taken once more, for a sweep.
        std::optional<Dispatcher::Hold> named;
        std::optional<Dispatcher::Hold> own;
    };

    std::optional<DWORD> LookFirst() noexcept {
        {
            Locks locks(*this);
            if (locks) return LookAndQueue(locks);
        }
        if (!patient_ || IsOver()) return WAIT_TIMEOUT;
        Pause();
        return std::nullopt;
    }

    std::optional<DWORD> LookOnceMore() noexcept {
        {
            Locks locks(*this);
            if (locks) return LookAgain(locks);
        }
        if (IsOver()) return GiveUp();
        Pause();
        return std::nullopt;
    }

    bool IsOver() const noexcept { return end_ != Moment::kNever && Now(CLOCK_MONOTONIC) >= end_; }

    /// The process that has the lock of the named objects is stopped: until it goes on, or is killed, none of them can
    /// be said to be signalled. Where it fails at once, the lock is not to be tried as fast as the processor can.
    static void Pause() noexcept {
        const timespec pause = {0, 1'000'000};
        nanosleep(&pause, nullptr);
    }

    std::optional<DWORD> LookAndQueue(Locks& locks) noexcept {
        if (const auto result = Look(locks)) return result;
        if (!patient_) return WAIT_TIMEOUT;
        if (Queue()) return std::nullopt;
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return WAIT_FAILED;
    }

    /// Brings timers up to date and takes mutexes from owners that ended.
    void Refresh(Locks& locks) noexcept {
        for (int i = 0; i < set_.count; ++i) {
            Target& target = *set_.targets[i];
            State& state = target.GetState();
            if (target.GetKind() == Kind::kTimer) target.GetDispatcher().Expire(state, locks.Of(target));
            if (target.GetKind() != Kind::kMutex || target.GetNamed() == nullptr) continue;
            const std::uint32_t owner = ValueOf(state.word.load(std::memory_order_relaxed));
            if (owner != 0 && !named_->OwnerLives(owner)) named_->SweepDead(*locks.named);
        }
    }

    bool IsSignalledNow(int index) const noexcept {
        const Target& target = *set_.targets[index];
        return IsSignalled(target.GetState(), target.GetState().word.load(std::memory_order_acquire), target.Owner());
    }

    /// Which objects to take: one, or all, or none yet.
    std::optional<int> Decide() const noexcept {
        for (int i = 0; i < set_.count; ++i) {
            if (IsSignalledNow(i) != set_.all) return set_.all ? std::nullopt : std::optional(i);
        }
        return set_.all ? std::optional(0) : std::nullopt;
    }

    /// Takes the frozen objects, those of each dispatcher at once.
    DWORD Take(int index) noexcept {
        bool abandoned = false;
        for (Dispatcher* dispatcher : {private_, static_cast<Dispatcher*>(named_)}) {
            State* states[kMostBlocks];
            int count = 0;
            std::uint32_t owner = 0;
            for (int i = set_.all ? 0 : index; i < (set_.all ? set_.count : index + 1); ++i) {
                Target& target = *set_.targets[i];
                if (&target.GetDispatcher() != dispatcher) continue;
                states[count++] = &target.GetState();
                if (target.GetKind() == Kind::kMutex) owner = target.Owner();
            }
            if (count != 0) dispatcher->TakeAll(states, count, owner, &abandoned);
        }
        return Taken(set_.all ? 0 : index, abandoned);
    }

    void FreezeAll() noexcept {
        for (int i = 0; i < set_.count; ++i)
            set_.targets[i]->GetDispatcher().Freeze(set_.targets[i]->GetState());
    }
    void ThawAll() noexcept {
        for (int i = 0; i < set_.count; ++i)
            set_.targets[i]->GetDispatcher().Thaw(set_.targets[i]->GetState());
    }

    /// The first look with the locks. The objects stay frozen when it goes on to the queue.
    std::optional<DWORD> Look(Locks& locks) noexcept {
        Refresh(locks);
        FreezeAll();
        std::optional<DWORD> result;
        if (const auto index = Decide()) result = Take(*index);
        if (result || !patient_) ThawAll();
        return result;
    }

    void Fill(Record& record, Dispatcher& dispatcher, bool mixed) noexcept {
        record.owner = 0;
        record.mode = mixed ? WaitFor::kLook : set_.all ? WaitFor::kAll : WaitFor::kAny;
        record.count = 0;
        for (int i = 0; i < set_.count; ++i) {
            Target& target = *set_.targets[i];
            if (&target.GetDispatcher() != &dispatcher) continue;
            record.blocks[record.count++].object = dispatcher.RefOf(&target.GetState());
            if (target.GetKind() == Kind::kMutex) record.owner = target.Owner();
        }
    }

    bool Queue() noexcept {
        nextSweep_ = Now(CLOCK_MONOTONIC) + kSweepEvery;
        const bool mixed = named_ != nullptr && private_ != nullptr;
        if (named_ != nullptr) {
            record_ = named_->ClaimRecord();
            if (record_ == nullptr) {
                ThawAll();
                return false;
            }
            sleeper_ = &record_->status;
            Fill(*record_, *named_, mixed);
            named_->Enqueue(*record_);
        } else {
            sleeper_ = &own_.status;
        }
        if (private_ != nullptr) {
            own_.sleeper = mixed ? sleeper_ : nullptr;
            own_.sleeperShared = mixed;
            Fill(own_, *private_, mixed);
            private_->Enqueue(own_);
        }
        return true;
    }

    void Leave() noexcept {
        if (private_ != nullptr) private_->Dequeue(own_);
        if (named_ != nullptr) named_->Dequeue(*record_);
    }

    /// After a poke, a moment that came, or for no reason.
    std::optional<DWORD> LookAgain(Locks& locks) noexcept {
        if (const std::uint32_t status = sleeper_->load(std::memory_order_acquire); (status & kGranted) != 0) {
            return Granted(status);
        } else if (status == kGone) {
            return std::nullopt;
        }
        sleeper_->store(kWaiting, std::memory_order_relaxed);
        Refresh(locks);
        if (named_ != nullptr && Now(CLOCK_MONOTONIC) >= nextSweep_) {
            named_->SweepDead(*locks.named);
            nextSweep_ = Now(CLOCK_MONOTONIC) + kSweepEvery;
        }
        if (const std::uint32_t status = sleeper_->load(std::memory_order_acquire); (status & kGranted) != 0) {
            return Granted(status);
        }
        if (named_ != nullptr && private_ != nullptr) {
            if (const auto index = Decide()) {
                const DWORD result = Take(*index);
                Leave();
                return result;
            }
        }
        if (IsOver()) {
            Leave();
            return WAIT_TIMEOUT;
        }
        return std::nullopt;
    }

    DWORD Granted(std::uint32_t status) noexcept {
        // The index counts blocks, which are all objects of the wait in their order: both are of one dispatcher.
        if (record_ != nullptr) record_->status.store(kFree, std::memory_order_release);
        return Taken(static_cast<int>(status & kIndexMask), (status & kGrantedAbandoned) != 0);
    }

    /// The lock cannot be had: the record is left to those who come by.
    DWORD GiveUp() noexcept {
        std::uint32_t status = sleeper_->load(std::memory_order_acquire);
        while ((status & kGranted) == 0) {
            if (!sleeper_->compare_exchange_weak(status, kLeft, std::memory_order_acq_rel)) continue;
            if (private_ != nullptr) {
                const Dispatcher::Hold hold(*private_);
                private_->Dequeue(own_);
            }
            return WAIT_TIMEOUT;
        }
        return Granted(status);
    }

    void Sleep() noexcept {
        Moment until{end_, CLOCK_MONOTONIC};
        bool wallClock = false;
        for (int i = 0; hasTimer_ && i < set_.count; ++i) {
            if (set_.targets[i]->GetKind() != Kind::kTimer) continue;
            const State& timer = set_.targets[i]->GetState();
            const std::int64_t due = timer.due.load(std::memory_order_acquire);
            if (due == Moment::kNever) continue;
            if (timer.wallClock.load(std::memory_order_relaxed) == 0) {
                until.at = std::min(until.at, due);
            } else {
                wallClock = true;
                wallDue_ = std::min(wallDue_, due);
            }
        }
        if (wallClock && until.at == Moment::kNever && named_ == nullptr) {
            // Nothing else ends this wait: it may follow the system's clock wherever it is set.
            until = {wallDue_, CLOCK_REALTIME};
        } else if (wallClock) {
            const std::int64_t rest = std::min(wallDue_ - Now(CLOCK_REALTIME), kSweepEvery);
            until.at = std::min(until.at, Now(CLOCK_MONOTONIC) + rest);
        }
        wallDue_ = Moment::kNever;
        // A process may be killed between a grant and the wake that belongs to it, or while it owns a mutex.
        if (named_ != nullptr) until.at = std::min(until.at, Now(CLOCK_MONOTONIC) + LookEvery());
        const std::uint32_t status = sleeper_->load(std::memory_order_acquire);
        if (status == kWaiting || status == kGone) FutexWait(*sleeper_, status, until, named_ != nullptr);
    }

    std::int64_t LookEvery() const noexcept {
        for (int i = 0; i < set_.count; ++i) {
            const Target& target = *set_.targets[i];
            if (target.GetKind() != Kind::kMutex || target.GetNamed() == nullptr) continue;
            const std::uint32_t owner = ValueOf(target.GetState().word.load(std::memory_order_relaxed));
            if (owner != 0 && ProcessOfOwner(owner) != named_->Process()) return kLookForOwnerEvery;
        }
        return kSweepEvery;
    }

    static constexpr std::int64_t kSweepEvery = 1'000'000'000;
    static constexpr std::int64_t kLookForOwnerEvery = 50'000'000;

    const WaitSet& set_;
    NamedObjects* named_ = nullptr;
    Dispatcher* private_ = nullptr;
    bool hasTimer_ = false;
    bool patient_ = true;
    std::int64_t end_ = Moment::kNever;
    std::int64_t nextSweep_ = 0;
    std::int64_t wallDue_ = Moment::kNever;
    std::atomic<std::uint32_t>* sleeper_ = nullptr;
    Record* record_ = nullptr;
    Record own_;
};

}  // namespace

DWORD WaitFor(const WaitSet& set, DWORD milliseconds) noexcept {
    bool unclear = set.all && set.count > 1;
    if (!unclear) {
        for (int i = 0; i < set.count && !unclear; ++i) {
            const Tried tried = TryTake(*set.targets[i]);
            if (tried == Tried::kTaken || tried == Tried::kTakenAbandoned) {
                return Taken(i, tried == Tried::kTakenAbandoned);
            }
            unclear = tried == Tried::kUnclear;
        }
        if (!unclear && milliseconds == 0) return WAIT_TIMEOUT;
    }
    return SlowWait(set, milliseconds).Run();
}

}  // namespace tk::kernel
