#include "ado/odbc/server_life.h"

#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <string>

#include "ado/odbc/fork.h"

namespace tk::ado {
namespace {

constexpr int kSilentProbes = 2;
constexpr int kLongestPause = 60000;  // between two probes of a server that answers

long long Now() noexcept {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

/// By the address of the server.
constinit PerProcess<std::map<std::string, ServerLife>> servers;

}  // namespace

ServerLife& ServerLife::Of(int connected) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (getpeername(connected, reinterpret_cast<sockaddr*>(&address), &size) != 0) size = 0;
    return servers
        .Get()[std::string(reinterpret_cast<const char*>(&address), std::min<std::size_t>(size, sizeof address))];
}

ServerLife::Verdict ServerLife::Settle(Verdict verdict, int holds) noexcept {
    probe_.reset();
    silent_ = 0;
    holdsUntil_ = Now() + holds;
    return verdict_ = verdict;
}

ServerLife::Verdict ServerLife::Look(int connected, std::string_view question, int patience) noexcept {
    const long long now = Now();
    if (!probe_) {
        if (now < holdsUntil_) return verdict_;
        if (now - holdsUntil_ > kLongestPause) pause_ = patience;  // of another time
        probe_.emplace(connected, question);
        end_ = now + patience;
    }
    if (probe_->Look() == ServerProbe::State::Alive) {
        pause_ = std::min(std::max(pause_, patience) * 2, kLongestPause);
        return Settle(Verdict::Alive, pause_);
    }
    if (now < end_) return Verdict::Unknown;
    if (++silent_ >= kSilentProbes) {
        pause_ = patience;
        return Settle(Verdict::Silent, patience);
    }
    probe_.emplace(connected, question);
    end_ = now + patience;
    return Verdict::Unknown;
}

}  // namespace tk::ado
