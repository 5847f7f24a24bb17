// tkwin32/memory_test.h - whether memory can be read, asked of the kernel: no fault, no signal, no open file.
#pragma once

#include "windef.h"

namespace tk::system {

/// Cost: one short system call for each page touched.
/// @return true when every byte of the range can be read now; false when address + size runs over, or the address is
///         null. A size of 0 asks about nothing and is true for any address but null.
TKWIN32_API bool IsReadable(const void* address, std::size_t size) noexcept;

}  // namespace tk::system
