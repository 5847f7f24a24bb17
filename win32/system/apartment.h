// Which threads have entered which kind of apartment, and when the process has left the last one.
#pragma once

#include "windef.h"

namespace tk::system {

/// Whether the calling thread may create objects: it has entered, or some thread is in the multithreaded apartment.
bool IsInitialized() noexcept;

}  // namespace tk::system
