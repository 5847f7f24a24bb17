#include <cmath>

#include "afx/date_line.h"
#include "afx_datetime.h"

namespace {

// A span of days that two dates of the range can be apart, and its negative.
constexpr double kMaxSpan = tk::afx::kLastDay - tk::afx::kFirstDay + 1;
constexpr long kSecondsPerDay = 24 * 60 * 60;

// Whole seconds; the largest possible number is far below what a double holds exactly.
long long Seconds(double span) noexcept {
    return std::llround(span * kSecondsPerDay);
}

}  // namespace

COleDateTimeSpan& COleDateTimeSpan::operator=(double dblSpanSrc) noexcept {
    m_status = std::abs(dblSpanSrc) <= kMaxSpan ? valid : invalid;  // not a number is neither
    m_span = m_status == valid ? dblSpanSrc : 0;
    return *this;
}

void COleDateTimeSpan::SetDateTimeSpan(long lDays, int nHours, int nMins, int nSecs) noexcept {
    *this = static_cast<double>(lDays) + static_cast<double>(nHours) / 24 + static_cast<double>(nMins) / (24 * 60) +
            static_cast<double>(nSecs) / kSecondsPerDay;
}

long COleDateTimeSpan::GetDays() const noexcept {
    return static_cast<long>(Seconds(m_span) / kSecondsPerDay);
}
long COleDateTimeSpan::GetHours() const noexcept {
    return static_cast<long>(Seconds(m_span) % kSecondsPerDay / 3600);
}
long COleDateTimeSpan::GetMinutes() const noexcept {
    return static_cast<long>(Seconds(m_span) % 3600 / 60);
}
long COleDateTimeSpan::GetSeconds() const noexcept {
    return static_cast<long>(Seconds(m_span) % 60);
}

namespace {

COleDateTimeSpan Joined(const COleDateTimeSpan& first, const COleDateTimeSpan& second, double span) noexcept {
    COleDateTimeSpan result;
    if (first.m_status == COleDateTimeSpan::valid && second.m_status == COleDateTimeSpan::valid) {
        result = span;
    } else {
        const bool isNull = first.m_status == COleDateTimeSpan::null || second.m_status == COleDateTimeSpan::null;
        result.m_status = isNull ? COleDateTimeSpan::null : COleDateTimeSpan::invalid;
    }
    return result;
}

}  // namespace

COleDateTimeSpan COleDateTimeSpan::operator+(const COleDateTimeSpan& other) const noexcept {
    return Joined(*this, other, m_span + other.m_span);
}

COleDateTimeSpan COleDateTimeSpan::operator-(const COleDateTimeSpan& other) const noexcept {
    return Joined(*this, other, m_span - other.m_span);
}

COleDateTimeSpan COleDateTimeSpan::operator-() const noexcept {
    COleDateTimeSpan result(*this);
    result.m_span = -m_span;
    return result;
}

CString COleDateTimeSpan::Format(LPCTSTR pFormat) const {
    CString text;
    if (m_status == null) return text;
    if (m_status == invalid) return "Invalid DateTimeSpan";
    for (const char* at = pFormat == nullptr ? "" : pFormat; *at != '\0'; ++at) {
        const char letter = *at == '%' ? at[1] : '\0';
        if (letter == '\0') {
            text += *at;
            continue;
        }
        ++at;
        if (letter == 'D')
            text.AppendFormat("%ld", GetDays());
        else if (letter == 'H')
            text.AppendFormat("%02ld", GetHours());
        else if (letter == 'M')
            text.AppendFormat("%02ld", GetMinutes());
        else if (letter == 'S')
            text.AppendFormat("%02ld", GetSeconds());
        else if (letter == '%')
            text += '%';
        else
            text.AppendFormat("%%%c", letter);
    }
    return text;
}
