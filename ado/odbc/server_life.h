// ado/odbc/server_life.h - whether a server lives, for all who wait for it: however many they are, it is asked once at
// a time. Some servers count connections that end before anybody has logged on, and refuse a machine that makes many.
//
// Threads: one alone, the watchdog's.
#pragma once

#include <optional>
#include <string_view>

#include "ado/odbc/server_probe.h"

namespace tk::ado {

class ServerLife {
public:
    enum class Verdict : unsigned char { Unknown, Alive, Silent };

    /// That of the server behind a connected socket; kept for as long as the process lives.
    /// @throws std::bad_alloc
    static ServerLife& Of(int connected);

    /// Asks, goes on asking, or tells what was found a short time ago, without waiting.
    /// @param connected  a socket to the server
    /// @param question  see ServerProbe
    /// @param patience  milliseconds, for each of two answers, both of which have to be missing
    Verdict Look(int connected, std::string_view question, int patience) noexcept;

private:
    Verdict Settle(Verdict verdict, int holds) noexcept;

    std::optional<ServerProbe> probe_;
    long long end_ = 0;  // of the time for an answer; all times in milliseconds
    int silent_ = 0;
    Verdict verdict_ = Verdict::Unknown;
    long long holdsUntil_ = 0;
    int pause_ = 0;
};

}  // namespace tk::ado
