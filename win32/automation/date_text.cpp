#include "win32/automation/date_text.h"

namespace tk::automation {

namespace {

void WritePadded(int value, int digits, NumberText& text) {
    int limit = 10;
    for (int i = 1; i < digits; ++i, limit *= 10) {
        if (value < limit) text.Add('0');
    }
    WriteInteger(value, text);
}

void WriteDay(int day, const LocaleFacts& locale, NumberText& text) {
    const CivilDate date = DateOfDay(day);
    const int digits = locale.paddedDate ? 2 : 1;
    if (locale.order == DateOrder::YearMonthDay) {
        WritePadded(date.year, 4, text);
        text.Add('/');
        WritePadded(date.month, digits, text);
        text.Add('/');
        WritePadded(date.day, digits, text);
    } else {
        WritePadded(date.month, digits, text);
        text.Add('/');
        WritePadded(date.day, digits, text);
        text.Add('/');
        WritePadded(date.year, 4, text);
    }
}

void WriteTime(int seconds, const LocaleFacts& locale, NumberText& text) {
    const int hour = seconds / 3600;
    const int shown = locale.halfDayClock ? (hour + 11) % 12 + 1 : hour;
    WritePadded(shown, locale.paddedHour ? 2 : 1, text);
    text.Add(':');
    WritePadded(seconds / 60 % 60, 2, text);
    text.Add(':');
    WritePadded(seconds % 60, 2, text);
    if (locale.halfDayClock) text.Add(hour < 12 ? " AM" : " PM");
}

}  // namespace

HRESULT WriteDate(DATE date, const LocaleFacts& locale, ULONG flags, NumberText& text) noexcept {
    DayAndTime parts;
    if (!SplitDate(date, parts)) return E_INVALIDARG;
    const bool onlyOne = (flags & (VAR_TIMEVALUEONLY | VAR_DATEVALUEONLY)) != 0;
    const bool time = onlyOne ? (flags & VAR_TIMEVALUEONLY) != 0 : parts.seconds != 0 || parts.day == 0;
    const bool day = onlyOne ? (flags & VAR_TIMEVALUEONLY) == 0 : parts.day != 0;
    if (day) WriteDay(parts.day, locale, text);
    if (day && time) text.Add(' ');
    if (time) WriteTime(parts.seconds, locale, text);
    return S_OK;
}

}  // namespace tk::automation
