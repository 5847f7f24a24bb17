// Borrowing and returning a session: this library's pool, SOCI's (the lease alone, and a session made of it), POCO's,
// and a plain locked queue. Each pool has more sessions than threads, so that nobody waits for one.
//
//   session_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/SessionPool.h>
#include <benchmark/benchmark.h>
#include <objbase.h>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <tkkernel/session.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "util/fault_guard.h"

namespace {

constexpr int kSessions = 32;

std::string file;

CTDataServer& Pool() {
    static CTDataServer& server = *[] {
        auto* const made = new CTDataServer;
        const std::string connection = ";Driver=SQLite3;Database=" + file;
        if (!made->OpenDatabase(connection.c_str(), "", "", kSessions)) {
            std::fprintf(stderr, "%s\n", static_cast<const char*>(made->GetLastErrorString()));
            std::exit(1);
        }
        return made;
    }();
    return server;
}

soci::connection_pool& SociPool() {
    static soci::connection_pool& pool = *[] {
        auto* const made = new soci::connection_pool(kSessions);
        for (std::size_t i = 0; i < kSessions; ++i)
            made->at(i).open(soci::sqlite3, file);
        return made;
    }();
    return pool;
}

Poco::Data::SessionPool& PocoPool() {
    static Poco::Data::SessionPool& pool = *[] {
        Poco::Data::SQLite::Connector::registerConnector();
        auto* const made = new Poco::Data::SessionPool("SQLite", file, kSessions, kSessions);
        // It opens a session when none is idle, and keeps the least number open.
        std::vector<Poco::Data::Session> all;
        for (int i = 0; i < kSessions; ++i)
            all.push_back(made->get());
        return made;
    }();
    return pool;
}

struct Queue {
    std::mutex lock;
    std::deque<int> free;
    Queue() {
        for (int i = 0; i < kSessions; ++i)
            free.push_back(i);
    }
};

Queue& PlainQueue() {
    static Queue queue;
    return queue;
}

void TkPool(benchmark::State& state) {
    CTDataServer& server = Pool();
    for (auto _ : state) {
        CTDatabase* const database = server.InvokeDatabase(nullptr);
        if (database == nullptr) state.SkipWithError("nothing to borrow");
        server.RevokeDatabase(database);
    }
}

void SociLease(benchmark::State& state) {
    soci::connection_pool& pool = SociPool();
    for (auto _ : state)
        pool.give_back(pool.lease());
}

void SociSession(benchmark::State& state) {
    soci::connection_pool& pool = SociPool();
    for (auto _ : state) {
        soci::session session(pool);
        benchmark::DoNotOptimize(&session);
    }
}

void PocoSession(benchmark::State& state) {
    Poco::Data::SessionPool& pool = PocoPool();
    for (auto _ : state) {
        Poco::Data::Session session(pool.get());
        benchmark::DoNotOptimize(&session);
    }
}

void MutexAndDeque(benchmark::State& state) {
    Queue& queue = PlainQueue();
    for (auto _ : state) {
        int session = 0;
        {
            const std::lock_guard guard(queue.lock);
            session = queue.free.front();
            queue.free.pop_front();
        }
        benchmark::DoNotOptimize(session);
        const std::lock_guard guard(queue.lock);
        queue.free.push_back(session);
    }
}

void FaultGuard(benchmark::State& state) {
    int work = 0;
    for (auto _ : state) {
        tk::util::RunGuarded([&] { benchmark::DoNotOptimize(++work); });
    }
}

void TickCount(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(GetTickCount());
}

void RegisterThreads(const char* name, void (*run)(benchmark::State&)) {
    for (const int threads : {1, 4, 16})
        benchmark::RegisterBenchmark(name, run)->Threads(threads)->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
    char path[] = "/tmp/session-bench-XXXXXX";
    close(mkstemp(path));
    file = path;
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    // Opened here, so that no contender opens anything while it is timed.
    Pool();
    SociPool();
    PocoPool();
    benchmark::RegisterBenchmark("guard/enter and leave", FaultGuard);
    benchmark::RegisterBenchmark("clock/GetTickCount", TickCount);
    RegisterThreads("borrow and return/CTDataServer", TkPool);
    RegisterThreads("borrow and return/SOCI lease", SociLease);
    RegisterThreads("borrow and return/SOCI session", SociSession);
    RegisterThreads("borrow and return/POCO", PocoSession);
    RegisterThreads("borrow and return/mutex and deque", MutexAndDeque);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    unlink(path);
    return 0;
}
