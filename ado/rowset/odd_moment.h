// ado/rowset/odd_moment.h - dates and timestamps that a driver gives as others: "infinity" and years of five digits
// come as today's date or as the last second of 9999, years before our era as negative ones.
//
// What the driver makes of the same text as an interval and as a number shows which it is. One thing does not show: a
// date (not a timestamp) before our era comes as the same date of our era.
#pragma once

#include <optional>
#include <string>

#include "ado/odbc/statement_impl.h"
#include "ado/rowset/moment_fields.h"

namespace tk::ado {

/// Which structures are worth asking again about; made after the block of rows was fetched.
class DoubtfulMoments {
public:
    bool Has(const SQL_DATE_STRUCT& date) noexcept { return IsToday(date.month, date.day); }
    bool Has(const SQL_TIMESTAMP_STRUCT& stamp) noexcept {
        if (stamp.hour == 0 && stamp.minute == 0 && stamp.second == 0 && IsToday(stamp.month, stamp.day)) return true;
        return stamp.year <= 0 || (stamp.year == 9999 && stamp.month == 12 && stamp.day == 31 && stamp.hour == 23 &&
                                   stamp.minute == 59 && stamp.second == 59 && stamp.fraction == 0);
    }

private:
    bool IsToday(SQLUSMALLINT month, SQLUSMALLINT day) noexcept {
        if (today_ == 0) FindToday();
        const unsigned both = month * 32u + day;
        return both == today_ || both == before_;
    }
    void FindToday() noexcept;

    unsigned today_ = 0;   // not asked for yet: few timestamps are of midnight
    unsigned before_ = 0;  // just after midnight: the rows may have been fetched before it
};

/// The text of a moment that no structure holds; nullopt for one that is what it looks like.
/// @param row  of the current block, from 0
std::optional<std::string> ReadOddMoment(Statement::Impl& statement, std::size_t row, int column);

}  // namespace tk::ado
