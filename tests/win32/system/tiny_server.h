// The classes of the tests' in-process server, and what it tells about itself.
#pragma once

#include "objbase.h"

namespace tk::test {

inline constexpr CLSID kTinyClass = {0x5C0E1A01, 0x52F5, 0x4F2A, {0x9A, 0x11, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}};
inline constexpr CLSID kRefusedClass = {0x5C0E1A02, 0x52F5, 0x4F2A, {0x9A, 0x11, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}};
inline constexpr char kTinyClassText[] = "{5C0E1A01-52F5-4F2A-9A11-010203040506}";
inline constexpr char kRefusedClassText[] = "{5c0e1a02-52f5-4f2a-9a11-010203040506}";

}  // namespace tk::test

EXTERN_C TKWIN32_API int TinyAsked();
EXTERN_C TKWIN32_API int TinyReferences();
EXTERN_C TKWIN32_API int TinyAlive();
EXTERN_C TKWIN32_API DWORD TinyTickCount();
