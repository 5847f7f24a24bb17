// ado/cursor/row_transaction.h - several statements that count as one: undone together unless they are kept.
#pragma once

#include "ado/odbc/session.h"

namespace tk::ado {

/// Begins a transaction, or a part of the one that the session is in already.
class RowTransaction {
public:
    enum class Inside { Joins, IsUndone };

    /// @param inside  of a transaction of the caller's: whether what was done here is undone when it is not kept. That
    ///                costs statements of its own; where the database cannot, it is left to the transaction's owner
    /// @throws AdoError when it cannot begin, or other work of the session did not end in time
    RowTransaction(Session& session, LONG isolation, LONG timeoutSeconds, Inside inside = Inside::Joins)
        : session_(session), options_{timeoutSeconds, 0, false}, isOwn_(!session.InTransaction()) {
        if (isOwn_) {
            session_.Begin(isolation, timeoutSeconds);
        } else if (inside == Inside::IsUndone && session_.Profile().savepoint != nullptr) {
            session_.Execute(session_.Profile().savepoint->set, options_);
            savepoint_ = session_.Profile().savepoint;
        }
    }
    RowTransaction(const RowTransaction&) = delete;
    RowTransaction& operator=(const RowTransaction&) = delete;
    ~RowTransaction() {
        try {
            if (isOwn_) session_.Rollback(options_.timeoutSeconds);
            if (savepoint_ != nullptr) session_.Execute(savepoint_->undo, options_);
        } catch (const AdoError&) {
            // The failure that led here is the one to be reported.
        }
    }

    bool IsOwn() const noexcept { return isOwn_; }

    /// @throws AdoError when the database refuses; what was done is undone then
    void Keep() {
        if (isOwn_) session_.Commit(options_.timeoutSeconds);
        isOwn_ = false;
        if (savepoint_ != nullptr && savepoint_->release != nullptr) session_.Execute(savepoint_->release, options_);
        savepoint_ = nullptr;
    }

private:
    Session& session_;
    ExecuteOptions options_;
    bool isOwn_;
    const Savepoint* savepoint_ = nullptr;
};

}  // namespace tk::ado
