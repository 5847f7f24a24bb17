// Waiting for kernel objects.
#pragma once

#include "win32/kernel/target.h"
#include "windef.h"

namespace tk::kernel {

struct WaitSet {
    Target* targets[kMostBlocks];
    int count = 0;
    bool all = false;
};

/// @return as WaitForMultipleObjects
DWORD WaitFor(const WaitSet& set, DWORD milliseconds) noexcept;

}  // namespace tk::kernel
