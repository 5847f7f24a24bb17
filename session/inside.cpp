#include "session/inside.h"

#include <cstdint>
#include <iterator>
#include <utility>

#include "session/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace tk::session {
namespace {

/// What the living carry behind their fields.
constexpr unsigned kClientMark = 0x544B4443;
constexpr unsigned kServerMark = 0x544B4453;

// Looks at memory that may belong to anything, which is what sanitizers are there to find.
template <typename Object>
__attribute__((no_sanitize("address", "thread", "undefined"))) bool Carries(const void* memory, unsigned wanted,
                                                                            const std::atomic<unsigned>& mark) {
    if (reinterpret_cast<std::uintptr_t>(memory) % alignof(Object) != 0) return false;
    if (!IsValidAddress(memory, sizeof(Object))) return false;
    static_assert(sizeof mark == sizeof(unsigned));
    return __atomic_load_n(reinterpret_cast<const unsigned*>(&mark), __ATOMIC_RELAXED) == wanted;
}

/// A pool object that was never there (a null server, memory gone) has no last error to set, and still has a message.
template <typename Pool>
void SetAndLog(Pool& pool, const char* who, const char* place) {
    CString text;
    util::RunGuarded([&] { text = GetExceptionError(who, place); });
    util::RunGuarded([&] { Inside::SetError(pool, text); });
    if (!LateRecords::Keep(who, place)) util::RunGuarded([&] { AddErrorLog(text, 0, 0, nullptr); });
}

constinit thread_local LateRecords* keeper = nullptr;

}  // namespace

void LateRecords::Begin() noexcept {
    if (keeper == nullptr) keeper = this;
}

void LateRecords::Write() noexcept {
    if (keeper != this) return;
    keeper = nullptr;
    const std::size_t count = std::exchange(count_, 0);
    for (std::size_t i = 0; i < count; ++i)
        util::RunGuarded([&] { AddErrorLog(GetExceptionError(records_[i].who, records_[i].place), 0, 0, nullptr); });
}

bool LateRecords::Keep(const char* who, const char* place) noexcept {
    if (keeper == nullptr || keeper->count_ == std::size(keeper->records_)) return false;
    keeper->records_[keeper->count_++] = {who, place};
    return true;
}

void Inside::Report(CTDataServer& server, const char* place) {
    SetAndLog(server, kServerName, place);
    util::RunGuarded([&] { server.counters_.faults.fetch_add(1, std::memory_order_relaxed); });
}

void Inside::Report(CTDataClient& client, const char* place) {
    SetAndLog(client, kClientName, place);
    // The client or its server may be what faulted, or be gone.
    util::RunGuarded([&]() __attribute__((no_sanitize("undefined"))) {
        CTDataServer* const server = client.server_;
        if (!Carries<CTDataServer>(server, kServerMark, server->mark_)) return;
        server->counters_.clientFaults.fetch_add(1, std::memory_order_relaxed);
    });
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
    client.mark_ = kClientMark;
}

void Inside::Mark(CTDataServer& server) {
    server.mark_ = kServerMark;
}

void Inside::Unmark(CTDataClient& client) {
    client.mark_ = 0;
}

void Inside::Unmark(CTDataServer& server) {
    server.mark_ = 0;
}

__attribute__((no_sanitize("undefined"))) bool Inside::IsClient(const void* owner) {
    return Carries<CTDataClient>(owner, kClientMark, static_cast<const CTDataClient*>(owner)->mark_);
}

}  // namespace tk::session
