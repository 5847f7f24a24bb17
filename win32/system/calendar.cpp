#include "win32/system/calendar.h"

#include <time.h>

#include <algorithm>

#include "winbase.h"

namespace tk::system {
namespace {

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

constexpr bool IsLeap(int year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int kDaysBeforeMonth[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

constexpr int DaysBefore(int year, int month) noexcept {  // month 1 to 13
    return kDaysBeforeMonth[month - 1] + (month > 2 && IsLeap(year) ? 1 : 0);
}

/// Days from 1601-01-01 to January 1 of the year; 1601 opens a 400-year cycle.
constexpr std::int64_t DaysBeforeYear(int year) noexcept {
    const std::int64_t past = year - kFirstYear;
    return past * 365 + past / 4 - past / 100 + past / 400;
}
static_assert(DaysBeforeYear(1970) * 86'400 == kUnixEpochTicks / kTicksPerSecond);

bool IsDate(const SYSTEMTIME& time) noexcept {
    if (time.wYear < kFirstYear || time.wYear > kLastYear || time.wMonth < 1 || time.wMonth > 12) return false;
    const int days = DaysBefore(time.wYear, time.wMonth + 1) - DaysBefore(time.wYear, time.wMonth);
    return time.wDay >= 1 && time.wDay <= days && time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 &&
           time.wMilliseconds < 1000;
}

/// Seconds to add to UTC for local time at that moment.
std::int64_t LocalOffset(std::int64_t unixSeconds) noexcept {
    const auto moment = static_cast<time_t>(unixSeconds);
    tm local{};
    return localtime_r(&moment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

std::int64_t UnixSeconds(std::int64_t ticks) noexcept {
    const std::int64_t since = ticks - kUnixEpochTicks;
    return since / kTicksPerSecond - (since % kTicksPerSecond < 0 ? 1 : 0);
}

BOOL InvalidParameter() {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, FILETIME* lpFileTime) {
    if (!IsDate(*lpSystemTime)) return InvalidParameter();
    const SYSTEMTIME& time = *lpSystemTime;
    const std::int64_t days = DaysBeforeYear(time.wYear) + DaysBefore(time.wYear, time.wMonth) + time.wDay - 1;
    const std::int64_t seconds = time.wHour * 3600 + time.wMinute * 60 + time.wSecond;
    *lpFileTime = FromTicks(days * kTicksPerDay + seconds * kTicksPerSecond + time.wMilliseconds * 10'000);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, SYSTEMTIME* lpSystemTime) {
    const std::int64_t ticks = ToTicks(*lpFileTime);
    if (ticks < 0) return InvalidParameter();
    const std::int64_t days = ticks / kTicksPerDay;
    const std::int64_t rest = ticks % kTicksPerDay;

    auto year = static_cast<int>(kFirstYear + days * 400 / 146'097);
    while (DaysBeforeYear(year) > days)
        --year;
    while (DaysBeforeYear(year + 1) <= days)
        ++year;
    const auto dayOfYear = static_cast<int>(days - DaysBeforeYear(year));
    int month = std::min(dayOfYear / 28 + 1, 12);
    while (DaysBefore(year, month) > dayOfYear)
        --month;

    lpSystemTime->wYear = static_cast<WORD>(year);
    lpSystemTime->wMonth = static_cast<WORD>(month);
    lpSystemTime->wDayOfWeek = static_cast<WORD>((days + 1) % 7);  // 1601-01-01 was a Monday
    lpSystemTime->wDay = static_cast<WORD>(dayOfYear - DaysBefore(year, month) + 1);
    const auto milliseconds = static_cast<int>(rest / 10'000);
    lpSystemTime->wHour = static_cast<WORD>(milliseconds / 3'600'000);
    lpSystemTime->wMinute = static_cast<WORD>(milliseconds / 60'000 % 60);
    lpSystemTime->wSecond = static_cast<WORD>(milliseconds / 1000 % 60);
    lpSystemTime->wMilliseconds = static_cast<WORD>(milliseconds % 1000);
    return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, FILETIME* lpLocalFileTime) {
    const std::int64_t ticks = ToTicks(*lpFileTime);
    if (ticks < 0) return InvalidParameter();
    *lpLocalFileTime = FromTicks(ticks + LocalOffset(UnixSeconds(ticks)) * kTicksPerSecond);
    return TRUE;
}

BOOL LocalFileTimeToFileTime(const FILETIME* lpLocalFileTime, FILETIME* lpFileTime) {
    const std::int64_t ticks = ToTicks(*lpLocalFileTime);
    if (ticks < 0) return InvalidParameter();
    // The offset belongs to a UTC moment: guess with the local one, then correct around a change of the clocks.
    const std::int64_t local = UnixSeconds(ticks);
    const std::int64_t offset = LocalOffset(local - LocalOffset(local));
    *lpFileTime = FromTicks(ticks - offset * kTicksPerSecond);
    return TRUE;
}

LONG CompareFileTime(const FILETIME* lpFileTime1, const FILETIME* lpFileTime2) {
    const auto first = static_cast<std::uint64_t>(ToTicks(*lpFileTime1));
    const auto second = static_cast<std::uint64_t>(ToTicks(*lpFileTime2));
    return first < second ? -1 : first > second ? 1 : 0;
}
