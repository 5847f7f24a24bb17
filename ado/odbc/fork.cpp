#include "ado/odbc/fork.h"

#include <pthread.h>

#include <atomic>

namespace tk::ado {
namespace {

constinit std::atomic<unsigned> generation = 1;

// Registered when the module is loaded; taken off by the loader when it is unloaded.
[[maybe_unused]] const int isRegistered = pthread_atfork(nullptr, nullptr, [] { ++generation; });

}  // namespace

unsigned ForkGeneration() noexcept {
    return generation.load(std::memory_order_relaxed);
}

}  // namespace tk::ado
