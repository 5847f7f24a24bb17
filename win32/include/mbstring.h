// mbstring.h - texts of one- and two-byte characters, the way an application built for multibyte text uses them.
//
//   if (_mbsicmp(name, wanted) == 0) ...
//   for (const unsigned char* at = path; *at != 0; at = _mbsinc(at)) ...
//
// Texts are GBK. A lead byte takes the byte after it along; a lead byte right before the terminator is no character and
// ends the text, except where it says otherwise. A character is passed as its byte, or as lead * 256 + trail.
// Null texts give the failure value in place of a fault: _NLSCMPERROR from comparisons, null or 0 from the others.
// Threads: any. _mbstok keeps its place for each thread.
#pragma once

#include "tkwin32/crt_text.h"
#include "windef.h"

#define _NLSCMPERROR 0x7FFFFFFF

// Kinds of bytes for _mbsbtype.
#define _MBC_SINGLE 0
#define _MBC_LEAD 1
#define _MBC_TRAIL 2
#define _MBC_ILLEGAL (-1)

// ---- Bytes and characters ------------------------------------------------------------------------------------------

WINBASEAPI int _ismbblead(unsigned int byte);
WINBASEAPI int _ismbbtrail(unsigned int byte);
/// Whether the byte at `current` begins, or ends, a character of the text at `start`: -1 or 0.
WINBASEAPI int _ismbslead(const unsigned char* start, const unsigned char* current);
WINBASEAPI int _ismbstrail(const unsigned char* start, const unsigned char* current);
WINBASEAPI int _mbsbtype(const unsigned char* text, std::size_t offset);  // _MBC_ILLEGAL behind the terminator

WINBASEAPI unsigned int _mbctoupper(unsigned int character);
WINBASEAPI unsigned int _mbctolower(unsigned int character);
WINBASEAPI int _ismbcupper(unsigned int character);
WINBASEAPI int _ismbclower(unsigned int character);
WINBASEAPI int _ismbcalpha(unsigned int character);  // a letter; ideographs are
WINBASEAPI int _ismbcdigit(unsigned int character);  // ASCII digits
WINBASEAPI int _ismbcalnum(unsigned int character);
WINBASEAPI int _ismbcspace(unsigned int character);  // ASCII white space

// ---- Stepping and counting -----------------------------------------------------------------------------------------

WINBASEAPI std::size_t _mbclen(const unsigned char* character);  // 1 or 2; 1 at the terminator
WINBASEAPI unsigned int _mbsnextc(const unsigned char* text);
WINBASEAPI unsigned char* _mbsinc(const unsigned char* current);
/// @return null when `current` is not behind `start`
WINBASEAPI unsigned char* _mbsdec(const unsigned char* start, const unsigned char* current);
/// Steps over up to `count` characters, not past the terminator.
WINBASEAPI unsigned char* _mbsninc(const unsigned char* text, std::size_t count);
WINBASEAPI std::size_t _mbslen(const unsigned char* text);  // characters
/// Characters in the first `bytes` bytes (a cut one does not count), bytes of the first `characters` characters.
WINBASEAPI std::size_t _mbsnccnt(const unsigned char* text, std::size_t bytes);
WINBASEAPI std::size_t _mbsnbcnt(const unsigned char* text, std::size_t characters);

// ---- Comparing -----------------------------------------------------------------------------------------------------

/// By the codes of the characters. @return -1, 0 or 1
WINBASEAPI int _mbscmp(const unsigned char* first, const unsigned char* second);
WINBASEAPI int _mbsncmp(const unsigned char* first, const unsigned char* second, std::size_t characters);
WINBASEAPI int _mbsnbcmp(const unsigned char* first, const unsigned char* second, std::size_t bytes);
/// The same, capitals taken as small letters; full-width, Greek and Cyrillic ones as well.
WINBASEAPI int _mbsicmp(const unsigned char* first, const unsigned char* second);
WINBASEAPI int _mbsnicmp(const unsigned char* first, const unsigned char* second, std::size_t characters);
WINBASEAPI int _mbsnbicmp(const unsigned char* first, const unsigned char* second, std::size_t bytes);
/// In the order of a Chinese system (CompareString, string sort).
WINBASEAPI int _mbscoll(const unsigned char* first, const unsigned char* second);
WINBASEAPI int _mbsicoll(const unsigned char* first, const unsigned char* second);

// ---- Searching -----------------------------------------------------------------------------------------------------

WINBASEAPI unsigned char* _mbschr(const unsigned char* text, unsigned int character);  // 0 finds the terminator
WINBASEAPI unsigned char* _mbsrchr(const unsigned char* text, unsigned int character);
WINBASEAPI unsigned char* _mbsstr(const unsigned char* text, const unsigned char* wanted);  // "" is at the start
/// Bytes before the first character that is not, or is, one of `set`.
WINBASEAPI std::size_t _mbsspn(const unsigned char* text, const unsigned char* set);
WINBASEAPI std::size_t _mbscspn(const unsigned char* text, const unsigned char* set);
WINBASEAPI unsigned char* _mbspbrk(const unsigned char* text, const unsigned char* set);
WINBASEAPI unsigned char* _mbsspnp(const unsigned char* text, const unsigned char* set);
WINBASEAPI unsigned char* _mbstok(unsigned char* text, const unsigned char* separators);

// ---- Copying and changing; each returns its target -----------------------------------------------------------------

WINBASEAPI unsigned char* _mbscpy(unsigned char* target, const unsigned char* source);
WINBASEAPI unsigned char* _mbscat(unsigned char* target, const unsigned char* source);
/// Copy so many characters, or bytes; the rest of the count is filled with zeros. As with strncpy there is no
/// terminator when the source is not shorter. A character that would be cut is not copied.
WINBASEAPI unsigned char* _mbsncpy(unsigned char* target, const unsigned char* source, std::size_t characters);
WINBASEAPI unsigned char* _mbsnbcpy(unsigned char* target, const unsigned char* source, std::size_t bytes);
/// Append up to so many characters, or bytes, and a terminator.
WINBASEAPI unsigned char* _mbsncat(unsigned char* target, const unsigned char* source, std::size_t characters);
WINBASEAPI unsigned char* _mbsnbcat(unsigned char* target, const unsigned char* source, std::size_t bytes);
WINBASEAPI unsigned char* _mbsdup(const unsigned char* text);  // to be freed with free(); null without memory
WINBASEAPI unsigned char* _mbsupr(unsigned char* text);
WINBASEAPI unsigned char* _mbslwr(unsigned char* text);
/// By character. A lead byte right before the terminator stays there.
WINBASEAPI unsigned char* _mbsrev(unsigned char* text);
