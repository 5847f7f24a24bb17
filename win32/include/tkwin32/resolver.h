// tkwin32/resolver.h - how long a look-up of a host may take.
//
// A host that nobody answers for could hold its caller for minutes. gethostbyname and gethostbyaddr of <winsock2.h>
// give up after this limit with WSATRY_AGAIN; so they do at once while 16 look-ups that were given up still run.
// Threads: any.
#pragma once

#include "windef.h"

inline constexpr DWORD kDefaultResolveLimit = 10000;

/// @param limitMs  milliseconds, for questions from now on
/// @return the limit before
EXTERN_C TKWIN32_API DWORD SetResolveLimit(DWORD limitMs);
