#include "ado/odbc/running_call.h"

#include "ado/odbc/moments.h"

namespace tk::ado {

void RunningCall::Clear() noexcept {
    std::uintptr_t place = place_.load(std::memory_order_relaxed);
    for (Moments moments;;) {
        // A canceller is inside the driver's cancel call.
        if ((place & kReaching) != 0) {
            moments.Wait();
            place = place_.load(std::memory_order_acquire);
        } else if (place_.compare_exchange_weak(place, 0, std::memory_order_acq_rel)) {
            return;
        }
    }
}

void RunningCall::Cancel() noexcept {
    WaitState waiting = WaitState::Waiting;
    wait_.compare_exchange_strong(waiting, WaitState::Cancelled);
    std::uintptr_t place = place_.load(std::memory_order_acquire);
    if (place == 0 || (place & kReaching) != 0) return;
    if (!place_.compare_exchange_strong(place, place | kReaching, std::memory_order_acq_rel)) return;
    reinterpret_cast<StatementHandle*>(place)->CancelRunning();
    place_.store(place, std::memory_order_release);
}

}  // namespace tk::ado
