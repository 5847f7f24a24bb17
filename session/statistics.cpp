#include "tkkernel/session_statistics.h"

#include <algorithm>
#include <string>

#include "session/held_lock.h"
#include "session/inside.h"
#include "util/text.h"

namespace tk::session {
namespace {

struct NamedCounter {
    const char* name;
    const char* help;
    std::uint64_t KindStatistics::*value;
};

constexpr NamedCounter kCounters[] = {
    {"loans", "Sessions lent from the free list", &KindStatistics::loans},
    {"returns", "Sessions given back", &KindStatistics::returns},
    {"takeovers", "Leases taken over by force", &KindStatistics::takeovers},
    {"doubled", "Takeovers that left the session free as well", &KindStatistics::doubled},
    {"shared", "Loans of a session that was lent already", &KindStatistics::shared},
    {"refusals", "Requests with no session to lend", &KindStatistics::refusals},
};

struct NamedGauge {
    const char* name;
    const char* help;
    std::int64_t KindStatistics::*value;
};

constexpr NamedGauge kGauges[] = {
    {"free", "Places on the free list", &KindStatistics::free},
    {"leased", "Leases held now", &KindStatistics::leased},
    {"twice", "Places and leases beyond one for each session", &KindStatistics::twice},
};

struct NamedKind {
    const char* name;
    KindStatistics ServerStatistics::*value;
};

constexpr NamedKind kKinds[] = {
    {"connection", &ServerStatistics::databases},
    {"recordset", &ServerStatistics::recordsets},
};

template <typename Kind>
KindStatistics Read(CTDataServer& server, DWORD now) {
    const KindCounters& counters = Kind::CountersOf(server);
    KindStatistics read{};
    read.free = static_cast<std::int64_t>(Kind::Free(server).GetCount());
    read.leased = static_cast<std::int64_t>(Kind::Leases(server).GetCount());
    read.twice = counters.twice;
    read.loans = counters.loans;
    read.returns = counters.returns;
    read.takeovers = counters.takeovers;
    read.doubled = counters.doubled;
    read.shared = counters.shared;
    read.refusals = counters.refusals;
    Kind::Leases(server).FindFirst([&](const LeaseMap::Entry& entry) {
        const DWORD age = now - entry.lease.tick;
        ++read.ages[std::lower_bound(std::begin(kAgeLimitsMs), std::end(kAgeLimitsMs), age) - std::begin(kAgeLimitsMs)];
        return false;
    });
    return read;
}

/// A label's value may hold anything; three characters are written as escapes.
CString Escaped(const char* text) {
    CString escaped;
    for (const char character : util::View(text)) {
        if (character == '\n') {
            escaped += "\\n";
            continue;
        }
        if (character == '\\' || character == '"') escaped += '\\';
        escaped += character;
    }
    return escaped;
}

class Exposition {
public:
    explicit Exposition(const char* pool) : pool_(Escaped(pool)) {}

    void Describe(const char* name, const char* type, const char* help) {
        CString lines;
        lines.Format("# HELP tkkernel_pool_%s %s\n# TYPE tkkernel_pool_%s %s\n", name, help, name, type);
        text_ += lines;
    }

    /// @param more  further labels, each begun with a comma
    template <typename Number>
    void Add(const char* name, const char* more, Number value) {
        CString line;
        line.Format("tkkernel_pool_%s{pool=\"%s\"%s} ", name, static_cast<LPCTSTR>(pool_), more);
        text_ += line + std::to_string(value).c_str() + "\n";
    }

    CString Text() const { return text_; }

private:
    CString pool_;
    CString text_;
};

CString KindLabel(const NamedKind& kind) {
    return CString(",kind=\"") + kind.name + "\"";
}

/// A histogram of a moment, as a gauge: the counters of a histogram may only grow.
void AddAges(Exposition& exposition, const NamedKind& kind, const KindStatistics& statistics) {
    std::uint64_t upTo = 0;
    for (std::size_t i = 0; i <= kAgeLimits; ++i) {
        upTo += statistics.ages[i];
        CString limit("+Inf");
        if (i < kAgeLimits) limit.Format("%g", static_cast<double>(kAgeLimitsMs[i]) / 1000);
        exposition.Add("leases_by_age", KindLabel(kind) + ",le=\"" + limit + "\"", upTo);
    }
}

}  // namespace

ServerStatistics ReadStatistics(CTDataServer& server) {
    const Entered entered(Inside::LockOf(server));
    const DWORD now = GetTickCount();
    ServerStatistics read{};
    read.sessions = server.GetSectionCount();
    read.databases = Read<Inside::Databases>(server, now);
    read.recordsets = Read<Inside::Recordsets>(server, now);
    read.refusedClosed = Inside::CountersOf(server).refusedClosed;
    read.faults = Inside::CountersOf(server).faults;
    read.clientFaults = Inside::CountersOf(server).clientFaults;
    return read;
}

CString ToPrometheusText(const ServerStatistics& statistics, const char* szPool) {
    Exposition exposition(szPool);
    exposition.Describe("sessions", "gauge", "Sessions of the pool");
    exposition.Add("sessions", "", statistics.sessions);
    for (const auto& gauge : kGauges) {
        exposition.Describe(gauge.name, "gauge", gauge.help);
        for (const auto& kind : kKinds)
            exposition.Add(gauge.name, KindLabel(kind), (statistics.*(kind.value)).*(gauge.value));
    }
    for (const auto& counter : kCounters) {
        const CString name = CString(counter.name) + "_total";
        exposition.Describe(name, "counter", counter.help);
        for (const auto& kind : kKinds)
            exposition.Add(name, KindLabel(kind), (statistics.*(kind.value)).*(counter.value));
    }
    exposition.Describe("refused_closed_total", "counter", "Requests while the pool was not open");
    exposition.Add("refused_closed_total", "", statistics.refusedClosed);
    exposition.Describe("faults_total", "counter", "Faults caught in members of the server");
    exposition.Add("faults_total", "", statistics.faults);
    exposition.Describe("client_faults_total", "counter", "Faults caught in members of clients");
    exposition.Add("client_faults_total", "", statistics.clientFaults);
    exposition.Describe("leases_by_age", "gauge", "Leases held now for at most so many seconds");
    for (const auto& kind : kKinds)
        AddAges(exposition, kind, statistics.*(kind.value));
    return exposition.Text();
}

}  // namespace tk::session
