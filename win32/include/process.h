// process.h - the process's number, and threads that nobody waits for.
//
//   _beginthread(Worker, 0, argument);
#pragma once

#include "windef.h"

EXTERN_C TKWIN32_API int _getpid();

/// Starts a thread; it ends when its function returns.
/// @param stack_size  bytes, 0 for the usual size
/// @return a number that is not -1, of no further use; -1 with errno EAGAIN or EINVAL when there is no thread
EXTERN_C TKWIN32_API UINT_PTR _beginthread(void (*start_address)(void*), unsigned stack_size, void* arglist);
