#include "afx_datetime.h"

#include "afx/date_line.h"
#include "afx/text_codes.h"

using tk::afx::DateFromLine;
using tk::afx::IsInRange;
using tk::afx::LineFromDate;

COleDateTime& COleDateTime::operator=(const VARIANT& varSrc) {
    m_dt = 0;
    m_status = valid;
    if (varSrc.vt == VT_EMPTY || varSrc.vt == VT_NULL) {
        m_status = null;
        return *this;
    }
    if (varSrc.vt == VT_DATE) return *this = varSrc.date;
    VARIANT date;
    VariantInit(&date);
    if (FAILED(VariantChangeType(&date, const_cast<VARIANT*>(&varSrc), 0, VT_DATE))) {
        m_status = invalid;
        return *this;
    }
    return *this = date.date;
}

COleDateTime& COleDateTime::operator=(DATE dtSrc) noexcept {
    m_status = IsInRange(dtSrc) ? valid : invalid;
    m_dt = dtSrc;
    return *this;
}

COleDateTime& COleDateTime::operator=(std::time_t timeSrc) noexcept {
    // 100 ns units from 1601 to 1970, and a count that still fits them.
    constexpr long long kEpoch = 116444736000000000;
    constexpr long long kLastSecond = 253402300799;  // the end of 9999
    if (timeSrc < 0 || timeSrc > kLastSecond) {
        m_dt = 0;
        m_status = invalid;
        return *this;
    }
    const auto units = static_cast<ULONGLONG>(timeSrc * 10000000LL + kEpoch);
    return *this = FILETIME{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

COleDateTime& COleDateTime::operator=(const SYSTEMTIME& systimeSrc) noexcept {
    SetDateTime(systimeSrc.wYear, systimeSrc.wMonth, systimeSrc.wDay, systimeSrc.wHour, systimeSrc.wMinute,
                systimeSrc.wSecond);
    return *this;
}

COleDateTime& COleDateTime::operator=(const FILETIME& filetimeSrc) noexcept {
    FILETIME local;
    SYSTEMTIME parts;
    if (FileTimeToLocalFileTime(&filetimeSrc, &local) && FileTimeToSystemTime(&local, &parts)) return *this = parts;
    m_dt = 0;
    m_status = invalid;
    return *this;
}

COleDateTime::COleDateTime(WORD wDosDate, WORD wDosTime) noexcept {
    if (!DosDateTimeToVariantTime(wDosDate, wDosTime, &m_dt)) m_status = invalid;
}

COleDateTime COleDateTime::GetCurrentTime() noexcept {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return COleDateTime(now);
}

// ---- parts

BOOL COleDateTime::GetAsSystemTime(SYSTEMTIME& sysTime) const noexcept {
    return m_status == valid && VariantTimeToSystemTime(m_dt, &sysTime);
}

namespace {

int Part(const COleDateTime& date, WORD SYSTEMTIME::*part) noexcept {
    SYSTEMTIME parts;
    return date.GetAsSystemTime(parts) ? parts.*part : static_cast<int>(COleDateTime::error);
}

bool IsLeap(int year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

// Days of the common year before a month; February's 29th counts from March on.
int DaysBefore(int year, int month) noexcept {
    return kDaysBefore[month - 1] + (month > 2 && IsLeap(year) ? 1 : 0);
}

bool IsDate(int year, int month, int day) noexcept {
    if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1) return false;
    return day <= kDaysBefore[month] - kDaysBefore[month - 1] + (month == 2 && IsLeap(year) ? 1 : 0);
}

double DayNumber(int year, int month, int day) noexcept {
    const long past = year - 1;
    constexpr long kDaysTo1899 = 693593;  // from 1 January 1 to 30 December 1899
    const long days = past * 365 + past / 4 - past / 100 + past / 400 + DaysBefore(year, month) + day - 1;
    return static_cast<double>(days - kDaysTo1899);
}

}  // namespace

int COleDateTime::GetYear() const noexcept {
    return Part(*this, &SYSTEMTIME::wYear);
}
int COleDateTime::GetMonth() const noexcept {
    return Part(*this, &SYSTEMTIME::wMonth);
}
int COleDateTime::GetDay() const noexcept {
    return Part(*this, &SYSTEMTIME::wDay);
}
int COleDateTime::GetHour() const noexcept {
    return Part(*this, &SYSTEMTIME::wHour);
}
int COleDateTime::GetMinute() const noexcept {
    return Part(*this, &SYSTEMTIME::wMinute);
}
int COleDateTime::GetSecond() const noexcept {
    return Part(*this, &SYSTEMTIME::wSecond);
}

int COleDateTime::GetDayOfWeek() const noexcept {
    const int day = Part(*this, &SYSTEMTIME::wDayOfWeek);
    return day == error ? day : day + 1;
}

int COleDateTime::GetDayOfYear() const noexcept {
    SYSTEMTIME parts;
    return GetAsSystemTime(parts) ? DaysBefore(parts.wYear, parts.wMonth) + parts.wDay : static_cast<int>(error);
}

int COleDateTime::SetDateTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec) noexcept {
    m_dt = 0;
    m_status = invalid;
    if (!IsDate(nYear, nMonth, nDay)) return 1;
    if (nHour < 0 || nHour > 23 || nMin < 0 || nMin > 59 || nSec < 0 || nSec > 59) return 1;
    const double time = ((nHour * 60 + nMin) * 60 + nSec) / 86400.0;
    const double day = DayNumber(nYear, nMonth, nDay);
    m_dt = day < 0 ? day - time : day + time;
    m_status = valid;
    return 0;
}

int COleDateTime::SetDate(int nYear, int nMonth, int nDay) noexcept {
    return SetDateTime(nYear, nMonth, nDay, 0, 0, 0);
}

int COleDateTime::SetTime(int nHour, int nMin, int nSec) noexcept {
    return SetDateTime(1899, 12, 30, nHour, nMin, nSec);
}

BOOL COleDateTime::ParseDateTime(LPCTSTR lpszDate, DWORD dwFlags, LCID lcid) {
    m_dt = 0;
    m_status = invalid;
    const BSTR text = tk::afx::NewBstr(lpszDate == nullptr ? "" : lpszDate);
    DATE date = 0;
    const HRESULT outcome = VarDateFromStr(text, lcid, dwFlags, &date);
    SysFreeString(text);
    if (FAILED(outcome)) return FALSE;
    m_dt = date;
    m_status = valid;
    return TRUE;
}

// ---- arithmetic, on the line of time

namespace {

COleDateTime Moved(const COleDateTime& date, const COleDateTimeSpan& span, double sign) noexcept {
    COleDateTime result;
    if (date.m_status == COleDateTime::valid && span.m_status == COleDateTimeSpan::valid) {
        result = DateFromLine(LineFromDate(date.m_dt) + sign * span.m_span);
    } else {
        const bool isNull = date.m_status == COleDateTime::null || span.m_status == COleDateTimeSpan::null;
        result.m_status = isNull ? COleDateTime::null : COleDateTime::invalid;
    }
    return result;
}

}  // namespace

COleDateTime COleDateTime::operator+(const COleDateTimeSpan& dateSpan) const noexcept {
    return Moved(*this, dateSpan, 1);
}

COleDateTime COleDateTime::operator-(const COleDateTimeSpan& dateSpan) const noexcept {
    return Moved(*this, dateSpan, -1);
}

COleDateTimeSpan COleDateTime::operator-(const COleDateTime& date) const noexcept {
    COleDateTimeSpan span;
    if (m_status == valid && date.m_status == valid) {
        span = LineFromDate(m_dt) - LineFromDate(date.m_dt);
    } else {
        const bool isNull = m_status == null || date.m_status == null;
        span.m_status = isNull ? COleDateTimeSpan::null : COleDateTimeSpan::invalid;
    }
    return span;
}

BOOL COleDateTime::operator==(const COleDateTime& date) const noexcept {
    return m_status == date.m_status && LineFromDate(m_dt) == LineFromDate(date.m_dt);
}

BOOL COleDateTime::operator<(const COleDateTime& date) const noexcept {
    return LineFromDate(m_dt) < LineFromDate(date.m_dt);
}
