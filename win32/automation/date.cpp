// DATE values and their parts: system time, DOS time, and parts with the day of the year.
#include "win32/automation/date_value.h"

using namespace tk::automation;

namespace {

constexpr int kDosFirstYear = 1980;
constexpr int kDosLastYear = 2099;

bool IsTime(int hour, int minute, int second) {
    return hour <= 23 && minute <= 59 && second <= 59;
}

// Day 0 and days up to 31 that the month does not have move into the neighbouring month.
bool JoinLenient(int year, int month, int day, int seconds, DATE* date) {
    if (year > kLastYear || month < 1 || month > 12 || day > 31) return false;
    if (year < kFirstYear) year = FullYear(year);
    const int number = DayNumber({year, month, 1}) + day - 1;
    if (number < VTDATEGRE_MIN || number > VTDATEGRE_MAX) return false;
    *date = JoinDate({number, seconds});
    return true;
}

void FillSystemTime(const DayAndTime& parts, SYSTEMTIME& time) {
    const CivilDate date = DateOfDay(parts.day);
    time.wYear = static_cast<WORD>(date.year);
    time.wMonth = static_cast<WORD>(date.month);
    time.wDayOfWeek = static_cast<WORD>(WeekdayOf(parts.day));
    time.wDay = static_cast<WORD>(date.day);
    time.wHour = static_cast<WORD>(parts.seconds / 3600);
    time.wMinute = static_cast<WORD>(parts.seconds / 60 % 60);
    time.wSecond = static_cast<WORD>(parts.seconds % 60);
    time.wMilliseconds = 0;
}

}  // namespace

INT VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime) {
    DayAndTime parts;
    if (lpSystemTime == nullptr || !SplitDate(vtime, parts)) return 0;
    FillSystemTime(parts, *lpSystemTime);
    return 1;
}

INT SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime) {
    if (lpSystemTime == nullptr || pvtime == nullptr) return 0;
    const SYSTEMTIME& time = *lpSystemTime;
    if (!IsTime(time.wHour, time.wMinute, time.wSecond)) return 0;
    const int seconds = time.wHour * 3600 + time.wMinute * 60 + time.wSecond;
    return JoinLenient(time.wYear, time.wMonth, time.wDay, seconds, pvtime) ? 1 : 0;
}

INT DosDateTimeToVariantTime(USHORT wDosDate, USHORT wDosTime, DOUBLE* pvtime) {
    if (pvtime == nullptr) return 0;
    const int year = kDosFirstYear + (wDosDate >> 9);
    const int hour = wDosTime >> 11;
    const int minute = (wDosTime >> 5) & 63;
    const int second = (wDosTime & 31) * 2;
    if (year > kDosLastYear || !IsTime(hour, minute, second)) return 0;
    const int seconds = hour * 3600 + minute * 60 + second;
    return JoinLenient(year, (wDosDate >> 5) & 15, wDosDate & 31, seconds, pvtime) ? 1 : 0;
}

INT VariantTimeToDosDateTime(DOUBLE vtime, USHORT* pwDosDate, USHORT* pwDosTime) {
    DayAndTime parts;
    if (pwDosDate == nullptr || pwDosTime == nullptr || !SplitDate(vtime, parts)) return 0;
    const CivilDate date = DateOfDay(parts.day);
    if (date.year < kDosFirstYear || date.year > kDosLastYear) return 0;
    *pwDosDate = static_cast<USHORT>(((date.year - kDosFirstYear) << 9) | (date.month << 5) | date.day);
    const int hour = parts.seconds / 3600;
    const int minute = parts.seconds / 60 % 60;
    *pwDosTime = static_cast<USHORT>((hour << 11) | (minute << 5) | (parts.seconds % 60 / 2));
    return 1;
}

HRESULT VarDateFromUdateEx(UDATE* pudateIn, LCID, ULONG dwFlags, DATE* pdateOut) {
    if (pudateIn == nullptr || pdateOut == nullptr) return E_INVALIDARG;
    SYSTEMTIME time = pudateIn->st;
    if ((dwFlags & VAR_VALIDDATE) != 0) {
        // The day of the year counts from January, across the months.
        if (pudateIn->wDayOfYear < 1 || pudateIn->wDayOfYear > 366) return E_INVALIDARG;
        time.wMonth = 1;
        time.wDay = 1;
    }
    DATE date = 0;
    if (SystemTimeToVariantTime(&time, &date) == 0) return E_INVALIDARG;
    if ((dwFlags & VAR_VALIDDATE) != 0) {
        DayAndTime parts;
        SplitDate(date, parts);
        parts.day += pudateIn->wDayOfYear - 1;
        if (parts.day > VTDATEGRE_MAX) return E_INVALIDARG;
        date = JoinDate(parts);
    }
    if ((dwFlags & VAR_TIMEVALUEONLY) != 0) {
        date = static_cast<double>(time.wHour * 3600 + time.wMinute * 60 + time.wSecond) / kSecondsPerDay;
    } else if ((dwFlags & VAR_DATEVALUEONLY) != 0) {
        date = static_cast<double>(static_cast<int>(date));
    }
    *pdateOut = date;
    return S_OK;
}

HRESULT VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut) {
    return VarDateFromUdateEx(pudateIn, 0, dwFlags, pdateOut);
}

HRESULT VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut) {
    DayAndTime parts;
    if (pudateOut == nullptr || !SplitDate(dateIn, parts)) return E_INVALIDARG;
    if ((dwFlags & VAR_TIMEVALUEONLY) != 0) parts.day = 0;
    if ((dwFlags & VAR_DATEVALUEONLY) != 0) parts.seconds = 0;
    FillSystemTime(parts, pudateOut->st);
    const CivilDate date = DateOfDay(parts.day);
    pudateOut->wDayOfYear = static_cast<USHORT>(parts.day - DayNumber({date.year, 1, 1}) + 1);
    return S_OK;
}
