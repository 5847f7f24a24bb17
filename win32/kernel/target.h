// What a handle stands for.
#pragma once

#include <atomic>

#include "win32/kernel/named_objects.h"

namespace tk::kernel {

class Target;

/// Counted: by its handles.
class Closable {
public:
    Closable() = default;
    Closable(const Closable&) = delete;
    Closable& operator=(const Closable&) = delete;

    void AddUse() noexcept { uses_.fetch_add(1, std::memory_order_relaxed); }
    void DropUse() noexcept {
        if (uses_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    /// @return null when the thing cannot be waited for
    virtual Target* AsTarget() noexcept { return nullptr; }

protected:
    virtual ~Closable() = default;

private:
    std::atomic<std::uint32_t> uses_{1};
};

/// A kernel object, of this process alone or shared by its name.
class Target final : public Closable {
public:
    /// An unnamed object. `owned`: a mutex belongs to the calling thread.
    Target(const Initial& initial, bool owned) noexcept;
    explicit Target(const NamedUse& use) noexcept;

    Target* AsTarget() noexcept override { return this; }

    State& GetState() const noexcept { return *state_; }
    Kind GetKind() const noexcept { return kind_; }
    Dispatcher& GetDispatcher() const noexcept { return *dispatcher_; }
    /// Null for an unnamed object.
    NamedObjects* GetNamed() const noexcept { return named_; }
    /// The calling thread, if it may come to own the object.
    std::uint32_t Owner() const noexcept;

    /// Of a timer: the alarm clock that wakes the machine.
    void SetAlarm(system::FileDescriptor alarm) noexcept;

    // In the list of mutexes.
    Target* nextMutex = nullptr;
    Target* previousMutex = nullptr;

private:
    ~Target() override;

    State own_;
    State* state_;
    Kind kind_;
    Dispatcher* dispatcher_;
    NamedObjects* named_ = nullptr;
    std::uint32_t slot_ = kNoSlot;
    system::FileDescriptor alarm_;
};

}  // namespace tk::kernel
