#include "ado/odbc/definition_hold.h"

#include "ado/odbc/background_work.h"
#include "ado/odbc/coarse_clock.h"

namespace tk::ado {

int DefinitionHold::Begin(const std::string& sql, LONG seconds) {
    const std::int64_t start = CoarseNow();
    const Patience patience(seconds, running_);
    End();
    while (!isHeld_) {
        try {
            connection_.HoldDefinitions(sql);
            isHeld_ = true;
        } catch (const AdoError& error) {
            connection_.ReleaseDefinitions();
            if (patience.IsOver()) throw patience.IsCancelled() ? MakeCancelledError() : MakeWaitedError();
            if (!wait_.IsOfLock(error)) break;
            if (!wait_.GoesOn(error)) throw;
        } catch (...) {
            connection_.ReleaseDefinitions();
            throw;
        }
    }
    if (patience.IsCancelled()) throw MakeCancelledError();
    return static_cast<int>((CoarseNow() - start) / kMillisecond);
}

}  // namespace tk::ado
