// ado/odbc/session.h - one physical connection to a database; taken from and given back to the session cache.
//
//   auto session = Session::Open(settings);
//   Statement statement = session->Execute("select id, name from item", {});
//
// Threads: one caller at a time, except Cancel of a running statement. A session whose rows are still being fetched by
// a worker finishes that fetch first when it is asked for another statement (see SetBackgroundWork).
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/error.h"
#include "ado/odbc/connection_string.h"
#include "ado/odbc/driver_profile.h"
#include "ado/odbc/parameter.h"
#include "ado/odbc/statement.h"

namespace tk::ado {

class BackgroundWork;
class PhysicalConnection;
class RunningCall;
class SettingsWatcher;

/// How long the calls below wait for other work of the session where nobody says otherwise.
constexpr LONG kUsualWaitSeconds = 30;

/// What opening a session needs, all texts UTF-8.
struct SessionSettings {
    ConnectionString connection;    // as given, parsed; Open itself maps provider names to drivers
    std::string user;               // empty: as the string says
    std::string password;           // empty: as the string says
    LONG loginTimeoutSeconds = 15;  // 0: no limit
    bool readOnly = false;          // where the string says nothing of it

    /// KeyOf these settings, for those that are opened with again and again; null: worked out at every open.
    std::shared_ptr<const std::string> key;
};

struct ExecuteOptions {
    LONG timeoutSeconds = 30;  // 0: no limit
    LONG maxRows = 0;          // 0: all
    bool prepared = false;     // the text will run again: it is prepared, and the connection keeps it so
    bool wantsRows = true;     // false: they are not fetched, and the statement does all of its work at once
};

class Session {
public:
    /// Opens a session or takes an idle one from the cache (same full string, user and password; alive; reset).
    /// @throws AdoError with the driver's diagnostics
    static std::shared_ptr<Session> Open(const SessionSettings& settings);

    /// Rolls back what is open and returns the physical connection to the cache, or closes it when it is not reusable.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const DriverProfile& Profile() const noexcept;

    /// What the connection string says besides the driver's keywords.
    const ConnectionProperties& Properties() const noexcept;

    /// The identifier quote, "" when the driver has none.
    const std::string& Quote() const noexcept;

    /// Runs one statement text (UTF-8). A statement without rows is executed when this returns.
    /// @throws AdoError with the driver's diagnostics, its HRESULT and word group by the cause
    Statement Execute(const std::string& sql, const ExecuteOptions& options);

    /// Runs a statement with parameters, each sent by its VARIANT type; texts travel as UTF-8.
    Statement Execute(const std::string& sql, const std::vector<VARIANT>& parameters, const ExecuteOptions& options);
    Statement Execute(const std::string& sql, std::span<const Parameter> parameters, const ExecuteOptions& options);

    /// A catalog function of ODBC; null and empty texts are sent as null. See statement.h for CatalogCall.
    Statement Catalog(const CatalogCall& call, const ExecuteOptions& options);

    /// From any thread: ends the call that is running on this session, if there is one, with "cancelled" (its caller
    /// gets the AdoError): an execution, what the caller has named by Running, or a wait for other work of the session.
    void Cancel() noexcept;
    RunningCall& Running() const noexcept;

    /// Auto-commit off / commit / roll back; isolation is an ADO value (0x1000 …), applied before the transaction.
    /// @param waitSeconds  for the workers that still read on the session's connection; 0: no limit
    void Begin(LONG isolation, LONG waitSeconds = kUsualWaitSeconds);
    void Commit(LONG waitSeconds = kUsualWaitSeconds);
    void Rollback(LONG waitSeconds = kUsualWaitSeconds);
    bool InTransaction() const noexcept;

    /// SQLGetInfo as text or number; "" or 0 when the driver does not answer.
    std::string InfoText(unsigned short item);
    unsigned InfoNumber(unsigned short item);

    /// ODBC's bit of the isolation that statements run in.
    unsigned Isolation();

    std::string CurrentCatalog();
    void SetCurrentCatalog(std::string_view name);

    /// Told once, before the first statement that may change what names mean on this session.
    void WatchSettings(std::weak_ptr<SettingsWatcher> watcher);

    /// True when the driver says that the connection is lost; asks, does not guess from the state alone.
    bool IsDead();

    /// True when the database has undone the transaction that is open: everything fails until it is ended.
    bool IsAborted() const noexcept;

    /// A worker that still uses this session's statement. The next Execute, Catalog, Begin, Commit or Rollback waits
    /// for its end first, so that drivers with one active statement work too; Execute and Catalog within their time
    /// limit.
    /// @param onSideConnection  the worker reads on a connection of its own; statements that only read need not wait
    void SetBackgroundWork(std::weak_ptr<BackgroundWork> work, bool onSideConnection = false);

    /// Waits for the workers that read on the session's own connection.
    /// @throws AdoError when the time is over or the wait was cancelled
    void FinishBackgroundWork(LONG waitSeconds = kUsualWaitSeconds);

    /// The physical connection, for the row set's own questions.
    PhysicalConnection& Physical() const noexcept;

    /// The completed connection string as ADO shows it: text as given, password removed.
    const std::string& DisplayString() const noexcept;

private:
    struct Impl;
    explicit Session(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace tk::ado
