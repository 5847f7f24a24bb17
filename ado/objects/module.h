// ado/objects/module.h - what keeps the server loaded: living objects and locks.
#pragma once

#include <atomic>

namespace tk::ado {

inline std::atomic<long> moduleUses{0};

}  // namespace tk::ado
