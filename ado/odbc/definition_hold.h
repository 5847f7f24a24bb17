// ado/odbc/definition_hold.h - keeps the tables of a query as they are while it is executed, where the driver describes
// them as they were when the connection last used them.
//
//   DefinitionHold hold(connection, running);
//   if (connection.MayBeOutdated()) hold.Begin(sql, seconds);
//   ... execute ...                                             // until `hold` ends, or the transaction that is open
#pragma once

#include <windows.h>

#include <string>

#include "ado/odbc/lock_wait.h"
#include "ado/odbc/running_call.h"

namespace tk::ado {

class DefinitionHold {
public:
    DefinitionHold(PhysicalConnection& connection, RunningCall& running) noexcept
        : connection_(connection), running_(running), wait_(connection) {}
    ~DefinitionHold() { End(); }
    DefinitionHold(const DefinitionHold&) = delete;
    DefinitionHold& operator=(const DefinitionHold&) = delete;

    /// Waits for locks as a statement does. Holds nothing where the query itself is to say what is wrong.
    /// @param seconds  0: no limit
    /// @return the milliseconds that it took
    /// @throws AdoError when the time is over or the wait was cancelled
    int Begin(const std::string& sql, LONG seconds);

    /// Again, before a statement is made again, whose time and cancellation are the handle's: holds nothing when that
    /// is ended.
    void Begin(const std::string& sql, const StatementHandle& handle);

    bool IsHeld() const noexcept { return isHeld_; }

    /// For the statement as well: it waits for locks once.
    LockWait& Wait() noexcept { return wait_; }

private:
    /// True when there is nothing to wait for any more.
    bool Try(const std::string& sql);

    void End() noexcept {
        if (isHeld_) connection_.ReleaseDefinitions();
        isHeld_ = false;
    }

    PhysicalConnection& connection_;
    RunningCall& running_;
    LockWait wait_;
    bool isHeld_ = false;
};

}  // namespace tk::ado
