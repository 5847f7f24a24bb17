#include "ado/objects/connection.h"

#include <algorithm>

#include "ado/cursor/text.h"
#include "ado/objects/credential_memory.h"
#include "ado/objects/errors.h"
#include "ado/objects/open_rows.h"
#include "ado/objects/recordset.h"
#include "ado/schema/schema_rowset.h"

namespace tk::ado {
namespace {

constexpr std::u16string_view kVersion = u"2.8";
constexpr LONG kCommitRetaining = 0x20000;
constexpr LONG kAbortRetaining = 0x40000;

/// A closed connection is being opened, by one thread only, and closed again unless that succeeds.
class Opening {
public:
    explicit Opening(std::atomic<LONG>& state) : state_(state) {
        LONG before = kStateClosed;
        if (!state_.compare_exchange_strong(before, kStateConnecting)) throw AdoError(ErrorNumber::ObjectOpen);
    }
    ~Opening() {
        if (!isOpen_) state_.store(kStateClosed, std::memory_order_release);
    }
    void Succeed() noexcept {
        state_.store(kStateOpen, std::memory_order_release);
        isOpen_ = true;
    }

private:
    std::atomic<LONG>& state_;
    bool isOpen_ = false;
};

/// A statement runs. What becomes of the connection meanwhile is not the statement's to say.
class Executing {
public:
    explicit Executing(std::atomic<bool>& state) : state_(state) { state_.store(true, std::memory_order_relaxed); }
    ~Executing() { state_.store(false, std::memory_order_relaxed); }

private:
    std::atomic<bool>& state_;
};

}  // namespace

HRESULT Connection::QueryInterface(REFIID iid, void** object) {
    if (object != nullptr && iid == kConnectionObject) {
        *object = this;
        AddRef();
        return S_OK;
    }
    return AutomationObject::QueryInterface(iid, object);
}

void Connection::ExpectClosed() const {
    if (state_.load() != kStateClosed) throw AdoError(ErrorNumber::ObjectOpen);
}

std::shared_ptr<Session> Connection::OpenedSession(ErrorNumber whenClosed) const {
    const std::lock_guard lock(lock_);
    if (!session_) throw AdoError(whenClosed);
    return session_;
}

void Connection::Register(const std::shared_ptr<OpenRows>& rows) {
    {
        const std::lock_guard lock(lock_);
        if (session_) {
            std::erase_if(recordsets_, [](const auto& known) { return known.expired(); });
            return recordsets_.push_back(rows);
        }
    }
    // Another thread closed the connection while the rows were on their way.
    rows->closed.store(true, std::memory_order_release);
    rows->store->Fetched().Cancel();
}

ConnectionString Connection::Parsed() const {
    ConnectionString parsed = ConnectionString::Parse(ToUtf8(text_));
    if (!provider_.empty()) parsed.SetIfAbsent("Provider", ToUtf8(provider_));
    return parsed;
}

ConnectionProperties Connection::CurrentProperties() const {
    {
        const std::lock_guard lock(lock_);
        if (session_) return session_->Properties();
    }
    return ReadProperties(Parsed());
}

void Connection::Open(std::u16string_view text, std::u16string_view user, std::u16string_view password) {
    Opening opening(state_);
    if (!text.empty()) text_ = text;
    user_ = user;
    password_ = password;
    CredentialMemory& memory = CredentialMemory::Instance();
    const auto settings =
        memory.Prepare({text_, provider_, user_, password_, connectionTimeout_, IsReadOnlyMode(mode_)});
    std::shared_ptr<Session> session = Session::Open(*settings);
    memory.Remember(session->DisplayString(), *settings);
    {
        const std::lock_guard lock(lock_);
        session_ = std::move(session);
        opening.Succeed();
    }
}

void Connection::OpenMember(Call& call) {
    // The fourth argument may ask for an asynchronous open; the open is done when the call returns, which is early
    // enough.
    call.Long(3, -1);
    Open(call.Text(0, u""), call.Text(1, u""), call.Text(2, u""));
}

void Connection::CloseRecordsets() {
    std::vector<std::weak_ptr<OpenRows>> recordsets;
    {
        const std::lock_guard lock(lock_);
        recordsets.swap(recordsets_);
    }
    for (const auto& known : recordsets) {
        const auto rows = known.lock();
        if (!rows || rows->connection.Get() != this) continue;
        rows->closed.store(true, std::memory_order_release);
        rows->store->Fetched().Cancel();
    }
}

void Connection::Close(Call&) {
    const auto session = OpenedSession(ErrorNumber::ObjectClosed);
    if (session->InTransaction()) throw AdoError(ErrorNumber::InTransaction);
    {
        // Of two threads that close one closes and the other finds it closed.
        const std::lock_guard lock(lock_);
        if (session_ != session) throw AdoError(ErrorNumber::ObjectClosed);
        session_.reset();
        state_.store(kStateClosed, std::memory_order_release);
    }
    // Behind that, so that Register closes those which another thread is just opening.
    CloseRecordsets();
}

void Connection::Execute(Call& call) {
    Value converted;
    const std::u16string_view text = call.Text(0, converted);
    Command command = MakeCommand(text, call.Long(2, -1));
    const auto session = OpenedSession(ErrorNumber::ObjectClosed);
    Ref<Recordset> result;
    LONG affected = -1;
    {
        const Executing executing(isExecuting_);
        if (command.noRecords) {
            const Executed executed = RunWithoutRecords(*session, command, commandTimeout_);
            affected = executed.affected;
            if (!executed.warnings.empty()) errors_->ReplaceWarnings(executed.warnings);
        } else {
            Execution execution = MakeExecution(std::move(command), commandTimeout_);
            result = Recordset::FromCommand(Ref<Connection>(this), session, std::u16string(text), std::move(execution),
                                            affected);
        }
    }
    call.Store(1, Value(affected));
    call.ReturnObject(std::move(result));
}

void Connection::BeginTrans(Call& call) {
    OpenedSession(ErrorNumber::ObjectClosed)->Begin(isolationLevel_, commandTimeout_);
    call.ReturnLong(1);
}

void Connection::EndTransaction(bool commit) {
    const auto session = OpenedSession(ErrorNumber::ObjectClosed);
    if (commit) {
        session->Commit(commandTimeout_);
    } else {
        session->Rollback(commandTimeout_);
    }
    if ((attributes_ & (commit ? kCommitRetaining : kAbortRetaining)) != 0) {
        session->Begin(isolationLevel_, commandTimeout_);
    }
}

void Connection::CommitTrans(Call&) {
    EndTransaction(true);
}
void Connection::RollbackTrans(Call&) {
    EndTransaction(false);
}

void Connection::GetConnectionString(Call& call) {
    if (!IsOpen()) return call.ReturnText(text_);
    call.ReturnText(ToUtf16(OpenedSession(ErrorNumber::ObjectClosed)->DisplayString()));
}

void Connection::PutConnectionString(Call& call) {
    ExpectClosed();
    text_ = call.Text(0);
}

void Connection::GetCommandTimeout(Call& call) {
    call.ReturnLong(commandTimeout_);
}

void Connection::PutCommandTimeout(Call& call) {
    const LONG seconds = call.Long(0);
    if (seconds < 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(seconds));
    commandTimeout_ = seconds;
}

void Connection::GetConnectionTimeout(Call& call) {
    call.ReturnLong(connectionTimeout_);
}

void Connection::PutConnectionTimeout(Call& call) {
    const LONG seconds = call.Long(0);
    ExpectClosed();
    if (seconds < 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(seconds));
    connectionTimeout_ = seconds;
}

void Connection::GetVersion(Call& call) {
    call.ReturnText(kVersion);
}

void Connection::GetErrors(Call& call) {
    call.ReturnObject(Make<tk::ado::Errors>(errors_));
}

void Connection::GetDefaultDatabase(Call& call) {
    call.ReturnText(ToUtf16(OpenedSession(ErrorNumber::ObjectClosed)->CurrentCatalog()));
}

void Connection::PutDefaultDatabase(Call& call) {
    const std::u16string name = call.Text(0);
    OpenedSession(ErrorNumber::ObjectClosed)->SetCurrentCatalog(ToUtf8(name));
}

void Connection::GetIsolationLevel(Call& call) {
    call.ReturnLong(isolationLevel_);
}

void Connection::PutIsolationLevel(Call& call) {
    static constexpr LONG kLevels[] = {-1, 0x10, 0x100, 0x1000, 0x10000, 0x100000};
    const LONG level = call.Long(0);
    if (std::ranges::find(kLevels, level) == std::end(kLevels)) {
        throw AdoError(ErrorNumber::InvalidArgument, NumberText(level));
    }
    isolationLevel_ = level;
}

void Connection::GetAttributes(Call& call) {
    call.ReturnLong(attributes_);
}

void Connection::PutAttributes(Call& call) {
    const LONG attributes = call.Long(0);
    if ((attributes & ~(kCommitRetaining | kAbortRetaining | 0x80000 | 0x100000)) != 0) {
        throw AdoError(ErrorNumber::InvalidArgument, NumberText(attributes));
    }
    attributes_ = attributes;
}

void Connection::GetCursorLocation(Call& call) {
    call.ReturnLong(cursorLocation_);
}

void Connection::PutCursorLocation(Call& call) {
    const LONG location = call.Long(0);
    if (location < 1 || location > 3) throw AdoError(ErrorNumber::InvalidArgument, NumberText(location));
    cursorLocation_ = location;
}

void Connection::GetMode(Call& call) {
    call.ReturnLong(CurrentProperties().mode.value_or(mode_));
}

void Connection::PutMode(Call& call) {
    const LONG mode = call.Long(0);
    ExpectClosed();
    if ((mode & ~0x40001F) != 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(mode));
    mode_ = mode;
}

void Connection::GetProvider(Call& call) {
    const ConnectionString parsed = Parsed();
    call.ReturnText(ToUtf16(parsed.Provider()));
}

void Connection::PutProvider(Call& call) {
    std::u16string provider = call.Text(0);
    ExpectClosed();
    provider_ = std::move(provider);
}

void Connection::GetState(Call& call) {
    const LONG state = state_.load(std::memory_order_acquire);
    const bool isExecuting = state == kStateOpen && isExecuting_.load(std::memory_order_relaxed);
    call.ReturnLong(isExecuting ? state | kStateExecuting : state);
}

void Connection::OpenSchema(Call& call) {
    const LONG schema = call.Long(0);
    const std::vector<Value> restrictions = ReadRestrictions(call.Variant(1));
    OpenedSession(ErrorNumber::ObjectClosed);
    call.ReturnObject(Recordset::FromRows(Ref<Connection>(this), [schema, restrictions](const Connection& connection) {
        return OpenSchemaRowset(connection.OpenedSession(ErrorNumber::InvalidConnection), schema, restrictions);
    }));
}

void Connection::Cancel(Call&) {
    std::shared_ptr<Session> session;
    std::vector<std::weak_ptr<OpenRows>> recordsets;
    {
        const std::lock_guard lock(lock_);
        session = session_;
        recordsets = recordsets_;
    }
    if (session) session->Cancel();
    for (const auto& known : recordsets) {
        if (const auto rows = known.lock()) rows->store->Fetched().Interrupt();
    }
}

void Connection::GetProperties(Call& call) {
    call.ReturnObject(Make<tk::ado::Properties>(Ref<AutomationObject>(this), *this));
}

Ref<Connection> ConnectionOf(const Value& given) {
    if (given.Type() == VT_DISPATCH || given.Type() == VT_UNKNOWN) {
        auto connection = KnownObject<Connection>(given.Get().punkVal, kConnectionObject);
        if (!connection) throw AdoError(ErrorNumber::InvalidArgument);
        return connection;
    }
    // Contract: a number where the connection belongs is a wrong argument, not a text.
    if (given.Type() != VT_BSTR) throw AdoError(ErrorNumber::InvalidArgument);
    return OpenConnection(ViewOf(given.Get().bstrVal));
}

Ref<Connection> OpenConnection(std::u16string_view text) {
    auto connection = Make<Connection>();
    connection->Open(text, {}, {});
    return connection;
}

}  // namespace tk::ado
