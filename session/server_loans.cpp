#include "session/inside.h"
#include "session/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

using namespace tk::session;

namespace {

constexpr DWORD kLeaseMs = 180'000;

/// The age of a lease in milliseconds. The tick counter wraps after 49.7 days.
// Contract: an age that spans the wrap counts a millisecond less.
DWORD AgeOf(DWORD tick, DWORD now) noexcept {
    return now - tick - (now < tick ? 1 : 0);
}

/// A session from the free list, leased; null when there is none, or when it could not be leased: it stays free then.
template <typename Kind>
typename Kind::Object* TakeFree(CTDataServer& server, void* owner) {
    FreeList& free = Kind::Free(server);
    CTDataDriver* const session = free.TakeHead();
    if (session == nullptr) return nullptr;
    KindCounters& counters = Kind::CountersOf(server);
    if (Kind::Leases(server).Find(session) != nullptr) Count(counters.shared);
    if (!Inside::Register(server, session, owner, Kind::kCode)) {
        free.PutBack(session);
        return nullptr;
    }
    Count(counters.loans);
    return static_cast<typename Kind::Object*>(session);
}

template <typename Kind>
typename Kind::Object* Lend(CTDataServer& server, void* owner) {
    using Object = typename Kind::Object;
    HeldLock held(Inside::LockOf(server));
    return Inside::Run(server, held, Kind::kInvoke, static_cast<Object*>(nullptr), [&]() -> Object* {
        if (!Inside::IsEnabled(server)) {
            Inside::CountersOf(server).refusedClosed.fetch_add(1, std::memory_order_relaxed);
            return nullptr;
        }
        held.Enter();
        if (Kind::Free(server).GetCount() != 0) return TakeFree<Kind>(server, owner);
        Object* const taken = Kind::Force(server, owner);
        if (taken == nullptr) Count(Kind::CountersOf(server).refusals);
        held.Leave();
        if (IsValidAddress(taken, sizeof(Object))) return taken;
        Inside::SetError(server, kFullyOccupied);
        AddWarnLog(kLendingFailed, kFullyOccupied, 0, nullptr);
        return nullptr;
    });
}

/// Whether what has a lease can be a session: those of the pool need no look at the memory.
template <typename Kind>
bool IsSession(CTDataServer& server, typename Kind::Object* session) {
    const auto* const first = Kind::First(server);
    if (first != nullptr && session >= first && session < first + server.GetSectionCount()) return true;
    return IsValidAddress(session, sizeof(*session)) != 0;
}

template <typename Kind>
int TakeIn(CTDataServer& server, typename Kind::Object* session) {
    HeldLock held(Inside::LockOf(server));
    return Inside::Run(server, held, Kind::kRevoke, 0, [&] {
        if (!Inside::IsEnabled(server)) return 0;
        held.Enter();
        LeaseMap& leases = Kind::Leases(server);
        if (leases.Find(session) != nullptr && IsSession<Kind>(server, session)) {
            // First the room, without which the session would be on neither.
            FreeList& free = Kind::Free(server);
            free.Reserve(free.GetCount() + 1);
            leases.Remove(session);
            free.Append(session);
            Count(Kind::CountersOf(server).returns);
        }
        return 1;
    });
}

template <typename Kind>
typename Kind::Object* TakeOver(CTDataServer& server, void* newOwner) {
    using Object = typename Kind::Object;
    return Inside::Run(server, Kind::kForce, static_cast<Object*>(nullptr), [&]() -> Object* {
        const DWORD now = GetTickCount();
        LeaseMap& leases = Kind::Leases(server);
        // Contract: the first lease in the map's order that is old enough, not the oldest.
        const auto* const found =
            leases.FindFirst([&](const LeaseMap::Entry& entry) { return AgeOf(entry.lease.tick, now) >= kLeaseMs; });
        if (found == nullptr || found->session == nullptr) return nullptr;
        CTDataDriver* const session = found->session;
        void* const owner = found->lease.owner;
        if (Inside::IsClient(owner)) Kind::TakeBack(*static_cast<CTDataClient*>(owner));
        // Contract: the client has put the session on the free list, and now it is leased as well.
        KindCounters& counters = Kind::CountersOf(server);
        Count(counters.takeovers);
        if (leases.Find(session) == nullptr) Count(counters.doubled);
        Inside::Register(server, session, newOwner, Kind::kCode);
        return static_cast<Object*>(session);
    });
}

}  // namespace

CTDatabase* CTDataServer::InvokeDatabase(void* pOwner) {
    return Lend<Inside::Databases>(*this, pOwner);
}

CTRecordset* CTDataServer::InvokeRecordset(void* pOwner) {
    return Lend<Inside::Recordsets>(*this, pOwner);
}

int CTDataServer::RevokeDatabase(CTDatabase* pDatabase) {
    return TakeIn<Inside::Databases>(*this, pDatabase);
}

int CTDataServer::RevokeRecordset(CTRecordset* pRecordset) {
    return TakeIn<Inside::Recordsets>(*this, pRecordset);
}

CTDatabase* CTDataServer::ForceDatabase(void* pNewOwner) {
    return TakeOver<Inside::Databases>(*this, pNewOwner);
}

CTRecordset* CTDataServer::ForceRecordset(void* pNewOwner) {
    return TakeOver<Inside::Recordsets>(*this, pNewOwner);
}

int CTDataServer::RegisterRole(CTDataDriver* pObject, void* pOwner, unsigned long nKind) {
    return Inside::Run(*this, "RegisterRole", 0, [&] {
        const Lease lease = {GetTickCount(), pOwner, static_cast<DWORD>(nKind)};
        LeaseMap& leases = nKind != 0 ? recordsetLeases_ : databaseLeases_;
        leases.Set(pObject, lease);
        return 1;
    });
}
