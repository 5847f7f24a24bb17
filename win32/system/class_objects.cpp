#include "win32/system/class_objects.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <shared_mutex>

#include "win32/system/apartment.h"

namespace tk::system {
namespace {

struct Table {
    std::shared_mutex lock;
    RegisteredClassObjects entries;  // newest first
    std::atomic<std::size_t> count = 0;
    DWORD lastNumber = 0;
};

Table& TheTable() {
    static auto& table = *new Table;
    return table;
}

/// Where a registration can be found from; 0 when the combination does not exist.
DWORD EffectiveContext(DWORD context, DWORD use) noexcept {
    constexpr DWORD kServers = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER;
    const DWORD servers = context & kServers;
    if (servers == 0 || (context & ~(kServers | CLSCTX_INPROC_HANDLER | CLSCTX_REMOTE_SERVER)) != 0) return 0;
    switch (use) {
        case REGCLS_SINGLEUSE:
            return servers == CLSCTX_LOCAL_SERVER ? servers : 0;
        case REGCLS_MULTIPLEUSE:
            return servers | CLSCTX_INPROC_SERVER;
        case REGCLS_MULTI_SEPARATE:
            return servers;
        default:
            return 0;
    }
}

}  // namespace

InterfacePointer<IUnknown> FindRegisteredClassObject(REFCLSID clsid, DWORD wantedContext) {
    Table& table = TheTable();
    if (table.count.load(std::memory_order_acquire) == 0) return {};
    const auto matches = [&](const RegisteredClassObject& entry) {
        return !entry.suspended && (entry.context & wantedContext) != 0 && entry.clsid == clsid;
    };
    {
        const std::shared_lock lock(table.lock);
        const auto found = std::ranges::find_if(table.entries, matches);
        if (found == table.entries.end()) return {};
        if (!found->singleUse) return found->object;
    }
    const std::lock_guard lock(table.lock);
    const auto found = std::ranges::find_if(table.entries, matches);
    if (found == table.entries.end()) return {};
    // A single-use object stays registered, for its number is still to be revoked, but is given out no more.
    if (found->singleUse) found->context = 0;
    return found->object;
}

RegisteredClassObjects TakeRegisteredClassObjects() {
    Table& table = TheTable();
    const std::lock_guard lock(table.lock);
    table.count.store(0, std::memory_order_release);
    return std::exchange(table.entries, {});
}

}  // namespace tk::system

using namespace tk::system;

HRESULT CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext, DWORD flags, LPDWORD lpdwRegister) {
    if (lpdwRegister == nullptr) return E_INVALIDARG;
    *lpdwRegister = 0;
    if (!IsInitialized()) return CO_E_NOTINITIALIZED;
    const DWORD use = flags & ~static_cast<DWORD>(REGCLS_SUSPENDED);
    const DWORD context = EffectiveContext(dwClsContext, use);
    if (pUnk == nullptr || context == 0) return E_INVALIDARG;

    RegisteredClassObjects entry;
    entry.push_back({0, rclsid, InterfacePointer<IUnknown>::Shared(pUnk), context, use == REGCLS_SINGLEUSE,
                     (flags & REGCLS_SUSPENDED) != 0});
    Table& table = TheTable();
    const std::lock_guard lock(table.lock);
    if (++table.lastNumber == 0) ++table.lastNumber;
    *lpdwRegister = entry.front().number = table.lastNumber;
    table.entries.splice(table.entries.begin(), entry);
    table.count.store(table.entries.size(), std::memory_order_release);
    return S_OK;
}

HRESULT CoRevokeClassObject(DWORD dwRegister) {
    Table& table = TheTable();
    RegisteredClassObjects revoked;  // released behind the lock
    const std::lock_guard lock(table.lock);
    const auto found = std::ranges::find(table.entries, dwRegister, &RegisteredClassObject::number);
    if (found == table.entries.end()) return CO_E_OBJNOTREG;
    revoked.splice(revoked.begin(), table.entries, found);
    table.count.store(table.entries.size(), std::memory_order_release);
    return S_OK;
}

HRESULT CoResumeClassObjects() {
    Table& table = TheTable();
    const std::lock_guard lock(table.lock);
    for (RegisteredClassObject& entry : table.entries)
        entry.suspended = false;
    return S_OK;
}
