// pool_faults.h - what can happen inside a lent session, and a server that is none.
#pragma once

#include <atomic>
#include <stdexcept>
#include <utility>

#include "support/scripted_object.h"
#include "tkkernel/session.h"
#include "util/faults.h"

namespace tk::test {

struct Fault {
    const char* label;
    void (*happen)();
};
inline constexpr Fault kFaults[] = {
    {"read through null", ReadNull},    {"write through null", WriteNull},
    {"division by zero", DivideByZero}, {"a C++ exception", [] { throw std::runtime_error("no"); }},
    {"a number", [] { throw 7; }},
};

/// A fault of the automation object at its next call, and at no later one.
class OneFault {
public:
    OneFault(ScriptedObject& connection, ScriptedObject& records, void (*happen)(), int calls = 1)
        : objects_{&connection, &records}, left_(calls) {
        for (ScriptedObject* const object : objects_) {
            object->BeforeEachCall([this, happen] {
                if (--left_ != 0) return;
                std::atomic_signal_fence(std::memory_order_seq_cst);
                happen();
            });
        }
    }
    OneFault(const OneFault&) = delete;
    OneFault& operator=(const OneFault&) = delete;
    ~OneFault() {
        for (ScriptedObject* const object : objects_)
            object->BeforeEachCall({});
    }
    bool HasHappened() const { return left_ <= 0; }

private:
    ScriptedObject* objects_[2];
    int left_;
};

/// A server where there is no memory.
inline CTDataServer& NowhereServer() {
    return *reinterpret_cast<CTDataServer*>(16);
}

/// Calls a member of what may be no object, which the sanitizer is there to find.
template <typename Result, typename... Parameters, typename... Arguments>
__attribute__((no_sanitize("undefined"))) Result CallAnyway(CTDataServer& server,
                                                            Result (CTDataServer::*member)(Parameters...),
                                                            Arguments&&... arguments) {
    return (server.*member)(std::forward<Arguments>(arguments)...);
}

}  // namespace tk::test
