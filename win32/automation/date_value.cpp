#include "win32/automation/date_value.h"

#include <cmath>

namespace tk::automation {

bool SplitDate(DATE date, DayAndTime& parts) noexcept {
    if (!IsDate(date)) return false;
    const double whole = std::trunc(date);
    parts.day = static_cast<int>(whole);
    parts.seconds = static_cast<int>(std::floor(std::fabs(date - whole) * kSecondsPerDay + 0.5));
    if (parts.seconds < kSecondsPerDay) return true;
    if (parts.day == VTDATEGRE_MAX) {
        parts.seconds = kSecondsPerDay - 1;
    } else {
        parts.seconds = 0;
        ++parts.day;
    }
    return true;
}

}  // namespace tk::automation
