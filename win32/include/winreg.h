// winreg.h - the registry as far as it is a view of what this system keeps elsewhere; nothing can be written.
//
//   HKEY classes = NULL;
//   if (RegOpenKeyExA(HKEY_CLASSES_ROOT, "CLSID", 0, KEY_READ, &classes) == ERROR_SUCCESS) RegCloseKey(classes);
//
// HKEY_CLASSES_ROOT shows the class registry (win32/README.md): CLSID\{...} with InprocServer32 and ProgID, and each
// ProgID with its CLSID. Software\ODBC\ODBC.INI\ODBC Data Sources shows the names of the ODBC data sources with their
// drivers: those of the user under HKEY_CURRENT_USER, those of the system under HKEY_LOCAL_MACHINE.
// A key is what it was when it was opened. Names are found in either case.
// Threads: any.
#pragma once

#include "windef.h"
#include "winerror.h"

using REGSAM = DWORD;
using LSTATUS = LONG;
using PHKEY = HKEY*;

#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000000u))))
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000001u))))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000002u))))

#define KEY_QUERY_VALUE 0x0001u
#define KEY_SET_VALUE 0x0002u
#define KEY_ENUMERATE_SUB_KEYS 0x0008u
#define KEY_NOTIFY 0x0010u
#define KEY_READ 0x20019u

#define REG_NONE 0u
#define REG_SZ 1u

/// @param lpSubKey  parts separated by '\'; null or "" opens the key itself once more
/// @param samDesired  reading rights; KEY_SET_VALUE is ERROR_ACCESS_DENIED
/// @return ERROR_SUCCESS, ERROR_FILE_NOT_FOUND, ERROR_INVALID_HANDLE
WINADVAPI LSTATUS WINAPI RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, PHKEY phkResult);
/// As RegOpenKeyExA with reading rights.
WINADVAPI LSTATUS WINAPI RegOpenKeyA(HKEY hKey, LPCSTR lpSubKey, PHKEY phkResult);
/// A root key is left open. @return ERROR_INVALID_HANDLE for what is no open key
WINADVAPI LSTATUS WINAPI RegCloseKey(HKEY hKey);
/// @param lpValueName  null or "" for the key's own value
/// @param lpData  may be null; lpcbData  in: bytes of the buffer, out: bytes of the value with its terminator
/// @return ERROR_MORE_DATA for a buffer too small, ERROR_FILE_NOT_FOUND
WINADVAPI LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                                          LPBYTE lpData, LPDWORD lpcbData);
/// The value of a sub-key. @param lpcbData  in: bytes of the buffer, out: bytes of the value with its terminator
WINADVAPI LSTATUS WINAPI RegQueryValueA(HKEY hKey, LPCSTR lpSubKey, LPSTR lpData, PLONG lpcbData);
/// @param lpcchValueName  in: bytes of the buffer, out: length without the terminator
/// @return ERROR_NO_MORE_ITEMS behind the last one, ERROR_MORE_DATA for a buffer too small
WINADVAPI LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName,
                                       LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData);
/// The sub-keys of a key. @param lpftLastWriteTime  null; lpClass  null
WINADVAPI LSTATUS WINAPI RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName, LPDWORD lpReserved,
                                       LPSTR lpClass, LPDWORD lpcchClass, FILETIME* lpftLastWriteTime);

#define RegOpenKeyEx RegOpenKeyExA
#define RegOpenKey RegOpenKeyA
#define RegQueryValueEx RegQueryValueExA
#define RegQueryValue RegQueryValueA
#define RegEnumValue RegEnumValueA
#define RegEnumKeyEx RegEnumKeyExA
