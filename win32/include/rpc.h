// rpc.h - universally unique identifiers and their texts.
#pragma once

#include "guiddef.h"
#include "winerror.h"

#define RPC_ENTRY

using RPC_STATUS = LONG;
using RPC_CSTR = unsigned char*;

#define RPC_S_OK 0
#define RPC_S_INVALID_ARG 87
#define RPC_S_OUT_OF_MEMORY 14
#define RPC_S_INVALID_STRING_UUID 1705

/// A random identifier (version 4).
EXTERN_C TKWIN32_API RPC_STATUS UuidCreate(UUID* Uuid);
/// Lower case without braces; a null identifier pointer is the null identifier. Freed with RpcStringFreeA.
EXTERN_C TKWIN32_API RPC_STATUS UuidToStringA(const UUID* Uuid, RPC_CSTR* StringUuid);
/// Exactly the form without braces, in either case; a null text is the null identifier.
EXTERN_C TKWIN32_API RPC_STATUS UuidFromStringA(RPC_CSTR StringUuid, UUID* Uuid);
/// Frees the text and clears the pointer.
EXTERN_C TKWIN32_API RPC_STATUS RpcStringFreeA(RPC_CSTR* String);

#define UuidToString UuidToStringA
#define UuidFromString UuidFromStringA
#define RpcStringFree RpcStringFreeA
