// Recordset: opening, closing and what is settled by it.
#include "ado/cursor/messages.h"
#include "ado/cursor/sort.h"
#include "ado/cursor/text.h"
#include "ado/objects/command_object.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// Names the session for the time of a call, so that Cancel finds it.
class Running {
public:
    Running(std::mutex& guard, std::shared_ptr<Session>& place, std::shared_ptr<Session> session)
        : guard_(guard), place_(place) {
        const std::lock_guard lock(guard_);
        place_ = std::move(session);
    }
    ~Running() {
        const std::lock_guard lock(guard_);
        place_.reset();
    }

private:
    std::mutex& guard_;
    std::shared_ptr<Session>& place_;
};

/// The same once more; it keeps neither the recordset nor its connection alive.
RunCommand Repetition(Execution execution, LONG limit) {
    return [execution = std::move(execution), limit](const Connection& connection) {
        return RunOn(connection.OpenedSession(ErrorNumber::InvalidConnection), execution, limit).rows;
    };
}

}  // namespace

Recordset::Recordset() : access_(*this) {}

HRESULT Recordset::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    if (iid == IID_IRowAccess) {
        *object = static_cast<IRowAccess*>(&access_);
    } else if (iid == kRecordsetObject) {
        *object = this;
    } else {
        return AutomationObject::QueryInterface(iid, object);
    }
    AddRef();
    return S_OK;
}

Recordset::~Recordset() {
    if (anchor_) anchor_->Leave();
    LetGo();
}

std::shared_ptr<ErrorList> Recordset::Errors() const {
    if (open_ && open_->connection) return open_->connection->ErrorRecords();
    return connection_ ? connection_->ErrorRecords() : nullptr;
}

void Recordset::LeaveClosedRows() {
    if (open_ && !IsOpen()) LetGo();
}

OpenRows& Recordset::Rows() {
    LeaveClosedRows();
    if (!open_) throw AdoError(ErrorNumber::ObjectClosed);
    return *open_;
}

ClientCursor& Recordset::Cursor() {
    Rows();
    return *cursor_;
}

void Recordset::ExpectClosed() {
    if (IsOpen()) throw AdoError(ErrorNumber::ObjectOpen);
}

Recordset::Held Recordset::TakeHeld() noexcept {
    edit_.Discard();
    appended_.clear();
    saved_ = {};
    LeaveChunks();
    if (open_) ++generation_;
    return {std::exchange(open_, nullptr), std::exchange(cursor_, nullptr), std::exchange(waiting_, nullptr),
            std::exchange(waitingConnection_, nullptr)};
}

Recordset::Held Recordset::TakeClosing() noexcept {
    if (open_) sort_.clear();  // it names columns of these rows
    return TakeHeld();
}

void Recordset::Drop(Held held) {
    held.cursor.reset();
    held.waiting.reset();
    // The last one to leave ends a fetch that nobody waits for any more.
    if (held.rows.use_count() == 1) held.rows->store->Fetched().Cancel();
}

void Recordset::LetGo() {
    Held held;
    {
        const std::lock_guard lock(guard_);
        held = TakeClosing();
    }
    Drop(std::move(held));
}

void Recordset::Settle(std::shared_ptr<OpenRows> rows, LONG lock) {
    auto cursor = std::make_unique<ClientCursor>(rows->store);
    if (rows->connection) rows->connection->Register(rows);
    Held held;
    {
        const std::lock_guard guard(guard_);
        held = TakeHeld();
        open_ = std::move(rows);
        cursor_ = std::move(cursor);
    }
    Drop(std::move(held));
    lock_ = lock == kLockPessimistic ? kLockOptimistic : lock;
    if (lock_ != kLockReadOnly) open_->store->Fetched().DescribeBeforeSettingsChange();
    ++generation_;
}

std::shared_ptr<RowSet> Recordset::RunStatement(const Ref<Connection>& connection,
                                                const std::shared_ptr<Session>& session, const Execution& execution,
                                                LONG& affected) {
    const Running running(guard_, running_, session);
    Executed executed = RunOn(session, execution, maxRecords_);
    affected = executed.affected;
    if (!executed.warnings.empty()) connection->ErrorRecords()->ReplaceWarnings(executed.warnings);
    if (executed.statement && session->Profile().hasBatches) {
        waiting_ = std::move(executed.statement);
        waitingConnection_ = connection;
    }
    return std::move(executed.rows);
}

Ref<Recordset> Recordset::FromCommand(const Ref<Connection>& connection, const std::shared_ptr<Session>& session,
                                      const std::u16string& source, Execution execution, LONG& affected) {
    if (execution.noRecords) {
        const Executed executed = RunOn(session, execution, 0);
        affected = executed.affected;
        if (!executed.warnings.empty()) connection->ErrorRecords()->ReplaceWarnings(executed.warnings);
        return {};
    }
    auto result = Make<Recordset>();
    auto fetched = result->RunStatement(connection, session, execution, affected);
    result->connection_ = connection;
    result->source_ = source;
    result->cursorLocation_ = connection->CursorLocation();
    if (!fetched) return result;
    auto rows = std::make_shared<OpenRows>(std::move(fetched), connection);
    rows->asynchronous = execution.asynchronousFetch;
    rows->runAgain = Repetition(std::move(execution), 0);
    result->Settle(std::move(rows), kLockReadOnly);
    return result;
}

Ref<Recordset> Recordset::FromRows(const Ref<Connection>& connection, RunCommand run) {
    auto result = Make<Recordset>();
    result->connection_ = connection;
    result->cursorLocation_ = connection->CursorLocation();
    auto rows = std::make_shared<OpenRows>(run(*connection), connection);
    rows->runAgain = std::move(run);
    result->Settle(std::move(rows), kLockReadOnly);
    return result;
}

void Recordset::Open(Call& call) {
    ExpectClosed();
    const LONG cursorType = call.Long(2, -1);
    const LONG lock = call.Long(3, -1);
    const LONG options = call.Long(4, -1);
    if (cursorType < -1 || cursorType > kCursorStatic || lock < -1 || lock == 0 || lock > kLockBatchOptimistic) {
        throw AdoError(ErrorNumber::InvalidArgument);
    }
    Value values[2];  // of arguments that are no texts, or references to one
    const auto argument = [&](UINT index) -> const VARIANT& {
        const VARIANT& given = call.Argument(index);
        if (given.vt == VT_BSTR) return given;
        values[index] = call.Variant(index);
        return values[index].Get();
    };
    std::u16string_view source = source_;
    Ref<CommandObject> object = command_;
    if (!call.IsNothing(0)) {
        const VARIANT& given = argument(0);
        object = given.vt == VT_BSTR ? nullptr : KnownCommand(values[0]);
        if (object) return OpenCommand(call, std::move(object), cursorType, lock, options);
        if (given.vt != VT_BSTR) throw AdoError(ErrorNumber::InvalidArgument);
        command_ = nullptr;
        source = ViewOf(given.bstrVal);
    }
    if (object) return OpenCommand(call, std::move(object), cursorType, lock, options);
    LetGo();
    Ref<Connection> connection = connection_;
    std::u16string_view text = connectionText_;
    if (!call.IsNothing(1)) {
        const VARIANT& given = argument(1);
        connection = given.vt == VT_BSTR ? nullptr : ConnectionOf(values[1]);
        text = given.vt == VT_BSTR ? ViewOf(given.bstrVal) : std::u16string_view();
    }
    if (MeansFile(connection, text, source, options)) return OpenFile(text, source, cursorType, lock);
    if (!connection && !text.empty()) connection = OpenConnection(text);
    if (!connection) {
        if (defined_.empty() || !source.empty()) throw AdoError(ErrorNumber::InvalidConnection);
        if (cursorType != -1) cursorType_ = cursorType;
        if (lock != -1) wantedLock_ = lock;
        return OpenFabricated(lock);
    }
    connection->OpenedSession(ErrorNumber::InvalidConnection);
    if (source.empty()) throw AdoError(ErrorNumber::InvalidArgument);

    const LONG timeout = connection->CommandTimeout();
    Execution execution = MakeExecution(MakeCommand(source, options), timeout);
    // A connection of its own goes with the rows; the text stays for the next time.
    connection_ = text.empty() ? connection : nullptr;
    connectionText_ = text;
    source_ = source;
    if (cursorType != -1) cursorType_ = cursorType;
    if (lock != -1) wantedLock_ = lock;
    settings_.rules.timeoutSeconds = timeout;
    OpenExecution(connection, std::move(execution));
}

void Recordset::OpenExecution(const Ref<Connection>& connection, Execution execution) {
    LONG affected = -1;
    auto fetched =
        RunStatement(connection, connection->OpenedSession(ErrorNumber::InvalidConnection), execution, affected);
    if (!fetched) return;
    auto rows = std::make_shared<OpenRows>(std::move(fetched), connection);
    rows->asynchronous = execution.asynchronousFetch;
    rows->runAgain = Repetition(std::move(execution), maxRecords_);
    filter_ = Value();
    SettleInView(std::move(rows), wantedLock_);
}

void Recordset::OpenFabricated(LONG lock) {
    auto rows = std::make_shared<OpenRows>(RowSet::Build(defined_), nullptr);
    rows->isFabricated = true;
    Settle(std::move(rows),
           lock == -1 && wantedLock_ == kLockReadOnly ? static_cast<LONG>(kLockBatchOptimistic) : wantedLock_);
    filter_ = Value();
}

void Recordset::SettleInView(std::shared_ptr<OpenRows> rows, LONG lock) {
    std::vector<SortKey> sort;
    std::function<bool(std::size_t)> visible;
    try {
        // A sort or filter that does not fit the rows leaves the recordset as it was.
        sort = ParseSort(sort_, rows->store->Columns());
        visible = TextFilter(filter_, *rows->store);
    } catch (...) {
        rows->store->Fetched().Cancel();
        throw;
    }
    Settle(std::move(rows), lock);
    // Bookmarks and the marks of changes were those of other rows.
    if (filter_.Type() != VT_BSTR) filter_ = Value();
    try {
        if (!sort.empty()) cursor_->SetSort(std::move(sort));
        if (visible) cursor_->SetFilter(std::move(visible));
    } catch (...) {
        // The rows could not be fetched to their end. The sort is still the one for the next attempt.
        std::u16string wanted = sort_;
        LetGo();
        sort_ = std::move(wanted);
        throw;
    }
}

void Recordset::Close(Call&) {
    Held held;
    bool wasOpen = false;
    {
        // Of two threads that close one closes and the other finds it closed.
        const std::lock_guard lock(guard_);
        wasOpen = IsOpen();
        // Contract: pending changes of a batch are lost without a word, an open edit of a single row is not.
        if (wasOpen && edit_.IsOpen() && !IsBatch()) throw AdoError(ErrorNumber::IllegalOperation);
        held = TakeClosing();
    }
    Drop(std::move(held));
    if (!wasOpen) throw AdoError(ErrorNumber::ObjectClosed);
    dataSource_ = nullptr;
}

void Recordset::Requery(Call& call) {
    call.Long(0, -1);
    OpenRows& rows = Rows();
    ExpectNoEdit();
    if (!rows.runAgain) throw AdoError(ErrorNumber::IllegalOperation);
    if (!rows.connection) throw AdoError(ErrorNumber::InvalidConnection);
    const RunCommand run = rows.runAgain;
    const bool asynchronous = rows.asynchronous;
    const Ref<Connection> connection = rows.connection;
    std::shared_ptr<RowSet> fetched;
    {
        const Running running(guard_, running_, connection->OpenedSession(ErrorNumber::InvalidConnection));
        fetched = run(*connection);
    }
    if (!fetched) return LetGo();
    auto fresh = std::make_shared<OpenRows>(std::move(fetched), connection);
    fresh->runAgain = run;
    fresh->asynchronous = asynchronous;
    const unsigned generation = generation_;
    SettleInView(std::move(fresh), lock_);
    // Fields of a recordset that was only asked again are still its fields.
    generation_ = generation;
}

void Recordset::NextRecordset(Call& call) {
    Ref<Connection> connection;
    std::unique_ptr<Statement> next;
    if (IsOpen()) {
        ExpectNoEdit();
        if (!open_->connection) throw AdoError(ErrorNumber::IllegalOperation);
        connection = open_->connection;
        open_->store->CountRows();
        next = open_->store->Fetched().TakeNextResult();
    } else if (waiting_) {
        connection = waitingConnection_;
        if (waiting_->MoreResults()) next = std::move(waiting_);
    } else if (!connection_) {
        throw AdoError(ErrorNumber::ObjectClosed);
    }
    const LONG lock = IsOpen() ? lock_ : static_cast<LONG>(kLockReadOnly);
    LetGo();
    if (!next) return call.ReturnObject(static_cast<IDispatch*>(nullptr));
    call.Store(0, Value(next->RowsAffected()));
    auto result = Make<Recordset>();
    result->connection_ = connection;
    result->source_ = source_;
    result->cursorLocation_ = cursorLocation_;
    if (next->HasRows()) {
        auto fetched = RowSet::Fetch(std::move(*next), connection->OpenedSession(ErrorNumber::InvalidConnection), {});
        result->Settle(std::make_shared<OpenRows>(std::move(fetched), connection), lock);
    } else {
        result->waiting_ = std::move(next);
        result->waitingConnection_ = connection;
    }
    call.ReturnObject(std::move(result));
}

void Recordset::GetState(Call& call) {
    std::shared_ptr<OpenRows> rows;
    bool executing = false;
    {
        const std::lock_guard lock(guard_);
        rows = open_;
        executing = running_ != nullptr;
    }
    LONG state = executing ? kStateExecuting : kStateClosed;
    if (rows && !rows->closed.load(std::memory_order_acquire)) {
        state |= kStateOpen;
        if (rows->asynchronous && !rows->store->Fetched().IsComplete()) state |= kStateFetching;
    }
    call.ReturnLong(state);
}

void Recordset::Cancel(Call&) {
    std::shared_ptr<OpenRows> rows;
    std::shared_ptr<Session> session;
    {
        const std::lock_guard lock(guard_);
        rows = open_;
        session = running_;
    }
    if (session) session->Cancel();
    if (!rows) return;
    // Rows that are fetched ahead unseen are nobody's call: only a call that waits for them is ended.
    RowSet& fetched = rows->store->Fetched();
    rows->asynchronous ? fetched.Cancel() : fetched.Interrupt();
}

void Recordset::Clone(Call& call) {
    const LONG lock = call.Long(0, -1);
    OpenRows& rows = Rows();
    if (lock != -1 && lock != kLockReadOnly) throw AdoError(ErrorNumber::InvalidArgument, NumberText(lock));
    static_cast<void>(rows);
    auto clone = Make<Recordset>();
    clone->connection_ = connection_;
    clone->source_ = source_;
    clone->cursorType_ = cursorType_;
    clone->cursorLocation_ = cursorLocation_;
    clone->settings_ = settings_;
    clone->Settle(open_, lock == -1 ? lock_ : lock);
    clone->wantedLock_ = clone->lock_;
    call.ReturnObject(std::move(clone));
}

void Recordset::PutRefDataSource(Call& call) {
    IUnknown* const given = call.Object(0);
    if (given == nullptr) {
        LetGo();
        dataSource_ = nullptr;
        return;
    }
    auto source = KnownObject<Recordset>(given, kRecordsetObject);
    if (!source || source.Get() == this) throw AdoError(ErrorNumber::InvalidArgument);
    source->Rows();
    Settle(source->open_, source->lock_);
    connection_ = source->connection_;
    source_ = source->source_;
    cursorLocation_ = source->cursorLocation_;
    settings_ = source->settings_;
    filter_ = Value();
    sort_.clear();
    if (!source->anchor_) source->anchor_ = std::make_shared<Anchor<Recordset>>(*source);
    dataSource_ = source->anchor_;
}

void Recordset::GetDataSource(Call& call) {
    const Ref<Recordset> source = dataSource_ ? dataSource_->Find() : Ref<Recordset>();
    if (source) source->AddRef();
    call.ReturnUnknown(static_cast<IDispatch*>(source.Get()));
}

}  // namespace tk::ado
