#include "ado/odbc/server_call.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include "ado/odbc/fork.h"
#include "ado/odbc/server_life.h"
#include "ado/odbc/statement_handle.h"
#include "ado/odbc/waiting_socket.h"
#include "ado/odbc/watchdog.h"

namespace tk::ado {
namespace {

std::atomic<LONG> usualSeconds{30};

// In milliseconds.
std::atomic<int> patience{5000};
constexpr int kSoon = 50;  // how often what is under way is looked at

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
        if (generation_ != ForkGeneration()) {
            thread_ = gettid();
            generation_ = ForkGeneration();
        }
        guard_.emplace(seconds, *this, patience.load());
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

    int Expire() noexcept override try {
        if (!socket_) {
            socket_ = WaitingSocket::Find(thread_);
            if (!socket_) return kSoon;
            life_ = &ServerLife::Of(socket_->Get());
        }
        if (!socket_->IsWaitedFor()) {
            Forget();
            return kSoon;
        }
        switch (life_->Look(socket_->Get(), question_, patience.load())) {
            case ServerLife::Verdict::Unknown:
                return kSoon;
            case ServerLife::Verdict::Alive:
                Forget();
                return std::max(kSoon, patience.load());
            case ServerLife::Verdict::Silent:
                break;
        }
        StatementHandle* const handle = handle_;
        if (handle != nullptr && !handle->BeginCut()) return kSoon;
        wasCut_ = true;  // first: the thread goes on as soon as it is shut down
        socket_->ShutDown();
        Forget();
        return kSoon;  // a driver may go on to wait for something else
    } catch (...) {
        Forget();
        return kSoon;  // no memory now
    }

private:
    void Forget() noexcept { socket_.reset(); }

    bool isInside_ = false;
    std::optional<WatchdogGuard> guard_;  // watches nothing when the call has no limit

    std::string_view question_;
    std::atomic<StatementHandle*> handle_ = nullptr;  // told while the watchdog may look
    std::atomic<bool> wasCut_ = false;
    pid_t thread_ = 0;
    unsigned generation_ = 0;
    std::optional<WaitingSocket> socket_;
    ServerLife* life_ = nullptr;  // of the server behind it
};

/// Made at the first call, gone with the thread. Objects that end later than that may make another one, which stays.
thread_local constinit WaitingThread* ofThisThread = nullptr;

WaitingThread& ThisThread() {
    static thread_local const struct AtEnd {
        ~AtEnd() { delete std::exchange(ofThisThread, nullptr); }
    } atEnd;
    if (ofThisThread == nullptr) ofThisThread = new WaitingThread;
    return *ofThisThread;
}

}  // namespace

LONG ServerCall::UsualSeconds() noexcept {
    return usualSeconds.load();
}

void ServerCall::Enter(std::string_view question, LONG seconds, StatementHandle* handle) noexcept {
    try {
        isEntered_ = ThisThread().Enter(question, seconds, handle);
    } catch (...) {
        // No memory or no thread for watching: the call is made all the same.
    }
}

LONG ServerCall::ShortSeconds() noexcept {
    constexpr LONG kShort = 5;
    return std::min(kShort, usualSeconds.load());
}

void ServerCall::Leave() noexcept {
    ofThisThread->Leave();
}

void ServerCall::Name(StatementHandle& handle) noexcept {
    if (isEntered_) ofThisThread->Name(handle);
}

bool ServerCall::WasCut() const noexcept {
    return isEntered_ && ofThisThread->WasCut();
}

void ServerCall::SetPatience(int milliseconds, LONG seconds) noexcept {
    patience = milliseconds;
    usualSeconds = seconds;
}

}  // namespace tk::ado
