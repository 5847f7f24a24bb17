#include "ado/objects/fields.h"

#include "ado/cursor/columns.h"
#include "ado/cursor/text.h"
#include "ado/objects/index.h"

namespace tk::ado {
namespace {

/// What a data type means for a column of the program's own.
constexpr struct {
    LONG type;
    LONG dbType;
    CellKind kind;
    LONG size;  // 0: as given
    BYTE precision;
    LONG attributes;
    bool isUnsigned;
} kTypes[] = {
    {2, 2, CellKind::Integer16, 2, 5, kFieldFixed, false},
    {3, 3, CellKind::Integer32, 4, 10, kFieldFixed, false},
    {4, 4, CellKind::Real32, 4, 7, kFieldFixed, false},
    {5, 5, CellKind::Real64, 8, 15, kFieldFixed, false},
    {6, 6, CellKind::Decimal, 8, 19, kFieldFixed, false},
    {7, 7, CellKind::Timestamp, 8, 255, kFieldFixed, false},
    {8, 8, CellKind::Text, 0, 255, 0, false},
    {11, 11, CellKind::Boolean, 2, 255, kFieldFixed, false},
    {14, 14, CellKind::Decimal, 16, 28, kFieldFixed, false},
    {16, 16, CellKind::Integer16, 1, 3, kFieldFixed, false},
    {17, 17, CellKind::Integer16, 1, 3, kFieldFixed, true},
    {18, 18, CellKind::Integer32, 2, 5, kFieldFixed, true},
    {19, 19, CellKind::Integer64, 4, 10, kFieldFixed, true},
    {20, 20, CellKind::Integer64, 8, 19, kFieldFixed, false},
    {21, 21, CellKind::Decimal, 8, 20, kFieldFixed, true},
    {72, 72, CellKind::Guid, 16, 255, kFieldFixed, false},
    {128, 128, CellKind::Bytes, 0, 255, kFieldFixed, false},
    {129, 129, CellKind::Text, 0, 255, kFieldFixed, false},
    {130, 130, CellKind::Text, 0, 255, kFieldFixed, false},
    {131, 131, CellKind::Decimal, 19, 28, kFieldFixed, false},
    {133, 133, CellKind::Date, 6, 255, kFieldFixed, false},
    {134, 134, CellKind::Time, 6, 255, kFieldFixed, false},
    {135, 135, CellKind::Timestamp, 16, 255, kFieldFixed, false},
    {200, 129, CellKind::Text, 0, 255, 0, false},
    {201, 129, CellKind::Text, 0, 255, kFieldLong, false},
    {202, 130, CellKind::Text, 0, 255, 0, false},
    {203, 130, CellKind::Text, 0, 255, kFieldLong, false},
    {204, 128, CellKind::Bytes, 0, 255, 0, false},
    {205, 128, CellKind::Bytes, 0, 255, kFieldLong, false},
};

}  // namespace

Column MakeColumn(std::u16string name, LONG type, LONG definedSize, LONG attributes) {
    for (const auto& row : kTypes) {
        if (row.type != type) continue;
        if (definedSize < 0) throw AdoError(ErrorNumber::InvalidArgument, std::move(name));
        Column column;
        column.name = std::move(name);
        column.type = row.type;
        column.dbType = row.dbType;
        column.kind = row.kind;
        column.definedSize = row.size != 0 ? row.size : definedSize;
        column.precision = row.precision;
        column.attributes = (attributes == -1 ? 0 : attributes) | row.attributes | kFieldUpdatable;
        column.isUnsigned = row.isUnsigned;
        return column;
    }
    throw AdoError(ErrorNumber::InvalidArgument, std::move(name));
}

std::span<const Member<Fields>> Fields::Members() {
    static constexpr Member<Fields> kMembers[] = {
        {DISPID_NEWENUM, kGet, OLESTR("_NewEnum"), &Fields::GetNewEnum},
        {0, kGet, OLESTR("Item"), &Fields::GetItem, 1},
        {1, kGet, OLESTR("Count"), &Fields::GetCount},
        {2, kMethod, OLESTR("Refresh"), &Fields::Refresh},
        {3, kMethod, OLESTR("Append"), &Fields::Append, 2, 5},
        {4, kMethod, OLESTR("Delete"), &Fields::Delete, 1},
        {5, kMethod, OLESTR("Update"), &Fields::RefuseRecordOnly},
        {6, kMethod, OLESTR("Resync"), &Fields::RefuseRecordOnly, 0, 1},
        {7, kMethod, OLESTR("CancelUpdate"), &Fields::RefuseRecordOnly},
        {0x60020000, kGet, OLESTR("Count"), &Fields::GetCount},
        {0x60020002, kMethod, OLESTR("Refresh"), &Fields::Refresh},
        {0x60040000, kMethod, OLESTR("Append"), &Fields::Append, 2, 4},
        {0x60040001, kMethod, OLESTR("Delete"), &Fields::Delete, 1},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

std::size_t Fields::FindItem(const VARIANT& index) const {
    const std::vector<Column>& columns = owner_->Columns();
    return ItemIndex(index, columns.size(), [&](std::u16string_view name) { return LookUpColumn(columns, name); });
}

void Fields::Append(Call& call) {
    std::u16string name = call.Text(0);
    const LONG type = call.Long(1);
    const LONG size = call.Long(2, 0);
    const LONG attributes = call.Long(3, -1);
    if (owner_->IsOpen()) throw AdoError(ErrorNumber::ObjectOpen);
    if (LookUpColumn(owner_->Columns(), name)) throw AdoError(ErrorNumber::ObjectInCollection, name);
    // A value with the definition belongs to Record objects only.
    if (!call.IsNothing(4)) throw AdoError(ErrorNumber::IllegalOperation, name);
    owner_->DefineColumn(MakeColumn(std::move(name), type, size, attributes));
}

void Fields::Delete(Call& call) {
    if (owner_->IsOpen()) throw AdoError(ErrorNumber::ObjectOpen);
    owner_->RemoveColumn(WithIndex(call, 0, [this](const VARIANT& index) { return FindItem(index); }));
}

void Fields::RefuseRecordOnly(Call&) {
    throw AdoError(ErrorNumber::IllegalOperation);
}

std::span<const Member<Field>> Field::Members() {
    static constexpr Member<Field> kMembers[] = {
        {0, kGet, OLESTR("Value"), &Field::GetValue},
        {0, kPut, OLESTR("Value"), &Field::PutValue, 1},
        {500, kGet, OLESTR("Properties"), &Field::GetProperties},
        {1036, kGet, OLESTR("Attributes"), &Field::GetAttributes},
        {1036, kPut, OLESTR("Attributes"), &Field::PutAttributes, 1},
        {1100, kGet, OLESTR("Name"), &Field::GetName},
        {1102, kGet, OLESTR("Type"), &Field::GetType},
        {1102, kPut, OLESTR("Type"), &Field::PutType, 1},
        {1103, kGet, OLESTR("DefinedSize"), &Field::GetDefinedSize},
        {1103, kPut, OLESTR("DefinedSize"), &Field::PutDefinedSize, 1},
        {1104, kGet, OLESTR("OriginalValue"), &Field::GetOriginalValue},
        {1105, kGet, OLESTR("UnderlyingValue"), &Field::GetUnderlyingValue},
        {1107, kMethod, OLESTR("AppendChunk"), &Field::AppendChunk, 1},
        {1108, kMethod, OLESTR("GetChunk"), &Field::GetChunk, 1},
        {1109, kGet, OLESTR("ActualSize"), &Field::GetActualSize},
        {1112, kGet, OLESTR("Precision"), &Field::GetPrecision},
        {1112, kPut, OLESTR("Precision"), &Field::PutPrecision, 1},
        {1113, kGet, OLESTR("NumericScale"), &Field::GetNumericScale},
        {1113, kPut, OLESTR("NumericScale"), &Field::PutNumericScale, 1},
        {1114, kGet, OLESTR("Attributes"), &Field::GetAttributes},
        {1114, kPut, OLESTR("Attributes"), &Field::PutAttributes, 1},
        {1115, kGet, OLESTR("DataFormat"), &Field::GetDataFormat},
        {1115, kPutRef, OLESTR("DataFormat"), &Field::PutRefDataFormat, 1},
        {1116, kGet, OLESTR("Status"), &Field::GetStatus},
        {0x60030007, kGet, OLESTR("Precision"), &Field::GetPrecision},
        {0x60030007, kPut, OLESTR("Precision"), &Field::PutPrecision, 1},
        {0x60030008, kGet, OLESTR("NumericScale"), &Field::GetNumericScale},
        {0x60030008, kPut, OLESTR("NumericScale"), &Field::PutNumericScale, 1},
        {0x6003000D, kGet, OLESTR("DataFormat"), &Field::GetDataFormat},
        {0x6003000D, kPutRef, OLESTR("DataFormat"), &Field::PutRefDataFormat, 1},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

const Column& Field::Description() {
    const std::vector<Column>& columns = owner_->Columns();
    if (generation_ != owner_->Generation() || column_ >= columns.size()) {
        throw AdoError(owner_->IsOpen() ? ErrorNumber::ObjectNotSet : ErrorNumber::ObjectClosed);
    }
    return columns[column_];
}

Column& Field::Definition() {
    Description();
    return owner_->DefinedColumn(column_);
}

std::size_t Field::OpenColumn() {
    if (!owner_->IsOpen()) throw AdoError(ErrorNumber::ObjectClosed);
    Description();
    return column_;
}

void Field::GetValue(Call& call) {
    call.Return(owner_->ReadField(OpenColumn(), Recordset::Version::Current));
}
void Field::PutValue(Call& call) {
    owner_->WriteField(OpenColumn(), call.PlainValue(0));
}
void Field::GetName(Call& call) {
    call.ReturnText(Description().name);
}
void Field::GetType(Call& call) {
    call.ReturnLong(Description().type);
}

void Field::PutType(Call& call) {
    const LONG type = call.Long(0);
    Column& column = Definition();
    column = MakeColumn(column.name, type, column.definedSize, column.attributes);
}

void Field::GetDefinedSize(Call& call) {
    call.ReturnLong(Description().definedSize);
}

void Field::PutDefinedSize(Call& call) {
    const LONG size = call.Long(0);
    Definition().definedSize = size;
}

void Field::GetOriginalValue(Call& call) {
    call.Return(owner_->ReadField(OpenColumn(), Recordset::Version::Original));
}

void Field::GetUnderlyingValue(Call& call) {
    call.Return(owner_->ReadField(OpenColumn(), Recordset::Version::Underlying));
}

void Field::AppendChunk(Call& call) {
    owner_->AppendChunk(OpenColumn(), call.PlainValue(0));
}
void Field::GetChunk(Call& call) {
    call.Return(owner_->GetChunk(OpenColumn(), call.Long(0)));
}
void Field::GetActualSize(Call& call) {
    call.ReturnLong(owner_->ActualSize(OpenColumn()));
}

void Field::GetPrecision(Call& call) {
    call.ReturnByte(Description().precision);
}
void Field::PutPrecision(Call& call) {
    Definition().precision = call.Byte(0);
}
void Field::GetNumericScale(Call& call) {
    call.ReturnByte(Description().scale);
}
void Field::PutNumericScale(Call& call) {
    Definition().scale = call.Byte(0);
}
void Field::GetAttributes(Call& call) {
    call.ReturnLong(Description().attributes);
}

void Field::PutAttributes(Call& call) {
    const LONG attributes = call.Long(0);
    Definition().attributes = attributes;
}

void Field::GetDataFormat(Call& call) {
    call.ReturnUnknown(nullptr);
}

void Field::PutRefDataFormat(Call& call) {
    // Without a format object values are as they are; there are no format objects here.
    if (call.Object(0) != nullptr) throw AdoError(ErrorNumber::FeatureNotAvailable);
}

void Field::GetStatus(Call& call) {
    Description();
    call.ReturnLong(0);
}

void Field::GetProperties(Call& call) {
    call.ReturnObject(Make<tk::ado::Properties>(Ref<AutomationObject>(this), *this));
}

}  // namespace tk::ado
