#include "ado/odbc/server_call.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>

#include "ado/odbc/fork.h"
#include "ado/odbc/server_probe.h"
#include "ado/odbc/statement_handle.h"
#include "ado/odbc/waiting_socket.h"
#include "ado/odbc/watchdog.h"

namespace tk::ado {
namespace {

using Clock = std::chrono::steady_clock;

std::atomic<LONG> usualSeconds{30};

// In milliseconds.
std::atomic<int> patience{5000};
constexpr int kSoon = 50;             // how often what is under way is looked at
constexpr int kLongestPause = 60000;  // between two probes of a server that answers

constexpr int kSilentProbes = 2;

/// A thread that is inside of a call, with what the watchdog has found out about it. The fields below the guard are the
/// watchdog's while the thread is inside, the thread's own otherwise.
class WaitingThread final : public Expiring {
public:
    WaitingThread() noexcept : Expiring(MayWait::No) {}

    bool Enter(std::string_view question, LONG seconds, StatementHandle* handle) {
        if (isInside_) return false;
        question_ = question;
        handle_ = handle;
        wasCut_ = false;
        pause_ = patience.load();
        if (generation_ != ForkGeneration()) {
            thread_ = gettid();
            generation_ = ForkGeneration();
        }
        guard_.emplace(seconds, *this, pause_);
        isInside_ = true;
        return true;
    }

    void Name(StatementHandle& handle) noexcept { handle_ = &handle; }
    bool WasCut() const noexcept { return wasCut_; }

    void Leave() noexcept {
        guard_.reset();
        isInside_ = false;
        Forget();
    }

    int Expire() noexcept override {
        if (!socket_) return Begin();
        if (!socket_->IsWaitedFor()) {
            Forget();
            return kSoon;
        }
        switch (probe_->Look()) {
            case ServerProbe::State::Alive:
                Forget();
                pause_ = std::min(pause_ * 2, kLongestPause);
                return pause_;
            case ServerProbe::State::Waiting:
                if (Clock::now() < end_) return kSoon;
                break;
            case ServerProbe::State::Silent:
                break;
        }
        if (++silent_ < kSilentProbes) return Probe();
        StatementHandle* const handle = handle_;
        if (handle != nullptr && !handle->BeginCut()) return kSoon;
        wasCut_ = true;  // first: the thread goes on as soon as it is shut down
        socket_->ShutDown();
        Forget();
        return kSoon;  // a driver may go on to wait for something else
    }

private:
    int Begin() noexcept {
        socket_ = WaitingSocket::Find(thread_);
        return socket_ ? Probe() : kSoon;
    }

    int Probe() noexcept {
        probe_.emplace(socket_->Get(), question_);
        end_ = Clock::now() + std::chrono::milliseconds(patience.load());
        return kSoon;
    }

    void Forget() noexcept {
        socket_.reset();
        probe_.reset();
        silent_ = 0;
    }

    bool isInside_ = false;
    std::optional<WatchdogGuard> guard_;  // watches nothing when the call has no limit

    std::string_view question_;
    std::atomic<StatementHandle*> handle_ = nullptr;  // told while the watchdog may look
    std::atomic<bool> wasCut_ = false;
    pid_t thread_ = 0;
    unsigned generation_ = 0;
    int pause_ = 0;
    std::optional<WaitingSocket> socket_;
    std::optional<ServerProbe> probe_;
    Clock::time_point end_;
    int silent_ = 0;
};

thread_local WaitingThread thisThread;

}  // namespace

ServerCall::ServerCall(const DriverProfile& profile) noexcept : ServerCall(profile, usualSeconds.load()) {}

ServerCall::ServerCall(const DriverProfile& profile, LONG seconds, StatementHandle* handle) noexcept try {
    if (!profile.lifeQuestion) return;
    isEntered_ = thisThread.Enter(*profile.lifeQuestion, seconds, handle);
} catch (...) {
    // No memory or no thread for watching: the call is made all the same.
}

ServerCall::~ServerCall() {
    if (isEntered_) thisThread.Leave();
}

void ServerCall::Name(StatementHandle& handle) noexcept {
    if (isEntered_) thisThread.Name(handle);
}

bool ServerCall::WasCut() const noexcept {
    return isEntered_ && thisThread.WasCut();
}

void ServerCall::SetPatience(int milliseconds, LONG seconds) noexcept {
    patience = milliseconds;
    usualSeconds = seconds;
}

}  // namespace tk::ado
