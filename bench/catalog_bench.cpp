// Table scripts of 1 MB from one dialect into another, with and without Chinese names.
//
// Input: table scripts of ten columns each, one after the other, until the text has 1 MiB. The result of each pair is
// checked for the types it must and must not hold before anything is timed. The bar is 20 ms for each conversion.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tkkernel/driver.h"

namespace {

constexpr int kScriptBytes = 1 << 20;

/// The converters, in reach.
class Converters : public CTDatabase {
public:
    CString FromSqlServer(const char* script, const char* target) { return VeriFySQLServerPragramer(script, target); }
    CString FromSybase(const char* script, const char* target) { return VeriFySybasePragramer(script, target); }
    CString FromDb2(const char* script, const char* target) { return VeriFyDB2Pragramer(script, target); }
    CString FromOracle(const char* script, const char* target) { return VeriFyOraclePragramer(script, target); }
};

using Converter = CString (Converters::*)(const char*, const char*);

std::string Repeated(const std::string& table) {
    std::string script;
    while (script.size() < kScriptBytes)
        script += table;
    return script;
}

std::string SqlServerScript(const char* name) {
    const std::string quoted = "\t\"" + std::string(name) + "\"\t";
    return Repeated("CREATE TABLE \"" + std::string(name) + "\" (\r\n" + quoted + "INT\t\t NOT NULL,\r\n" + quoted +
                    "NVARCHAR (50)\tDEFAULT ('')\t NOT NULL,\r\n" + quoted + "DATETIME,\r\n" + quoted +
                    "NUMERIC (18,4)\tDEFAULT (0),\r\n" + quoted + "FLOAT,\r\n" + quoted + "VARCHAR (255),\r\n" +
                    quoted + "NTEXT (1073741823),\r\n" + quoted + "IMAGE,\r\n" + quoted + "TINYINT,\r\n" + quoted +
                    "NVARCHAR (20),\r\n\tPRIMARY KEY (\"ID\") );\r\n");
}

std::string OracleScript(const char* name) {
    const std::string quoted = "\t\"" + std::string(name) + "\"\t";
    return Repeated("CREATE TABLE \"" + std::string(name) + "\" (\r\n" + quoted + "NUMBER (10,0)\t\t NOT NULL,\r\n" +
                    quoted + "VARCHAR2 (50)\tDEFAULT ('N')\t NOT NULL,\r\n" + quoted + "DATE,\r\n" + quoted +
                    "NUMBER (18,4)\tDEFAULT (0),\r\n" + quoted + "FLOAT (15,0),\r\n" + quoted + "CHAR (10),\r\n" +
                    quoted + "LONG,\r\n" + quoted + "VARCHAR2 (2000)\tDEFAULT ('N'),\r\n" + quoted + "DATE,\r\n" +
                    quoted + "VARCHAR2 (20),\r\n\tPRIMARY KEY (\"ID\") );\r\n");
}

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "catalog_bench: %s\n", what);
    std::exit(1);
}

void Convert(benchmark::State& state, Converter convert, const std::string& script, const char* target,
             const char* gone, const char* come) {
    Converters database;
    const CString converted = (database.*convert)(script.c_str(), target);
    Require(converted.Find(gone) < 0, gone);
    Require(converted.Find(come) >= 0, come);
    for (auto _ : state)
        benchmark::DoNotOptimize((database.*convert)(script.c_str(), target));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * script.size()));
}

void SqlServerToDb2(benchmark::State& state, const char* name) {
    Convert(state, &Converters::FromSqlServer, SqlServerScript(name), "DB2", "DATETIME", "LONG VARCHAR ");
}
void SqlServerToOracle(benchmark::State& state, const char* name) {
    Convert(state, &Converters::FromSqlServer, SqlServerScript(name), "ORA", "DATETIME", "VARCHAR22 (50)");
}
void SybaseToSqlServer(benchmark::State& state, const char* name) {
    Convert(state, &Converters::FromSybase, SqlServerScript(name), "Mic", "\tDATE", "SMALLDATETIMETIME");
}
void Db2ToOracle(benchmark::State& state, const char* name) {
    Convert(state, &Converters::FromDb2, SqlServerScript(name), "ORA", "VARCHAR (", "VARCHAR2 (255)");
}
void OracleToDb2(benchmark::State& state, const char* name) {
    Convert(state, &Converters::FromOracle, OracleScript(name), "DB2", "NUMBER", "WITH DEFAULT 'N'");
}
void OracleToSqlServer(benchmark::State& state, const char* name) {
    Convert(state, &Converters::FromOracle, OracleScript(name), "Mic", "NUMBER", "DATETIME");
}

// Two-byte characters whose second bytes are letters of the rules, as GBK has them.
constexpr char kAscii[] = "ORDER_LINE_AMOUNT";
constexpr char kChinese[] = "\xb6\xa9\xb5\xa5\x81\x44\x81\x54\xc3\xf7\xcf\xb8\xbd\xf0\xb6\xee";

BENCHMARK_CAPTURE(SqlServerToDb2, ascii, kAscii)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SqlServerToDb2, chinese, kChinese)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SqlServerToOracle, ascii, kAscii)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SqlServerToOracle, chinese, kChinese)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SybaseToSqlServer, ascii, kAscii)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SybaseToSqlServer, chinese, kChinese)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Db2ToOracle, ascii, kAscii)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Db2ToOracle, chinese, kChinese)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OracleToDb2, ascii, kAscii)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OracleToDb2, chinese, kChinese)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OracleToSqlServer, ascii, kAscii)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OracleToSqlServer, chinese, kChinese)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
