// The mutexes that this process has handles to, for when one of its threads ends.
#pragma once

#include <cstdint>

namespace tk::kernel {

class Target;

void AddMutex(Target& mutex) noexcept;
void RemoveMutex(Target& mutex) noexcept;
void AbandonMutexesOf(std::uint32_t thread) noexcept;
/// In a child of fork.
void ForgetMutexes() noexcept;

}  // namespace tk::kernel
