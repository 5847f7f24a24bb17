// One object for the process that is never destroyed: threads may outlive the static objects of the program.
#pragma once

#include <new>

namespace tk::kernel {

template <typename Object>
Object& Immortal() noexcept {
    alignas(Object) static unsigned char memory[sizeof(Object)];
    static Object& object = *new (memory) Object;
    return object;
}

}  // namespace tk::kernel
