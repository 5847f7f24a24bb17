// conio.h - single keys from the console.
//
//   int key = _getch();   // waits for a key and does not show it; Enter is '\r'
//
// The console is standard input. Where that is no terminal its bytes are given out as they are, so that a script can
// answer in place of a user.
// Threads: any; one key goes to one caller.
#pragma once

#include "windef.h"

/// Waits for the next key. Ctrl+C is the key 3 and does not interrupt.
/// @return the byte, 0 to 255, one of two for a double-byte character; EOF (-1) at the end of the input
EXTERN_C TKWIN32_API int _getch();

/// Gives a key back: the next _getch returns it.
/// @return the key; EOF when one is waiting already, or for EOF itself
EXTERN_C TKWIN32_API int _ungetch(int ch);
