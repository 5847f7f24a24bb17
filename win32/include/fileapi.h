// fileapi.h - files by GBK names on a UTF-8 file system.
//
// A path is POSIX: '/' separates, there is no drive. A name outside UTF-8's reach in GBK cannot be said here.
#pragma once

#include "windef.h"

// --- What is there ---

#define OF_READ 0x0
#define OF_WRITE 0x1
#define OF_READWRITE 0x2
#define OF_EXIST 0x4000
#define HFILE_ERROR (static_cast<HFILE>(-1))
#define OFS_MAXPATHNAME 128

using HFILE = int;

struct OFSTRUCT {
    BYTE cBytes;
    BYTE fFixedDisk;
    WORD nErrCode;
    WORD Reserved1;
    WORD Reserved2;
    CHAR szPathName[OFS_MAXPATHNAME];
};
using LPOFSTRUCT = OFSTRUCT*;

/// Looks whether a file can be opened; a folder cannot.
/// @param uStyle  OF_EXIST, with a mode or without; another style is not supported
/// @return 1; HFILE_ERROR with the reason in nErrCode and GetLastError(). There is nothing to close.
WINBASEAPI HFILE OpenFile(LPCSTR lpFileName, LPOFSTRUCT lpReOpenBuff, UINT uStyle);

#define INVALID_FILE_ATTRIBUTES (static_cast<DWORD>(-1))
#define FILE_ATTRIBUTE_READONLY 0x1
#define FILE_ATTRIBUTE_HIDDEN 0x2
#define FILE_ATTRIBUTE_DIRECTORY 0x10
#define FILE_ATTRIBUTE_ARCHIVE 0x20
#define FILE_ATTRIBUTE_DEVICE 0x40
#define FILE_ATTRIBUTE_NORMAL 0x80
#define FILE_ATTRIBUTE_REPARSE_POINT 0x400

/// NORMAL when nothing else applies; a name that starts with a point is hidden; a symbolic link is what it points to.
WINBASEAPI DWORD GetFileAttributesA(LPCSTR lpFileName);
WINBASEAPI BOOL DeleteFileA(LPCSTR lpFileName);
WINBASEAPI BOOL CreateDirectoryA(LPCSTR lpPathName, LPSECURITY_ATTRIBUTES lpSecurityAttributes);
WINBASEAPI BOOL RemoveDirectoryA(LPCSTR lpPathName);
/// $TMPDIR or /tmp, with a '/' at the end.
/// @return length of the path; bytes needed with the terminator when the buffer is too small
WINBASEAPI DWORD GetTempPathA(DWORD nBufferLength, LPSTR lpBuffer);
WINBASEAPI DWORD GetCurrentDirectoryA(DWORD nBufferLength, LPSTR lpBuffer);

#define GetFileAttributes GetFileAttributesA
#define DeleteFile DeleteFileA
#define CreateDirectory CreateDirectoryA
#define RemoveDirectory RemoveDirectoryA
#define GetTempPath GetTempPathA
#define GetCurrentDirectory GetCurrentDirectoryA
