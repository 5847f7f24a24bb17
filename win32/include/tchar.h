// tchar.h - the generic text names, as an application built for multibyte text (_MBCS) sees them.
//
//   TCHAR name[64];
//   _tcsnccpy(name, source, 31);  // 31 characters
//
// _tcs names that look inside characters are the functions of mbstring.h for char; those that cannot harm a character
// (_tcslen, _tcscpy) are the plain ones and count bytes.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "mbstring.h"

#ifndef _MBCS
#define _MBCS
#endif

#define __T(text) text
#define _TCHAR_DEFINED
#define _TEOF EOF
#define _tmain main

using _TCHAR = char;
using _TSCHAR = signed char;
using _TUCHAR = unsigned char;
using _TXCHAR = unsigned char;
using _TINT = unsigned int;

// ---- Plain functions -----------------------------------------------------------------------------------------------

#define _tcslen strlen
#define _tcsnlen strnlen
#define _tcscpy strcpy
#define _tcscat strcat
#define _tcsdup _strdup
#define _tprintf printf
#define _ftprintf fprintf
#define _stprintf sprintf
#define _vtprintf vprintf
#define _vftprintf vfprintf
#define _vstprintf vsprintf
#define _stscanf sscanf
#define _fgetts fgets
#define _fputts fputs
#define _putts puts
#define _tfopen fopen
#define _tremove remove
#define _trename rename
#define _tgetenv getenv
#define _tsystem system
#define _tcsftime strftime
#define _tcstod strtod
#define _tcstol strtol
#define _tcstoul strtoul
#define _ttoi atoi
#define _ttol atol
#define _ttof atof
#define _ttoi64 _atoi64
#define _itot _itoa
#define _ltot _ltoa
#define _ultot _ultoa
#define _i64tot _i64toa
#define _ui64tot _ui64toa

// ---- Characters ----------------------------------------------------------------------------------------------------

#define _istlead _ismbblead
#define _istleadbyte _ismbblead
#define _istalpha _ismbcalpha
#define _istalnum _ismbcalnum
#define _istdigit _ismbcdigit
#define _istspace _ismbcspace
#define _istupper _ismbcupper
#define _istlower _ismbclower
#define _totupper _mbctoupper
#define _totlower _mbctolower

// ---- Functions that know characters; _tcsn names count bytes, _tcsnc names characters
// --------------------------------

namespace tk::text {
inline const unsigned char* TextBytes(const char* text) noexcept {
    return reinterpret_cast<const unsigned char*>(text);
}
inline unsigned char* TextBytes(char* text) noexcept {
    return reinterpret_cast<unsigned char*>(text);
}
inline char* BytesText(unsigned char* bytes) noexcept {
    return reinterpret_cast<char*>(bytes);
}
}  // namespace tk::text

// Each row: the generic name and the function that it is for char.
#define TK_TCS_LENGTH(name, function)               \
    inline std::size_t name(const char* text) {     \
        return function(tk::text::TextBytes(text)); \
    }
#define TK_TCS_COMPARE(name, function)                                            \
    inline int name(const char* first, const char* second) {                      \
        return function(tk::text::TextBytes(first), tk::text::TextBytes(second)); \
    }
#define TK_TCS_COMPARE_SOME(name, function)                                              \
    inline int name(const char* first, const char* second, std::size_t count) {          \
        return function(tk::text::TextBytes(first), tk::text::TextBytes(second), count); \
    }
#define TK_TCS_SPAN(name, function)                                           \
    inline std::size_t name(const char* text, const char* set) {              \
        return function(tk::text::TextBytes(text), tk::text::TextBytes(set)); \
    }
#define TK_TCS_FIND_CHARACTER(name, function)                                       \
    inline char* name(const char* text, unsigned int character) {                   \
        return tk::text::BytesText(function(tk::text::TextBytes(text), character)); \
    }
#define TK_TCS_FIND(name, function)                                                                   \
    inline char* name(const char* text, const char* wanted) {                                         \
        return tk::text::BytesText(function(tk::text::TextBytes(text), tk::text::TextBytes(wanted))); \
    }
#define TK_TCS_COPY_SOME(name, function)                                                                       \
    inline char* name(char* target, const char* source, std::size_t count) {                                   \
        return tk::text::BytesText(function(tk::text::TextBytes(target), tk::text::TextBytes(source), count)); \
    }
#define TK_TCS_CHANGE(name, function)                                    \
    inline char* name(char* text) {                                      \
        return tk::text::BytesText(function(tk::text::TextBytes(text))); \
    }

TK_TCS_LENGTH(_tcsclen, _mbslen)
TK_TCS_LENGTH(_tclen, _mbclen)
TK_TCS_COMPARE(_tcscmp, _mbscmp)
TK_TCS_COMPARE(_tcsicmp, _mbsicmp)
TK_TCS_COMPARE(_tcscoll, _mbscoll)
TK_TCS_COMPARE(_tcsicoll, _mbsicoll)
TK_TCS_COMPARE_SOME(_tcsncmp, _mbsnbcmp)
TK_TCS_COMPARE_SOME(_tcsnccmp, _mbsncmp)
TK_TCS_COMPARE_SOME(_tcsnicmp, _mbsnbicmp)
TK_TCS_COMPARE_SOME(_tcsncicmp, _mbsnicmp)
TK_TCS_SPAN(_tcsspn, _mbsspn)
TK_TCS_SPAN(_tcscspn, _mbscspn)
TK_TCS_FIND_CHARACTER(_tcschr, _mbschr)
TK_TCS_FIND_CHARACTER(_tcsrchr, _mbsrchr)
TK_TCS_FIND(_tcsstr, _mbsstr)
TK_TCS_FIND(_tcspbrk, _mbspbrk)
TK_TCS_COPY_SOME(_tcsncpy, _mbsnbcpy)
TK_TCS_COPY_SOME(_tcsnccpy, _mbsncpy)
TK_TCS_COPY_SOME(_tcsncat, _mbsnbcat)
TK_TCS_COPY_SOME(_tcsnccat, _mbsncat)
TK_TCS_CHANGE(_tcsupr, _mbsupr)
TK_TCS_CHANGE(_tcslwr, _mbslwr)
TK_TCS_CHANGE(_tcsrev, _mbsrev)

#undef TK_TCS_LENGTH
#undef TK_TCS_COMPARE
#undef TK_TCS_COMPARE_SOME
#undef TK_TCS_SPAN
#undef TK_TCS_FIND_CHARACTER
#undef TK_TCS_FIND
#undef TK_TCS_COPY_SOME
#undef TK_TCS_CHANGE

inline char* _tcstok(char* text, const char* separators) {
    return tk::text::BytesText(_mbstok(tk::text::TextBytes(text), tk::text::TextBytes(separators)));
}
inline char* _tcsinc(const char* current) {
    return tk::text::BytesText(_mbsinc(tk::text::TextBytes(current)));
}
inline char* _tcsdec(const char* start, const char* current) {
    return tk::text::BytesText(_mbsdec(tk::text::TextBytes(start), tk::text::TextBytes(current)));
}
inline char* _tcsninc(const char* text, std::size_t count) {
    return tk::text::BytesText(_mbsninc(tk::text::TextBytes(text), count));
}
inline unsigned int _tcsnextc(const char* text) {
    return _mbsnextc(tk::text::TextBytes(text));
}
