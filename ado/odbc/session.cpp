#include "ado/odbc/session.h"

#include <algorithm>
#include <bit>
#include <span>

#include <tkwin32/text.h>

#include "ado/messages.h"
#include "ado/odbc/background_work.h"
#include "ado/odbc/catalog_call.h"
#include "ado/odbc/definition_hold.h"
#include "ado/odbc/lock_wait.h"
#include "ado/odbc/output_row.h"
#include "ado/odbc/parameter_binding.h"
#include "ado/odbc/physical_connection.h"
#include "ado/odbc/result_sizes.h"
#include "ado/odbc/server_call.h"
#include "ado/odbc/server_cursor.h"
#include "ado/odbc/session_cache.h"
#include "ado/odbc/session_facts.h"
#include "ado/odbc/settings_watcher.h"
#include "ado/odbc/statement_impl.h"
#include "ado/odbc/statement_kind.h"
#include "ado/odbc/statement_list.h"
#include "ado/odbc/watchdog.h"
#include "ado/rowset/describe.h"

namespace tk::ado {

namespace {

constexpr HRESULT kNoTransactionCode = static_cast<HRESULT>(0x8004D00E);
constexpr HRESULT kTransactionExistsCode = static_cast<HRESULT>(0x8004D013);
constexpr HRESULT kTransactionAbortedCode = static_cast<HRESULT>(0x8004D019);

AdoError TransactionError(HRESULT code, const char16_t* text) {
    return AdoError(std::vector<ErrorRecord>{{code, text, kProviderSource, "25000", 0}});
}

AdoError AbortedError() {
    return TransactionError(kTransactionAbortedCode, kTransactionAborted);
}

AdoError LostError() {
    return MakeError({}, FailureClass{E_FAIL, kCauseConnection, true});
}

/// The object model's isolation level as ODBC's bit; the next higher one when the driver does not offer it.
SQLUINTEGER OdbcIsolation(LONG isolation, unsigned offered) {
    constexpr LONG kChaos = 0x10;
    constexpr LONG kReadUncommitted = 0x100;
    constexpr LONG kReadCommitted = 0x1000;
    constexpr LONG kRepeatableRead = 0x10000;
    constexpr LONG kSerializable = 0x100000;
    static constexpr struct {
        LONG level;
        SQLUINTEGER odbc;
    } kLevels[] = {
        {kChaos, SQL_TXN_READ_UNCOMMITTED},       {kReadUncommitted, SQL_TXN_READ_UNCOMMITTED},
        {kReadCommitted, SQL_TXN_READ_COMMITTED}, {kRepeatableRead, SQL_TXN_REPEATABLE_READ},
        {kSerializable, SQL_TXN_SERIALIZABLE},
    };
    for (const auto& each : kLevels) {
        if (each.level != isolation) continue;
        for (SQLUINTEGER bit = each.odbc; bit <= SQL_TXN_SERIALIZABLE; bit <<= 1) {
            if ((offered & bit) != 0) return bit;
        }
    }
    return 0;  // leave it as it is
}

/// As ended by a zero, unless it has one inside: a driver may copy a text whose length it is told. An empty one is told
/// as such: the driver manager refuses it then.
SQLINTEGER SentLength(const std::string& text) noexcept {
    const bool isPlain = !text.empty() && text.find('\0') == std::string::npos;
    return isPlain ? SQL_NTS : static_cast<SQLINTEGER>(text.size());
}

}  // namespace

struct Session::Impl {
    struct Work {
        std::weak_ptr<BackgroundWork> work;
        bool onSideConnection = false;
    };

    std::shared_ptr<const SessionFacts> facts;
    std::shared_ptr<Lease> lease;
    std::vector<Work> work;
    std::vector<std::weak_ptr<SettingsWatcher>> watchers;
    bool isInTransaction = false;
    bool hasWritten = false;            // in the transaction, as far as its texts tell
    bool isTransactionAborted = false;  // what was written is undone
    RunningCall running;
    bool hasPlan = false;  // the handle of the call that runs is prepared for its text already

    PhysicalConnection& Physical() const noexcept { return **lease; }

    /// Waits for what workers still do on this session's connection; with that done its statements may run.
    /// @param seconds  0: no limit
    void FinishWork(bool alsoOnSide, LONG seconds) {
        if (!work.empty()) [[unlikely]]
            FinishEach(alsoOnSide, seconds);
    }

    void FinishEach(bool alsoOnSide, LONG seconds) {
        const Patience patience(seconds, running);
        for (std::size_t i = 0; i < work.size();) {
            if (work[i].onSideConnection && !alsoOnSide) {
                ++i;
                continue;
            }
            const auto other = work[i].work.lock();
            if (other != nullptr && !other->FinishWork(patience)) {
                throw patience.IsCancelled() ? MakeCancelledError() : MakeWaitedError();
            }
            work.erase(work.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }

    void TellWatchers() {
        const auto told = std::exchange(watchers, {});  // they run statements themselves
        for (const auto& each : told) {
            if (const auto watcher = each.lock()) watcher->BeforeSettingsChange();
        }
    }

    /// Of a text that reads. Where the driver leaves results, several statements have been told apart before.
    bool GivesOneResult(const StatementKind& kind) const noexcept {
        const DriverProfile& profile = Physical().Profile();
        return profile.leavesResults || (profile.hasOneResultOfReading && kind.form != 0);
    }

    bool CanUseSide(const StatementKind& kind) const noexcept {
        const PhysicalConnection& main = **lease;
        return main.Profile().streaming == Streaming::SideConnection && kind.isReading && !isInTransaction &&
               !main.IsChanged() && main.IsPlainFile();
    }

    static bool IsLikelyLarge(std::uint64_t name, const StatementKind& kind) noexcept {
        if (name == 0) return false;
        const auto remembered = RememberedRows(name);
        return remembered ? *remembered >= kManyRows : kind.isLikelyLarge;
    }

    /// The side connection steps through its rows when they are fetched, long after it has described them.
    void HoldForRows(PhysicalConnection& side) {
        const RunningCall::Wait waiting(running);
        side.HoldForRows();
        if (running.IsWaitCancelled()) throw MakeCancelledError();
    }

    /// What a call gave. Parameters stay bound until its diagnostics have been read: taking them off replaces those.
    struct CallResult {
        SQLRETURN result;
        std::unique_ptr<const ParameterBinding> binding;
    };

    static bool HasFailed(const CallResult& called) noexcept {
        return !SQL_SUCCEEDED(called.result) && called.result != SQL_NO_DATA;
    }

    /// Makes a call again that has met a lock, or tables that were others than the driver thought. The side connection
    /// leaves all of that to the session's own.
    template <class Call>
    void GoOn(Statement::Impl& statement, CallResult& called, const std::string& sql, const StatementKind& kind,
              DefinitionHold& hold, Call&& call) {
        StatementHandle& handle = *statement.handle;
        const bool isOwn = statement.lease == lease;
        bool isFitted = false;
        for (;;) {
            if (HasFailed(called)) {
                const bool mayGoOn = isOwn && called.result == SQL_ERROR;
                if (!mayGoOn || !hold.Wait().GoesOn(handle)) {
                    if (!mayGoOn || isFitted || !HasFailedByDefinitions(handle, sql, kind)) break;
                    isFitted = true;
                }
            } else if (!kind.readsTables || hold.IsHeld() || !HasShownFormer(statement, sql, hold)) {
                return;
            }
            handle.Close();
            called.binding.reset();
            if (kind.readsTables && Physical().Profile().definitions != nullptr) {
                handle.HoldCancel();
                hold.Begin(sql, handle);
                hasPlan = false;
                handle.AllowCancel();
                statement.ExpectNotEnded();
            }
            called = call(handle);
        }
        (*statement.lease)->NoteFailure();
        statement.Fail(called.result);
    }

    /// Behind a failure that is none of a lock: whether it may be gone now that the driver sees the tables as they are.
    bool HasFailedByDefinitions(StatementHandle& handle, const std::string& sql, const StatementKind& kind) {
        PhysicalConnection& connection = Physical();
        const DefinitionQueries* definitions = connection.Profile().definitions;
        if (definitions == nullptr || kind.mayDefine) return false;
        handle.HoldCancel();
        const auto records = ReadDiagnostics(SQL_HANDLE_STMT, handle.Get());
        const bool mayBe = std::ranges::any_of(records, [&](const DiagnosticRecord& each) {
            return (each.native == definitions->unfit && connection.IsOutsideTransaction()) ||
                   (each.native == definitions->brokenPlan && kind.readsTables);
        });
        if (!mayBe || handle.IsEnded()) return false;
        try {
            if (!connection.FollowDefinitions(sql)) return false;
        } catch (const AdoError&) {
            return false;  // the failure stands
        }
        hasPlan = false;
        handle.AllowCancel();
        return !handle.IsEnded();
    }

    /// Behind a query that was not held: true when its columns may be those of before a change that others have made
    /// meanwhile.
    bool HasShownFormer(Statement::Impl& statement, const std::string& sql, DefinitionHold& hold) {
        PhysicalConnection& connection = Physical();
        if (!connection.MayBeOutdated()) return false;
        statement.handle->HoldCancel();  // all that the driver could cancel is the result
        bool isFormer = false;
        try {
            isFormer = connection.FollowDefinitions(sql);
        } catch (const AdoError& error) {
            isFormer = hold.Wait().IsOfLock(error);  // which is waited for before it is run again
        }
        statement.handle->AllowCancel();
        statement.ExpectNotEnded();
        return isFormer;
    }

    /// Runs one call on a handle of the lease and makes the statement of it.
    template <class Call>
    Statement Run(const std::shared_ptr<Lease>& on, const std::string& sql, const StatementKind& kind,
                  const ExecuteOptions& options, Call&& call) {
        // Its members say what they begin with: not zeroed as a whole before.
        auto statement = std::make_unique_for_overwrite<Statement::Impl>();
        statement->lease = on;
        statement->timeoutSeconds = options.timeoutSeconds;
        statement->maxRows = options.maxRows;
        const bool follows = kind.readsTables && on == lease && (*on)->Profile().definitions != nullptr;
        std::optional<KnownDefinitions::Passing> passing;
        DefinitionHold hold(**on, running);
        int waited = 0;
        if (follows) {
            if (!kind.mayDefine) passing.emplace();
            if (!passing || !passing->Passes() || (*on)->MayBeOutdated()) {
                passing.reset();
                waited = hold.Begin(sql, options.timeoutSeconds);
            }
        }
        ServerCall server((*on)->Profile(), options.timeoutSeconds);
        try {
            (*on)->SetTimeLimitVariable(options.timeoutSeconds);
            if (options.prepared) statement->handle = (*on)->TakePrepared(sql);
            hasPlan = statement->handle != nullptr;
            if (!hasPlan) statement->handle = (*on)->TakeHandle();
        } catch (const AdoError&) {
            // Some drivers notice a lost connection only here.
            (*on)->MarkBroken();
            if (server.WasCut()) throw MakeWaitedError();
            throw;
        }
        StatementHandle& handle = *statement->handle;
        handle.SetTimeout(options.timeoutSeconds);
        handle.Start();
        const RunningCall::Scope scope(running, handle);
        server.Name(handle);
        const bool isWatched = handle.Profile().timeLimit == TimeLimit::Watchdog;
        WatchdogGuard guard(isWatched ? options.timeoutSeconds : 0, handle, -waited);
        CallResult called = call(handle);
        passing.reset();
        on->MarkUsed();
        if (HasFailed(called) || (follows && !hold.IsHeld() && (*on)->MayBeOutdated())) [[unlikely]]
            GoOn(*statement, called, sql, kind, hold, call);
        guard.Finish();
        const SQLRETURN result = called.result;
        if (result == SQL_SUCCESS_WITH_INFO) {
            handle.HoldCancel();
            statement->warnings = MakeError(ReadDiagnostics(SQL_HANDLE_STMT, handle.Get())).Records();
            handle.AllowCancel();
        }
        if (options.prepared) statement->preparedText = sql;
        statement->ReadResultShape();
        if (result == SQL_NO_DATA) statement->mayHaveRows = true;  // a driver may have begun to read all the same
        handle.isReading = handle.Profile().keepsReading && statement->columnCount > 0;
        if (called.binding) statement->outputs = called.binding->Outputs();
        if (statement->columnCount > 0 || statement->outputs) statement->text = sql;
        // A driver that steps through its rows still looks at the parameters then.
        if (statement->columnCount > 0) statement->binding = std::move(called.binding);
        PassOutputRow(*statement);
        if (handle.WasCut()) (*on)->MarkBroken();  // the answer came in the last moment
        return Statement(std::move(statement));
    }

    /// The statement that met the loss of the connection has said so. The next one runs on a new connection, but not
    /// inside a transaction: what was done in it is gone, which everything fails with until it is rolled back. The
    /// driver is not asked then: one that connects again by itself would run the statement outside of the transaction.
    void ReplaceIfBroken() {
        if (!Physical().IsBroken() && !isTransactionAborted) [[likely]]
            return;
        if (isTransactionAborted) throw AbortedError();
        if (isInTransaction) throw LostError();
        Replace();
    }

    /// The database may end a transaction without the driver's knowing.
    bool EndsByItself() const noexcept { return Physical().Profile().beginStatement != nullptr; }

    bool IsAborting(const AdoError& error) const noexcept {
        const std::span<const int> natives = Physical().Profile().abortingNatives;
        return std::ranges::any_of(error.Records(), [&](const ErrorRecord& each) {
            return std::ranges::find(natives, each.nativeError) != natives.end();
        });
    }

    /// All of the transaction may be undone behind a failure: by a driver over a text that the server could not read,
    /// by a database over a row that its constraints refuse. Nothing runs then until it is rolled back.
    template <class Call>
    Statement RunInTransaction(const std::string& sql, const StatementKind& kind, const ExecuteOptions& options,
                               Call&& call) {
        try {
            return Run(lease, sql, kind, options, call);
        } catch (const AdoError& error) {
            PhysicalConnection& connection = Physical();
            if (connection.IsBroken() || !(hasWritten || EndsByItself())) throw;
            isTransactionAborted = IsAborting(error) || connection.RejoinTransaction();
            throw;
        }
    }

    /// As Run on the session's own connection; a connection that was lost while it lay idle in the cache is replaced
    /// once, when the call only reads.
    template <class Call>
    Statement RunOnOwn(const std::string& sql, const StatementKind& kind, const ExecuteOptions& options, Call&& call) {
        ReplaceIfBroken();
        if (isInTransaction) return RunInTransaction(sql, kind, options, call);
        if (!lease->IsFreshFromCache()) return Run(lease, sql, kind, options, call);
        if (!kind.isReading) {
            ReplaceIfLost();
            return Run(lease, sql, kind, options, call);
        }
        try {
            return Run(lease, sql, kind, options, call);
        } catch (const AdoError& error) {
            // Its time may be over because the server hangs: the connection was alive then.
            if (!Physical().IsBroken() || IsEnded(error)) throw;
        }
        Replace();
        return Run(lease, sql, kind, options, call);
    }

    /// The session's connection was lost while it lay idle: so may the others have been that lie there.
    void Replace() {
        SessionCache::Instance().Distrust(facts->key);
        // What runs now, and is about to run on the new one, may be what changes the session.
        const bool isChanged = Physical().IsChanged();
        lease = OpenLease(facts);
        if (isChanged) Physical().MarkChanged();
    }

    /// Before the first work on a connection from the cache that cannot be tried twice.
    void ReplaceIfLost() {
        if (!lease->IsFreshFromCache()) return;
        if (Physical().Answers()) return lease->MarkUsed();
        Physical().MarkBroken();
        Replace();
    }

    /// For a driver that would call it a syntax error.
    static void RefuseChange(std::string_view sql) {
        const std::string_view word = ChangingWord(sql);
        if (!word.empty()) throw AdoError(ErrorNumber::FeatureNotAvailable, text::Utf8ToUtf16(word));
    }

    Statement Execute(const std::string& sql, std::span<const Parameter> parameters, const ExecuteOptions& options) {
        if (Physical().Profile().needsSingleStatements) {
            const std::vector<ListedStatement> list = ListStatements(sql);
            if (!list.empty()) return ExecuteList(list, parameters, options);
        }
        Statement statement = ExecuteOne(sql, parameters, options);
        if (Physical().Profile().leavesResults && !statement.HasRows()) statement.PassNumbers(running);
        return statement;
    }

    /// One after the other, until one fails. The first one's failure is thrown at once; that of another one is the
    /// result in its place.
    Statement ExecuteList(std::span<const ListedStatement> list, std::span<const Parameter> parameters,
                          ExecuteOptions options) {
        std::size_t markers = 0;
        for (const ListedStatement& each : list)
            markers += each.markers;
        if (markers > parameters.size()) throw MakeError({{"07002", 0, "Too few parameters"}});
        std::optional<Statement> first;
        auto following = std::make_unique<FollowingResults>();
        const RunningCall::Wait waiting(running);  // also between two of them
        for (const ListedStatement& each : list) {
            const std::size_t own = &each == &list.back() ? parameters.size() : each.markers;
            options.prepared = each.isProgram;
            try {
                if (running.IsWaitCancelled()) throw MakeCancelledError();
                Statement statement = ExecuteOne(each.text, parameters.first(own), options);
                parameters = parameters.subspan(own);
                Settle(statement, each.isProgram);
                if (first) {
                    following->statements.push_back(std::move(statement));
                } else {
                    first = std::move(statement);
                }
            } catch (const AdoError&) {
                if (!first || running.IsWaitCancelled()) throw;
                following->failure = std::current_exception();
                break;
            }
        }
        first->Internals().following = std::move(following);
        return std::move(*first);
    }

    /// What is kept of one of several statements: no handle for numbers.
    static void Settle(Statement& statement, bool isProgram) {
        Statement::Impl& inside = statement.Internals();
        inside.text.clear();  // those behind it may have changed what its names mean
        if (isProgram) {
            inside.mayHaveMore = false;
            inside.preparedText.clear();  // nobody defines it twice
        }
        if (inside.columnCount == 0) statement = Statement(inside.WithoutHandle());
    }

    /// How many rows the driver is to give; 0: all. Whoever fetches counts them too.
    LONG SentLimit(const StatementKind& kind, LONG maxRows) const noexcept {
        const RowLimit limit = Physical().Profile().rowLimit;
        const bool isBorne =
            limit == RowLimit::OfAny || (limit == RowLimit::OfReading ? kind.isReading : kind.takesLimit);
        return isBorne ? maxRows : 0;
    }

    Statement ExecuteOne(const std::string& sql, std::span<const Parameter> parameters, const ExecuteOptions& options) {
        if (Physical().Profile().isReadOnly) RefuseChange(sql);
        const StatementKind kind = Inspect(sql);
        FinishWork(!kind.isReading, options.timeoutSeconds);
        ReplaceIfBroken();
        if (kind.changesSession) {
            TellWatchers();
            Physical().MarkChanged();
        }
        const PhysicalConnection::Defining defining(Physical(), kind.mayDefine, kind.defines);
        const auto execute = [&](StatementHandle& handle, const std::string& query) {
            std::unique_ptr<const ParameterBinding> binding;
            handle.SetMaxRows(SentLimit(kind, options.maxRows));
            // Drivers take the text as writable; none writes.
            auto* text = reinterpret_cast<SQLCHAR*>(const_cast<char*>(query.data()));
            const SQLINTEGER length = SentLength(query);
            if (options.prepared && !hasPlan) {
                const SQLRETURN result = Odbc().Prepare(handle.Get(), text, length);
                if (!SQL_SUCCEEDED(result)) return CallResult{result, nullptr};
            }
            if (!parameters.empty()) binding = std::make_unique<const ParameterBinding>(handle, parameters);
            SQLRETURN result =
                options.prepared ? Odbc().Execute(handle.Get()) : Odbc().ExecDirect(handle.Get(), text, length);
            if (SQL_SUCCEEDED(result) && binding && binding->HasFailedExecution()) result = SQL_ERROR;
            return CallResult{result, std::move(binding)};
        };
        const auto call = [&](StatementHandle& handle) { return execute(handle, sql); };
        const bool canStream = kind.isReading && Physical().Profile().streaming != Streaming::None;
        const std::uint64_t name = canStream ? ResultName(*facts->key, sql) : 0;
        std::optional<Statement> statement;
        if (options.wantsRows && !options.prepared && IsLikelyLarge(name, kind)) {
            if (CanUseSide(kind)) statement = TryOnSide(sql, kind, options, call);
            if (CanUseCursor()) statement = TryByCursor(sql, kind, options, execute);
        }
        if (!statement) statement = RunOnOwn(sql, kind, options, call);
        statement->Internals().resultName = name;
        if (kind.isReading && GivesOneResult(kind)) {
            statement->Internals().mayHaveMore = false;
            if (Physical().Profile().searchesColumns) statement->Internals().form = kind.form;
        }
        hasWritten = isInTransaction && (hasWritten || !kind.isReading);
        // The text may have been the end of the transaction: then another one is open behind this.
        if (isInTransaction && kind.mayDefine && EndsByItself()) Physical().RejoinTransaction();
        return std::move(*statement);
    }

    /// On the side connection; nothing where that cannot tell the types of all columns, or does not open.
    template <class Call>
    std::optional<Statement> TryOnSide(const std::string& sql, const StatementKind& kind, const ExecuteOptions& options,
                                       Call&& call) {
        try {
            auto side = TakeSideLease(*facts, Physical().Profile().streamingKeywords);
            HoldForRows(**side);
            Statement statement = Run(side, sql, kind, options, call);
            Statement::Impl& inside = statement.Internals();
            if (!HasOnlyTableColumns(*inside.handle, inside.columnCount)) return std::nullopt;
            inside.isOnSideConnection = true;
            return statement;
        } catch (const AdoError& error) {
            if (IsEnded(error)) throw;
            return std::nullopt;  // the session's own connection says what is wrong
        }
    }

    bool CanUseCursor() const noexcept {
        // A text may have begun a transaction, which is not ours to end.
        return Physical().Profile().streaming == Streaming::Cursor && (isInTransaction || !Physical().IsChanged());
    }

    /// A part at a time; nothing where the server has no cursor for the text: run as it is, it works, or says why not.
    template <class Execute>
    std::optional<Statement> TryByCursor(const std::string& sql, const StatementKind& kind,
                                         const ExecuteOptions& options, Execute&& execute) {
        ReplaceIfBroken();
        auto cursor = std::make_unique<ServerCursor>(*Physical().Profile().cursor, isInTransaction);
        try {
            Statement statement = RunOnOwn(sql, kind, options, [&](StatementHandle& handle) {
                CallResult called{cursor->Begin(handle), nullptr};
                if (SQL_SUCCEEDED(called.result)) called = execute(handle, cursor->OpenText(sql));
                if (SQL_SUCCEEDED(called.result)) called.result = cursor->FetchFirst(handle);
                return called;
            });
            Statement::Impl& inside = statement.Internals();
            inside.mayHaveMore = false;
            inside.cursor = std::move(cursor);
            if (inside.columnCount > 0) return statement;
        } catch (const AdoError& error) {
            cursor->Undo(Physical());
            if (cursor->IsOpen() || IsEnded(error) || Physical().IsBroken()) throw;
        } catch (...) {
            cursor->Undo(Physical());
            throw;
        }
        return std::nullopt;
    }

    void RequireTransaction() const {
        if (!isInTransaction) throw TransactionError(kNoTransactionCode, kNoTransaction);
    }

    /// A commit may have to wait for the locks of readers.
    void EndWhenUnlocked(PhysicalConnection& connection, SQLSMALLINT completion) {
        const RunningCall::Wait waiting(running);
        for (LockWait wait(connection);;) {
            try {
                return connection.EndTransaction(completion);
            } catch (const AdoError& error) {
                if (running.IsWaitCancelled()) throw MakeCancelledError();
                if (!wait.GoesOn(error)) throw;
            }
        }
    }

    void EndTransaction(SQLSMALLINT completion, LONG waitSeconds) {
        RequireTransaction();
        FinishWork(true, waitSeconds);
        PhysicalConnection& connection = Physical();
        try {
            // Whatever the driver would commit by now, it is not what was done in the transaction.
            if (completion == SQL_COMMIT && connection.IsBroken()) {
                throw isTransactionAborted ? AbortedError() : LostError();
            }
            EndWhenUnlocked(connection, completion);
            // One driver reports success on a connection that is gone: nothing has been committed then.
            if (connection.IsDead()) throw LostError();
        } catch (const AdoError&) {
            if (connection.IsDead() || connection.IsBroken()) {
                connection.MarkBroken();
                isInTransaction = isTransactionAborted = false;
                throw;
            }
            // As a rule it is still open, can be tried again or rolled back.
            if (!EndsByItself() || !connection.RejoinTransaction()) throw;
            EndWhenUnlocked(connection, SQL_ROLLBACK);
            isTransactionAborted = true;
        }
        isInTransaction = false;
        const bool isAborted = std::exchange(isTransactionAborted, false);
        connection.SetAutoCommit(true);
        if (isAborted && completion == SQL_COMMIT) throw AbortedError();
    }
};

Session::Session(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Session::~Session() {
    // A fetch that still runs keeps the connection until it is done; a transaction ends now.
    if (!impl_->isInTransaction) return;
    constexpr LONG kSeconds = 5;  // after that it ends with the fetch, as the connection does
    try {
        impl_->FinishWork(true, kSeconds);
    } catch (...) {
        impl_->Physical().MarkBroken();
    }
}

std::shared_ptr<Session> Session::Open(const SessionSettings& settings) {
    auto impl = std::make_unique<Impl>();
    impl->lease = TakeLease(settings);
    impl->facts = (*impl->lease)->facts;
    struct Made final : Session {  // in one piece of memory with its count
        explicit Made(std::unique_ptr<Impl> inside) : Session(std::move(inside)) {}
    };
    return std::make_shared<Made>(std::move(impl));
}

const DriverProfile& Session::Profile() const noexcept {
    return impl_->Physical().Profile();
}

const ConnectionProperties& Session::Properties() const noexcept {
    return impl_->facts->properties;
}

const std::string& Session::Quote() const noexcept {
    return impl_->Physical().Quote();
}

Statement Session::Execute(const std::string& sql, const ExecuteOptions& options) {
    return impl_->Execute(sql, {}, options);
}

Statement Session::Execute(const std::string& sql, const std::vector<VARIANT>& values, const ExecuteOptions& options) {
    std::vector<Parameter> parameters(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        parameters[i].value = &values[i];
    return impl_->Execute(sql, parameters, options);
}

Statement Session::Execute(const std::string& sql, std::span<const Parameter> parameters,
                           const ExecuteOptions& options) {
    return impl_->Execute(sql, parameters, options);
}

Statement Session::Catalog(const CatalogCall& call, const ExecuteOptions& options) {
    impl_->FinishWork(false, options.timeoutSeconds);
    return impl_->RunOnOwn({}, StatementKind{.isReading = true}, options, [&](StatementHandle& handle) {
        return Impl::CallResult{RunCatalogCall(handle.Get(), call), nullptr};
    });
}

void Session::Cancel() noexcept {
    impl_->running.Cancel();
}

RunningCall& Session::Running() const noexcept {
    return impl_->running;
}

void Session::Begin(LONG isolation, LONG waitSeconds) {
    if (impl_->isInTransaction) throw TransactionError(kTransactionExistsCode, kTransactionExists);
    impl_->FinishWork(true, waitSeconds);
    impl_->ReplaceIfBroken();
    impl_->ReplaceIfLost();
    PhysicalConnection& connection = impl_->Physical();
    const SQLUINTEGER wanted = OdbcIsolation(isolation, connection.InfoNumber(SQL_TXN_ISOLATION_OPTION));
    connection.SetIsolation(wanted);
    connection.SetAutoCommit(false);
    impl_->isInTransaction = true;
    impl_->hasWritten = false;
}

void Session::Commit(LONG waitSeconds) {
    impl_->EndTransaction(SQL_COMMIT, waitSeconds);
}

void Session::Rollback(LONG waitSeconds) {
    impl_->EndTransaction(SQL_ROLLBACK, waitSeconds);
}

bool Session::InTransaction() const noexcept {
    return impl_->isInTransaction;
}

std::string Session::InfoText(unsigned short item) {
    return impl_->Physical().InfoText(item);
}

unsigned Session::InfoNumber(unsigned short item) {
    return impl_->Physical().InfoNumber(item);
}

unsigned Session::Isolation() {
    return impl_->Physical().Isolation();
}

std::string Session::CurrentCatalog() {
    return impl_->Physical().CurrentCatalog();
}

void Session::SetCurrentCatalog(std::string_view name) {
    impl_->FinishWork(true, kUsualWaitSeconds);
    impl_->TellWatchers();
    impl_->Physical().SetCurrentCatalog(name);
}

void Session::WatchSettings(std::weak_ptr<SettingsWatcher> watcher) {
    constexpr std::size_t kManyWatchers = 16;  // those that are gone are still in the list
    auto& watchers = impl_->watchers;
    if (watchers.size() >= kManyWatchers) std::erase_if(watchers, [](const auto& each) { return each.expired(); });
    watchers.push_back(std::move(watcher));
}

bool Session::IsAborted() const noexcept {
    return impl_->isTransactionAborted;
}

bool Session::IsDead() {
    if (!impl_->Physical().IsDead()) return impl_->Physical().IsBroken();
    impl_->Physical().MarkBroken();
    return true;
}

void Session::SetBackgroundWork(std::weak_ptr<BackgroundWork> work, bool onSideConnection) {
    constexpr std::size_t kMostWork = 8;  // what has ended long ago is still in the list
    if (impl_->work.size() >= kMostWork) {
        std::erase_if(impl_->work, [](const Impl::Work& each) {
            const auto known = each.work.lock();
            return known == nullptr || known->IsDone();
        });
    }
    impl_->work.push_back({std::move(work), onSideConnection});
}

void Session::FinishBackgroundWork(LONG waitSeconds) {
    impl_->FinishWork(false, waitSeconds);
}

PhysicalConnection& Session::Physical() const noexcept {
    return impl_->Physical();
}

const std::string& Session::DisplayString() const noexcept {
    return impl_->facts->display;
}

}  // namespace tk::ado
