// Recordset: the properties that are settled before opening, and those that are only kept.
#include "ado/cursor/text.h"
#include "ado/objects/command_object.h"
#include "ado/objects/fields.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// A number between limits. @throws AdoError 3001
LONG Between(LONG least, LONG most, LONG number) {
    if (number < least || number > most) throw AdoError(ErrorNumber::InvalidArgument, NumberText(number));
    return number;
}

constexpr LONG kMostRows = 0x7FFFFFFF;

/// CursorOptionEnum bits, and where a client cursor has them.
constexpr LONG kSupportedAlways = 0x100 | 0x200 | 0x2000 | 0x4000 | 0x40000 | 0x80000;
constexpr LONG kSupportedWithChanges = 0x20000 | 0x1000400 | 0x1000800 | 0x1008000;
constexpr LONG kSupportedInBatches = 0x10000;

}  // namespace

void Recordset::GetActiveConnection(Call& call) {
    const Ref<Connection>& connection = IsOpen() ? open_->connection : connection_;
    if (!IsOpen() && !connection && !connectionText_.empty()) return call.ReturnText(connectionText_);
    call.ReturnObject(connection);
}

void Recordset::PutActiveConnection(Call& call) {
    const Value given = call.Variant(0);
    const bool isNothing = call.IsNothing(0);
    // A command's connection is the command's; without one the rows are nobody's but the program's.
    if (command_ && !isNothing) throw AdoError(ErrorNumber::BoundToCommand);
    command_ = nullptr;
    if (!isNothing && given.Type() == VT_BSTR && !IsOpen()) {
        connection_ = nullptr;
        connectionText_ = ViewOf(given.Get().bstrVal);
        return;
    }
    Ref<Connection> connection = isNothing ? Ref<Connection>() : ConnectionOf(given);
    if (IsOpen()) {
        ExpectNoEdit();
        // A set that still arrives needs its connection until all of it is here.
        open_->store->CountRows();
        // What is written back later has to be known while there is somebody to ask.
        if (lock_ != kLockReadOnly) DescribeOrigins();
        if (connection) connection->OpenedSession(ErrorNumber::InvalidConnection);
        {
            const std::lock_guard lock(guard_);
            open_->connection = connection;
        }
        if (connection) connection->Register(open_);
    }
    connection_ = std::move(connection);
    connectionText_.clear();
}

void Recordset::PutRefActiveConnection(Call& call) {
    call.Object(0);
    PutActiveConnection(call);
}

void Recordset::GetCacheSize(Call& call) {
    call.ReturnLong(cacheSize_);
}
void Recordset::PutCacheSize(Call& call) {
    cacheSize_ = Between(1, kMostRows, call.Long(0));
}

// Contract: whatever cursor was asked for, an open one says static.
void Recordset::GetCursorType(Call& call) {
    call.ReturnLong(IsOpen() ? kCursorStatic : cursorType_);
}

void Recordset::PutCursorType(Call& call) {
    const LONG type = call.Long(0);
    ExpectClosed();
    cursorType_ = Between(0, kCursorStatic, type);
}

void Recordset::GetLockType(Call& call) {
    call.ReturnLong(IsOpen() ? lock_ : wantedLock_);
}

void Recordset::PutLockType(Call& call) {
    const LONG lock = call.Long(0);
    ExpectClosed();
    wantedLock_ = Between(kLockReadOnly, kLockBatchOptimistic, lock);
}

void Recordset::GetMaxRecords(Call& call) {
    call.ReturnLong(maxRecords_);
}

void Recordset::PutMaxRecords(Call& call) {
    const LONG count = call.Long(0);
    ExpectClosed();
    maxRecords_ = Between(0, kMostRows, count);
}

void Recordset::GetSource(Call& call) {
    call.ReturnText(source_);
}

void Recordset::PutSource(Call& call) {
    std::u16string source = call.Text(0);
    ExpectClosed();
    command_ = nullptr;
    source_ = std::move(source);
}

void Recordset::GetCursorLocation(Call& call) {
    call.ReturnLong(cursorLocation_);
}

void Recordset::PutCursorLocation(Call& call) {
    const LONG location = call.Long(0);
    ExpectClosed();
    cursorLocation_ = Between(1, 3, location);
}

void Recordset::GetMarshalOptions(Call& call) {
    call.ReturnLong(marshalOptions_);
}
void Recordset::PutMarshalOptions(Call& call) {
    marshalOptions_ = Between(0, 1, call.Long(0));
}
void Recordset::GetStayInSync(Call& call) {
    call.ReturnBoolean(stayInSync_);
}
void Recordset::PutStayInSync(Call& call) {
    stayInSync_ = call.Boolean(0);
}
void Recordset::GetDataMember(Call& call) {
    call.ReturnText(dataMember_);
}
void Recordset::PutDataMember(Call& call) {
    dataMember_ = call.Text(0);
}

void Recordset::GetProperties(Call& call) {
    call.ReturnObject(Make<tk::ado::Properties>(Ref<AutomationObject>(this), *this));
}

void Recordset::GetFields(Call& call) {
    auto fields = Make<Fields>(Ref<Recordset>(this));
    if (call.Count() == 0) return call.ReturnObject(std::move(fields));
    // The default member of the default member: rs("name").
    call.ReturnObject(fields->MakeItem(FieldArgument(call)));
}

void Recordset::Supports(Call& call) {
    const LONG wanted = call.Long(0);
    Rows();
    LONG supported = kSupportedAlways;
    if (lock_ != kLockReadOnly) supported |= kSupportedWithChanges;
    if (IsBatch()) supported |= kSupportedInBatches;
    call.ReturnBoolean((wanted & ~supported) == 0);
}

void Recordset::Seek(Call&) {
    Rows();
    throw AdoError(ErrorNumber::FeatureNotAvailable);
}

void Recordset::GetIndex(Call&) {
    throw AdoError(ErrorNumber::FeatureNotAvailable);
}
void Recordset::PutIndex(Call&) {
    throw AdoError(ErrorNumber::FeatureNotAvailable);
}

// --- columns, for the fields ---

const std::vector<Column>& Recordset::Columns() {
    return IsOpen() ? open_->store->Columns() : defined_;
}

Column& Recordset::DefinedColumn(std::size_t column) {
    if (IsOpen()) throw AdoError(ErrorNumber::IllegalOperation);
    if (column >= defined_.size()) throw AdoError(ErrorNumber::ObjectNotSet);
    return defined_[column];
}

void Recordset::DefineColumn(Column column) {
    ExpectClosed();
    if (connection_ || !connectionText_.empty()) throw AdoError(ErrorNumber::IllegalOperation);
    defined_.push_back(std::move(column));
}

void Recordset::RemoveColumn(std::size_t column) {
    ExpectClosed();
    DefinedColumn(column);
    defined_.erase(defined_.begin() + static_cast<std::ptrdiff_t>(column));
    ++generation_;
}

void Recordset::DescribeOrigins() {
    if (IsOpen()) open_->store->Fetched().DescribeOrigins();
}

}  // namespace tk::ado
