// wincon.h - the code page in which the console takes and shows text. Included beside windows.h, which does not bring
// it.
//
//   WideCharToMultiByte(GetConsoleOutputCP(), 0, text, length, bytes, room, NULL, NULL);
//
// It is what the environment says of the terminal (LC_ALL, LC_CTYPE or LANG, the first one that is set): 936 for
// GBK, GB2312, GB18030 and a bare zh_CN, else 65001.
// Threads: any, as long as nobody changes the environment meanwhile.
#pragma once

#include "windef.h"

EXTERN_C TKWIN32_API UINT GetConsoleCP();
EXTERN_C TKWIN32_API UINT GetConsoleOutputCP();
