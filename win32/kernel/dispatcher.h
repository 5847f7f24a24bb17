// Satisfies waits: the lock, the queues and the log of the objects that lie in one memory.
//
//   Dispatcher::Hold hold(dispatcher);      // the lock
//   if (!hold) return Fail(hold.Error());
//   dispatcher.Freeze(state);               // from here on the word is ours
//   state.word.store(...);
//   dispatcher.Offer(state, hold);          // to those who wait
//   dispatcher.Thaw(state);
//
// There are two: one for the unnamed objects of the process, one for the named ones, whose memory other processes map
// as well. Who needs both locks takes the named one first: its holder may be a process that is stopped, and the private
// one is not to be kept from the other threads meanwhile.
//
// Another process may be killed at any instruction. So that nothing is lost or given twice, a grant is written to a log
// before it is carried out (all its values are absolute, and the words are frozen, so carrying it out again is
// harmless); everything else that links objects and records can be rebuilt from the records.
#pragma once

#include <pthread.h>

#include <cstddef>

#include "win32/kernel/futex.h"
#include "win32/kernel/object_state.h"
#include "windef.h"

namespace tk::kernel {

struct GrantLog {
    std::atomic<std::uint32_t> committed{0};
    std::uint32_t count = 0;
    Ref record = 0;
    std::uint32_t status = 0;
    struct Entry {
        Ref object;
        Word word;
        std::uint32_t recursion;
    } entries[kMostBlocks];
};

/// Whether a wait of this owner ends on the object, and what the object is then.
bool IsSignalled(const State& state, Word word, std::uint32_t owner) noexcept;
Word WhenTaken(const State& state, Word word, std::uint32_t owner) noexcept;

class Dispatcher {
public:
    Dispatcher() = default;
    Dispatcher(const Dispatcher&) = delete;
    Dispatcher& operator=(const Dispatcher&) = delete;
    virtual ~Dispatcher() = default;

    /// Holds the lock; threads to be woken are woken after it is given back.
    class Hold {
    public:
        /// @param end  when the caller's time is over, by the steady clock. The lock is tried for a quarter of a second
        ///             at the least, and five seconds at the most.
        explicit Hold(Dispatcher& dispatcher, std::int64_t end = Moment::kNever) noexcept;
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        ~Hold();

        /// The lock could not be had in time: the process that has it is stopped.
        explicit operator bool() const noexcept { return held_; }
        void WakeLater(const std::atomic<std::uint32_t>* status, bool shared, std::uint32_t process) noexcept;

    private:
        void Flush() noexcept;

        struct Sleeper {
            const std::atomic<std::uint32_t>* status;
            bool shared;
            std::uint32_t process;
        };
        static constexpr int kMost = 32;

        Dispatcher& dispatcher_;
        bool held_ = false;
        int count_ = 0;
        Sleeper sleepers_[kMost];
    };

    // The rest needs the lock.

    /// Makes the word this thread's own until Thaw.
    void Freeze(State& state) noexcept { state.word.fetch_or(kSlow, std::memory_order_acquire); }
    /// Gives it back unless somebody is queued, or the object is being offered.
    void Thaw(State& state) noexcept {
        if (state.first == 0 && &state != offered_) state.word.fetch_and(~kSlow, std::memory_order_release);
    }
    /// Changes the value of a frozen object.
    static void SetValue(State& state, std::uint32_t value) noexcept {
        state.word.store(WithValue(state.word.load(std::memory_order_relaxed), value) | kSlow,
                         std::memory_order_release);
    }
    /// Takes the signal of a frozen event or timer back.
    static void Reset(State& state) noexcept {
        state.word.store(WhenReset(state.word.load(std::memory_order_relaxed)) | kSlow, std::memory_order_release);
    }
    /// Satisfies those in the queue whom the state of the object satisfies. The object stays frozen.
    void Offer(State& state, Hold& hold) noexcept;
    /// Lets everybody in the queue look again.
    void PokeAll(State& state, Hold& hold) noexcept;
    /// Signals a timer whose moment has come.
    void Expire(State& timer, Hold& hold) noexcept;

    /// Puts a filled record into the queues of its objects, which are frozen.
    void Enqueue(Record& record) noexcept;
    /// Takes it out of the queues and thaws what nobody waits for any more.
    void Dequeue(Record& record) noexcept;
    /// Takes `count` frozen objects for the calling thread at once.
    void TakeAll(State* const* states, int count, std::uint32_t owner, bool* abandoned) noexcept;

    /// Gives the mutex of an owner that ended to the next one.
    void Abandon(State& mutex, Hold& hold) noexcept;

    Ref RefOf(const void* object) const noexcept { return static_cast<Ref>(static_cast<const char*>(object) - base_); }
    State& StateAt(Ref ref) const noexcept { return *static_cast<State*>(At(ref)); }
    Block& BlockAt(Ref ref) const noexcept { return *static_cast<Block*>(At(ref)); }
    Record& RecordAt(Ref ref) const noexcept { return *static_cast<Record*>(At(ref)); }

    bool IsShared() const noexcept { return base_ != nullptr; }

protected:
    enum class Locked { kNo, kYes, kRecovered };
    virtual Locked Lock(std::int64_t end) noexcept = 0;
    virtual void Unlock() noexcept = 0;
    /// The process that had the lock ended with it; links and lists are right again, the rest is done here.
    virtual void Recover(Hold& /*hold*/) noexcept {}
    /// Nobody slept where one of this process should have: it may have been killed.
    virtual void Missed(std::uint32_t /*process*/) noexcept {}

    /// Carries out a logged grant, for the first time or once more.
    void CarryOut(GrantLog& log) noexcept;
    void LinkLast(State& state, Block& block) noexcept;

    char* base_ = nullptr;
    GrantLog* log_ = nullptr;
    std::uint64_t* lastTicket_ = nullptr;

private:
    const State* offered_ = nullptr;

    void* At(Ref ref) const noexcept { return base_ != nullptr ? base_ + ref : reinterpret_cast<void*>(ref); }
    void Unlink(Block& block) noexcept;
    bool Satisfies(const Record& record) const noexcept;
    void Grant(Record& record, std::uint32_t index, Hold& hold) noexcept;
    void Poke(Record& record, Hold& hold) noexcept;
};

/// Of the unnamed objects.
Dispatcher& PrivateDispatcher() noexcept;
/// In a child of fork, whose copy may be locked.
void RenewPrivateDispatcher() noexcept;

}  // namespace tk::kernel
