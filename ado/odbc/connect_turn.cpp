#include "ado/odbc/connect_turn.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "ado/odbc/fork.h"

namespace tk::ado {
namespace {

constexpr auto kPatience = std::chrono::seconds(1);

struct Turn {
    std::mutex mutex;
    std::condition_variable isFree;
    std::uint64_t given = 0;  // numbers
    std::uint64_t now = 0;    // whose turn it is; 0: nobody's
};

constinit PerProcess<Turn> turn;

}  // namespace

ConnectTurn::ConnectTurn(bool isNeeded) {
    if (!isNeeded) return;
    Turn& shared = turn.Get();
    std::unique_lock lock(shared.mutex);
    shared.isFree.wait_for(lock, kPatience, [&] { return shared.now == 0; });
    shared.now = number_ = ++shared.given;
}

ConnectTurn::~ConnectTurn() {
    if (number_ == 0) return;
    Turn& shared = turn.Get();
    {
        const std::lock_guard lock(shared.mutex);
        if (shared.now != number_) return;  // it was taken over
        shared.now = 0;
    }
    shared.isFree.notify_one();
}

}  // namespace tk::ado
