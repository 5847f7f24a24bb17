// handleapi.h - handles of kernel objects: closing, duplicating, flags.
//
//   HANDLE event = CreateEvent(NULL, TRUE, FALSE, NULL);
//   CloseHandle(event);  // a second time: FALSE with ERROR_INVALID_HANDLE
//
// A handle is a number of at most 31 bits that is not given out again soon: one that is closed, used twice or made up
// is ERROR_INVALID_HANDLE and nothing worse. Pseudo handles name no object. Threads: any. An object in use by a call of
// another thread stays until that call ends.
#pragma once

#include "windef.h"

#define HANDLE_FLAG_INHERIT 0x1
#define HANDLE_FLAG_PROTECT_FROM_CLOSE 0x2

#define DUPLICATE_CLOSE_SOURCE 0x1
#define DUPLICATE_SAME_ACCESS 0x2

// Access rights.
#define DELETE 0x00010000u
#define READ_CONTROL 0x00020000u
#define WRITE_DAC 0x00040000u
#define WRITE_OWNER 0x00080000u
#define SYNCHRONIZE 0x00100000u
#define STANDARD_RIGHTS_REQUIRED 0x000F0000u
#define MAXIMUM_ALLOWED 0x02000000u
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define GENERIC_EXECUTE 0x20000000u
#define GENERIC_ALL 0x10000000u

/// @return FALSE with ERROR_INVALID_HANDLE, for a handle that is protected from closing as well
WINBASEAPI BOOL CloseHandle(HANDLE hObject);

/// Another handle of the same object.
/// @param hSourceProcessHandle, hTargetProcessHandle  GetCurrentProcess(); another process is ERROR_INVALID_HANDLE
/// @param dwDesiredAccess  may not go beyond the rights of the source (ERROR_ACCESS_DENIED)
/// @param dwOptions  DUPLICATE_CLOSE_SOURCE closes the source in every case
WINBASEAPI BOOL DuplicateHandle(HANDLE hSourceProcessHandle, HANDLE hSourceHandle, HANDLE hTargetProcessHandle,
                                LPHANDLE lpTargetHandle, DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwOptions);
WINBASEAPI BOOL GetHandleInformation(HANDLE hObject, LPDWORD lpdwFlags);
/// HANDLE_FLAG_INHERIT is kept and has no effect: there is nothing here that starts a process with handles.
WINBASEAPI BOOL SetHandleInformation(HANDLE hObject, DWORD dwMask, DWORD dwFlags);

/// A pseudo handle, (HANDLE)-1; it cannot be waited for.
WINBASEAPI HANDLE GetCurrentProcess();
