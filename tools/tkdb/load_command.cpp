#include "tools/tkdb/load_command.h"

#include <fmt/format.h>
#include <tkkernel/session_statistics.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <system_error>
#include <thread>

#include "tools/tkdb/command_support.h"
#include "tools/tkdb/interruption.h"
#include "tools/tkdb/latency_histogram.h"
#include "tools/tkdb/replacing_file.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kLongestConnection = 127;  // of a pool, in bytes

/// How a pool is told what a connection string says: it makes "DSN=" and a text of its own, and sends the user and the
/// password behind it, which would take the place of those inside.
struct PoolConnection {
    std::string text;
    std::string user;
    std::string password;

    explicit PoolConnection(const std::string& connection) {
        if (connection.find('=') == std::string::npos) {
            text = connection;
            return;
        }
        int braces = 0;
        std::string item;
        for (const char character : connection + ";") {
            braces += character == '{' ? 1 : character == '}' ? -1 : 0;
            if (character != ';' || braces > 0) {
                item += character;
                continue;
            }
            Take(item);
            item.clear();
        }
    }

private:
    void Take(const std::string& item) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos) return;
        CString name(item.c_str(), static_cast<int>(equals));
        name.MakeUpper();
        if (name == "UID") {
            user = item.substr(equals + 1);
        } else if (name == "PWD") {
            password = item.substr(equals + 1);
        } else if (name == "DSN") {
            text = item.substr(equals + 1) + text;
        } else {
            text += ";" + item;
        }
    }
};

/// A statement with rows begins with one of these.
bool HasRows(const std::string& statement) {
    const std::size_t begin = statement.find_first_not_of(" \t\r\n(");
    if (begin == std::string::npos) return false;
    CString word(statement.c_str() + begin, static_cast<int>(std::min<std::size_t>(statement.size() - begin, 6)));
    word.MakeUpper();
    return word == "SELECT" || word.Left(4) == "WITH" || word.Left(6) == "VALUES" || word.Left(4) == "SHOW";
}

struct Statement {
    std::string text;
    bool hasRows;
};

/// What the threads share.
struct Work {
    std::vector<Statement> statements;
    std::atomic<long> left;  // requests that may still begin; none is asked about when time limits them
    bool isCounted;
    Clock::time_point end;
    std::atomic<bool> stops = false;

    bool MayBegin() {
        if (stops.load(std::memory_order_relaxed)) return false;
        if (isCounted) return left.fetch_sub(1, std::memory_order_relaxed) > 0;
        return Clock::now() < end;
    }
};

/// What one thread has found.
struct Found {
    LatencyHistogram latencies;
    long failures = 0;
    CString reason;  // of the first failure
    Clock::time_point end;
};

bool ReadAll(CTDataClient& client, const std::string& sql) {
    constexpr long kPage = 1000;
    if (!client.OpenSQL(sql.c_str(), kPage, 1)) return false;
    CTRecordset* const held = client.GetRecordset();
    while (client.GetRecordset() == held && held != nullptr && !client.GetRecordEof())
        client.MoveNext();
    // A fault has given it back; closing would put another reason in the place of its own.
    if (client.GetRecordset() == nullptr) return false;
    client.CloseSQL();
    return true;
}

bool Change(CTDataClient& client, const std::string& sql) {
    client.BeginTrans();
    const bool isDone = client.ExecuteSQL(sql.c_str()) != 0;
    client.EndTrans();
    return isDone;
}

void RunThread(CTDataServer& server, Work& work, Found& found, std::size_t next) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    {
        CTDataClient client;
        client.Invoke(&server);
        while (work.MayBegin()) {
            const Statement& statement = work.statements[next++ % work.statements.size()];
            const auto begin = Clock::now();
            const bool isDone = statement.hasRows ? ReadAll(client, statement.text) : Change(client, statement.text);
            const auto took = Clock::now() - begin;
            if (isDone) {
                found.latencies.Add(
                    static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(took).count()));
                continue;
            }
            if (found.failures++ == 0) found.reason = client.GetLastErrorString();
            // Who asks again at once keeps those from the processor who have what it asks for.
            constexpr auto kBeforeTheNext = std::chrono::milliseconds(1);
            std::this_thread::sleep_for(kBeforeTheNext);
        }
    }
    found.end = Clock::now();
    CoUninitialize();
}

void PrintKind(const char* name, const tk::session::KindStatistics& kind) {
    fmt::print("{:<12} lent {}, returned {}, refused {}, taken over {}\n", name, kind.loans, kind.returns,
               kind.refusals, kind.takeovers);
}

bool WritePlot(const std::string& path, const LatencyHistogram& latencies) {
    try {
        ReplacingFile file(path);
        const std::string picture = latencies.Svg("tkdb load: latency of a request");
        std::fwrite(picture.data(), 1, picture.size(), file.Open());
        file.Commit();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace

int RunLoad(const std::string& connection, const LoadOptions& options) {
    const PoolConnection pool(TerminalToGbk(connection));
    if (pool.text.size() > kLongestConnection) {
        fmt::print(stderr, "tkdb: a pool takes connection strings up to {} bytes\n", kLongestConnection);
        return kWrongUsage;
    }
    const Interruption interruption;
    CTDataServer server;
    if (!server.OpenDatabase(pool.text.c_str(), pool.user.c_str(), pool.password.c_str(),
                             static_cast<short>(options.sessions))) {
        return Refuse(server.GetLastErrorString());
    }
    Work work;
    for (const auto& statement : options.statements) {
        const std::string sql = TerminalToGbk(statement);
        work.statements.push_back({sql, HasRows(sql)});
    }
    work.isCounted = options.requests > 0;
    work.left = options.requests;
    const auto begin = Clock::now();
    work.end = begin + std::chrono::seconds(options.seconds);

    std::vector<Found> found(static_cast<std::size_t>(options.threads));
    std::vector<std::thread> threads;
    threads.reserve(found.size());
    std::atomic<int> running = 0;
    for (std::size_t i = 0; i < found.size() && !work.stops; ++i) {
        ++running;
        try {
            threads.emplace_back([&, i] {
                RunThread(server, work, found[i], i);
                --running;
            });
        } catch (const std::system_error&) {
            --running;
            work.stops = true;
        }
    }
    while (running > 0) {
        if (Interruption::Wanted()) work.stops = true;
        constexpr auto kLook = std::chrono::milliseconds(20);
        std::this_thread::sleep_for(kLook);
    }
    for (auto& thread : threads)
        thread.join();
    if (threads.size() < found.size()) {
        fmt::print(stderr, "tkdb: the system starts no more than {} threads\n", threads.size());
        return kDatabaseRefused;
    }
    const std::chrono::duration<double> took = std::ranges::max(found, {}, &Found::end).end - begin;

    Found all;
    for (const Found& each : found) {
        all.latencies.Add(each.latencies);
        if (all.failures == 0) all.reason = each.reason;
        all.failures += each.failures;
    }
    const auto statistics = tk::session::ReadStatistics(server);
    if (options.metrics) {
        fmt::print("{}", static_cast<const char*>(tk::session::ToPrometheusText(statistics, "tkdb")));
    } else {
        fmt::print("requests     {} in {:.2f} s, {:.0f} a second, {} failed\n", all.latencies.Total(), took.count(),
                   static_cast<double>(all.latencies.Total()) / took.count(), all.failures);
        fmt::print("latency      median {}, 90 % {}, 99 % {}, 99.9 % {}, longest {}\n",
                   TimeText(all.latencies.PercentileNs(0.5)), TimeText(all.latencies.PercentileNs(0.9)),
                   TimeText(all.latencies.PercentileNs(0.99)), TimeText(all.latencies.PercentileNs(0.999)),
                   TimeText(all.latencies.LongestNs()));
        fmt::print("pool         {} sessions, {} faults\n", statistics.sessions, statistics.faults);
        PrintKind("connections", statistics.databases);
        PrintKind("recordsets", statistics.recordsets);
    }
    if (!options.plot.empty() && !WritePlot(options.plot, all.latencies)) {
        fmt::print(stderr, "tkdb: cannot write {}\n", options.plot);
        return kNotWritten;
    }
    if (all.failures > 0) return Refuse(all.reason);
    return work.stops ? kInterrupted : kSuccess;
}

}  // namespace tk::tools
