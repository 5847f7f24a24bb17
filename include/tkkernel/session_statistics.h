// tkkernel/session_statistics.h - what a pool of sessions (session.h) has done so far, as numbers and for Prometheus.
//
//   const auto statistics = tk::session::ReadStatistics(server);
//   if (statistics.databases.refusals > before) Warn("the pool is too small");
//   Answer(tk::session::ToPrometheusText(statistics, "stock"));
//
// Counters start at the server's construction and only grow; opening and closing leave them alone.
// For each kind: free + leased = sessions + twice. The sum is off after a failed open (sessions are counted that are
// not there) and by former sessions that come back after a second opening.
//
// Threads: any. Reading enters the server's lock once; counting costs a store under a lock that is held anyway.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tkkernel/session.h"

namespace tk::session {

/// The upper limits of the histogram of lease ages, in milliseconds; what is older counts behind the last one.
inline constexpr DWORD kAgeLimitsMs[] = {10, 100, 1'000, 10'000, 60'000, 180'000};
inline constexpr std::size_t kAgeLimits = sizeof(kAgeLimitsMs) / sizeof(kAgeLimitsMs[0]);

struct KindStatistics {
    std::int64_t free;                   ///< places of the free list
    std::int64_t leased;                 ///< leases of now
    std::int64_t twice;                  ///< places and leases beyond one for each session: doubled less shared
    std::uint64_t loans;                 ///< from the free list
    std::uint64_t returns;               ///< by their borrowers, at their own will or not
    std::uint64_t takeovers;             ///< leases that went from one owner to the next by force
    std::uint64_t doubled;               ///< takeovers that put the session on the free list as well
    std::uint64_t shared;                ///< loans of a session that somebody held already
    std::uint64_t refusals;              ///< nothing free, nothing to take over
    std::uint64_t ages[kAgeLimits + 1];  ///< leases of now by age, each counted once
};

struct ServerStatistics {
    std::int64_t sessions;
    KindStatistics databases;
    KindStatistics recordsets;
    std::uint64_t refusedClosed;  ///< asked for while the pool was not open
    std::uint64_t faults;         ///< caught in members of the server
    std::uint64_t clientFaults;   ///< caught in members of its clients
};

TKKERNEL_API ServerStatistics ReadStatistics(CTDataServer& server);

/// The text form of Prometheus, in ASCII.
/// @param szPool  the value of the label "pool"; null is ""
TKKERNEL_API CString ToPrometheusText(const ServerStatistics& statistics, const char* szPool);

}  // namespace tk::session
