#include "util/date_text.h"

#include <afxdisp.h>

#include <cmath>

namespace tk::util {
namespace {

char* TwoDigits(char* at, unsigned value) {
    *at++ = static_cast<char>('0' + value / 10 % 10);
    *at++ = static_cast<char>('0' + value % 10);
    return at;
}

}  // namespace

CString DateText(DATE date) {
    SYSTEMTIME parts;
    // A date that does not exist has a text of the framework's own. Not every platform refuses what is no number.
    if (!std::isfinite(date) || VariantTimeToSystemTime(date, &parts) == 0)
        return COleDateTime(date).Format("%Y-%m-%d %H:%M:%S");
    char text[19];
    char* at = TwoDigits(text, parts.wYear / 100);
    at = TwoDigits(at, parts.wYear % 100);
    *at++ = '-';
    at = TwoDigits(at, parts.wMonth);
    *at++ = '-';
    at = TwoDigits(at, parts.wDay);
    *at++ = ' ';
    at = TwoDigits(at, parts.wHour);
    *at++ = ':';
    at = TwoDigits(at, parts.wMinute);
    *at++ = ':';
    TwoDigits(at, parts.wSecond);
    return {text, sizeof(text)};
}

}  // namespace tk::util
