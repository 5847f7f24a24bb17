// tkwin32/crt_text.h - the C run-time functions on 8-bit texts that the platform has and POSIX spells otherwise.
//
// They know ASCII letters only, whatever the locale, and never change or compare half a double-byte character.
// Threads: any.
#pragma once

#include <cstddef>

#include "windef.h"

/// @return below, equal to or above zero, by the codes of the characters with capitals taken as small letters
WINBASEAPI int _stricmp(const char* first, const char* second);
WINBASEAPI int _strnicmp(const char* first, const char* second, std::size_t bytes);
/// Change a text in place and return it.
WINBASEAPI char* _strupr(char* text);
WINBASEAPI char* _strlwr(char* text);
WINBASEAPI char* _strrev(char* text);
WINBASEAPI char* _strdup(const char* text);  // to be freed with free(); null without memory

/// Write a number and a terminator; return the buffer. Only radix 10 writes a sign, the others write the bits of a
/// negative number. @param radix  2 to 36; any other gives "" and EINVAL in errno
WINBASEAPI char* _itoa(int value, char* buffer, int radix);
WINBASEAPI char* _ltoa(LONG value, char* buffer, int radix);
WINBASEAPI char* _ultoa(ULONG value, char* buffer, int radix);
WINBASEAPI char* _i64toa(LONGLONG value, char* buffer, int radix);
WINBASEAPI char* _ui64toa(ULONGLONG value, char* buffer, int radix);
/// The leading integer of a text, 0 without one, the nearest there is for one too large.
WINBASEAPI LONGLONG _atoi64(const char* text);
