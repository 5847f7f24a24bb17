// winbase.h - base services of the platform: last error, clocks, names, memory, modules, message texts, event log.
//
//   if (GetFileAttributes(path) == INVALID_FILE_ATTRIBUTES) Report(GetLastError());
//
// Text: 8-bit texts are GBK. A function that fails answers as the platform does and leaves its code in GetLastError().
// Threads: everything here may be called from any thread; the last error is the calling thread's own.
#pragma once

#include <cstdarg>

#include "fileapi.h"
#include "guiddef.h"
#include "handleapi.h"
#include "interlocked.h"
#include "synchapi.h"
#include "tkwin32/paths.h"
#include "windef.h"
#include "winerror.h"

// --- Last error ---

WINBASEAPI DWORD GetLastError();
WINBASEAPI void SetLastError(DWORD dwErrCode);

// --- Clocks; called through their symbols, so that a program can put its own in front and move time ---

/// Milliseconds since the machine started, sleep included; wraps after 49.7 days.
WINBASEAPI DWORD GetTickCount();
WINBASEAPI ULONGLONG GetTickCount64();
WINBASEAPI BOOL QueryPerformanceCounter(LARGE_INTEGER* lpPerformanceCount);
WINBASEAPI BOOL QueryPerformanceFrequency(LARGE_INTEGER* lpFrequency);
WINBASEAPI void GetSystemTime(SYSTEMTIME* lpSystemTime);
WINBASEAPI void GetLocalTime(SYSTEMTIME* lpSystemTime);
/// 100 ns units since 1601-01-01 UTC.
WINBASEAPI void GetSystemTimeAsFileTime(FILETIME* lpSystemTimeAsFileTime);
/// @return FALSE for a date that does not exist; wDayOfWeek is not looked at
WINBASEAPI BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, FILETIME* lpFileTime);
WINBASEAPI BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, SYSTEMTIME* lpSystemTime);
WINBASEAPI BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, FILETIME* lpLocalFileTime);
WINBASEAPI BOOL LocalFileTimeToFileTime(const FILETIME* lpLocalFileTime, FILETIME* lpFileTime);
WINBASEAPI LONG CompareFileTime(const FILETIME* lpFileTime1, const FILETIME* lpFileTime2);

// --- Process, machine, user ---

WINBASEAPI DWORD GetCurrentProcessId();
WINBASEAPI DWORD GetCurrentThreadId();
/// The version word of the NT family: the top bit is clear.
WINBASEAPI DWORD GetVersion();

#define MAX_COMPUTERNAME_LENGTH 15
#define UNLEN 256

/// @param nSize  in: bytes of the buffer; out: length without the terminator, or with it when the buffer is too small
WINBASEAPI BOOL GetComputerNameA(LPSTR lpBuffer, LPDWORD nSize);
/// @param pcbBuffer  in: bytes of the buffer; out: bytes with the terminator
WINADVAPI BOOL GetUserNameA(LPSTR lpBuffer, LPDWORD pcbBuffer);
/// A tone. Never fails, and takes its duration also where no speaker can be had.
WINBASEAPI BOOL Beep(DWORD dwFreq, DWORD dwDuration);
/// Goes to standard error when the environment has TKKERNEL_DEBUG_OUTPUT, else nowhere.
WINBASEAPI void OutputDebugStringA(LPCSTR lpOutputString);
/// a * b / c in 64 bits, rounded half away from zero; -1 when c is 0 or the result does not fit
WINBASEAPI int MulDiv(int nNumber, int nNumerator, int nDenominator);

#define GetComputerName GetComputerNameA
#define GetUserName GetUserNameA
#define OutputDebugString OutputDebugStringA

// --- Memory; the pointer is the handle ---

#define LMEM_FIXED 0x0
#define LMEM_MOVEABLE 0x2
#define LMEM_ZEROINIT 0x40
#define LPTR (LMEM_FIXED | LMEM_ZEROINIT)
#define GMEM_FIXED 0x0
#define GMEM_MOVEABLE 0x2
#define GMEM_ZEROINIT 0x40
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)

WINBASEAPI HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes);
WINBASEAPI HLOCAL LocalReAlloc(HLOCAL hMem, SIZE_T uBytes, UINT uFlags);
/// @return null; hMem when it could not be freed
WINBASEAPI HLOCAL LocalFree(HLOCAL hMem);
WINBASEAPI LPVOID LocalLock(HLOCAL hMem);
WINBASEAPI BOOL LocalUnlock(HLOCAL hMem);
WINBASEAPI SIZE_T LocalSize(HLOCAL hMem);
WINBASEAPI HGLOBAL GlobalAlloc(UINT uFlags, SIZE_T dwBytes);
WINBASEAPI HGLOBAL GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT uFlags);
WINBASEAPI HGLOBAL GlobalFree(HGLOBAL hMem);
WINBASEAPI LPVOID GlobalLock(HGLOBAL hMem);
WINBASEAPI BOOL GlobalUnlock(HGLOBAL hMem);
WINBASEAPI SIZE_T GlobalSize(HGLOBAL hMem);

/// @return TRUE when some byte of the range cannot be read; a length of 0 is readable everywhere
WINBASEAPI BOOL IsBadReadPtr(const void* lp, UINT_PTR ucb);
/// @return TRUE when the range cannot be written; looks at the map of the process, so it is far slower than the read
/// test
WINBASEAPI BOOL IsBadWritePtr(LPVOID lp, UINT_PTR ucb);
/// @return TRUE when the text cannot be read up to its terminator or for ucchMax characters
WINBASEAPI BOOL IsBadStringPtrA(LPCSTR lpsz, UINT_PTR ucchMax);
WINBASEAPI BOOL IsBadStringPtrW(LPCWSTR lpsz, UINT_PTR ucchMax);
#define IsBadStringPtr IsBadStringPtrA

// --- Modules: shared objects ---

/// Loads a shared object by the loader's rules; a name without an extension is tried with ".so" as well.
WINBASEAPI HMODULE LoadLibraryA(LPCSTR lpLibFileName);
WINBASEAPI BOOL FreeLibrary(HMODULE hLibModule);
WINBASEAPI FARPROC GetProcAddress(HMODULE hModule, LPCSTR lpProcName);
/// @param lpModuleName  null for the program itself. The handle is not counted.
WINBASEAPI HMODULE GetModuleHandleA(LPCSTR lpModuleName);
/// @return length of the name; nSize with ERROR_INSUFFICIENT_BUFFER when it was cut, always behind a whole character
WINBASEAPI DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize);

#define LoadLibrary LoadLibraryA
#define GetModuleHandle GetModuleHandleA
#define GetModuleFileName GetModuleFileNameA

// --- Message texts ---

#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x100
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x200
#define FORMAT_MESSAGE_FROM_STRING 0x400
#define FORMAT_MESSAGE_FROM_HMODULE 0x800
#define FORMAT_MESSAGE_FROM_SYSTEM 0x1000
#define FORMAT_MESSAGE_ARGUMENT_ARRAY 0x2000
#define FORMAT_MESSAGE_MAX_WIDTH_MASK 0xFF

/// The system's text for a code, or a text with %1 to %99 filled in. System texts are Chinese and end in CR LF.
/// @param lpBuffer  a buffer of nSize characters; with ALLOCATE_BUFFER the address of a pointer, freed with LocalFree
/// @return characters without the terminator; 0 with ERROR_MR_MID_NOT_FOUND for an unknown code
WINBASEAPI DWORD FormatMessageA(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPSTR lpBuffer,
                                DWORD nSize, va_list* Arguments);
WINBASEAPI DWORD FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPWSTR lpBuffer,
                                DWORD nSize, va_list* Arguments);
#define FormatMessage FormatMessageA

// --- Event log ---

#define EVENTLOG_SUCCESS 0x0
#define EVENTLOG_ERROR_TYPE 0x1
#define EVENTLOG_WARNING_TYPE 0x2
#define EVENTLOG_INFORMATION_TYPE 0x4
#define EVENTLOG_AUDIT_SUCCESS 0x8
#define EVENTLOG_AUDIT_FAILURE 0x10

using PSID = void*;

/// Opens the log of this machine under a source name.
/// @return null when the log cannot be opened or the server is another machine
WINADVAPI HANDLE RegisterEventSourceA(LPCSTR lpUNCServerName, LPCSTR lpSourceName);
WINADVAPI BOOL DeregisterEventSource(HANDLE hEventLog);
/// Writes one record. @param lpUserSid  not supported: anything but null is an invalid parameter
WINADVAPI BOOL ReportEventA(HANDLE hEventLog, WORD wType, WORD wCategory, DWORD dwEventID, PSID lpUserSid,
                            WORD wNumStrings, DWORD dwDataSize, LPCSTR* lpStrings, LPVOID lpRawData);
#define RegisterEventSource RegisterEventSourceA
#define ReportEvent ReportEventA

// --- Security descriptors: the record itself; nothing here enforces one ---

#define SECURITY_DESCRIPTOR_REVISION 1
#define SE_DACL_PRESENT 0x4
#define SE_DACL_DEFAULTED 0x8

struct ACL;
using PACL = ACL*;
using PSECURITY_DESCRIPTOR = void*;

struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    WORD Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};

WINADVAPI BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision);
WINADVAPI BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl,
                                         BOOL bDaclDefaulted);
