#include "session/inside.h"

#include <cstdint>

#include "session/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace tk::session {
namespace {

/// What a living client carries behind its fields.
constexpr unsigned kMark = 0x544B4443;

/// A pool object that was never there (a null server, memory gone) has no last error to set, and still has a message.
template <typename Pool>
void SetAndLog(Pool& pool, const char* who, const char* place) {
    CString text;
    util::RunGuarded([&] { text = GetExceptionError(who, place); });
    util::RunGuarded([&] { Inside::SetError(pool, text); });
    util::RunGuarded([&] { AddErrorLog(text, 0, 0, nullptr); });
}

}  // namespace

void Inside::Report(CTDataServer& server, const char* place) {
    SetAndLog(server, kServerName, place);
    util::RunGuarded([&] { server.counters_.faults.fetch_add(1, std::memory_order_relaxed); });
}

void Inside::Report(CTDataClient& client, const char* place) {
    SetAndLog(client, kClientName, place);
}

void Inside::SetError(CTDataServer& server, const CString& text) {
    const Entered entered(server.lastErrorLock_);
    server.lastError_ = text;
}

CString Inside::GetError(CTDataServer& server) {
    const Entered entered(server.lastErrorLock_);
    return server.lastError_;
}

void Inside::SetError(CTDataClient& client, const CString& text) {
    const Entered entered(client.lastErrorLock_);
    client.lastError_ = text;
}

CString Inside::GetError(CTDataClient& client) {
    const Entered entered(client.lastErrorLock_);
    return client.lastError_;
}

void Inside::Mark(CTDataClient& client) {
    client.mark_ = kMark;
}

// Looks at memory that may belong to anything, which is what sanitizers are there to find.
__attribute__((no_sanitize("address", "thread", "undefined"))) bool Inside::IsClient(const void* owner) {
    if (reinterpret_cast<std::uintptr_t>(owner) % alignof(CTDataClient) != 0) return false;
    if (!IsValidAddress(owner, sizeof(CTDataClient))) return false;
    const auto& mark = static_cast<const CTDataClient*>(owner)->mark_;
    static_assert(sizeof mark == sizeof(unsigned));
    return __atomic_load_n(reinterpret_cast<const unsigned*>(&mark), __ATOMIC_RELAXED) == kMark;
}

}  // namespace tk::session
