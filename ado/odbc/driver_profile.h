// ado/odbc/driver_profile.h - what each ODBC driver likes and gets wrong: one row per driver, a safe row for the rest.
//
// No driver is named anywhere else in ado/: code that needs to differ asks a member of the profile.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace tk::ado {

/// How the cells of a result are fetched.
enum class FetchMode : unsigned char {
    TextRows,      // every value as text, one row at a time; the rest of a cut cell by SQLGetData
    NativeBlocks,  // C types in column-wise blocks; a cut cell by SQLSetPos + SQLGetData
    BoundThenGet,  // C types in blocks while no long column is there; else SQLGetData left to right from the first one
    GetOnly,       // one row at a time, every cell by SQLGetData, left to right
};

/// How a running statement is ended after its time limit.
enum class TimeLimit : unsigned char {
    Attribute,  // SQL_ATTR_QUERY_TIMEOUT works
    Watchdog,   // a thread of ours calls SQLCancel
    Variable,   // a statement sets a session variable (DriverProfile::timeLimitStatement)
};

/// How a large result is kept from being held twice, here and in the driver.
enum class Streaming : unsigned char {
    None,            // the driver cannot
    Cursor,          // texts that are likely to give many rows are read by a cursor (DriverProfile::cursor)
    SideConnection,  // a keyword of the connection string: such texts run on a second connection that has it
};

/// Where keys and the true columns behind a result come from.
enum class KeySource : unsigned char {
    Catalog,  // SQLPrimaryKeys, SQLStatistics
    Pragma,   // SELECTs on pragma_table_xinfo and pragma_index_list: the driver's catalog functions are wrong
    Nothing,  // the functions are missing, or do harm
};

/// How a stored procedure is called.
enum class ProcedureCall : unsigned char {
    Escape,           // {? = call name(?)}, output values by the driver
    EscapeOrSelect,   // the same; a call with a return value is SELECT name(?), its value the first of the row
    SelectFromOrCall  // SELECT * FROM name(?) for functions, CALL name(?) for procedures; outputs are the row's values
};

/// A keyword added to the connection string unless the string has it.
struct DefaultKeyword {
    const char* key;
    const char* value;
    bool alsoForDataSources;  // needed by us whatever the data source says; the others are the user's to decide
};

/// The statements around a part of a transaction that is undone when it fails.
struct Savepoint {
    const char* set;
    const char* undo;
    const char* release;  // null: not needed
};

/// What SQL_ATTR_MAX_ROWS may be set for.
enum class RowLimit {
    OfAny,
    OfReading,   // over any other statement the driver never ends
    BehindText,  // the driver puts it behind the text, as a LIMIT
};

/// What is asked of a driver that describes tables as they were when the connection last used them (KnownDefinitions).
struct DefinitionQueries {
    /// Around the quoted name of a database.
    struct Around {
        const char* front;
        const char* back;
    };
    const char* databases;  // that the connection can name: a number and the name of each
    std::string_view mainDatabase;
    const char* mainNumber;
    std::string_view ownDatabase;  // that no other connection sees
    const char* plan;          // in front of a text: what it does; in the second column of each step what kind it is,
    std::string_view useStep;  // ... and in the third one of this kind the number of a database that is used
    Around version;            // a number that changes with the tables
    Around tables;             // a SELECT for UNION: stepped into, it makes the connection see them
    const char* hold;          // begins a transaction where none is open, in which rows are still stepped through
    const char* release;       // ... and ends it
    int unfit;                 // what a statement fails with, having done nothing, when it does not fit the tables
    int brokenPlan;            // what a prepared query fails with when they are others by now
};

/// The statements around a cursor.
struct CursorFrame {
    const char* begin;  // a statement of its own, so that `undo` has something to go back to; null: none
    const char* open;   // in front of the query
    int statements;     // that `open` makes with it
    const char* close;
    const char* undo;
};

/// A cursor of the server, by statements.
struct CursorStatements {
    CursorFrame alone;
    CursorFrame inTransaction;
    const char* fetch;  // a part: in front of its number of rows
    const char* from;   // ... and behind it
};

struct DriverProfile {
    const char* name;                           // ours, for logs and tests
    std::span<const char* const> libraryWords;  // any of them inside SQL_DRIVER_NAME or the registered driver's name
    std::span<const DefaultKeyword> defaults = {};
    FetchMode fetchMode = FetchMode::GetOnly;
    unsigned firstBlockRows = 1;
    unsigned fullBlockRows = 1;
    TimeLimit timeLimit = TimeLimit::Attribute;
    const char* timeLimitStatement = nullptr;  // for TimeLimit::Variable: in front of the seconds
    RowLimit rowLimit = RowLimit::OfAny;
    bool keepsReading = false;  // a result that is not read to its end stays locked as long as its handle
    const char* loginTimeoutKeyword = nullptr;  // where SQL_ATTR_LOGIN_TIMEOUT is ignored
    bool connectsInTurn = false;                // two at once read what the other one frees
    Streaming streaming = Streaming::None;
    const char* streamingKeywords = nullptr;   // for Streaming::SideConnection
    const CursorStatements* cursor = nullptr;  // for Streaming::Cursor
    const char* readOnlyStatement = nullptr;   // makes the server refuse every change of the session
    const char* lockTimeKeyword = nullptr;     // milliseconds that the driver waits for locks, deaf to everything else
    int lockedNative = 0;                      // ... and what it says when they are over
    // What a server answers on a new connection, before it knows who asks: a sign of life. Empty: it speaks first;
    // none: there is no server, or it is not known how to ask.
    std::optional<std::string_view> lifeQuestion = {};
    const char* pingStatement = nullptr;  // where a lost idle connection shows only at its next use
    KeySource keySource = KeySource::Catalog;
    bool hasBatches = false;             // SQLMoreResults is worth asking
    bool hasOneResultOfReading = false;  // ... but not behind a single statement that reads
    bool needsSingleStatements = false;  // a text of several keeps the connection locked, or ends the process
    const char* failureQuery = nullptr;  // for leavesResults: SHOW what the last statement failed with
    bool leavesResults = false;          // closing a handle leaves what follows a result without rows on the connection
    const char* indexQuery = nullptr;  // where SQLStatistics hides conditions and expressions: a SELECT for a table and
                                       // a schema (three times; it may be empty), its columns by indexQueryColumns
    std::span<const std::size_t> indexQueryColumns = {};  // numbered as SQLStatistics does; 20: is the key's
    const char* keyQuery = nullptr;  // where SQLPrimaryKeys looks in one schema only: a SELECT with the same parameters
    std::span<const std::size_t> keyQueryColumns = {};  // numbered as SQLPrimaryKeys does
    bool hasManyActiveStatements = false;               // several open results on one connection
    bool searchesColumns = false;                       // all of a table's, several times, to describe one of a result
    const DefinitionQueries* definitions = nullptr;     // null: the driver shows tables as they are
    bool describesBase = false;                         // base table names of result columns can be trusted
    bool readsBaseFromText = false;   // ... they are not told at all: the text of a plain SELECT has them
    const char* viewQuery = nullptr;  // where base names are those behind a view: the text of a view (a parameter)
    bool baseColumnIsAlias = false;   // the base column name is the result's alias: check against the table
    std::span<const std::string_view> systemColumns = {};  // of every table, whose base names are told wrong
    std::string_view opaqueType = {};                      // its columns are compared as text, after a cast
    bool hasConnectionDead = true;                         // SQL_ATTR_CONNECTION_DEAD exists
    bool isFileDatabase = false;           // the database is a local file: its identity tells a replaced one
    bool hasWideParameters = false;        // texts are sent as national characters
    bool hasPlainDecimals = false;         // decimal parameters are sent as plain text
    bool hasOnlyLongBinary = false;        // every binary column is without limit, whatever size is described
    bool hasUnlimitedAsZero = false;       // a size of 0 is told of texts and binaries without limit
    bool usesHandlesOnce = false;          // a statement handle keeps the columns of its last result
    bool hasSparseColumns = false;         // SQLColumns tells names and types only; "describe table" tells sizes
    const char* tableQuery = nullptr;      // where SQLColumns tells those of indexes as well: asks for schema and
                                           // name of tables and views of a name (twice; empty: of all)
    bool hidesOddMoments = false;          // "infinity", years of five digits: as today's date, as 9999-12-31
    bool hasLocalRows = false;             // a fetch waits for nobody, and does not bear being cancelled
    bool hasUnsigned = true;               // integer types without a sign
    bool hasTypedParameters = true;        // a NULL or text needs the type of the column it goes to
    const char* userQuery = nullptr;       // asks who the user is in the database, where the driver does not say
    bool hasUnsignedTiny = false;          // the smallest integers have no sign, whatever the catalog leaves out
    const char* identityQuery = nullptr;   // asks for the number that the last INSERT of the session was given
    unsigned mostParameters = 0;           // of an INSERT with a list of rows; 0: one row a statement
    const char* arrayTypeQuery = nullptr;  // rows travel as arrays, one a column: tells the columns of a table (a
                                           // parameter) and what an array of each is called
    bool hasParameterArrays = false;       // rows travel as parameter arrays, which the driver sends as one
    unsigned mostRows = 1000;              // of an INSERT, in whichever way
    bool isReadOnly = false;               // no statement changes anything: told before the driver stumbles
    bool cutsAtZero = false;               // a text ends at its first zero character
    // Where the driver may undo a whole transaction over a text that cannot be read: a SELECT that gives a row when the
    // transaction begins with it.
    const char* newTransactionQuery = nullptr;
    // Where the database may end a transaction by itself and the driver goes on without one: begins another one, and
    // fails inside of one.
    const char* beginStatement = nullptr;
    std::span<const int> abortingNatives = {};   // native codes of failures over which the server undoes all of it
    const Savepoint* savepoint = nullptr;        // undoes a part of a transaction
    bool hasReturning = false;                   // INSERT ... RETURNING gives it without being asked
    const char* emptyInsert = "DEFAULT VALUES";  // an INSERT that sets no column, behind the table's name
    ProcedureCall procedureCall = ProcedureCall::Escape;
    bool hasOutputRow = false;             // output values come as a row as well; only there a NULL is told
    const char* procedureQuery = nullptr;  // for SelectFromOrCall: a row when the name (a parameter) is a procedure
};

/// The profile of a driver by what SQLGetInfo(SQL_DRIVER_NAME) or the driver list calls it; the safe one if unknown.
const DriverProfile& FindProfile(std::string_view driverName) noexcept;

/// All known ones, for tests.
std::span<const DriverProfile> AllProfiles() noexcept;

}  // namespace tk::ado
