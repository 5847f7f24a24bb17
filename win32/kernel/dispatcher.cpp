#include "win32/kernel/dispatcher.h"

#include <new>

#include "win32/kernel/immortal.h"

namespace tk::kernel {

bool IsSignalled(const State& state, Word word, std::uint32_t owner) noexcept {
    const std::uint32_t value = ValueOf(word);
    return state.kind == Kind::kMutex ? value == 0 || value == owner : value != 0;
}

Word WhenTaken(const State& state, Word word, std::uint32_t owner) noexcept {
    switch (state.kind) {
        case Kind::kEvent:
        case Kind::kTimer:
            return state.manual != 0 ? word : WithValue(word, 0);
        case Kind::kSemaphore:
            return word - kOne;
        case Kind::kMutex:
            return WithValue(word, owner) & ~kAbandoned;
    }
    return word;
}

Dispatcher::Hold::Hold(Dispatcher& dispatcher, std::int64_t end) noexcept : dispatcher_(dispatcher) {
    const Locked locked = dispatcher.Lock(end);
    held_ = locked != Locked::kNo;
    if (locked == Locked::kRecovered) dispatcher.Recover(*this);
}

Dispatcher::Hold::~Hold() {
    if (held_) dispatcher_.Unlock();
    Flush();
}

void Dispatcher::Hold::WakeLater(const std::atomic<std::uint32_t>* status, bool shared,
                                 std::uint32_t process) noexcept {
    if (count_ == kMost) {
        // Under the lock: those who are woken meet it, which costs time and nothing else.
        for (int i = 0; i < count_; ++i)
            FutexWakeOne(sleepers_[i].status, sleepers_[i].shared);
        count_ = 0;
    }
    sleepers_[count_++] = {status, shared, process};
}

void Dispatcher::Hold::Flush() noexcept {
    // The thread may have seen its grant already and be gone: a number is woken, nothing is read.
    std::uint32_t missed[kMost];
    int missedCount = 0;
    for (int i = 0; i < count_; ++i) {
        if (FutexWakeOne(sleepers_[i].status, sleepers_[i].shared) == 0 && sleepers_[i].process != 0) {
            missed[missedCount++] = sleepers_[i].process;
        }
    }
    count_ = 0;
    for (int i = 0; i < missedCount; ++i)
        dispatcher_.Missed(missed[i]);
}

void Dispatcher::LinkLast(State& state, Block& block) noexcept {
    const Ref ref = RefOf(&block);
    block.next = 0;
    block.previous = state.last;
    (state.last != 0 ? BlockAt(state.last).next : state.first) = ref;
    state.last = ref;
}

void Dispatcher::Unlink(Block& block) noexcept {
    State& state = StateAt(block.object);
    (block.previous != 0 ? BlockAt(block.previous).next : state.first) = block.next;
    (block.next != 0 ? BlockAt(block.next).previous : state.last) = block.previous;
}

void Dispatcher::Enqueue(Record& record) noexcept {
    record.ticket = ++*lastTicket_;
    const Ref ref = RefOf(&record);
    for (std::uint32_t i = 0; i < record.count; ++i)
        record.blocks[i].record = ref;
    record.status.store(kWaiting, std::memory_order_release);
    for (std::uint32_t i = 0; i < record.count; ++i)
        LinkLast(StateAt(record.blocks[i].object), record.blocks[i]);
}

void Dispatcher::Dequeue(Record& record) noexcept {
    for (std::uint32_t i = 0; i < record.count; ++i)
        Unlink(record.blocks[i]);
    for (std::uint32_t i = 0; i < record.count; ++i)
        Thaw(StateAt(record.blocks[i].object));
    record.status.store(kFree, std::memory_order_release);
}

void Dispatcher::CarryOut(GrantLog& log) noexcept {
    for (std::uint32_t i = 0; i < log.count; ++i) {
        const GrantLog::Entry& entry = log.entries[i];
        State& state = StateAt(entry.object);
        state.recursion.store(entry.recursion, std::memory_order_relaxed);
        state.word.store(entry.word | kSlow, std::memory_order_release);
    }
    if (log.record != 0) {
        // Once more after a crash, the record may be another wait's already.
        std::atomic<std::uint32_t>& status = RecordAt(log.record).status;
        std::uint32_t before = status.load(std::memory_order_relaxed);
        if (before == kWaiting || before == kPoked) {
            status.compare_exchange_strong(before, log.status, std::memory_order_acq_rel);
        }
    }
    log.committed.store(0, std::memory_order_release);
}

namespace {

void Note(GrantLog& log, Ref object, const State& state, std::uint32_t owner, bool* abandoned) noexcept {
    const Word word = state.word.load(std::memory_order_relaxed);
    std::uint32_t recursion = 0;
    if (state.kind == Kind::kMutex) {
        recursion = ValueOf(word) == owner ? state.recursion.load(std::memory_order_relaxed) + 1 : 1;
        if ((word & kAbandoned) != 0) *abandoned = true;
    }
    log.entries[log.count++] = {object, WhenTaken(state, word, owner), recursion};
}

}  // namespace

void Dispatcher::TakeAll(State* const* states, int count, std::uint32_t owner, bool* abandoned) noexcept {
    log_->count = 0;
    log_->record = 0;
    for (int i = 0; i < count; ++i)
        Note(*log_, RefOf(states[i]), *states[i], owner, abandoned);
    log_->committed.store(1, std::memory_order_release);
    CarryOut(*log_);
}

bool Dispatcher::Satisfies(const Record& record) const noexcept {
    for (std::uint32_t i = 0; i < record.count; ++i) {
        const State& state = StateAt(record.blocks[i].object);
        if (!IsSignalled(state, state.word.load(std::memory_order_relaxed), record.owner)) return false;
    }
    return true;
}

void Dispatcher::Grant(Record& record, std::uint32_t index, Hold& hold) noexcept {
    log_->count = 0;
    log_->record = RefOf(&record);
    bool abandoned = false;
    const bool all = record.mode == WaitFor::kAll;
    for (std::uint32_t i = all ? 0 : index; i < (all ? record.count : index + 1); ++i)
        Note(*log_, record.blocks[i].object, StateAt(record.blocks[i].object), record.owner, &abandoned);
    log_->status = kGranted | index | (abandoned ? kGrantedAbandoned : 0);

    // Out of the queues first: once the status says so, the thread goes on and takes its record along.
    Ref objects[kMostBlocks];
    const std::uint32_t count = record.count;
    const std::uint32_t process = record.process;
    for (std::uint32_t i = 0; i < count; ++i) {
        Block& block = record.blocks[i];
        objects[i] = block.object;
        Unlink(block);
        block.resets = ResetsOf(StateAt(block.object).word.load(std::memory_order_relaxed));
    }
    log_->committed.store(1, std::memory_order_release);
    CarryOut(*log_);
    for (std::uint32_t i = 0; i < count; ++i)
        Thaw(StateAt(objects[i]));
    hold.WakeLater(&record.status, IsShared(), process);
}

void Dispatcher::Poke(Record& record, Hold& hold) noexcept {
    std::atomic<std::uint32_t>& status = record.sleeper != nullptr && !IsShared() ? *record.sleeper : record.status;
    std::uint32_t waiting = kWaiting;
    if (!status.compare_exchange_strong(waiting, kPoked, std::memory_order_acq_rel)) return;
    hold.WakeLater(&status, IsShared() || record.sleeperShared, record.process);
}

void Dispatcher::Offer(State& state, Hold& hold) noexcept {
    offered_ = &state;
    for (Ref at = state.first; at != 0;) {
        Block& block = BlockAt(at);
        const Ref recordRef = block.record;
        Record& record = RecordAt(recordRef);
        // The grant takes all blocks of this record out of the queue, a second one of the same object included.
        Ref next = block.next;
        while (next != 0 && BlockAt(next).record == recordRef)
            next = BlockAt(next).next;

        const std::uint32_t status = record.status.load(std::memory_order_relaxed);
        const Word word = state.word.load(std::memory_order_relaxed);
        if (status == kLeft) {
            Dequeue(record);
        } else if (!IsSignalled(state, word, record.owner)) {
            if (state.kind != Kind::kMutex) break;  // not for anybody else either
        } else if (record.mode == WaitFor::kLook) {
            Poke(record, hold);
        } else if (record.mode == WaitFor::kAny) {
            Grant(record, static_cast<std::uint32_t>(&block - record.blocks), hold);
        } else if (Satisfies(record)) {
            Grant(record, 0, hold);
        }
        at = next;
    }
    offered_ = nullptr;
}

void Dispatcher::PokeAll(State& state, Hold& hold) noexcept {
    for (Ref at = state.first; at != 0; at = BlockAt(at).next)
        Poke(RecordAt(BlockAt(at).record), hold);
}

void Dispatcher::Expire(State& timer, Hold& hold) noexcept {
    const std::int64_t due = timer.due.load(std::memory_order_relaxed);
    if (due == Moment::kNever) return;
    const std::int64_t late =
        Now(timer.wallClock.load(std::memory_order_relaxed) != 0 ? CLOCK_REALTIME : CLOCK_MONOTONIC) - due;
    if (late < 0) return;
    Freeze(timer);
    SetValue(timer, 1);
    const std::int64_t period = timer.period.load(std::memory_order_relaxed);
    if (period == 0) {
        timer.due.store(Moment::kNever, std::memory_order_release);
    } else {
        // Periods count from the first signal and no longer follow the system's clock. Missed ones are one signal.
        timer.due.store(Moment::kNever, std::memory_order_release);
        timer.wallClock.store(0, std::memory_order_relaxed);
        timer.due.store(Now(CLOCK_MONOTONIC) + period - late % period, std::memory_order_release);
    }
    Offer(timer, hold);
    Thaw(timer);
}

void Dispatcher::Abandon(State& mutex, Hold& hold) noexcept {
    Freeze(mutex);
    mutex.recursion.store(0, std::memory_order_relaxed);
    mutex.word.store(kSlow | kAbandoned, std::memory_order_release);
    Offer(mutex, hold);
    Thaw(mutex);
}

namespace {

class ProcessDispatcher final : public Dispatcher {
public:
    ProcessDispatcher() noexcept {
        log_ = &grants_;
        lastTicket_ = &ticket_;
    }

private:
    Locked Lock(std::int64_t /*end*/) noexcept override {
        pthread_mutex_lock(&lock_);
        return Locked::kYes;
    }
    void Unlock() noexcept override { pthread_mutex_unlock(&lock_); }

    pthread_mutex_t lock_ = PTHREAD_MUTEX_INITIALIZER;
    GrantLog grants_;
    std::uint64_t ticket_ = 0;
};

ProcessDispatcher& TheProcess() noexcept {
    return Immortal<ProcessDispatcher>();
}

}  // namespace

Dispatcher& PrivateDispatcher() noexcept {
    return TheProcess();
}

void RenewPrivateDispatcher() noexcept {
    new (&TheProcess()) ProcessDispatcher;
}

}  // namespace tk::kernel
