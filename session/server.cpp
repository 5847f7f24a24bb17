#include <algorithm>

#include "session/inside.h"
#include "session/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"
#include "util/text.h"

using namespace tk::session;

namespace {

constexpr short kFewestSessions = 4;

template <std::size_t Size>
void Keep(char (&buffer)[Size], const char* text) {
    const std::string_view kept = tk::util::WholeCharacters(tk::util::OrEmpty(text), Size - 1);
    std::fill(std::copy(kept.begin(), kept.end(), buffer), buffer + Size, '\0');
}

/// Ends the sessions of an array, each whatever happens to the others. @return whether all of them ended well
template <typename Object>
bool Destroy(SessionArray<Object>& sessions) {
    bool isWhole = true;
    while (Object* const last = sessions.TakeLast())
        isWhole &= tk::util::RunGuarded([&] { std::destroy_at(last); });
    sessions.Free();
    return isWhole;
}

}  // namespace

CTDataServer::CTDataServer() {
    Inside::Mark(*this);
}

CTDataServer::~CTDataServer() {
    CloseDatabase();
    Inside::Unmark(*this);
    // What is left: former sessions of a pool whose last opening failed.
    for (Sessions& sessions : former_) {
        Destroy(sessions.databases);
        Destroy(sessions.recordsets);
    }
    Destroy(databases_);
    Destroy(recordsets_);
}

/// Nothing is free any more. For who holds the lock.
void Inside::EmptyFreeLists(CTDataServer& server) {
    server.freeDatabases_.RemoveAll();
    server.freeRecordsets_.RemoveAll();
    server.counters_.databases.twice = 0;
    server.counters_.recordsets.twice = 0;
}

int CTDataServer::OpenDatabase(const char* szConnection, const char* szUser, const char* szPassword, short nCount) {
    tk::util::OfferFaultsFirst();
    bool isOpening = false;
    HeldLock held(lock_);
    const auto giveUp = [&] {
        if (!isOpening) return;  // the sessions are those of the pool as it was
        held.Enter();
        Inside::EmptyFreeLists(*this);
        held.Leave();
        ++opening_;
        Destroy(databases_);
        Destroy(recordsets_);
    };
    const auto open = [&] {
        Keep(connection_, szConnection);
        Keep(user_, szUser);
        Keep(password_, szPassword);
        // Contract: kept when the opening fails, so that lending says "fully occupied" and not "not open".
        count_ = std::max(nCount, kFewestSessions);
        const auto count = static_cast<std::size_t>(count_.load());
        if (databases_.First() != nullptr) {
            former_.reserve(former_.size() + 1);  // nothing fails while they move
            former_.push_back({std::move(databases_), std::move(recordsets_)});
        }
        isOpening = true;
        std::atomic_signal_fence(std::memory_order_seq_cst);  // written before anything can fault
        databases_.Allocate(count);
        recordsets_.Allocate(count);
        for (std::size_t i = 0; i < count; ++i) {
            databases_.Add();
            recordsets_.Add();
        }
        held.Enter();
        Inside::EmptyFreeLists(*this);
        // A session that was taken back by force is on its list twice for a while.
        freeDatabases_.Reserve(count + 1);
        freeRecordsets_.Reserve(count + 1);
        databaseLeases_.Reserve(count);
        recordsetLeases_.Reserve(count);
        held.Leave();
        for (std::size_t i = 0; i < count; ++i) {
            CTDatabase& database = databases_.First()[i];
            CTRecordset& recordset = recordsets_.First()[i];
            if (!database.Open(connection_, user_, password_) || !recordset.OpenDatabase(&database)) {
                const CString text = database.GetLastErrorString() + recordset.GetLastErrorString();
                Inside::SetError(*this, text);
                AddErrorLog(text, 0, 0, nullptr);
                giveUp();
                return 0;
            }
            held.Enter();
            freeDatabases_.Append(&database);
            freeRecordsets_.Append(&recordset);
            held.Leave();
        }
        return 1;
    };
    // A fault leaves what a failure leaves.
    return Inside::RunOr(*this, held, "OpenDatabase", 0, open, giveUp);
}

int CTDataServer::CloseDatabase() {
    HeldLock held(lock_);
    return Inside::Run(*this, held, "CloseDatabase", 0, [&] {
        if (databases_.First() == nullptr && recordsets_.First() == nullptr) return 1;
        former_.reserve(former_.size() + 1);  // nothing fails once the sessions are closed
        bool isWhole = true;
        for (std::size_t i = 0; i < databases_.GetCount(); ++i) {
            isWhole &= tk::util::RunGuarded([&] { databases_.First()[i].Close(); });
            isWhole &= tk::util::RunGuarded([&] { recordsets_.First()[i].CloseDatabase(); });
        }
        held.Enter();
        ++opening_;
        former_.push_back({std::move(databases_), std::move(recordsets_)});
        Inside::EmptyFreeLists(*this);
        recordsetLeases_.RemoveAll();
        databaseLeases_.RemoveAll();
        Keep(connection_, "");
        Keep(user_, "");
        Keep(password_, "");
        count_ = 0;
        held.Leave();
        // Last, when nothing refers to them any more, whatever happens.
        for (Sessions& sessions : former_) {
            isWhole &= Destroy(sessions.databases);
            isWhole &= Destroy(sessions.recordsets);
        }
        former_.clear();
        if (!isWhole) Inside::Report(*this, "CloseDatabase");
        return isWhole ? 1 : 0;
    });
}

int CTDataServer::GetConfiguration(short& nSessions, short& nFreeDatabases, short& nFreeRecordsets) {
    HeldLock held(lock_);
    return Inside::Run(*this, held, "GetConfiguration", 0, [&] {
        held.Enter();
        nSessions = count_;
        nFreeDatabases = static_cast<short>(freeDatabases_.GetCount());
        nFreeRecordsets = static_cast<short>(freeRecordsets_.GetCount());
        return 1;
    });
}

int CTDataServer::IsEnabled() {
    if (count_ != 0) return 1;
    Inside::SetError(*this, kNotOpen);
    return 0;
}

short CTDataServer::GetSectionCount() {
    return count_;
}

CString CTDataServer::GetLastErrorString() {
    return Inside::GetError(*this);
}

// ---- questions -----------------------------------------------------------------------------------------------------

namespace {

/// Asks the idle connection. An empty answer becomes the connection's own reason.
template <typename Question>
CString Ask(CTDataServer& server, const char* place, const Question& question) {
    return Inside::Run(server, place, CString(), [&] {
        CTDatabase* const database = server.GetDatabase();
        if (!IsValidAddress(database, sizeof(CTDatabase))) return CString();
        const CString answer = question(*database);
        return answer.IsEmpty() ? database->GetLastErrorString() : answer;
    });
}

}  // namespace

CTDatabase* CTDataServer::GetDatabase() {
    CTDataDriver* const head = freeDatabases_.GetHead();
    return head != nullptr ? static_cast<CTDatabase*>(head) : databases_.First();
}

CString CTDataServer::GetDbmsName() {
    return Ask(*this, "GetDbmsName", [](CTDatabase& database) { return database.GetDbmsName(); });
}

CString CTDataServer::GetSpecialValue(const char* szSQL, const char* szFields) {
    return Ask(*this, "GetSpecialValue",
               [&](CTDatabase& database) { return database.GetSpecialValue(szSQL, szFields); });
}

CString CTDataServer::GetRecordValues(const char* szSQL, const char* szSeparator) {
    return Ask(*this, "GetRecordValues",
               [&](CTDatabase& database) { return database.GetRecordValues(szSQL, szSeparator); });
}
