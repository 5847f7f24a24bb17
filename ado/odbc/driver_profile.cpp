#include "ado/odbc/driver_profile.h"

#include "ado/odbc/ascii.h"

namespace tk::ado {
namespace {

constexpr const char* kSqliteWords[] = {"sqlite3odbc", "sqlite3", "sqliteodbc", "sqlite"};
constexpr DefaultKeyword kSqliteDefaults[] = {
    // The driver's own 100 s of lock waiting is longer than any user's patience.
    {"Timeout", "5000", false},
    // BigInt stays off: integer columns are 32-bit in name, and as values are read as text a larger one is seen whole.
    // With it every count and every key would become a decimal.
};

constexpr DefinitionQueries kSqliteDefinitions = {
    .databases = "pragma database_list",
    .mainDatabase = "main",
    .mainNumber = "0",
    .ownDatabase = "temp",
    .plan = "explain ",
    .useStep = "Transaction",
    .version = {.front = "pragma ", .back = ".schema_version"},
    .tables = {.front = "select 1 from ", .back = ".sqlite_master"},
    .hold = "begin deferred transaction",  // without auto-commit the driver holds all rows
    .release = "end transaction",
    .unfit = 1,
    .brokenPlan = -1,
};

constexpr const char* kPostgresWords[] = {"psqlodbc", "postgres"};
constexpr std::string_view kPostgresSystemColumns[] = {"xmin", "xmax", "cmin", "cmax", "ctid", "tableoid"};
// A table that no path leads to is looked for in all schemas.
constexpr char kPostgresIndexes[] =
    "select n.nspname, t.relname, case when i.indisunique then 0 else 1 end, x.relname, case when i.indisclustered "
    "then "
    "1 when m.amname = 'hash' then 2 else 3 end, k.place, coalesce(a.attname, pg_catalog.pg_get_indexdef(i.indexrelid, "
    "k.place, true)), case when (i.indoption[k.place - 1] & 1) = 1 then 'D' else 'A' end, cast(x.reltuples as bigint), "
    "x.relpages, pg_catalog.pg_get_expr(i.indpred, i.indrelid), case when i.indisprimary then 1 else 0 end, "
    "pg_catalog.current_database() from pg_catalog.pg_class t join pg_catalog.pg_namespace n on n.oid = t.relnamespace "
    "join pg_catalog.pg_index i on i.indrelid = t.oid join pg_catalog.pg_class x on x.oid = i.indexrelid join "
    "pg_catalog.pg_am m on m.oid = x.relam cross join lateral pg_catalog.generate_series(1, "
    "cast(i.indnkeyatts as integer)) k(place) left join pg_catalog.pg_attribute a on a.attrelid = t.oid and a.attnum = "
    "i.indkey[k.place - 1] and a.attnum <> 0 where t.relname = ? and (n.nspname = ? or (? = '' and "
    "(pg_catalog.pg_table_is_visible(t.oid) or not exists (select 1 from pg_catalog.pg_class v where v.relname = "
    "t.relname and pg_catalog.pg_table_is_visible(v.oid))))) order by n.nspname, x.relname, k.place";
constexpr std::size_t kPostgresIndexColumns[] = {2, 3, 4, 6, 7, 8, 9, 10, 11, 12, 13, 20, 1};

// As above.
constexpr char kPostgresKeys[] =
    "select n.nspname, t.relname, a.attname, k.place, x.relname, pg_catalog.current_database() from "
    "pg_catalog.pg_class t join pg_catalog.pg_namespace n on n.oid = t.relnamespace join pg_catalog.pg_index i on "
    "i.indrelid = t.oid and i.indisprimary join pg_catalog.pg_class x on x.oid = i.indexrelid cross join lateral "
    "pg_catalog.generate_series(1, cast(i.indnkeyatts as integer)) k(place) join pg_catalog.pg_attribute a on "
    "a.attrelid = t.oid and a.attnum = i.indkey[k.place - 1] where t.relname = ? and (n.nspname = ? or (? = '' and "
    "(pg_catalog.pg_table_is_visible(t.oid) or not exists (select 1 from pg_catalog.pg_class v where v.relname = "
    "t.relname and pg_catalog.pg_table_is_visible(v.oid))))) order by n.nspname, k.place";
constexpr std::size_t kPostgresKeyColumns[] = {2, 3, 4, 5, 6, 1};

constexpr CursorStatements kPostgresCursor = {
    .alone = {.begin = nullptr,
              .open = "BEGIN;DECLARE tk_rows NO SCROLL CURSOR FOR ",
              .statements = 2,
              .close = "COMMIT",
              .undo = "ROLLBACK"},
    .inTransaction = {.begin = "SAVEPOINT tk_rows",
                      .open = "DECLARE tk_rows NO SCROLL CURSOR FOR ",
                      .statements = 1,
                      .close = "CLOSE tk_rows;RELEASE SAVEPOINT tk_rows",
                      .undo = "ROLLBACK TO SAVEPOINT tk_rows;RELEASE SAVEPOINT tk_rows"},
    .fetch = "FETCH FORWARD ",
    .from = " FROM tk_rows",
};

constexpr DefaultKeyword kPostgresDefaults[] = {
    {"BoolsAsChar", "0", false},
    {"MaxVarcharSize", "4000", false},
    {"ByteaAsLongVarBinary", "1", false},
    // Debian registers the driver with a log that is written to /tmp.
    {"CommLog", "0", false},
    {"Debug", "0", false},
};

constexpr const char* kMariaWords[] = {"maodbc", "mariadb", "myodbc", "mysql"};
constexpr DefaultKeyword kMariaDefaults[] = {
    // An UPDATE counts the rows it found, changed or not, else an unchanged row looks like a lost one.
    {"OPTION", "2", false},
};

constexpr const char* kTdsWords[] = {"tdsodbc", "freetds"};
constexpr DefaultKeyword kTdsDefaults[] = {
    {"TDS_Version", "7.4", false},
    {"ClientCharset", "UTF-8", true},
};

constexpr const char* kMdbWords[] = {"mdbodbc", "mdbtools"};

constexpr Savepoint kSavepoint = {"SAVEPOINT tk_rows", "ROLLBACK TO SAVEPOINT tk_rows", "RELEASE SAVEPOINT tk_rows"};
constexpr Savepoint kTdsSavepoint = {"SAVE TRANSACTION tk_rows", "ROLLBACK TRANSACTION tk_rows", nullptr};

constexpr int kMariaAborting[] = {1213};  // the victim of a deadlock
constexpr int kTdsAborting[] = {1205};    // the same

// How rows are inserted, by what insert_bench measured: five columns, PostgreSQL 15, MariaDB 10.11, SQLite 3.40, all on
// one machine; microseconds a row, of them this process's.
//
//   rows a statement      100        300       1000       3000       5000      10000
//   PostgreSQL values   8.2 3.2   11.0 4.2   11.9 3.8       -          -          -     more than 7500 values fail
//              unnest   7.9 1.5    5.6 0.9    7.8 1.0    4.8 0.7    6.8 1.0    6.6 0.9
//              array   36.0 7.5   36.6 7.1   39.2 7.4   39.3 7.0   33.4 6.7   26.4 5.2   the driver sends row by row
//   MariaDB    values  10.7 3.1   11.5 3.9   11.0 3.7   13.4 4.8   13.6 5.3       -
//              array    9.5 1.6    8.1 1.1    6.3 0.7    7.4 0.7    5.1 0.6    5.8 0.6
//   SQLite     values   2.8 2.8    2.7 2.7    3.8 3.7    4.2 2.6    6.3 4.0       -     more than 32766 values fail
//              array    7.3 7.2    7.0 7.0    7.4 7.1   10.5 7.2   11.4 7.4   14.1 9.2
constexpr DriverProfile kProfiles[] = {
    {
        .name = "sqlite",
        .libraryWords = kSqliteWords,
        .defaults = kSqliteDefaults,
        // Everything is text inside the driver; blocks of rows gain nothing there, and a cut cell in a block is lost.
        .fetchMode = FetchMode::TextRows,
        .timeLimit = TimeLimit::Watchdog,
        .rowLimit = RowLimit::OfReading,
        .keepsReading = true,
        .streaming = Streaming::SideConnection,
        .streamingKeywords = "StepAPI=1",
        .readOnlyStatement = "pragma query_only=1",
        .lockTimeKeyword = "Timeout",
        .lockedNative = 5,
        .keySource = KeySource::Pragma,
        .hasManyActiveStatements = true,
        .definitions = &kSqliteDefinitions,
        .describesBase = true,
        .viewQuery = "select sql from sqlite_master where type = 'view' and name = ? collate nocase",
        .baseColumnIsAlias = true,
        .isFileDatabase = true,
        .hasPlainDecimals = true,
        .hasOnlyLongBinary = true,
        .hasTypedParameters = false,
        .identityQuery = "select last_insert_rowid()",
        .mostParameters = 1000,
        .beginStatement = "begin",
        .savepoint = &kSavepoint,
    },
    {
        .name = "postgresql",
        .libraryWords = kPostgresWords,
        .defaults = kPostgresDefaults,
        .fetchMode = FetchMode::NativeBlocks,
        .firstBlockRows = 16,
        .fullBlockRows = 1024,
        .connectsInTurn = true,
        .streaming = Streaming::Cursor,
        .cursor = &kPostgresCursor,
        .readOnlyStatement = "SET SESSION CHARACTERISTICS AS TRANSACTION READ ONLY",
        .lifeQuestion = std::string_view("\0\0\0\10\4\322\26\57", 8),  // whether it encrypts
        .pingStatement = "SELECT 1",
        .hasBatches = true,
        .hasOneResultOfReading = true,
        .indexQuery = kPostgresIndexes,
        .indexQueryColumns = kPostgresIndexColumns,
        .keyQuery = kPostgresKeys,
        .keyQueryColumns = kPostgresKeyColumns,
        .hasManyActiveStatements = true,
        .searchesColumns = true,
        .describesBase = true,
        .systemColumns = kPostgresSystemColumns,
        .opaqueType = "unknown",
        .tableQuery =
            "select n.nspname, c.relname from pg_catalog.pg_class c join pg_catalog.pg_namespace n on n.oid = "
            "c.relnamespace where c.relkind in ('r', 'v', 'm', 'f', 'p') and (c.relname = ? or ? = '')",
        .hidesOddMoments = true,
        .hasUnsigned = false,
        .identityQuery = "select lastval()",
        .mostParameters = 4000,
        .arrayTypeQuery = "select a.attname, pg_catalog.format_type(t.typarray, null) from pg_catalog.pg_attribute a "
                          "join pg_catalog.pg_type t on t.oid = a.atttypid where a.attrelid = "
                          "cast(? as pg_catalog.regclass) and a.attnum > 0 and t.typarray <> 0 and t.typtype <> 'c'",
        .mostRows = 5000,
        .cutsAtZero = true,
        .newTransactionQuery = "select 1 where pg_catalog.transaction_timestamp() = pg_catalog.statement_timestamp()",
        .savepoint = &kSavepoint,
        .hasReturning = true,  // a trigger may have used another sequence since
        .procedureCall = ProcedureCall::SelectFromOrCall,
        .procedureQuery = "select 1 from pg_catalog.pg_proc p join pg_catalog.pg_namespace n on n.oid = p.pronamespace "
                          "where p.prokind = 'p' and p.proname = ? and "
                          "(n.nspname = ? or (? = '' and pg_catalog.pg_function_is_visible(p.oid)))",
    },
    {
        .name = "mariadb",
        .libraryWords = kMariaWords,
        .defaults = kMariaDefaults,
        .fetchMode = FetchMode::NativeBlocks,
        .firstBlockRows = 16,
        .fullBlockRows = 1024,
        .timeLimit = TimeLimit::Variable,
        .timeLimitStatement = "SET SESSION max_statement_time=",
        .rowLimit = RowLimit::BehindText,
        .loginTimeoutKeyword = "CONN_TIMEOUT",
        .readOnlyStatement = "SET SESSION TRANSACTION READ ONLY",
        .lifeQuestion = "",
        .hasBatches = true,
        .needsSingleStatements = true,
        .failureQuery = "show errors",
        .leavesResults = true,
        .hasManyActiveStatements = true,
        .describesBase = true,
        .hasLocalRows = true,
        .identityQuery = "select last_insert_id()",
        .mostParameters = 4000,
        .hasParameterArrays = true,
        .mostRows = 5000,
        .abortingNatives = kMariaAborting,
        .savepoint = &kSavepoint,
        .emptyInsert = "() VALUES ()",
        .procedureCall = ProcedureCall::EscapeOrSelect,
        .hasOutputRow = true,
    },
    {
        .name = "freetds",
        .libraryWords = kTdsWords,
        .defaults = kTdsDefaults,
        .fetchMode = FetchMode::BoundThenGet,
        .firstBlockRows = 16,
        .fullBlockRows = 256,
        // A login begins with both sides' versions, and whether they encrypt.
        .lifeQuestion = std::string_view("\22\1\0\32\0\0\0\0\0\0\13\0\6\1\0\21\0\1\377\0\0\0\0\0\0\2", 26),
        .pingStatement = "SELECT 1",
        .hasBatches = true,
        .readsBaseFromText = true,  // the server tells base tables only of server cursors
        .hasWideParameters = true,
        .hasUnlimitedAsZero = true,
        .userQuery = "SELECT USER_NAME()",
        .hasUnsignedTiny = true,
        .identityQuery = "SELECT @@IDENTITY",
        .mostParameters = 2000,
        .abortingNatives = kTdsAborting,
        .savepoint = &kTdsSavepoint,
    },
    {
        .name = "mdbtools",
        .libraryWords = kMdbWords,
        .fetchMode = FetchMode::GetOnly,
        .timeLimit = TimeLimit::Watchdog,
        .keySource = KeySource::Nothing,  // SQLStatistics answers rows that cannot be fetched
        .hasConnectionDead = false,
        .isFileDatabase = true,
        .usesHandlesOnce = true,
        .hasSparseColumns = true,
        .isReadOnly = true,
    },
};

// What every driver can do: one row at a time, columns from left to right, keys from the catalog functions.
constexpr DriverProfile kUnknown = {
    .name = "unknown",
    .libraryWords = {},
    .fetchMode = FetchMode::GetOnly,
    .hasBatches = true,
    .describesBase = true,
};

}  // namespace

const DriverProfile& FindProfile(std::string_view driverName) noexcept {
    for (const DriverProfile& profile : kProfiles) {
        for (const char* word : profile.libraryWords) {
            if (ContainsNoCase(driverName, word)) return profile;
        }
    }
    return kUnknown;
}

std::span<const DriverProfile> AllProfiles() noexcept {
    return kProfiles;
}

}  // namespace tk::ado
