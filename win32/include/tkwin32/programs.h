// tkwin32/programs.h - starting other programs.
//
//   if (WinExec("notify \"two words\"", SW_SHOW) <= 31) Report();
//
// Threads: any.
#pragma once

#include "windef.h"

/// Starts a program and does not wait for it. It is looked for along PATH; its arguments are read as command lines of
/// the platform are ("" keeps blanks). The platform's ODBC administrator, odbcad32.exe in any folder, stands for the
/// first administrator that is installed here: ODBCManageDataSourcesQ5, ODBCManageDataSourcesQ4, ODBCManageDataSources,
/// ODBCConfig, gODBCConfig; they need a display.
/// @param lpCmdLine  GBK, the program first; uCmdShow  SW_..., not used
/// @return 33 when it runs; 2 not found, 3 no such folder, 5 not allowed, 11 no program, 8 out of memory or processes
WINBASEAPI UINT WINAPI WinExec(LPCSTR lpCmdLine, UINT uCmdShow);

/// "C:\WINDOWS": a name that WinExec knows, no folder of this system.
/// @return its length; bytes needed with the terminator when the buffer is too small
WINBASEAPI UINT WINAPI GetWindowsDirectoryA(LPSTR lpBuffer, UINT uSize);
#define GetWindowsDirectory GetWindowsDirectoryA
