#include <dlfcn.h>
#include <time.h>

#include <atomic>

#include "tests/win32/system/support.h"

namespace {

std::atomic<DWORD> tickOffset = 0;
std::atomic<LONGLONG> systemTimeOffset = 0;

template <class Function>
Function* Original(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

LONGLONG Ticks(const FILETIME& time) {
    return static_cast<LONGLONG>(static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

FILETIME Time(LONGLONG ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(static_cast<ULONGLONG>(ticks) >> 32)};
}

std::string Text(const SYSTEMTIME& time) {
    char text[80];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u/%u %02u:%02u:%02u.%03u", time.wYear, time.wMonth, time.wDay,
                  time.wDayOfWeek, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text;
}

}  // namespace

// The program's own clocks, in front of the library's: time moves when the test says so.
DWORD GetTickCount() {
    static auto* const original = Original<DWORD()>("GetTickCount");
    return original() + tickOffset;
}

void GetSystemTimeAsFileTime(FILETIME* lpSystemTimeAsFileTime) {
    static auto* const original = Original<void(FILETIME*)>("GetSystemTimeAsFileTime");
    original(lpSystemTimeAsFileTime);
    *lpSystemTimeAsFileTime = Time(Ticks(*lpSystemTimeAsFileTime) + systemTimeOffset);
}

TEST(Clock, OfTheProgramStandsInFrontOfTheLibrarysOwn) {
    HMODULE module = LoadLibrary(TINY_SERVER);
    ASSERT_NE(module, nullptr);
    const auto tickCount =
        reinterpret_cast<DWORD (*)()>(reinterpret_cast<void*>(GetProcAddress(module, "TinyTickCount")));
    const DWORD before = tickCount();
    tickOffset = 180'000;
    EXPECT_GE(tickCount() - before, 180'000u);
    EXPECT_LT(tickCount() - before, 240'000u);
    tickOffset = 0;
    FreeLibrary(module);
}

TEST(Clock, OfTheSystemMovesAllFormsTogether) {
    SYSTEMTIME now;
    SYSTEMTIME later;
    GetSystemTime(&now);
    systemTimeOffset = 3'650LL * 86'400 * 10'000'000;
    GetSystemTime(&later);
    SYSTEMTIME local;
    GetLocalTime(&local);
    systemTimeOffset = 0;
    FILETIME first;
    FILETIME second;
    ASSERT_TRUE(SystemTimeToFileTime(&now, &first));
    ASSERT_TRUE(SystemTimeToFileTime(&later, &second));
    const LONGLONG days = (Ticks(second) - Ticks(first)) / 10'000'000 / 86'400;
    EXPECT_EQ(days, 3'650);
    EXPECT_GE(local.wYear, later.wYear - 1);
}

TEST(Clock, TicksAreMillisecondsSinceTheStart) {
    timespec boot{};
    clock_gettime(CLOCK_BOOTTIME, &boot);
    const auto expected = static_cast<ULONGLONG>(boot.tv_sec) * 1000 + static_cast<ULONGLONG>(boot.tv_nsec) / 1'000'000;
    EXPECT_GE(GetTickCount64(), expected);
    EXPECT_LT(GetTickCount64(), expected + 60'000);
    EXPECT_LT(static_cast<DWORD>(GetTickCount() - static_cast<DWORD>(expected)), 60'000u);
}

TEST(Clock, CounterAdvancesAtItsFrequency) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER first;
    LARGE_INTEGER second;
    ASSERT_TRUE(QueryPerformanceFrequency(&frequency));
    ASSERT_TRUE(QueryPerformanceCounter(&first));
    Sleep(20);
    ASSERT_TRUE(QueryPerformanceCounter(&second));
    const double seconds =
        static_cast<double>(second.QuadPart - first.QuadPart) / static_cast<double>(frequency.QuadPart);
    EXPECT_GE(seconds, 0.020);
    EXPECT_LT(seconds, 30.0);
}

TEST(Clock, CurrentTimeIsNow) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const LONGLONG unix = Ticks(now) / 10'000'000 - 11'644'473'600;
    EXPECT_NEAR(static_cast<double>(unix), static_cast<double>(time(nullptr)), 2.0);
}

TEST(FileTime, AndItsPartsAreTurnedIntoEachOther) {
    static const struct {
        const char* label;
        LONGLONG ticks;
        const char* parts;
    } kRows[] = {
        {"the first day", 0, "1601-01-01/1 00:00:00.000"},
        {"the last tick of it is cut to milliseconds", 863'999'999'999, "1601-01-01/1 23:59:59.999"},
        {"the start of Unix time", 116'444'736'000'000'000, "1970-01-01/4 00:00:00.000"},
        {"a leap day", 125'962'560'000'000'000, "2000-02-29/2 00:00:00.000"},
        {"no leap day in 1900", 94'404'960'000'000'000, "1900-02-28/3 00:00:00.000"},
        {"the day after it", 94'405'824'000'000'000, "1900-03-01/4 00:00:00.000"},
        {"a moment", 127'017'687'671'230'000, "2003-07-04/5 05:06:07.123"},
        {"the last second of a year", 127'490'111'990'000'000, "2004-12-31/5 23:59:59.000"},
        {"the last moment there is", 0x7FFFFFFFFFFFFFFF, "30828-09-14/4 02:48:05.477"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const FILETIME time = Time(row.ticks);
        SYSTEMTIME parts;
        ASSERT_TRUE(FileTimeToSystemTime(&time, &parts));
        EXPECT_EQ(Text(parts), row.parts);
        if (parts.wYear > 30827) continue;
        FILETIME back;
        ASSERT_TRUE(SystemTimeToFileTime(&parts, &back));
        EXPECT_EQ(Ticks(back), row.ticks / 10'000 * 10'000);
    }
}

TEST(FileTime, OfEveryDayOfFourCenturiesComesBack) {
    SYSTEMTIME before{};
    for (LONGLONG day = 0; day < 2 * 146'097; ++day) {
        const FILETIME time = Time(day * 864'000'000'000);
        SYSTEMTIME parts;
        ASSERT_TRUE(FileTimeToSystemTime(&time, &parts));
        FILETIME back;
        ASSERT_TRUE(SystemTimeToFileTime(&parts, &back)) << Text(parts);
        ASSERT_EQ(Ticks(back), day * 864'000'000'000) << Text(parts);
        if (day != 0) {
            const bool nextDay = parts.wDay == before.wDay + 1 && parts.wMonth == before.wMonth;
            ASSERT_TRUE(nextDay || parts.wDay == 1) << Text(parts);
            ASSERT_EQ(parts.wDayOfWeek, (before.wDayOfWeek + 1) % 7);
        }
        before = parts;
    }
}

TEST(FileTime, RefusesWhatIsNoDate) {
    static const struct {
        const char* label;
        SYSTEMTIME parts;
    } kRows[] = {
        {"before the calendar", {1600, 12, 0, 31, 0, 0, 0, 0}},
        {"behind it", {30828, 1, 0, 1, 0, 0, 0, 0}},
        {"month 0", {2003, 0, 0, 1, 0, 0, 0, 0}},
        {"month 13", {2003, 13, 0, 1, 0, 0, 0, 0}},
        {"day 0", {2003, 1, 0, 0, 0, 0, 0, 0}},
        {"April 31", {2003, 4, 0, 31, 0, 0, 0, 0}},
        {"February 29", {2003, 2, 0, 29, 0, 0, 0, 0}},
        {"February 29, 1900", {1900, 2, 0, 29, 0, 0, 0, 0}},
        {"hour 24", {2003, 1, 0, 1, 24, 0, 0, 0}},
        {"minute 60", {2003, 1, 0, 1, 0, 60, 0, 0}},
        {"second 60", {2003, 1, 0, 1, 0, 0, 60, 0}},
        {"1000 ms", {2003, 1, 0, 1, 0, 0, 0, 1000}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(0);
        FILETIME time{1, 2};
        EXPECT_FALSE(SystemTimeToFileTime(&row.parts, &time));
        EXPECT_EQ(GetLastError(), 87u);
    }
    const FILETIME negative = Time(-1);
    SYSTEMTIME parts;
    EXPECT_FALSE(FileTimeToSystemTime(&negative, &parts));
    FILETIME other;
    EXPECT_FALSE(FileTimeToLocalFileTime(&negative, &other));
    EXPECT_FALSE(LocalFileTimeToFileTime(&negative, &other));
}

TEST(FileTime, IsLocalByTheZoneOfThatMoment) {
    const tk::test::Variable zone("TZ", "CST-8");
    tzset();
    const FILETIME utc = Time(127'017'687'670'000'000);  // 2003-07-04 05:06:07
    FILETIME local;
    FILETIME back;
    ASSERT_TRUE(FileTimeToLocalFileTime(&utc, &local));
    EXPECT_EQ(Ticks(local) - Ticks(utc), 8 * 3'600 * 10'000'000LL);
    ASSERT_TRUE(LocalFileTimeToFileTime(&local, &back));
    EXPECT_EQ(CompareFileTime(&utc, &back), 0);
    EXPECT_EQ(CompareFileTime(&utc, &local), -1);
    EXPECT_EQ(CompareFileTime(&local, &utc), 1);
}
