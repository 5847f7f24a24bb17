// ado/cursor/row_transaction.h - several statements that count as one: undone together unless they are kept.
#pragma once

#include "ado/odbc/session.h"

namespace tk::ado {

/// Begins a transaction, unless the session is in one already: that one's owner decides then.
class RowTransaction {
public:
    RowTransaction(Session& session, LONG isolation) : session_(session), own_(!session.InTransaction()) {
        if (own_) session_.Begin(isolation);
    }
    RowTransaction(const RowTransaction&) = delete;
    RowTransaction& operator=(const RowTransaction&) = delete;
    ~RowTransaction() {
        if (!own_) return;
        try {
            session_.Rollback();
        } catch (const AdoError&) {
            // The failure that led here is the one to be reported.
        }
    }

    bool IsOwn() const noexcept { return own_; }

    /// @throws AdoError when the database refuses; what was done is undone then
    void Keep() {
        if (own_) session_.Commit();
        own_ = false;
    }

private:
    Session& session_;
    bool own_;
};

}  // namespace tk::ado
