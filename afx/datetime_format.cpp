// COleDateTime::Format: strftime's letters with English names, whatever the process's locale is.
#include <cctype>

#include "afx/text_codes.h"
#include "afx_datetime.h"

namespace {

constexpr const char* kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr const char* kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};

struct Moment {
    SYSTEMTIME parts;
    int dayOfYear;  // from 1
};

int Hour12(const Moment& moment) {
    return moment.parts.wHour % 12 == 0 ? 12 : moment.parts.wHour % 12;
}

// Weeks of the year so far, a week beginning on the given day of the week.
int Week(const Moment& moment, int firstDay) {
    return (moment.dayOfYear - 1 + 7 - (moment.parts.wDayOfWeek + 7 - firstDay) % 7) / 7;
}

struct Number {
    char letter;
    int width;
    int (*value)(const Moment&);
};
constexpr Number kNumbers[] = {
    {'d', 2, [](const Moment& moment) -> int { return moment.parts.wDay; }},
    {'H', 2, [](const Moment& moment) -> int { return moment.parts.wHour; }},
    {'I', 2, Hour12},
    {'j', 3, [](const Moment& moment) { return moment.dayOfYear; }},
    {'m', 2, [](const Moment& moment) -> int { return moment.parts.wMonth; }},
    {'M', 2, [](const Moment& moment) -> int { return moment.parts.wMinute; }},
    {'S', 2, [](const Moment& moment) -> int { return moment.parts.wSecond; }},
    {'U', 2, [](const Moment& moment) { return Week(moment, 0); }},
    {'w', 1, [](const Moment& moment) -> int { return moment.parts.wDayOfWeek; }},
    {'W', 2, [](const Moment& moment) { return Week(moment, 1); }},
    {'y', 2, [](const Moment& moment) { return moment.parts.wYear % 100; }},
    {'Y', 4, [](const Moment& moment) -> int { return moment.parts.wYear; }},
};

struct Name {
    char letter;
    int length;  // bytes kept
    const char* (*text)(const Moment&);
};
constexpr Name kNames[] = {
    {'a', 3, [](const Moment& moment) { return kDays[moment.parts.wDayOfWeek]; }},
    {'A', 9, [](const Moment& moment) { return kDays[moment.parts.wDayOfWeek]; }},
    {'b', 3, [](const Moment& moment) { return kMonths[moment.parts.wMonth - 1]; }},
    {'B', 9, [](const Moment& moment) { return kMonths[moment.parts.wMonth - 1]; }},
    {'p', 2, [](const Moment& moment) { return moment.parts.wHour < 12 ? "AM" : "PM"; }},
    {'%', 1, [](const Moment&) { return "%"; }},
};

struct Composite {
    char letter;
    const char* format;
    const char* longFormat;  // after '#'
};
constexpr Composite kComposites[] = {
    {'c', "%m/%d/%y %H:%M:%S", "%A, %B %d, %Y %H:%M:%S"},
    {'x', "%m/%d/%y", "%A, %B %d, %Y"},
    {'X', "%H:%M:%S", "%H:%M:%S"},
};

void AppendMoment(CString& text, const char* format, const Moment& moment);

bool AppendLetter(CString& text, char letter, bool alternative, const Moment& moment) {
    for (const Number& number : kNumbers) {
        if (number.letter != letter) continue;
        text.AppendFormat("%0*d", alternative ? 1 : number.width, number.value(moment));
        return true;
    }
    for (const Name& name : kNames) {
        if (name.letter != letter) continue;
        text.AppendFormat("%.*s", name.length, name.text(moment));
        return true;
    }
    for (const Composite& composite : kComposites) {
        if (composite.letter != letter) continue;
        AppendMoment(text, alternative ? composite.longFormat : composite.format, moment);
        return true;
    }
    return false;
}

void AppendMoment(CString& text, const char* format, const Moment& moment) {
    for (const char* at = format; *at != '\0';) {
        if (*at == '%') {
            const bool alternative = at[1] == '#';
            const char* const letter = at + (alternative ? 2 : 1);
            if (*letter != '\0' && AppendLetter(text, *letter, alternative, moment)) {
                at = letter + 1;
                continue;
            }
        }
        text += *at++;
    }
}

}  // namespace

CString COleDateTime::Format(LPCTSTR lpszFormat) const {
    CString text;
    if (m_status == null) return text;
    Moment moment;
    if (!GetAsSystemTime(moment.parts)) return "Invalid DateTime";
    moment.dayOfYear = GetDayOfYear();
    if (lpszFormat != nullptr) AppendMoment(text, lpszFormat, moment);
    return text;
}

CString COleDateTime::Format(DWORD dwFlags, LCID lcid) const {
    if (m_status == null) return CString();
    BSTR text = nullptr;
    if (m_status != valid || FAILED(VarBstrFromDate(m_dt, lcid, dwFlags, &text))) return "Invalid DateTime";
    CString result(text, static_cast<int>(SysStringLen(text)));
    SysFreeString(text);
    return result;
}
