// session/messages.h - the texts of the pool, in GBK.
#pragma once

namespace tk::session {

// Where a fault happened, as GetExceptionError says it.
extern const char kServerName[];
extern const char kClientName[];

extern const char kNotOpen[];        // the pool, or the client's recordset
extern const char kNoConnection[];   // the client holds none
extern const char kFullyOccupied[];  // nothing to lend
extern const char kLendingFailed[];  // the title of the warning about it

extern const char kBanner[];

}  // namespace tk::session
