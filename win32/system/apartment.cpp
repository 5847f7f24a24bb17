#include "win32/system/apartment.h"

#include <atomic>
#include <mutex>

#include "ole2.h"
#include "win32/system/call_security.h"
#include "win32/system/class_objects.h"
#include "win32/system/class_servers.h"

namespace tk::system {
namespace {

enum class Kind : char { None, SingleThreaded, MultiThreaded };

struct Process {
    std::mutex gate;  // a thread that enters waits for the last one leaving, and the other way round
    int threads = 0;
    std::atomic<int> multiThreaded = 0;
};

// Never destroyed: threads may outlive the static objects of the program.
Process& TheProcess() {
    static auto& process = *new Process;
    return process;
}

constinit thread_local unsigned entered = 0;
constinit thread_local Kind kind = Kind::None;

/// The thread is neither in nor out any more; the gate is held.
void LeaveProcess(Process& process) noexcept {
    if (kind == Kind::MultiThreaded) process.multiThreaded.fetch_sub(1, std::memory_order_release);
    --process.threads;
    kind = Kind::None;
    entered = 0;
}

/// Takes back what a thread that ends did not. It calls no object any more: theirs may have ended before.
struct ThreadEnd {
    ~ThreadEnd() {
        if (entered == 0) return;
        Process& process = TheProcess();
        const std::lock_guard lock(process.gate);
        LeaveProcess(process);
    }
};

HRESULT Enter(Kind wanted) {
    if (entered != 0) {
        if (kind != wanted) return RPC_E_CHANGED_MODE;
        ++entered;
        return S_FALSE;
    }
    static thread_local ThreadEnd end;
    static_cast<void>(&end);
    Process& process = TheProcess();
    const std::lock_guard lock(process.gate);
    ++process.threads;
    if (wanted == Kind::MultiThreaded) process.multiThreaded.fetch_add(1, std::memory_order_release);
    kind = wanted;
    entered = 1;
    return S_OK;
}

void Leave() {
    if (entered == 0) return;
    if (--entered != 0) return;
    Process& process = TheProcess();
    // Taken out under the gate, released behind it: their last Release may enter again.
    RegisteredClassObjects registered;
    KeptClassObjects kept;
    const std::lock_guard lock(process.gate);
    LeaveProcess(process);
    if (process.threads != 0) return;
    registered = TakeRegisteredClassObjects();
    kept = TakeKeptClassObjects();
    ForgetProcessSecurity();
}

}  // namespace

bool IsInitialized() noexcept {
    return entered != 0 || TheProcess().multiThreaded.load(std::memory_order_acquire) > 0;
}

}  // namespace tk::system

using namespace tk::system;

HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit) {
    constexpr DWORD kKnown = COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE | COINIT_SPEED_OVER_MEMORY;
    if (pvReserved != nullptr || (dwCoInit & ~kKnown) != 0) return E_INVALIDARG;
    return Enter((dwCoInit & COINIT_APARTMENTTHREADED) != 0 ? Kind::SingleThreaded : Kind::MultiThreaded);
}

HRESULT CoInitialize(LPVOID pvReserved) {
    return CoInitializeEx(pvReserved, COINIT_APARTMENTTHREADED);
}
void CoUninitialize() {
    Leave();
}

HRESULT OleInitialize(LPVOID pvReserved) {
    return CoInitializeEx(pvReserved, COINIT_APARTMENTTHREADED);
}
void OleUninitialize() {
    Leave();
}
