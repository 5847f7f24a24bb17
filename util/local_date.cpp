#include <afxdisp.h>

#include "tkkernel/util.h"

namespace tk::util {
namespace {

constexpr LCID kLocale = 0x400;
constexpr int kFirstYear = 2000;
constexpr int kHoursAhead = 8;
constexpr int kHoursOfDay = 24;

struct Moment {
    int year;
    int month;
    int day;
    int hour;
};

bool IsLeap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysOf(int month, int year) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

/// From universal time to the time of eight hours ahead.
void Shift(Moment& moment) {
    moment.month %= 13;
    moment.day %= 32;
    moment.hour %= kHoursOfDay;
    // Contract: in the hour after midnight nothing is shifted.
    if (moment.month <= 0 || moment.day <= 0 || moment.hour <= 0) return;

    moment.hour += kHoursAhead;
    if (moment.hour >= kHoursOfDay) {
        moment.hour %= kHoursOfDay;
        ++moment.day;
    }
    const int days = DaysOf(moment.month, moment.year);
    if (moment.day <= days) return;
    moment.day -= days;
    // Contract: the day wraps, but the month stays what it is; only December goes on.
    if (moment.month != 12) return;
    moment.month = 1;
    ++moment.year;
}

COleDateTime Shifted(const COleDateTime& date) {
    SYSTEMTIME time;
    if (!date.GetAsSystemTime(time)) return {};
    Moment moment = {time.wYear, time.wMonth, time.wDay, time.wHour};
    Shift(moment);
    return {moment.year, moment.month, moment.day, moment.hour, time.wMinute, time.wSecond};
}

}  // namespace
}  // namespace tk::util

void GetLocalDate(char* pYear, char* pMonth, char* pDay, char* pHour) {
    using namespace tk::util;
    if (pYear == nullptr || pMonth == nullptr || pDay == nullptr || pHour == nullptr) return;
    const auto number = [](char byte) { return static_cast<int>(static_cast<signed char>(byte)); };
    Moment moment = {kFirstYear + number(*pYear), number(*pMonth), number(*pDay), number(*pHour)};
    Shift(moment);
    *pYear = static_cast<char>(moment.year - kFirstYear);  // wraps as a signed byte does
    *pMonth = static_cast<char>(moment.month);
    *pDay = static_cast<char>(moment.day);
    *pHour = static_cast<char>(moment.hour);
}

COleDateTime GetLocalDate(const char* szText) {
    COleDateTime date;
    return date.ParseDateTime(szText, 0, tk::util::kLocale) ? tk::util::Shifted(date) : COleDateTime();
}

COleDateTime GetLocalDate(COleDateTime* pDate) {
    return pDate != nullptr ? tk::util::Shifted(*pDate) : COleDateTime();
}

DATE StringToDate(const char* szText) {
    COleDateTime date;
    return date.ParseDateTime(szText, 0, tk::util::kLocale) ? date.m_dt : 0.0;
}
