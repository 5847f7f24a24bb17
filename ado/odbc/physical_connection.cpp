#include "ado/odbc/physical_connection.h"

#include "ado/messages.h"
#include "ado/odbc/connect_turn.h"
#include "ado/odbc/connection_string.h"
#include "ado/odbc/environment.h"
#include "ado/odbc/server_call.h"

namespace tk::ado {
namespace {

constexpr std::size_t kLongestString = 32767;

// A connection that was idle for less than this is handed out unasked: asking costs as much as a small query.
constexpr long long kTrustedIdleMicroseconds = 1'000'000;

SQLPOINTER Number(SQLULEN value) {
    return reinterpret_cast<SQLPOINTER>(value);
}

std::string TextInfo(SQLHDBC dbc, SQLUSMALLINT item) {
    char buffer[1024] = {};
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(Odbc().GetInfo(dbc, item, buffer, sizeof buffer - 1, &length))) return {};
    return std::string(buffer);
}

bool GivesRow(const OdbcStatement& statement, std::string query) {
    return SQL_SUCCEEDED(Odbc().ExecDirect(statement.Get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS)) &&
           SQL_SUCCEEDED(Odbc().Fetch(statement.Get()));
}

}  // namespace

PhysicalConnection::PhysicalConnection(const Request& request)
    : dbc_(SharedEnvironment()), lockMilliseconds_(request.lockMilliseconds) {
    const OdbcApi& odbc = Odbc();
    // Lengths of connection strings are 16 bits wide in ODBC.
    if (request.odbcString.size() > kLongestString) throw AdoError(ErrorNumber::InvalidArgument);
    if (request.loginTimeoutSeconds > 0) {
        odbc.SetConnectAttr(Get(), SQL_ATTR_LOGIN_TIMEOUT, Number(static_cast<SQLULEN>(request.loginTimeoutSeconds)),
                            SQL_IS_UINTEGER);
    }
    if (request.readOnly) {
        odbc.SetConnectAttr(Get(), SQL_ATTR_ACCESS_MODE, Number(SQL_MODE_READ_ONLY), SQL_IS_UINTEGER);
    }
    std::string text = request.odbcString;
    std::string completed(4096, '\0');
    SQLSMALLINT length = 0;
    // Also for what is asked below, and for leaving a connection that did not answer.
    const ServerCall call(*request.likely, request.loginTimeoutSeconds);
    const auto connect = [&] {
        const ConnectTurn turn(request.likely->connectsInTurn);
        return odbc.DriverConnect(Get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                                  static_cast<SQLSMALLINT>(text.size()), reinterpret_cast<SQLCHAR*>(completed.data()),
                                  static_cast<SQLSMALLINT>(completed.size()), &length, SQL_DRIVER_NOPROMPT);
    };
    if (!SQL_SUCCEEDED(connect())) {
        throw MakeError(ReadDiagnostics(SQL_HANDLE_DBC, Get()), FailureClass{E_FAIL, kCauseConnection, true});
    }
    try {
        const std::string driver = TextInfo(Get(), SQL_DRIVER_NAME);
        profile_ = &FindProfile(driver.empty() ? TextInfo(Get(), SQL_DBMS_NAME) : driver);
        quote_ = TextInfo(Get(), SQL_IDENTIFIER_QUOTE_CHAR);
        if (quote_ == " ") quote_.clear();
        SQLUINTEGER isolation = 0;
        odbc.GetConnectAttr(Get(), SQL_ATTR_TXN_ISOLATION, &isolation, SQL_IS_UINTEGER, nullptr);
        firstIsolation_ = isolation_ = isolation;
        if (profile_->isFileDatabase) file_ = FileIdentity(TextInfo(Get(), SQL_DATABASE_NAME));
        // Most drivers take the access mode for a hint.
        if (request.readOnly && profile_->readOnlyStatement != nullptr) RunSimple(profile_->readOnlyStatement);
    } catch (...) {
        odbc.Disconnect(Get());
        throw;
    }
}

PhysicalConnection::~PhysicalConnection() {
    const ServerCall call(*profile_, ServerCall::ShortSeconds());
    // The driver manager frees the statements of a connection that ends: these handles end before.
    prepared_.clear();
    handles_.Clear();
    if (!isAutoCommit_) Odbc().EndTran(SQL_HANDLE_DBC, Get(), SQL_ROLLBACK);
    Odbc().Disconnect(Get());
}

std::string PhysicalConnection::InfoText(SQLUSMALLINT item) const {
    const ServerCall call(*profile_);
    return TextInfo(Get(), item);
}

unsigned PhysicalConnection::InfoNumber(SQLUSMALLINT item) const {
    const ServerCall call(*profile_);
    // Some items are 16 bits wide, some 32; little-endian and zeroed, both read right.
    SQLUINTEGER value = 0;
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(Odbc().GetInfo(Get(), item, &value, sizeof value, &length))) return 0;
    return value;
}

bool PhysicalConnection::IsDead() const noexcept {
    if (!profile_->hasConnectionDead) return false;
    const ServerCall call(*profile_);
    SQLUINTEGER dead = SQL_CD_FALSE;
    Odbc().GetConnectAttr(Get(), SQL_ATTR_CONNECTION_DEAD, &dead, SQL_IS_UINTEGER, nullptr);
    return dead == SQL_CD_TRUE;
}

std::string PhysicalConnection::CurrentCatalog() const {
    const ServerCall call(*profile_);
    char buffer[512] = {};
    SQLINTEGER length = 0;
    Odbc().GetConnectAttr(Get(), SQL_ATTR_CURRENT_CATALOG, buffer, sizeof buffer - 1, &length);
    return buffer[0] != '\0' ? std::string(buffer) : InfoText(SQL_DATABASE_NAME);
}

void PhysicalConnection::SetCurrentCatalog(std::string_view name) {
    const ServerCall call(*profile_);
    std::string text(name);
    MarkChanged();
    const SQLRETURN result =
        Odbc().SetConnectAttr(Get(), SQL_ATTR_CURRENT_CATALOG, text.data(), static_cast<SQLINTEGER>(text.size()));
    if (!SQL_SUCCEEDED(result)) ThrowDiagnostics(SQL_HANDLE_DBC, Get(), result);
}

std::unique_ptr<StatementHandle> PhysicalConnection::TakeHandle() {
    if (auto handle = handles_.Take()) return handle;
    return std::make_unique<StatementHandle>(Get(), *profile_);
}

void PhysicalConnection::ReturnHandle(std::unique_ptr<StatementHandle> handle) noexcept {
    if (profile_->usesHandlesOnce) return;
    if (handle->WasCancelled() || handle->WasExpired()) {
        MarkChanged();
        return;
    }  // drivers differ in what a cancelled handle is good for
    if (handle->isReading) return;
    handle->SetMaxRows(0);
    handles_.Keep(std::move(handle));
}

void PhysicalConnection::ForgetDescriptions() noexcept {
    results_.Forget();
    hasDefined_ = hasDefined_ || !isAutoCommit_;
    if (profile_->definitions == nullptr) return;
    definitions_.Forget();
    DropPrepared();
}

void PhysicalConnection::DropPrepared() noexcept {
    const std::lock_guard lock(preparedMutex_);
    prepared_.clear();  // their columns are those of before
}

bool PhysicalConnection::Follow(const std::string& text, bool isInTransaction) {
    const bool isChanged = definitions_.Follow(Get(), *profile_->definitions, isChanged_, isInTransaction, text);
    if (isChanged) DropPrepared();
    return isChanged;
}

void PhysicalConnection::HoldDefinitions(const std::string& text) {
    isHolding_ = isAutoCommit_ && RunText(profile_->definitions->hold);
    Follow(text, !isHolding_);
}

void PhysicalConnection::HoldForRows() {
    if (profile_->definitions == nullptr) return;
    RunSimple(profile_->definitions->hold);
    isHolding_ = true;
    KnownDefinitions::Refresh(Get(), *profile_->definitions);
}

void PhysicalConnection::ReleaseDefinitions() noexcept {
    if (!std::exchange(isHolding_, false) || RunText(profile_->definitions->release)) return;
    // The database has ended it over a failure, if another one can be begun.
    if (!RunText(profile_->definitions->hold) || !RunText(profile_->definitions->release)) MarkBroken();
}

void PhysicalConnection::NoteFailure() noexcept {
    if (profile_->definitions == nullptr || IsOutsideTransaction()) return;
    definitions_.Forget();
    DropPrepared();
}

std::unique_ptr<StatementHandle> PhysicalConnection::TakePrepared(std::string_view text) noexcept {
    const std::lock_guard lock(preparedMutex_);
    for (auto each = prepared_.begin(); each != prepared_.end(); ++each) {
        if (each->first != text) continue;
        auto handle = std::move(each->second);
        prepared_.erase(each);
        return handle;
    }
    return nullptr;
}

void PhysicalConnection::ReturnPrepared(std::string text, std::unique_ptr<StatementHandle> handle) noexcept {
    if (handle->WasCancelled() || handle->WasExpired()) return MarkChanged();
    if (handle->isReading) return;
    const std::lock_guard lock(preparedMutex_);
    if (prepared_.size() >= kKeptHandles) prepared_.erase(prepared_.begin());
    prepared_.emplace_back(std::move(text), std::move(handle));
}

void PhysicalConnection::SetAutoCommit(bool on) {
    if (on == isAutoCommit_) return;
    const ServerCall call(*profile_);
    const SQLRETURN result = Odbc().SetConnectAttr(
        Get(), SQL_ATTR_AUTOCOMMIT, Number(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), SQL_IS_UINTEGER);
    if (!SQL_SUCCEEDED(result)) ThrowDiagnostics(SQL_HANDLE_DBC, Get(), result);
    isAutoCommit_ = on;
}

void PhysicalConnection::SetIsolation(SQLUINTEGER isolation) {
    if (isolation == isolation_ || isolation == 0) return;
    const ServerCall call(*profile_);
    const SQLRETURN result = Odbc().SetConnectAttr(Get(), SQL_ATTR_TXN_ISOLATION, Number(isolation), SQL_IS_UINTEGER);
    if (!SQL_SUCCEEDED(result)) ThrowDiagnostics(SQL_HANDLE_DBC, Get(), result);
    isolation_ = isolation;
}

SQLUINTEGER PhysicalConnection::Isolation() const noexcept {
    const ServerCall call(*profile_);
    SQLUINTEGER isolation = isolation_;
    Odbc().GetConnectAttr(Get(), SQL_ATTR_TXN_ISOLATION, &isolation, SQL_IS_UINTEGER, nullptr);
    return isolation;
}

void PhysicalConnection::EndTransaction(SQLSMALLINT completion) {
    const Defining defining(*this, hasDefined_, hasCreated_);
    const ServerCall call(*profile_);
    const SQLRETURN result = Odbc().EndTran(SQL_HANDLE_DBC, Get(), completion);
    if (!SQL_SUCCEEDED(result)) ThrowDiagnostics(SQL_HANDLE_DBC, Get(), result);
    hasDefined_ = hasCreated_ = false;
}

DiagnosticRecord PhysicalConnection::LastFailure() const noexcept try {
    DiagnosticRecord failure{"HY000", 0, "A result is missing"};
    if (profile_->failureQuery == nullptr) return failure;
    const ServerCall call(*profile_, ServerCall::ShortSeconds());
    OdbcStatement statement(Get());
    SQLINTEGER native = 0;
    char message[512] = "";  // the driver ends it with a zero
    if (GivesRow(statement, profile_->failureQuery) &&
        SQL_SUCCEEDED(Odbc().GetData(statement.Get(), 2, SQL_C_LONG, &native, sizeof native, nullptr)) &&
        SQL_SUCCEEDED(Odbc().GetData(statement.Get(), 3, SQL_C_CHAR, message, sizeof message, nullptr))) {
        failure.native = native;
        failure.message = message;
    }
    return failure;
} catch (...) {
    return {};
}

bool PhysicalConnection::RejoinTransaction() noexcept try {
    if (profile_->beginStatement != nullptr) return RunText(profile_->beginStatement);
    if (profile_->newTransactionQuery == nullptr) return false;
    const ServerCall call(*profile_, ServerCall::ShortSeconds());
    OdbcStatement statement(Get());
    return GivesRow(statement, profile_->newTransactionQuery);
} catch (...) {
    return false;
}

bool PhysicalConnection::RunText(const char* sql) noexcept try {
    RunSimple(sql);
    return true;
} catch (...) {
    return false;
}

void PhysicalConnection::RunSimple(const std::string& sql) {
    const ServerCall call(*profile_);
    OdbcStatement statement(Get());
    std::string text = sql;
    const SQLRETURN result = Odbc().ExecDirect(statement.Get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) ThrowDiagnostics(SQL_HANDLE_STMT, statement.Get(), result);
}

void PhysicalConnection::SendTimeLimit(LONG seconds) {
    RunSimple(profile_->timeLimitStatement + std::to_string(seconds));
    timeLimit_ = seconds;
}

bool PhysicalConnection::Reset() noexcept try {
    ReleaseDefinitions();
    if (isBroken_ || isChanged_) return false;
    if (profile_->isFileDatabase && !file_.IsKnown()) return false;  // in memory: it belongs to one session alone
    if (!isAutoCommit_) {
        EndTransaction(SQL_ROLLBACK);
        SetAutoCommit(true);
    }
    SetIsolation(firstIsolation_);
    return true;
} catch (const AdoError&) {
    return false;
}

bool PhysicalConnection::Answers() noexcept try {
    if (profile_->isFileDatabase) return true;
    const ServerCall call(*profile_, ServerCall::ShortSeconds());
    if (IsDead()) return false;
    if (profile_->pingStatement != nullptr) RunSimple(profile_->pingStatement);
    return true;
} catch (const AdoError&) {
    return false;
}

bool PhysicalConnection::IsUsable(long long idle, long long now) noexcept {
    // A file put in the place of the former one is another database.
    if (profile_->isFileDatabase) return file_.IsStillThere(now);
    return idle < kTrustedIdleMicroseconds || Answers();
}

}  // namespace tk::ado
