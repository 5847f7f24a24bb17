#include "ado/odbc/definition_hold.h"

#include "ado/odbc/background_work.h"
#include "ado/odbc/coarse_clock.h"

namespace tk::ado {

int DefinitionHold::Begin(const std::string& sql, LONG seconds) {
    const std::int64_t start = CoarseNow();
    const Patience patience(seconds, running_);
    while (!Try(sql)) {
        if (patience.IsOver()) throw patience.IsCancelled() ? MakeCancelledError() : MakeWaitedError();
    }
    if (patience.IsCancelled()) throw MakeCancelledError();
    return static_cast<int>((CoarseNow() - start) / kMillisecond);
}

void DefinitionHold::Begin(const std::string& sql, const StatementHandle& handle) {
    End();
    while (!handle.IsEnded() && !Try(sql)) {}
}

bool DefinitionHold::Try(const std::string& sql) try {
    connection_.HoldDefinitions(sql);
    isHeld_ = true;
    return true;
} catch (const AdoError& error) {
    connection_.ReleaseDefinitions();
    if (!wait_.IsOfLock(error)) return true;
    if (!wait_.GoesOn(error)) throw;
    return false;
} catch (...) {
    connection_.ReleaseDefinitions();
    throw;
}

}  // namespace tk::ado
