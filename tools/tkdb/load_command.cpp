#include "tools/tkdb/load_command.h"

#include <tkkernel/session_statistics.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include "tools/tkdb/command_support.h"
#include "tools/tkdb/interruption.h"
#include "tools/tkdb/latency_histogram.h"
#include "tools/tkdb/pool_connection.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/replacing_file.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

using Clock = std::chrono::steady_clock;

// How long what is under way may take once the user wants the end.
constexpr auto kPatience = std::chrono::seconds(3);
constexpr auto kLook = std::chrono::milliseconds(20);

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

/// What one thread has found so far.
class Found {
public:
    void Add(Clock::time_point begin, Clock::time_point end) {
        const std::lock_guard guard(lock_);
        latencies_.Add(
            static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(end - begin).count()));
        end_ = end;
    }
    /// @param reason  asked for the first time only
    template <typename Reason>
    void AddFailure(const Reason& reason) {
        const std::lock_guard guard(lock_);
        if (failures_++ == 0) reason_ = reason();
        end_ = Clock::now();
    }
    /// Any thread, meanwhile. Takes in what another one has found.
    void Add(Found& other) {
        const std::lock_guard guard(other.lock_);
        latencies_.Add(other.latencies_);
        if (failures_ == 0) reason_ = other.reason_;
        failures_ += other.failures_;
        end_ = std::max(end_, other.end_);
    }

    const LatencyHistogram& Latencies() const { return latencies_; }
    long Failures() const { return failures_; }
    CString Reason() const { return reason_; }  // of the first failure
    Clock::time_point End() const { return end_; }

private:
    std::mutex lock_;
    LatencyHistogram latencies_;
    long failures_ = 0;
    CString reason_;
    Clock::time_point end_;  // of the last request
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
            if (isDone) {
                found.Add(begin, Clock::now());
                continue;
            }
            found.AddFailure([&] { return client.GetLastErrorString(); });
            // Who asks again at once keeps those from the processor who have what it asks for.
            constexpr auto kBeforeTheNext = std::chrono::milliseconds(1);
            std::this_thread::sleep_for(kBeforeTheNext);
        }
    }
    CoUninitialize();
}

/// Waits until it has happened; patiently, unless the user wants the end. @return whether it has happened
template <typename Happened>
bool WaitFor(const Happened& happened) {
    std::optional<Clock::time_point> end;
    while (!happened()) {
        if (Interruption::Wanted() && !end) end = Clock::now() + kPatience;
        if (end && Clock::now() > *end) return false;
        std::this_thread::sleep_for(kLook);
    }
    return true;
}

/// Ends the program although threads of it are waiting for a server that does not answer.
[[noreturn]] void Leave() {
    _exit(FinishOutput(kInterrupted));
}

/// On a thread of its own, since a server that does not answer keeps it.
int OpenPool(CTDataServer& server, const PoolConnection& connection, int sessions) {
    std::atomic<bool> isDone = false;
    int isOpen = 0;
    std::thread opening([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        isOpen = server.OpenDatabase(connection.text.c_str(), connection.user.c_str(), connection.password.c_str(),
                                     static_cast<short>(sessions));
        CoUninitialize();
        isDone = true;
    });
    if (!WaitFor([&] { return isDone.load(); })) {
        Complain("interrupted while the database system did not answer");
        Leave();
    }
    opening.join();
    return isOpen;
}

void PrintRequests(const Found& all, Clock::time_point begin) {
    const LatencyHistogram& latencies = all.Latencies();
    const std::chrono::duration<double> took = std::max(all.End(), begin) - begin;
    const auto total = static_cast<double>(latencies.Total());
    Print("requests     {} in {:.2f} s, {:.0f} a second, {} failed\n", latencies.Total(), took.count(),
          took.count() > 0 ? total / took.count() : 0, all.Failures());
    Print("latency      median {}, 90 % {}, 99 % {}, 99.9 % {}, longest {}\n", TimeText(latencies.PercentileNs(0.5)),
          TimeText(latencies.PercentileNs(0.9)), TimeText(latencies.PercentileNs(0.99)),
          TimeText(latencies.PercentileNs(0.999)), TimeText(latencies.LongestNs()));
}

void PrintKind(const char* name, const tk::session::KindStatistics& kind) {
    Print("{:<12} lent {}, returned {}, refused {}, taken over {}\n", name, kind.loans, kind.returns, kind.refusals,
          kind.takeovers);
}

/// @return an exit code; what went wrong has been printed
int WritePlot(const std::string& path, const LatencyHistogram& latencies) {
    try {
        ReplacingFile file(path);
        const std::string picture = latencies.Svg("tkdb load: latency of a request");
        std::fwrite(picture.data(), 1, picture.size(), file.Open());
        file.Commit();
        return kSuccess;
    } catch (const std::system_error& e) {
        return Unwritable(path, e.code());
    }
}

}  // namespace

int RunLoad(const std::string& connection, const LoadOptions& options) {
    std::string reason;
    const auto pool = ForPool(TerminalToGbk(connection), reason);
    if (!pool) {
        ComplainText(reason);
        return kWrongUsage;
    }
    const Interruption interruption;
    CTDataServer server;
    if (!OpenPool(server, *pool, options.sessions)) return Refuse(server.GetLastErrorString());
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
    const bool isOver = WaitFor([&] {
        if (Interruption::Wanted()) work.stops = true;
        return running == 0;
    });
    Found all;
    for (Found& each : found)
        all.Add(each);
    if (!isOver) {
        PrintRequests(all, begin);
        Complain("{} request(s) did not end", running.load());
        Leave();
    }
    for (auto& thread : threads)
        thread.join();
    if (threads.size() < found.size()) {
        Complain("the system starts no more than {} threads", threads.size());
        return kDatabaseRefused;
    }
    const auto statistics = tk::session::ReadStatistics(server);
    if (options.metrics) {
        PrintText(static_cast<const char*>(tk::session::ToPrometheusText(statistics, "tkdb")));
    } else {
        PrintRequests(all, begin);
        Print("pool         {} sessions, {} faults\n", statistics.sessions,
              statistics.faults + statistics.clientFaults);
        PrintKind("connections", statistics.databases);
        PrintKind("recordsets", statistics.recordsets);
    }
    if (!options.plot.empty()) {
        if (const int code = WritePlot(options.plot, all.Latencies()); code != kSuccess) return code;
    }
    if (all.Failures() > 0) return Refuse(all.Reason());
    return work.stops ? kInterrupted : kSuccess;
}

}  // namespace tk::tools
