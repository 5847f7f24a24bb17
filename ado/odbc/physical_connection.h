// ado/odbc/physical_connection.h - one connection of the driver manager, with what is known about its state, so that
// the session cache can tell whether it may be used again.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ado/odbc/driver_profile.h"
#include "ado/odbc/file_identity.h"
#include "ado/odbc/known_definitions.h"
#include "ado/odbc/odbc_handle.h"
#include "ado/odbc/spare_objects.h"
#include "ado/odbc/statement_handle.h"
#include "ado/rowset/known_results.h"

namespace tk::ado {

struct SessionFacts;

class PhysicalConnection {
public:
    /// What its first session has worked out from the connection string, for the sessions after it.
    std::shared_ptr<const SessionFacts> facts;

    struct Request {
        std::string odbcString;
        LONG loginTimeoutSeconds = 15;
        bool readOnly = false;
        const DriverProfile* likely = &FindProfile({});  // of the driver that the string names
        int lockMilliseconds = 0;                        // for LockWait
    };

    /// @throws AdoError with the driver's diagnostics
    explicit PhysicalConnection(const Request& request);

    /// Rolls back and disconnects.
    ~PhysicalConnection();
    PhysicalConnection(const PhysicalConnection&) = delete;
    PhysicalConnection& operator=(const PhysicalConnection&) = delete;

    SQLHDBC Get() const noexcept { return dbc_.Get(); }
    const DriverProfile& Profile() const noexcept { return *profile_; }
    const std::string& Quote() const noexcept { return quote_; }

    std::string InfoText(SQLUSMALLINT item) const;
    unsigned InfoNumber(SQLUSMALLINT item) const;

    /// Asks the driver whether the connection is lost.
    bool IsDead() const noexcept;

    /// How long LockWait waits; 0: not at all.
    int LockMilliseconds() const noexcept { return lockMilliseconds_; }

    /// A file database whose file is known: another connection to it sees the same.
    bool IsPlainFile() const noexcept { return file_.IsKnown(); }

    std::string CurrentCatalog() const;
    void SetCurrentCatalog(std::string_view name);

    /// A statement handle, a used one when there is one.
    std::unique_ptr<StatementHandle> TakeHandle();
    void ReturnHandle(std::unique_ptr<StatementHandle> handle) noexcept;

    /// The results that its driver has described, where that is worth remembering (DriverProfile::searchesColumns).
    KnownResults& Results() noexcept { return results_; }

    /// Around a statement that may define what names mean, and around the end of a transaction with such ones: the
    /// connection forgets what it knows, the others look at their tables again.
    class Defining {
    public:
        Defining(PhysicalConnection& connection, bool mayDefine, bool defines) noexcept {
            if (!mayDefine) return;
            connection.ForgetDescriptions();
            bool isLikely = defines;
            if (defines) {
                connection.hasCreated_ = connection.hasCreated_ || !connection.IsOutsideTransaction();
            } else if (connection.isAutoCommit_) {
                isLikely = std::exchange(connection.hasCreated_, false);  // a text may end its transaction
            }
            if (connection.profile_->definitions != nullptr) noted_.emplace(isLikely);
        }

    private:
        std::optional<KnownDefinitions::Defining> noted_;
    };

    /// Where the driver describes tables as they were when the connection last used them (DriverProfile::definitions):
    /// whether another connection may have changed them since.
    bool MayBeOutdated() const noexcept { return profile_->definitions != nullptr && definitions_.MayBeOutdated(); }

    /// There: makes it see what others have changed (KnownDefinitions::Follow). Prepared handles are dropped then.
    bool FollowDefinitions(const std::string& text) { return Follow(text, !IsOutsideTransaction()); }

    /// There, before a query: the same in a transaction, in which the tables stay as they are now. ReleaseDefinitions
    /// ends it; where one was open before, its owner does.
    void HoldDefinitions(const std::string& text);
    void ReleaseDefinitions() noexcept;

    /// There, for a connection that steps through the rows of one query: until Reset.
    void HoldForRows();

    /// A database may have undone a transaction over a failure, and with it what the connection itself has defined.
    void NoteFailure() noexcept;

    /// As far as is known.
    bool IsOutsideTransaction() const noexcept { return isAutoCommit_ && !isChanged_; }

    /// A handle that is prepared for the text, or null; and giving one back for the next time.
    std::unique_ptr<StatementHandle> TakePrepared(std::string_view text) noexcept;
    void ReturnPrepared(std::string text, std::unique_ptr<StatementHandle> handle) noexcept;

    /// What the session leaves behind decides whether the connection may be used again.
    void MarkChanged() noexcept { isChanged_ = true; }
    void MarkBroken() noexcept { isBroken_ = true; }
    bool IsChanged() const noexcept { return isChanged_; }
    bool IsBroken() const noexcept { return isBroken_; }

    /// Rolls back, sets auto-commit and isolation back. False when the connection is not fit for another session.
    bool Reset() noexcept;

    /// Asks the server for a sign of life; true for a file database.
    bool Answers() noexcept;

    /// Before another session gets it: still connected, and to the same database.
    /// @param idle, now  by a steady clock, in microseconds
    bool IsUsable(long long idle, long long now) noexcept;

    void SetAutoCommit(bool on);
    void SetIsolation(SQLUINTEGER isolation);
    SQLUINTEGER Isolation() const noexcept;
    void EndTransaction(SQLSMALLINT completion);

    /// Sees to it that a transaction is open, as the driver believes. True when the one that was open had ended behind
    /// our back; false also where that is not known.
    bool RejoinTransaction() noexcept;

    /// What the server says the last statement failed with, where it has a question for that.
    DiagnosticRecord LastFailure() const noexcept;

    /// Runs a text without rows. False when it fails.
    bool RunText(const char* sql) noexcept;

    /// For TimeLimit::Variable.
    void SetTimeLimitVariable(LONG seconds) {
        if (profile_->timeLimit == TimeLimit::Variable && seconds != timeLimit_) SendTimeLimit(seconds);
    }

private:
    void ForgetDescriptions() noexcept;
    void DropPrepared() noexcept;
    bool Follow(const std::string& text, bool isInTransaction);
    void SendTimeLimit(LONG seconds);
    void RunSimple(const std::string& sql);

    OdbcConnection dbc_;
    const DriverProfile* profile_ = nullptr;
    std::string quote_;
    FileIdentity file_;  // of a file database; none when it is in memory
    SQLUINTEGER firstIsolation_ = 0;
    SQLUINTEGER isolation_ = 0;
    LONG timeLimit_ = 0;
    int lockMilliseconds_;
    bool isAutoCommit_ = true;
    bool isHolding_ = false;
    bool hasDefined_ = false;  // in the transaction, as far as its texts tell
    bool hasCreated_ = false;  // in a transaction, for certain
    KnownDefinitions definitions_;
    std::atomic<bool> isChanged_ = false;  // a fetch thread may set them
    std::atomic<bool> isBroken_ = false;
    KnownResults results_;
    static constexpr std::size_t kKeptHandles = 4;
    SpareObjects<StatementHandle, kKeptHandles> handles_;
    std::mutex preparedMutex_;  // a fetch thread returns its handle while the session takes another
    std::vector<std::pair<std::string, std::unique_ptr<StatementHandle>>> prepared_;  // the oldest first
};

}  // namespace tk::ado
