#include "win32/kernel/thread_owner.h"

#include <pthread.h>

#include <mutex>
#include <new>
#include <vector>

#include "win32/kernel/immortal.h"
#include "win32/kernel/mutex_list.h"

namespace tk::kernel {
namespace {

void End(void* number) noexcept;

/// Numbers of threads, from 1; that of a thread that ended is given out again.
struct Numbers {
    Numbers() noexcept { pthread_key_create(&key, End); }

    std::mutex gate;
    std::vector<std::uint32_t> free;
    std::uint32_t last = 0;
    pthread_key_t key{};
};

Numbers& TheNumbers() noexcept {
    return Immortal<Numbers>();
}

void End(void* number) noexcept {
    const auto thread = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(number));
    AbandonMutexesOf(thread);
    Numbers& numbers = TheNumbers();
    const std::lock_guard lock(numbers.gate);
    try {
        numbers.free.push_back(thread);
    } catch (const std::bad_alloc&) {
        // The number is not used again.
    }
}

}  // namespace

std::uint32_t OwnerOfThread(std::uint32_t process) noexcept {
    Numbers& numbers = TheNumbers();
    auto thread = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pthread_getspecific(numbers.key)));
    if (thread == 0) {
        {
            const std::lock_guard lock(numbers.gate);
            if (numbers.free.empty()) {
                thread = ++numbers.last;
            } else {
                thread = numbers.free.back();
                numbers.free.pop_back();
            }
        }
        pthread_setspecific(numbers.key, reinterpret_cast<void*>(std::uintptr_t{thread}));
    }
    return process << kThreadBits | thread;
}

void RenewThreadNumbers() noexcept {
    new (&TheNumbers().gate) std::mutex;
}

}  // namespace tk::kernel
