#include "tests/win32/system/resolver_support.h"

#include <dlfcn.h>
#include <netdb.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

struct State {
    std::mutex lock;
    std::condition_variable changed;
    bool silent = false;
    int answer = 0;  // 0: none yet
    int questions = 0;
    int open = 0;
};

State& TheState() {
    static auto& state = *new State;
    return state;
}

/// Waits until there is an answer. @return false when the real system is to be asked
bool TakePart(int* error) {
    State& state = TheState();
    std::unique_lock guard(state.lock);
    if (!state.silent) return false;
    ++state.questions;
    ++state.open;
    state.changed.notify_all();
    state.changed.wait(guard, [&] { return state.answer != 0; });
    *error = state.answer;
    --state.open;
    state.changed.notify_all();
    return true;
}

template <class Condition>
bool WaitUntil(Condition condition) {
    State& state = TheState();
    std::unique_lock guard(state.lock);
    return state.changed.wait_for(guard, std::chrono::seconds(10), [&] { return condition(state); });
}

}  // namespace

#define IN_FRONT extern "C" __attribute__((visibility("default")))

IN_FRONT int gethostbyname2_r(const char* name, int type, hostent* entry, char* buffer, std::size_t size,
                              hostent** found, int* error) {
    *found = nullptr;
    if (TakePart(error)) return 0;
    using Function = int (*)(const char*, int, hostent*, char*, std::size_t, hostent**, int*);
    static const auto own = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "gethostbyname2_r"));
    return own(name, type, entry, buffer, size, found, error);
}

IN_FRONT int gethostbyaddr_r(const void* address, socklen_t length, int type, hostent* entry, char* buffer,
                             std::size_t size, hostent** found, int* error) {
    *found = nullptr;
    if (TakePart(error)) return 0;
    using Function = int (*)(const void*, socklen_t, int, hostent*, char*, std::size_t, hostent**, int*);
    static const auto own = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "gethostbyaddr_r"));
    return own(address, length, type, entry, buffer, size, found, error);
}

namespace tk::test {

SilentSystem::SilentSystem() {
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    state.silent = true;
    state.answer = 0;
    state.questions = 0;
}

SilentSystem::~SilentSystem() {
    Answer(NO_RECOVERY);
    WaitForIdle();
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    state.silent = false;
}

void SilentSystem::Answer(int error) const {
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    state.answer = error;
    state.changed.notify_all();
}

int SilentSystem::Questions() const {
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    return state.questions;
}

bool SilentSystem::WaitForQuestions(int count) const {
    return WaitUntil([&](const State& state) { return state.questions >= count; });
}

bool SilentSystem::WaitForIdle() const {
    return WaitUntil([](const State& state) { return state.open == 0; });
}

}  // namespace tk::test
