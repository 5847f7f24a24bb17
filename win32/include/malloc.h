// malloc.h - the system's own header of that name, and the platform's question for the size of a block.
#pragma once
#pragma GCC system_header  // which may include the next header of the same name

#include_next <malloc.h>

/// @return usable bytes of a block from malloc, at least what was asked for; 0 for null
inline __SIZE_TYPE__ _msize(void* block) {
    return malloc_usable_size(block);
}
