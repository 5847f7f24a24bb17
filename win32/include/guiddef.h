// guiddef.h - 128-bit identifiers of classes and interfaces.
#pragma once

#include <cstring>

#include "windef.h"

struct GUID {
    ULONG Data1;
    USHORT Data2;
    USHORT Data3;
    BYTE Data4[8];
};
static_assert(sizeof(GUID) == 16);

using UUID = GUID;
using IID = GUID;
using CLSID = GUID;
using FMTID = GUID;
using LPGUID = GUID*;
using LPCLSID = CLSID*;
using LPIID = IID*;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline constexpr GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
#define IID_NULL GUID_NULL
#define CLSID_NULL GUID_NULL

inline bool operator==(REFGUID first, REFGUID second) noexcept {
    return std::memcmp(&first, &second, sizeof(GUID)) == 0;
}
inline BOOL IsEqualGUID(REFGUID first, REFGUID second) noexcept {
    return first == second;
}
inline BOOL IsEqualIID(REFGUID first, REFGUID second) noexcept {
    return first == second;
}
inline BOOL IsEqualCLSID(REFGUID first, REFGUID second) noexcept {
    return first == second;
}

#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
    inline constexpr GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}
