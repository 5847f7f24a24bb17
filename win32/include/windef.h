// windef.h - the platform's basic types with the platform's sizes: LONG and DWORD are 32-bit, WCHAR is UTF-16.
//
// Threads: types only.
#pragma once

#include <cstddef>
#include <cstdint>

#define TKWIN32_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define EXTERN_C extern "C"
#else
#define EXTERN_C extern
#endif

#define WINBASEAPI EXTERN_C TKWIN32_API
#define WINADVAPI EXTERN_C TKWIN32_API
#define WINUSERAPI EXTERN_C TKWIN32_API
#define WINOLEAPI EXTERN_C TKWIN32_API HRESULT
#define WINOLEAPI_(type) EXTERN_C TKWIN32_API type
#define WINOLEAUTAPI EXTERN_C TKWIN32_API HRESULT
#define WINOLEAUTAPI_(type) EXTERN_C TKWIN32_API type

// Calling conventions: one on POSIX.
#define WINAPI
#define APIENTRY
#define CALLBACK
#define PASCAL
#define STDAPICALLTYPE
#define STDMETHODCALLTYPE
#define __stdcall
#define __cdecl
#define CONST const
#define FAR
#define NEAR
#define IN
#define OUT
#define OPTIONAL
#define VOID void

#ifndef NULL
#define NULL 0
#endif
#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif

#define MAX_PATH 260
#define INFINITE 0xFFFFFFFFu

using CHAR = char;
using SHORT = short;
using LONG = std::int32_t;
using INT = int;
using UINT = unsigned int;
using ULONG = std::uint32_t;
using USHORT = unsigned short;
using UCHAR = unsigned char;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using BOOL = int;
using BOOLEAN = BYTE;
using FLOAT = float;
using DOUBLE = double;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using LONG64 = long long;
using DWORD64 = unsigned long long;
using ULONG64 = unsigned long long;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using ATOM = WORD;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using HRESULT = LONG;
using SCODE = LONG;
using LCID = DWORD;
using LANGID = WORD;
using LCTYPE = DWORD;

using WCHAR = char16_t;
using OLECHAR = char16_t;
using TCHAR = char;
using TBYTE = unsigned char;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using PSTR = char*;
using LPCSTR = const char*;
using PCSTR = const char*;
using LPTSTR = char*;
using LPCTSTR = const char*;
using LPWSTR = WCHAR*;
using PWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using PCWSTR = const WCHAR*;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using PBOOL = BOOL*;
using LPBOOL = BOOL*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using PUINT = UINT*;
using PINT = INT*;
using LPINT = INT*;
using PWORD = WORD*;
using LPWORD = WORD*;
using PLONG = LONG*;
using LPLONG = LONG*;
using PDWORD = DWORD*;
using LPDWORD = DWORD*;

using HANDLE = void*;
using PHANDLE = HANDLE*;
using LPHANDLE = HANDLE*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HWND = struct HWND__*;
using HDC = struct HDC__*;
using HKEY = struct HKEY__*;
using HMENU = struct HMENU__*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HBRUSH = struct HBRUSH__*;
using HLOCAL = void*;
using HGLOBAL = void*;
using FARPROC = INT_PTR (*)();

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

#define OLESTR(text) u##text
#define TEXT(text) text
#define _T(text) text
#define _TEXT(text) text

struct POINT {
    LONG x;
    LONG y;
};
struct SIZE {
    LONG cx;
    LONG cy;
};
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPPOINT = POINT*;
using LPSIZE = SIZE*;
using LPRECT = RECT*;
using LPCRECT = const RECT*;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;
using LPFILETIME = FILETIME*;

union LARGE_INTEGER {
    __extension__ struct {
        DWORD LowPart;
        LONG HighPart;
    };
    LONGLONG QuadPart;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

constexpr WORD LOWORD(ULONG_PTR value) {
    return static_cast<WORD>(value & 0xFFFF);
}
constexpr WORD HIWORD(ULONG_PTR value) {
    return static_cast<WORD>((value >> 16) & 0xFFFF);
}
constexpr BYTE LOBYTE(ULONG_PTR value) {
    return static_cast<BYTE>(value & 0xFF);
}
constexpr BYTE HIBYTE(ULONG_PTR value) {
    return static_cast<BYTE>((value >> 8) & 0xFF);
}
constexpr WORD MAKEWORD(BYTE low, BYTE high) {
    return static_cast<WORD>(low | (high << 8));
}
constexpr LONG MAKELONG(WORD low, WORD high) {
    return static_cast<LONG>(static_cast<DWORD>(low) | (static_cast<DWORD>(high) << 16));
}
constexpr WORD MAKELANGID(WORD primary, WORD sub) {
    return static_cast<WORD>((sub << 10) | primary);
}
constexpr LCID MAKELCID(WORD language, WORD sort) {
    return static_cast<LCID>((static_cast<DWORD>(sort) << 16) | language);
}
