// session/inside.h - the members of the pool: how each runs its work, and what a fault in it becomes.
//
//   return Inside::Run(*this, "InvokeDatabase", nullptr, [&] { return Lend(); });  // place, failure value, work
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

#include "session/held_lock.h"
#include "tkkernel/session.h"
#include "util/fault_guard.h"

namespace tk::session {

/// The records of faults that happen while the server's lock is held for somebody else's work, a client's for one: the
/// event log gets them once the lock is left. Stands outside of the guarded work and of the lock.
class LateRecords {
public:
    LateRecords() = default;
    LateRecords(const LateRecords&) = delete;
    LateRecords& operator=(const LateRecords&) = delete;
    ~LateRecords() { Write(); }

    /// From here on this keeps what faults on this thread, in whichever pool object, unless another one does already.
    void Begin() noexcept;
    void Write() noexcept;

    /// @return whether somebody keeps it
    static bool Keep(const char* who, const char* place) noexcept;

private:
    struct Record {
        const char* who;
        const char* place;
    };

    Record records_[4] = {};
    std::size_t count_ = 0;
};

struct Inside {
    /// Runs a member of the server or of a client. Whatever ends the work early becomes the message that names the
    /// place, and the failure value.
    template <typename Pool, typename Result, typename Work>
    static Result Run(Pool& pool, const char* place, Result failure, Work&& work) {
        return RunOr(pool, place, std::move(failure), std::forward<Work>(work), [] {});
    }

    /// The same for work that enters a lock, which is left before the message is written.
    template <typename Pool, typename Result, typename Work>
    static Result Run(Pool& pool, HeldLock& held, const char* place, Result failure, Work&& work) {
        return RunOr(pool, held, place, std::move(failure), std::forward<Work>(work), [] {});
    }

    /// The same; afterwards returns what the member was working with, whatever happens in that.
    template <typename Pool, typename Result, typename Work, typename GiveBack>
    static Result RunOr(Pool& pool, const char* place, Result failure, Work&& work, GiveBack&& giveBack) {
        HeldLock none;
        return RunOr(pool, none, place, std::move(failure), std::forward<Work>(work), std::forward<GiveBack>(giveBack));
    }

    template <typename Pool, typename Result, typename Work, typename GiveBack>
    static Result RunOr(Pool& pool, HeldLock& held, const char* place, Result failure, Work&& work,
                        GiveBack&& giveBack) {
        Result result = failure;
        if (util::RunGuarded([&] { result = work(); })) return result;
        held.Leave();
        Report(pool, place);
        util::RunGuarded([&] { giveBack(); });
        return failure;
    }

    /// The message as the last error and in the event log, there later where that is due. Each step for itself: none
    /// keeps the caller from going on.
    static void Report(CTDataServer& server, const char* place);
    static void Report(CTDataClient& client, const char* place);

    static void SetError(CTDataServer& server, const CString& text);
    static CString GetError(CTDataServer& server);
    static void SetError(CTDataClient& client, const CString& text);
    static CString GetError(CTDataClient& client);

    static Counters& CountersOf(CTDataServer& server) { return server.counters_; }
    static CCriticalSection& LockOf(CTDataServer& server) { return server.lock_; }
    static void EmptyFreeLists(CTDataServer& server);

    /// Clients and servers that live carry a mark; other memory does not.
    static void Mark(CTDataClient& client);
    static void Mark(CTDataServer& server);
    static void Unmark(CTDataClient& client);
    static void Unmark(CTDataServer& server);
    static bool IsClient(const void* owner);

    // ---- what the two kinds of sessions have apart -------------------------------------------------------------

    struct Databases {
        using Object = CTDatabase;
        static constexpr DWORD kCode = 0;  // in a lease
        static constexpr char kInvoke[] = "InvokeDatabase";
        static constexpr char kRevoke[] = "RevokeDatabase";
        static constexpr char kForce[] = "ForceDatabase";
        static FreeList& Free(CTDataServer& server) { return server.freeDatabases_; }
        static LeaseMap& Leases(CTDataServer& server) { return server.databaseLeases_; }
        static KindCounters& CountersOf(CTDataServer& server) { return server.counters_.databases; }
        static SessionArray<Object>& All(CTDataServer& server) { return server.databases_; }
        static void TakeBack(CTDataClient& client) { client.EndTrans(); }
    };

    struct Recordsets {
        using Object = CTRecordset;
        static constexpr DWORD kCode = 1;
        static constexpr char kInvoke[] = "InvokeRecordset";
        static constexpr char kRevoke[] = "RevokeRecordset";
        static constexpr char kForce[] = "ForceRecordset";
        static FreeList& Free(CTDataServer& server) { return server.freeRecordsets_; }
        static LeaseMap& Leases(CTDataServer& server) { return server.recordsetLeases_; }
        static KindCounters& CountersOf(CTDataServer& server) { return server.counters_.recordsets; }
        static SessionArray<Object>& All(CTDataServer& server) { return server.recordsets_; }
        static void TakeBack(CTDataClient& client) { client.CloseSQL(); }
    };

    static int IsEnabled(CTDataServer& server) { return server.IsEnabled(); }

    // ---- a client's loans -------------------------------------------------------------------------------------

    /// Notes what the server lent; null when it had nothing.
    template <typename Object>
    static void Take(CTDataClient::Loan<Object>& loan, CTDataServer& lender, Object* object) {
        loan.lender = &lender;
        loan.opening = lender.opening_.load();
        loan.object = object;
    }

    /// @return what is held of this server; null when nothing is, or when the server has closed it since
    template <typename Object>
    static Object* Held(const CTDataClient::Loan<Object>& loan, CTDataServer* server) {
        const bool isOver = server != nullptr && loan.lender == server && loan.opening != server->opening_;
        return isOver ? nullptr : loan.object.load();
    }

    /// Ends the loan. @return what has to be given back to the server; null when nothing was held
    template <typename Object>
    static Object* GiveUp(CTDataClient::Loan<Object>& loan, CTDataServer* server) {
        Object* const held = Held(loan, server);
        Object* const object = loan.object.exchange(nullptr);
        return object == held ? held : nullptr;
    }

    // ---- what a client's members do, defined where they are used --------------------------------------------------

    template <typename Result, typename Work>
    static Result OnConnection(CTDataClient& client, const char* place, Result refused, const Work& work);
    template <typename Question>
    static CString OnServer(CTDataClient& client, const char* place, const Question& question);
    template <typename Result, typename Work>
    static Result OnRecordset(CTDataClient& client, const char* place, Result refused, const Work& work);
    static int OpenRecordset(CTDataClient& client, const char* place, const char* source, long pageSize, int option,
                             int (CTRecordset::*open)(const char*, int));
};

/// Counts under the server's lock.
template <typename Number>
void Count(std::atomic<Number>& counter, Number more = 1) noexcept {
    counter.store(counter.load(std::memory_order_relaxed) + more, std::memory_order_relaxed);
}

}  // namespace tk::session
