#include "support/tds/sql_session.h"

#include <sqlite3.h>

#include <algorithm>
#include <stdexcept>

#include "support/tds/batch_text.h"
#include "support/tds/declared_type.h"
#include "support/tds/messages.h"
#include "support/tds/moment.h"
#include "support/tds/sql_functions.h"
#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

constexpr int kStepsBetweenLooks = 1000;
constexpr int kMillisecondsOfLook = 10;
constexpr int kLocksWaitedFor = 300;  // looks

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

/// @throws SqlError
Statement Prepare(sqlite3* database, std::string_view sql) {
    sqlite3_stmt* made = nullptr;
    const int result = sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &made, nullptr);
    Statement statement(made);
    if (result != SQLITE_OK) throw ErrorOf(database);
    return statement;
}

void Bind(sqlite3_stmt* statement, int place, const Cell& cell) {
    if (const auto* integer = std::get_if<std::int64_t>(&cell)) sqlite3_bind_int64(statement, place, *integer);
    if (const auto* real = std::get_if<double>(&cell)) sqlite3_bind_double(statement, place, *real);
    if (const auto* text = std::get_if<std::string>(&cell)) {
        sqlite3_bind_text(statement, place, text->data(), static_cast<int>(text->size()), SQLITE_TRANSIENT);
    }
    if (const auto* bytes = std::get_if<Bytes>(&cell)) {
        sqlite3_bind_blob(statement, place, bytes->data.data(), static_cast<int>(bytes->data.size()), SQLITE_TRANSIENT);
    }
}

void BindAll(sqlite3_stmt* statement, std::span<const Argument> arguments) {
    for (int place = 1; place <= sqlite3_bind_parameter_count(statement); ++place) {
        const char* const name = sqlite3_bind_parameter_name(statement, place);
        const auto argument = std::ranges::find_if(
            arguments, [&](const Argument& each) { return EqualWords(each.name, name == nullptr ? "" : name); });
        if (argument != arguments.end()) Bind(statement, place, argument->value);
    }
}

Cell CellOf(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            return std::int64_t{sqlite3_column_int64(statement, column)};
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement, column);
        case SQLITE_TEXT: {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
        }
        case SQLITE_BLOB: {
            const auto* data = static_cast<const char*>(sqlite3_column_blob(statement, column));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            return Bytes{data == nullptr ? std::string() : std::string(data, size)};
        }
        default:
            return {};
    }
}

/// The type of an expression, by its value in the first row.
WireType TypeOfValue(sqlite3_stmt* statement, int column, bool hasRow) {
    constexpr int kLongest = 4000;
    constexpr std::uint32_t kLongestBinary = 8000;
    if (!hasRow) return NVarCharType(kLongest);
    const int size = sqlite3_column_bytes(statement, column);
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER: {
            const std::int64_t number = sqlite3_column_int64(statement, column);
            return IntegerType(number == static_cast<std::int32_t>(number) ? 4 : 8);
        }
        case SQLITE_FLOAT:
            return {Token::Float, 8};
        case SQLITE_BLOB:
            return {Token::VarBinary, static_cast<std::uint32_t>(size) > kLongestBinary ? kMax : kLongestBinary};
        default:
            return size > kLongest ? WireType{Token::NVarChar, kMax} : NVarCharType(kLongest);
    }
}

const char* OrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

std::vector<ResultColumn> Describe(sqlite3* database, sqlite3_stmt* statement, std::span<const FixedColumn> fixed,
                                   bool hasRow) {
    std::vector<ResultColumn> columns(static_cast<std::size_t>(sqlite3_column_count(statement)));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        ResultColumn& column = columns[i];
        const int place = static_cast<int>(i);
        if (!fixed.empty()) {
            column.name = fixed[i].name;
            column.type = ReadDeclaredType(fixed[i].declaration).Wire();
            continue;
        }
        column.name = OrEmpty(sqlite3_column_name(statement, place));
        const char* const declared = sqlite3_column_decltype(statement, place);
        if (declared == nullptr) {
            column.type = TypeOfValue(statement, place, hasRow);
            // An expression has no name unless it is given one.
            if (sqlite3_column_origin_name(statement, place) == nullptr && !IsGivenName(statement, column.name)) {
                column.name.clear();
            }
            continue;
        }
        column.type = ReadDeclaredType(declared).Wire();
        column.table = OrEmpty(sqlite3_column_table_name(statement, place));
        int isNotNull = 0, isKey = 0;
        const char* const origin = sqlite3_column_origin_name(statement, place);
        sqlite3_table_column_metadata(database, nullptr, column.table.c_str(), origin, nullptr, nullptr, &isNotNull,
                                      &isKey, nullptr);
        column.isNullable = isNotNull == 0 && isKey == 0;
        column.isIdentity = isKey != 0 && EqualWords(declared, "integer");
    }
    return columns;
}

Did DidOf(std::string_view text) {
    static constexpr struct {
        std::string_view word;
        Did did;
    } kRows[] = {{"insert", Did::Insert}, {"replace", Did::Insert}, {"update", Did::Update}, {"delete", Did::Delete}};
    const auto words = WordsOf(text.substr(0, std::min<std::size_t>(text.size(), 80)));
    for (const auto& row : kRows) {
        if (!words.empty() && EqualWords(words[0].text, row.word)) return row.did;
    }
    return Did::Other;
}

}  // namespace

void CloseDatabase::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

Database OpenDatabase(const std::string& file) {
    sqlite3* made = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &made,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    Database database(made);
    if (result != SQLITE_OK) throw std::runtime_error("cannot open the database of the server");
    sqlite3_extended_result_codes(made, 1);
    return database;
}

SqlSession::SqlSession(const ServerSettings& settings, const PacketStream& packets)
    : settings_(settings), packets_(packets), database_(OpenDatabase(settings.file)) {
    Simple("pragma foreign_keys = 1");
    AddFunctions(Handle(), settings_);
    sqlite3_progress_handler(Handle(), kStepsBetweenLooks, &OnProgress, this);
    sqlite3_busy_handler(Handle(), &OnBusy, this);
}

SqlSession::~SqlSession() = default;

int SqlSession::OnProgress(void* session) {
    return static_cast<SqlSession*>(session)->IsWantedNoMore() ? 1 : 0;
}

int SqlSession::OnBusy(void* session, int tries) {
    auto& self = *static_cast<SqlSession*>(session);
    self.isCancelled_ = self.packets_.IsReadable(kMillisecondsOfLook);
    return !self.isCancelled_ && tries < kLocksWaitedFor ? 1 : 0;
}

bool SqlSession::IsWantedNoMore() {
    // A client sends nothing before its answer is there, but for the wish to end it.
    isCancelled_ = isCancelled_ || packets_.IsReadable(0);
    return isCancelled_;
}

bool SqlSession::Step(sqlite3_stmt* statement) {
    const int result = sqlite3_step(statement);
    if (result == SQLITE_ROW) return true;
    if (result == SQLITE_DONE) return false;
    if (isCancelled_) throw Cancelled();
    throw ErrorOf(Handle());
}

void SqlSession::Simple(const char* sql) {
    const Statement statement = Prepare(Handle(), sql);
    Step(statement.get());
}

std::vector<NamedCells> SqlSession::Select(const std::string& sql, std::span<const Argument> arguments) {
    const Statement statement = Prepare(Handle(), sql);
    BindAll(statement.get(), arguments);
    std::vector<NamedCells> rows;
    while (Step(statement.get())) {
        NamedCells& row = rows.emplace_back();
        for (int i = 0; i < sqlite3_column_count(statement.get()); ++i)
            row.emplace_back(sqlite3_column_name(statement.get(), i), CellOf(statement.get(), i));
    }
    return rows;
}

void SqlSession::RunSql(sqlite3_stmt* statement, std::span<const FixedColumn> fixed,
                        std::span<const Argument> arguments, Answer& answer) {
    BindAll(statement, arguments);
    const bool isSelect = sqlite3_column_count(statement) > 0;
    bool hasRow = Step(statement);
    const char* const text = sqlite3_sql(statement);
    if (!isSelect) {
        const Did did = DidOf(text);
        if (did == Did::Other) return answer.Done(did, std::nullopt);
        return answer.Done(did, static_cast<std::uint64_t>(sqlite3_changes64(Handle())));
    }
    const std::vector<ResultColumn> columns = Describe(Handle(), statement, fixed, hasRow);
    answer.Columns(columns);
    std::uint64_t count = 0;
    std::vector<Cell> cells(columns.size());
    constexpr std::uint64_t kRowsBetweenLooks = 64;
    for (; hasRow; hasRow = Step(statement)) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            cells[i] = CellOf(statement, static_cast<int>(i));
        answer.Row(columns, cells);
        if (++count % kRowsBetweenLooks == 0 && IsWantedNoMore()) throw Cancelled();
    }
    answer.Done(Did::Select, count);
}

void SqlSession::RunFixed(std::string_view sql, std::span<const FixedColumn> columns,
                          std::span<const Argument> arguments, Answer& answer) {
    const Statement statement = Prepare(Handle(), sql);
    RunSql(statement.get(), columns, arguments, answer);
}

void SqlSession::RunStatement(const std::string& text, std::span<const Argument> arguments, Answer& answer) {
    if (RunOwnWords(text, answer)) return;
    const Statement statement = Prepare(Handle(), text);
    if (statement == nullptr) return answer.Done(Did::Other, std::nullopt);
    RunSql(statement.get(), {}, arguments, answer);
}

bool SqlSession::RunBatch(std::string_view text, std::span<const Argument> arguments, Answer& answer) {
    isCancelled_ = false;
    bool isWell = true;
    for (const std::string& statement : SplitBatch(text, settings_.database)) {
        try {
            RunStatement(statement, arguments, answer);
        } catch (const SqlError& error) {
            isWell = false;
            answer.Error(error);
            answer.Done(DidOf(statement), std::nullopt, true);
            if (error.endsBatch) break;
        }
    }
    return isWell;
}

void SqlSession::Begin() {
    Simple("begin");
}

void SqlSession::End(bool isCommitted) {
    // SQLite ends a transaction by itself after some errors.
    if (IsInTransaction()) Simple(isCommitted ? "commit" : "rollback");
}

bool SqlSession::IsInTransaction() const {
    return sqlite3_get_autocommit(Handle()) == 0;
}

void SqlSession::Wait(std::string_view time) {
    const auto moment = ParseMoment(time);
    if (!moment) throw SyntaxError(std::string(time));
    const std::int64_t milliseconds = moment->ticks / (kTicksOfSecond / 1000);
    isCancelled_ = packets_.IsReadable(static_cast<int>(milliseconds));
    if (isCancelled_) throw Cancelled();
}

std::int32_t SqlSession::RunPrepared(const Prepared& prepared, std::span<Argument> values, Answer& answer) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].name.empty() && i < prepared.names.size()) values[i].name = prepared.names[i];
    }
    constexpr std::int32_t kFailed = 1;
    return RunBatch(prepared.text, values, answer) ? 0 : kFailed;
}

void SqlSession::DescribePrepared(const Prepared& prepared, Answer& answer) {
    for (const std::string& text : SplitBatch(prepared.text, settings_.database)) {
        const Statement statement = Prepare(Handle(), text);
        if (sqlite3_column_count(statement.get()) == 0) continue;
        answer.Columns(Describe(Handle(), statement.get(), {}, false));
        answer.Done(Did::Select, std::nullopt);
        return;
    }
}

}  // namespace tk::test::tds
