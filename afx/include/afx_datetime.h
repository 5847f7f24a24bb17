// afx_datetime.h - COleDateTime, a point in time of the automation kind, and COleDateTimeSpan, a distance between two.
//
//   COleDateTime day(2003, 7, 4, 13, 5, 9);
//   day += COleDateTimeSpan(1, 0, 0, 0);
//   CString text = day.Format("%Y-%m-%d %H:%M:%S");
//
// A date counts days from 30 December 1899; the fraction, without its sign, is the time of day, so -1.25 is 06:00 on
// 29 December 1899. Sums, differences and comparisons are made on the line of time, not on these numbers. The range is
// 1 January 100 to 31 December 9999; a value outside it has the status invalid.
// Threads: as for any value.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <ctime>

#include "afx_export.h"
#include "afxstr.h"

#undef GetCurrentTime  // a macro of the platform for its tick counter

#ifndef LANG_USER_DEFAULT
#define LANG_USER_DEFAULT 0x400
#endif

class AFX_API COleDateTimeSpan {
public:
    enum DateTimeSpanStatus { valid = 0, invalid = 1, null = 2 };

    COleDateTimeSpan() noexcept = default;
    COleDateTimeSpan(double dblSpanSrc) noexcept { *this = dblSpanSrc; }
    COleDateTimeSpan(long lDays, int nHours, int nMins, int nSecs) noexcept {
        SetDateTimeSpan(lDays, nHours, nMins, nSecs);
    }
    COleDateTimeSpan& operator=(double dblSpanSrc) noexcept;

    DateTimeSpanStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(DateTimeSpanStatus status) noexcept { m_status = status; }
    void SetDateTimeSpan(long lDays, int nHours, int nMins, int nSecs) noexcept;

    /// The whole span in one unit; 0 unless valid.
    double GetTotalDays() const noexcept { return m_span; }
    double GetTotalHours() const noexcept { return m_span * 24; }
    double GetTotalMinutes() const noexcept { return m_span * 24 * 60; }
    double GetTotalSeconds() const noexcept { return m_span * 24 * 60 * 60; }
    /// The parts of the span, rounded to the second; all of them negative for a negative one.
    long GetDays() const noexcept;
    long GetHours() const noexcept;
    long GetMinutes() const noexcept;
    long GetSeconds() const noexcept;

    COleDateTimeSpan operator+(const COleDateTimeSpan& other) const noexcept;
    COleDateTimeSpan operator-(const COleDateTimeSpan& other) const noexcept;
    COleDateTimeSpan& operator+=(const COleDateTimeSpan& other) noexcept { return *this = *this + other; }
    COleDateTimeSpan& operator-=(const COleDateTimeSpan& other) noexcept { return *this = *this - other; }
    COleDateTimeSpan operator-() const noexcept;
    operator double() const noexcept { return m_span; }

    BOOL operator==(const COleDateTimeSpan& other) const noexcept {
        return m_status == other.m_status && m_span == other.m_span;
    }
    BOOL operator!=(const COleDateTimeSpan& other) const noexcept { return !(*this == other); }
    BOOL operator<(const COleDateTimeSpan& other) const noexcept { return m_span < other.m_span; }
    BOOL operator>(const COleDateTimeSpan& other) const noexcept { return m_span > other.m_span; }
    BOOL operator<=(const COleDateTimeSpan& other) const noexcept { return m_span <= other.m_span; }
    BOOL operator>=(const COleDateTimeSpan& other) const noexcept { return m_span >= other.m_span; }

    /// %D whole days, %H %M %S the rest with two digits, %% a percent sign; other letters stay as they are.
    /// A null span gives "", an invalid one "Invalid DateTimeSpan".
    CString Format(LPCTSTR pFormat) const;

    double m_span = 0;
    DateTimeSpanStatus m_status = valid;
};

class AFX_API COleDateTime {
public:
    enum DateTimeStatus { error = -1, valid = 0, invalid = 1, null = 2 };

    COleDateTime() noexcept = default;  // 0, valid: midnight of 30 December 1899
    COleDateTime(const VARIANT& varSrc) { *this = varSrc; }
    COleDateTime(DATE dtSrc) noexcept { *this = dtSrc; }
    /// Local time of a count of seconds since 1970 UTC.
    COleDateTime(std::time_t timeSrc) noexcept { *this = timeSrc; }
    COleDateTime(const SYSTEMTIME& systimeSrc) noexcept { *this = systimeSrc; }
    COleDateTime(const FILETIME& filetimeSrc) noexcept { *this = filetimeSrc; }
    COleDateTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec) noexcept {
        SetDateTime(nYear, nMonth, nDay, nHour, nMin, nSec);
    }
    COleDateTime(WORD wDosDate, WORD wDosTime) noexcept;

    /// VT_EMPTY and VT_NULL give the status null; what is no date gives invalid.
    COleDateTime& operator=(const VARIANT& varSrc);
    COleDateTime& operator=(DATE dtSrc) noexcept;
    COleDateTime& operator=(std::time_t timeSrc) noexcept;
    COleDateTime& operator=(const SYSTEMTIME& systimeSrc) noexcept;
    /// The file time is UTC; the result is local.
    COleDateTime& operator=(const FILETIME& filetimeSrc) noexcept;

    static COleDateTime GetCurrentTime() noexcept;

    DateTimeStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(DateTimeStatus status) noexcept { m_status = status; }

    /// The parts, rounded to the second; error (-1) unless the status is valid.
    int GetYear() const noexcept;
    int GetMonth() const noexcept;
    int GetDay() const noexcept;
    int GetHour() const noexcept;
    int GetMinute() const noexcept;
    int GetSecond() const noexcept;
    int GetDayOfWeek() const noexcept;  // 1 is Sunday
    int GetDayOfYear() const noexcept;  // 1 is 1 January
    BOOL GetAsSystemTime(SYSTEMTIME& sysTime) const noexcept;

    /// @return 0 when the value is a date, 1 when it is not: the status is then invalid
    int SetDateTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec) noexcept;
    int SetDate(int nYear, int nMonth, int nDay) noexcept;
    int SetTime(int nHour, int nMin, int nSec) noexcept;
    /// Reads a text by the rules of a locale. @return FALSE for a text that is no date; the status is then invalid
    BOOL ParseDateTime(LPCTSTR lpszDate, DWORD dwFlags = 0, LCID lcid = LANG_USER_DEFAULT);

    COleDateTime operator+(const COleDateTimeSpan& dateSpan) const noexcept;
    COleDateTime operator-(const COleDateTimeSpan& dateSpan) const noexcept;
    COleDateTime& operator+=(const COleDateTimeSpan& dateSpan) noexcept { return *this = *this + dateSpan; }
    COleDateTime& operator-=(const COleDateTimeSpan& dateSpan) noexcept { return *this = *this - dateSpan; }
    COleDateTimeSpan operator-(const COleDateTime& date) const noexcept;
    operator DATE() const noexcept { return m_dt; }

    BOOL operator==(const COleDateTime& date) const noexcept;
    BOOL operator!=(const COleDateTime& date) const noexcept { return !(*this == date); }
    BOOL operator<(const COleDateTime& date) const noexcept;
    BOOL operator>(const COleDateTime& date) const noexcept { return date < *this; }
    BOOL operator<=(const COleDateTime& date) const noexcept { return !(date < *this); }
    BOOL operator>=(const COleDateTime& date) const noexcept { return !(*this < date); }

    /// The locale's own form. A null date gives "", an invalid one "Invalid DateTime".
    CString Format(DWORD dwFlags = 0, LCID lcid = LANG_USER_DEFAULT) const;
    /// strftime's letters with English names: aAbBcdHIjmMpSUwWxXyY and %%; %#d and the like drop leading zeros.
    /// Others stay as they are.
    CString Format(LPCTSTR lpszFormat) const;

    DATE m_dt = 0;
    DateTimeStatus m_status = valid;
};
