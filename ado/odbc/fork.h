// ado/odbc/fork.h - what a child process made by fork must not share with its parent.
//
// Threads and connections of the parent are not the child's, and a lock that a thread of the parent held at that moment
// is never released in the child.
#pragma once

#include <atomic>

namespace tk::ado {

/// A number that is another one in every child process; costs a load, unlike asking the system for the process.
unsigned ForkGeneration() noexcept;

/// One T for each process. A child makes its own at the first use; the parent's stays behind there as it was, never
/// touched and never destroyed: no lock of it can be waited for.
///
/// Threads: any; T is made once, or made twice and one of them destroyed unused.
template <class T>
class PerProcess {
public:
    constexpr PerProcess() = default;
    PerProcess(const PerProcess&) = delete;
    PerProcess& operator=(const PerProcess&) = delete;

    T& Get() {
        Place* const place = place_.load(std::memory_order_acquire);
        return place != nullptr && place->generation == ForkGeneration() ? place->object : Make(place);
    }

    /// Null before the first use in this process.
    T* Existing() const noexcept {
        Place* const place = place_.load(std::memory_order_acquire);
        return place != nullptr && place->generation == ForkGeneration() ? &place->object : nullptr;
    }

private:
    struct Place {
        unsigned generation = ForkGeneration();
        const Place* parents = nullptr;  // still reachable: not a leak
        T object;
    };

    T& Make(Place* former) {
        auto* const made = new Place;
        made->parents = former;
        if (place_.compare_exchange_strong(former, made, std::memory_order_acq_rel)) return made->object;
        delete made;  // another thread was first
        return former->object;
    }

    std::atomic<Place*> place_ = nullptr;
};

}  // namespace tk::ado
