// schema_bench - a schema of real size listed by the catalog members, against the bare calls on the same driver.
//
//   schema_bench [Google Benchmark options]
//
// 500 tables with 20 columns and 4 indexes each. TKBENCH_POSTGRES and TKBENCH_MARIADB hold ODBC connection strings;
// without them, only SQLite runs. "each" asks for the columns of table after table, as programs list them; "whole" asks
// once for all. "raw" makes the calls that the members are fed from: SQLTables and SQLColumns, or on SQLite, whose
// driver tells columns wrong, the queries that stand in for them. Every answer is counted before it is timed.
#include <benchmark/benchmark.h>
#include <tkkernel/tkkernel.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench/raw_schema.h"

namespace {

using tk::bench::RawSchema;

constexpr char kSchema[] = "tk_bench";
constexpr int kTables = 500;
constexpr int kColumns = 20;
constexpr int kIndexes = 4;

std::string Number(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "%03d", number);
    return text;
}

/// The same as RawSchema by the members.
class Library {
public:
    explicit Library(const std::string& connection) {
        if (database_.Open(connection.c_str()) == 0) throw std::runtime_error(database_.GetLastErrorString());
    }
    void Execute(const std::string& sql) {
        if (database_.ExecuteSQL(sql.c_str()) == 0) throw std::runtime_error(database_.GetLastErrorString());
    }
    long Each() {
        CStringArray tables;
        Open(database_.GetObjectSet("TABLE", schema_), [&](CTRecordset& rows) {
            for (; !rows.GetEof(); rows.MoveNext())
                tables.Add(rows.GetStringValue("TABLE_NAME"));
        });
        CStringArray columns;
        for (int i = 0; i < tables.GetSize(); ++i)
            database_.GetAllFields(tables[i], columns);
        return columns.GetSize();
    }
    long Whole() {
        long columns = 0;
        Open(database_.GetFieldSet(nullptr, schema_), [&](CTRecordset& rows) {
            for (; !rows.GetEof(); rows.MoveNext()) {
                columns += rows.GetStringValue("TABLE_NAME").IsEmpty() ? 0 : 1;
                columns -= rows.GetStringValue("COLUMN_NAME").IsEmpty() ? 1 : 0;
            }
        });
        return columns;
    }
    void UseSchema() { schema_ = kSchema; }

private:
    void Open(IDispatch* rowset, const std::function<void(CTRecordset&)>& use) {
        const COleDispatchDriver owner(rowset);
        CTRecordset rows(&database_);
        if (rows.OpenField(rowset) == 0) throw std::runtime_error(rows.GetLastErrorString());
        use(rows);
    }

    CTDatabase database_;
    const char* schema_ = nullptr;
};

void Make(RawSchema& raw) {
    if (raw.IsFile()) {
        raw.Execute("PRAGMA synchronous = 0");
    } else if (raw.HasCatalogs()) {
        raw.Execute("DROP DATABASE IF EXISTS tk_bench");
        raw.Execute("CREATE DATABASE tk_bench");
        raw.Execute("USE tk_bench");
        raw.Execute("SET default_storage_engine = aria");
    } else {
        raw.Execute("DROP SCHEMA IF EXISTS tk_bench CASCADE");
        raw.Execute("CREATE SCHEMA tk_bench");
        raw.Execute("SET search_path TO tk_bench");
    }
    static constexpr const char* kTypes[] = {"integer", "varchar(40)", "numeric(12,2)", "timestamp", "varchar(400)"};
    for (int i = 0; i < kTables; ++i) {
        std::string columns = "id integer not null primary key";
        for (int column = 1; column < kColumns; ++column) {
            columns += ", c_" + Number(column) + " " + kTypes[column % std::size(kTypes)];
            if (column % 7 == 0) columns += " default 0";
        }
        raw.Execute("CREATE TABLE table_" + Number(i) + " (" + columns + ")");
        for (int index = 0; index < kIndexes; ++index) {
            raw.Execute("CREATE INDEX ix_" + Number(i) + "_" + std::to_string(index) + " ON table_" + Number(i) +
                        " (c_" + Number(index + 1) + ", id)");
        }
    }
}

template <typename Contender>
void Register(const std::string& target, const char* name, Contender& contender) {
    const auto add = [&](const char* workload, long (Contender::*work)()) {
        benchmark::RegisterBenchmark((target + "/" + workload + "/" + name).c_str(),
                                     [&contender, work](auto& state) {
                                         for (auto _ : state) {
                                             if ((contender.*work)() != kTables * kColumns)
                                                 state.SkipWithError("wrong answer");
                                         }
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    };
    add("each", &Contender::Each);
    add("whole", &Contender::Whole);
}

struct Target {
    Target(const std::string& name, const std::string& connection)
        : raw(tk::bench::MakeRawSchema(connection, kSchema)), library(connection) {
        Make(*raw);
        if (raw->HasCatalogs()) {
            library.Execute("USE tk_bench");
        } else if (!raw->IsFile()) {
            library.UseSchema();
            library.Execute("SET search_path TO tk_bench");
        }
        Register(name, "raw", *raw);
        Register(name, "tk", library);
    }

    std::unique_ptr<RawSchema> raw;
    Library library;
};

}  // namespace

int main(int argc, char** argv) {
    CoInitialize(nullptr);
    char folder[] = "/tmp/tkbench-XXXXXX";
    if (mkdtemp(folder) == nullptr) return 1;
    const std::string file = std::string(folder) + "/bench.db";
    int code = 0;
    try {
        Target sqlite("sqlite", "Driver=SQLite3;Database=" + file);
        std::unique_ptr<Target> postgres;
        if (const char* connection = std::getenv("TKBENCH_POSTGRES"))
            postgres = std::make_unique<Target>("postgres", connection);
        std::unique_ptr<Target> mariadb;
        if (const char* connection = std::getenv("TKBENCH_MARIADB"))
            mariadb = std::make_unique<Target>("mariadb", connection);
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
        benchmark::ClearRegisteredBenchmarks();
        if (postgres) postgres->raw->Execute("DROP SCHEMA tk_bench CASCADE");
        if (mariadb) mariadb->raw->Execute("DROP DATABASE tk_bench");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        code = 1;
    }
    unlink(file.c_str());
    rmdir(folder);
    CoUninitialize();
    return code;
}
