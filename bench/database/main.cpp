// database_bench - the workloads of workload.h for each contender on each target.
//
//   database_bench [Google Benchmark options]
//
// TKBENCH_POSTGRES holds an ODBC connection string; without it, only SQLite runs.
#include <benchmark/benchmark.h>
#include <sql.h>
#include <sqlext.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>

#include "bench/database/workload.h"

namespace {

using namespace tk::bench;

// What reading the whole table once must give.
Checksum Expected(long times) {
    Checksum sum;
    for (long n = 1; n <= kRows; ++n) {
        sum.numbers += static_cast<double>(n) * 1.25 + static_cast<double>(n % 1000);
        sum.texts += 12;
        sum.seconds += n % 86400;
        ++sum.rows;
    }
    sum.numbers *= static_cast<double>(times);
    sum.texts *= times;
    sum.seconds *= times;
    sum.rows *= times;
    return sum;
}

// Fills a target once, with the driver's own means.
class Filler {
public:
    explicit Filler(const std::string& connection) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
        std::string text = connection;
        if (!SQL_SUCCEEDED(SQLDriverConnect(connection_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS,
                                            nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT))) {
            throw std::runtime_error("cannot connect: " + connection);
        }
    }
    ~Filler() {
        SQLDisconnect(connection_);
        SQLFreeHandle(SQL_HANDLE_DBC, connection_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
    }
    Filler(const Filler&) = delete;
    Filler& operator=(const Filler&) = delete;

    void Fill(bool sqlite) {
        const std::string columns =
            " (id integer primary key, name varchar(20), price double precision, quantity integer, stamp timestamp)";
        Execute("DROP TABLE IF EXISTS item");
        Execute("DROP TABLE IF EXISTS item_copy");
        Execute("CREATE TABLE item" + columns);
        Execute("CREATE TABLE item_copy" + columns);
        const std::string n = std::to_string(kRows);
        Execute(sqlite ? "WITH RECURSIVE s(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM s WHERE n < " + n +
                             ") INSERT INTO item SELECT n, printf('item %07d', n), n * 0.25, n % 1000, "
                             "datetime('2020-01-01', (n % 86400) || ' seconds') FROM s"
                       : "INSERT INTO item SELECT n, 'item ' || lpad(n::text, 7, '0'), n * 0.25, n % 1000, "
                         "timestamp '2020-01-01' + (n % 86400) * interval '1 second' FROM generate_series(1, " +
                             n + ") n");
        if (!sqlite) Execute("VACUUM ANALYZE item");
    }

private:
    void Execute(const std::string& sql) {
        SQLHSTMT statement = nullptr;
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement);
        std::string text = sql;
        const SQLRETURN code = SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
        SQLFreeHandle(SQL_HANDLE_STMT, statement);
        if (!SQL_SUCCEEDED(code) && code != SQL_NO_DATA) throw std::runtime_error("cannot run: " + sql);
    }

    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
};

bool Check(benchmark::State& state, const Checksum& found, const Checksum& wanted) {
    if (found == wanted) return true;
    state.SkipWithError("wrong answer");
    std::fprintf(stderr, "rows %ld of %ld, numbers %f of %f, texts %lld of %lld, seconds %lld of %lld\n", found.rows,
                 wanted.rows, found.numbers, wanted.numbers, found.texts, wanted.texts, found.seconds, wanted.seconds);
    return false;
}

using Work = Checksum (Contender::*)();

void Scan(benchmark::State& state, Contender& contender, Work work, const Checksum& wanted) {
    for (auto _ : state) {
        if (!Check(state, (contender.*work)(), wanted)) return;
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void Points(benchmark::State& state, Contender& contender) {
    std::mt19937 random(20200101);
    std::uniform_int_distribution<long> ids(1, kRows);
    for (auto _ : state) {
        const long id = ids(random);
        const Checksum found = contender.PointQuery(id);
        if (found.rows != 1 || found.numbers != static_cast<double>(id) * 1.25 + static_cast<double>(id % 1000)) {
            state.SkipWithError("wrong answer");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void Inserts(benchmark::State& state, Contender& contender, long count) {
    for (auto _ : state)
        contender.Insert(count);
    state.SetItemsProcessed(state.iterations() * count);
}

enum class Workloads { All, TextScan };

void Register(const std::string& target, const std::string& connection, std::unique_ptr<Contender> owned,
              Workloads wanted = Workloads::All) {
    std::shared_ptr<Contender> contender = std::move(owned);
    contender->Connect(connection);
    const auto name = [&](const char* workload) { return target + "/" + workload + "/" + contender->Name(); };
    static const Checksum once = Expected(1);
    static const Checksum twice = Expected(2);
    static const Checksum texts{0, once.texts, 0, once.rows};
    const auto add = [&](const char* workload, auto work) {
        benchmark::RegisterBenchmark(name(workload).c_str(), work)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("text_scan", [contender](auto& state) { Scan(state, *contender, &Contender::TextScan, texts); });
    if (wanted == Workloads::TextScan) return;
    add("native_scan", [contender](auto& state) { Scan(state, *contender, &Contender::NativeScan, once); });
    add("client_cursor", [contender](auto& state) { Scan(state, *contender, &Contender::ClientCursor, twice); });
    benchmark::RegisterBenchmark(name("point_query").c_str(), [contender](auto& state) { Points(state, *contender); })
        ->Unit(benchmark::kMicrosecond)
        ->UseRealTime();
    const long count = target == "sqlite" ? 100'000 : 5'000;
    add("inserts", [contender, count](auto& state) { Inserts(state, *contender, count); });
}

void RegisterAll(const std::string& target, const std::string& connection) {
    for (auto make : {MakeRaw, MakeSoci, MakePoco, MakeQt, MakeTk})
        Register(target, connection, make());
    Register(target, connection, MakeSociInto(), Workloads::TextScan);
}

}  // namespace

int main(int argc, char** argv) {
    char folder[] = "/tmp/tkbench-XXXXXX";
    if (mkdtemp(folder) == nullptr) return 1;
    const std::string file = std::string(folder) + "/bench.db";
    const std::string sqlite = "Driver=SQLite3;Database=" + file;
    int code = 0;
    try {
        Filler(sqlite).Fill(true);
        RegisterAll("sqlite", sqlite);
        if (const char* postgres = std::getenv("TKBENCH_POSTGRES")) {
            Filler(postgres).Fill(false);
            RegisterAll("postgres", postgres);
        }
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
        benchmark::ClearRegisteredBenchmarks();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        code = 1;
    }
    unlink(file.c_str());
    rmdir(folder);
    return code;
}
