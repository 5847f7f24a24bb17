// A thread as the owner of mutexes.
#pragma once

#include <cstdint>

namespace tk::kernel {

inline constexpr int kThreadBits = 20;

/// The number that stands in a mutex of the calling thread: its process (0 for unnamed mutexes) above its own number.
/// From the first call on, the mutexes of the thread are given up as abandoned when it ends.
std::uint32_t OwnerOfThread(std::uint32_t process) noexcept;

/// In a child of fork.
void RenewThreadNumbers() noexcept;

constexpr std::uint32_t ProcessOfOwner(std::uint32_t owner) noexcept {
    return owner >> kThreadBits;
}
constexpr std::uint32_t ThreadOfOwner(std::uint32_t owner) noexcept {
    return owner & ((1u << kThreadBits) - 1);
}

}  // namespace tk::kernel
