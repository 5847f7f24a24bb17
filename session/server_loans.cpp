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

/// Where leases are recorded, in messages.
constexpr char kRegister[] = "RegisterRole";

/// Takes the session that is next from the free list and records its lease; where that faults, it stays free.
template <typename Kind>
typename Kind::Object* TakeFree(CTDataServer& server, void* owner) {
    FreeList& free = Kind::Free(server);
    CTDataDriver* const session = free.GetHead();
    const bool wasLent = Kind::Leases(server).Set(session, {GetTickCount(), owner, Kind::kCode});
    free.TakeHead();
    KindCounters& counters = Kind::CountersOf(server);
    Count(counters.loans);
    if (wasLent) {
        Count(counters.shared);
        Count(counters.twice, std::int64_t{-1});
    }
    return static_cast<typename Kind::Object*>(session);
}

/// Gives a lease that is old enough to a new owner.
/// @param late  keeps the records of what faults on the way, the client's members among it
template <typename Kind>
typename Kind::Object* TakeOver(CTDataServer& server, void* newOwner, LateRecords& late) {
    late.Begin();
    CTDataDriver* taken = nullptr;
    const char* place = Kind::kForce;
    const auto work = [&] {
        const DWORD now = GetTickCount();
        LeaseMap& leases = Kind::Leases(server);
        // Contract: the first lease in the map's order that is old enough, not the oldest.
        const auto* const found =
            leases.FindFirst([&](const LeaseMap::Entry& entry) { return AgeOf(entry.lease.tick, now) >= kLeaseMs; });
        if (found == nullptr || found->session == nullptr) return;
        CTDataDriver* const session = found->session;
        void* const owner = found->lease.owner;
        if (Inside::IsClient(owner)) Kind::TakeBack(*static_cast<CTDataClient*>(owner));
        taken = session;
        place = kRegister;
        std::atomic_signal_fence(std::memory_order_seq_cst);  // written before anything can fault
        KindCounters& counters = Kind::CountersOf(server);
        Count(counters.takeovers);
        // Contract: the client has put the session on the free list, and now it is leased as well.
        if (!leases.Set(session, {GetTickCount(), newOwner, Kind::kCode})) {
            Count(counters.doubled);
            Count(counters.twice);
        }
    };
    if (!tk::util::RunGuarded(work)) Inside::Report(server, place);
    return static_cast<typename Kind::Object*>(taken);
}

template <typename Kind>
typename Kind::Object* Lend(CTDataServer& server, void* owner) {
    using Object = typename Kind::Object;
    Object* lent = nullptr;
    const char* place = Kind::kInvoke;
    LateRecords late;
    HeldLock held(Inside::LockOf(server));
    const auto work = [&] {
        if (!Inside::IsEnabled(server)) {
            Inside::CountersOf(server).refusedClosed.fetch_add(1, std::memory_order_relaxed);
            return;
        }
        held.Enter();
        if (Kind::Free(server).GetCount() != 0) {
            place = kRegister;
            std::atomic_signal_fence(std::memory_order_seq_cst);  // written before anything can fault
            lent = TakeFree<Kind>(server, owner);
            return;
        }
        Object* const taken = TakeOver<Kind>(server, owner, late);
        if (taken == nullptr) Count(Kind::CountersOf(server).refusals);
        held.Leave();
        late.Write();
        if (IsValidAddress(taken, sizeof(Object))) {
            lent = taken;
            return;
        }
        Inside::SetError(server, kFullyOccupied);
        AddWarnLog(kLendingFailed, kFullyOccupied, 0, nullptr);
    };
    if (tk::util::RunGuarded(work)) return lent;
    held.Leave();
    Inside::Report(server, place);
    return nullptr;
}

/// Whether what has a lease can be a session: those of the pool need no look at the memory.
template <typename Kind>
bool IsSession(CTDataServer& server, typename Kind::Object* session) {
    const auto& all = Kind::All(server);
    if (session >= all.First() && session < all.First() + all.GetCount()) return true;
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
typename Kind::Object* Force(CTDataServer& server, void* newOwner) {
    using Object = typename Kind::Object;
    LateRecords late;
    HeldLock held(Inside::LockOf(server));
    return Inside::Run(server, held, Kind::kForce, static_cast<Object*>(nullptr), [&] {
        held.Enter();
        return TakeOver<Kind>(server, newOwner, late);
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
    return Force<Inside::Databases>(*this, pNewOwner);
}

CTRecordset* CTDataServer::ForceRecordset(void* pNewOwner) {
    return Force<Inside::Recordsets>(*this, pNewOwner);
}

int CTDataServer::RegisterRole(CTDataDriver* pObject, void* pOwner, unsigned long nKind) {
    HeldLock held(lock_);
    return Inside::Run(*this, held, kRegister, 0, [&] {
        const Lease lease = {GetTickCount(), pOwner, static_cast<DWORD>(nKind)};
        held.Enter();
        (nKind != 0 ? recordsetLeases_ : databaseLeases_).Set(pObject, lease);
        return 1;
    });
}
