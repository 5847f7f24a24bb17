#include "util/posix/signal_stack.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <optional>

namespace tk::util {
namespace {

// Room for the frame the kernel writes, for our handler, and for the handler of a crash reporter behind ours.
constexpr std::size_t kStackBytes = 64 * 1024;

std::size_t GuardBytes() noexcept {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void Free(void* block) {
    // Somebody may have put another stack in its place meanwhile; that one stays.
    char* const bottom = static_cast<char*>(block) + GuardBytes();
    stack_t now{};
    if (sigaltstack(nullptr, &now) == 0 && now.ss_sp == bottom) {
        const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
        sigaltstack(&none, nullptr);
    }
    munmap(block, GuardBytes() + kStackBytes);
}

/// A key whose value is freed after everything else of the thread, thread_local objects included; nothing when a
/// process has used up its keys.
std::optional<pthread_key_t> FreedWithThread() noexcept {
    static const std::optional<pthread_key_t> key = [] {
        pthread_key_t made{};
        return pthread_key_create(&made, &Free) == 0 ? std::optional(made) : std::nullopt;
    }();
    return key;
}

}  // namespace

void EnsureSignalStack() noexcept {
    stack_t now{};
    if (sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0) return;
    const auto key = FreedWithThread();
    if (!key) return;
    const std::size_t guard = GuardBytes();
    void* const block =
        mmap(nullptr, guard + kStackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (block == MAP_FAILED) return;
    mprotect(block, guard, PROT_NONE);
    const stack_t ours{.ss_sp = static_cast<char*>(block) + guard, .ss_flags = 0, .ss_size = kStackBytes};
    if (sigaltstack(&ours, nullptr) != 0 || pthread_setspecific(*key, block) != 0) Free(block);
}

}  // namespace tk::util
