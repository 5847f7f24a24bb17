#include "process.h"

#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace {

struct Start {
    void (*function)(void*);
    void* argument;
};

void* Run(void* data) {
    const Start start = *std::unique_ptr<Start>(static_cast<Start*>(data));
    start.function(start.argument);
    return nullptr;
}

}  // namespace

int _getpid() {
    return getpid();
}

UINT_PTR _beginthread(void (*start_address)(void*), unsigned stack_size, void* arglist) {
    constexpr auto kFailed = static_cast<UINT_PTR>(-1);
    if (start_address == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stack_size != 0) pthread_attr_setstacksize(&attributes, std::max<std::size_t>(stack_size, PTHREAD_STACK_MIN));
    auto start = std::make_unique<Start>(Start{start_address, arglist});
    pthread_t thread{};
    const int error = pthread_create(&thread, &attributes, Run, start.get());
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        errno = error;
        return kFailed;
    }
    static_cast<void>(start.release());
    return static_cast<UINT_PTR>(thread);
}
