// afx/date_line.h - automation dates and the line of time: the two differ for negative dates, whose fraction counts
// forward.
#pragma once

#include <cmath>

namespace tk::afx {

inline constexpr double kFirstDay = -657434;  // 1 January 100
inline constexpr double kLastDay = 2958465;   // 31 December 9999
inline constexpr double kHalfSecond = 0.5 / (24 * 60 * 60);

/// Days from the start of 30 December 1899, before it negative: -1.25 (06:00 the day before) is -0.75.
inline double LineFromDate(double date) noexcept {
    const double day = std::trunc(date);
    return day + std::abs(date - day);
}

inline double DateFromLine(double line) noexcept {
    const double day = std::floor(line);
    return day < 0 ? day - (line - day) : line;
}

/// Whether a date lies in the range; not for what is no number.
inline bool IsInRange(double date) noexcept {
    const double day = std::trunc(date);
    return day >= kFirstDay && day <= kLastDay;
}

}  // namespace tk::afx
