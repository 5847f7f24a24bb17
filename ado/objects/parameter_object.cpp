#include "ado/objects/parameter_object.h"

#include "ado/cursor/columns.h"
#include "ado/cursor/text.h"
#include "ado/objects/arrays.h"
#include "ado/objects/command_text.h"
#include "ado/objects/fields.h"

namespace tk::ado {
namespace {

constexpr LONG kParameterLong = 0x80;

/// The types whose size is the program's to say.
bool IsVariable(LONG type) noexcept {
    static constexpr LONG kVariable[] = {kTypeBinary,        kTypeChar,     kTypeWChar,        kTypeVarChar,
                                         kTypeLongVarChar,   kTypeVarWChar, kTypeLongVarWChar, kTypeVarBinary,
                                         kTypeLongVarBinary, kTypeBstr};
    return std::ranges::find(kVariable, type) != std::end(kVariable);
}

/// How the object model's types are told to a driver.
constexpr struct {
    LONG type;
    int sqlType;
} kSqlTypes[] = {
    {kTypeSmallInt, SQL_SMALLINT},
    {kTypeInteger, SQL_INTEGER},
    {kTypeSingle, SQL_REAL},
    {kTypeDouble, SQL_DOUBLE},
    {kTypeCurrency, SQL_NUMERIC},
    {kTypeDate, SQL_TYPE_TIMESTAMP},
    {kTypeBstr, SQL_VARCHAR},
    {kTypeBoolean, SQL_BIT},
    {kTypeDecimal, SQL_NUMERIC},
    {kTypeTinyInt, SQL_SMALLINT},
    {kTypeUnsignedTinyInt, SQL_SMALLINT},
    {kTypeUnsignedSmallInt, SQL_INTEGER},
    {kTypeUnsignedInt, SQL_BIGINT},
    {kTypeBigInt, SQL_BIGINT},
    {kTypeUnsignedBigInt, SQL_NUMERIC},
    {kTypeGuid, SQL_GUID},
    {kTypeBinary, SQL_VARBINARY},
    {kTypeChar, SQL_VARCHAR},
    {kTypeWChar, SQL_VARCHAR},
    {kTypeNumeric, SQL_NUMERIC},
    {kTypeDbDate, SQL_TYPE_DATE},
    {kTypeDbTime, SQL_TYPE_TIME},
    {kTypeDbTimestamp, SQL_TYPE_TIMESTAMP},
    {kTypeVarChar, SQL_VARCHAR},
    {kTypeLongVarChar, SQL_LONGVARCHAR},
    {kTypeVarWChar, SQL_VARCHAR},
    {kTypeLongVarWChar, SQL_LONGVARCHAR},
    {kTypeVarBinary, SQL_VARBINARY},
    {kTypeLongVarBinary, SQL_LONGVARBINARY},
};

LONG NotNegative(LONG number) {
    if (number < 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(number));
    return number;
}

}  // namespace

void ExpectDirection(LONG direction) {
    if (direction < kDirectionUnknown || direction > kDirectionReturnValue) {
        throw AdoError(ErrorNumber::InvalidArgument, NumberText(direction));
    }
}

Column ColumnOf(const ParameterDeclaration& declaration) {
    for (const auto& row : kSqlTypes) {
        if (row.type != declaration.type) continue;
        Column column = MakeColumn(declaration.name, declaration.type, declaration.size, kFieldIsNullable);
        column.sqlType = row.sqlType;
        constexpr BYTE kMostDigits = 28;
        if (column.dbType == kTypeNumeric || column.dbType == kTypeDecimal || column.dbType == kTypeCurrency) {
            column.dbType = kTypeNumeric;
            const BYTE currencyScale = declaration.type == kTypeCurrency ? 4 : 0;
            column.precision = declaration.precision != 0 ? declaration.precision : kMostDigits;
            column.scale = declaration.scale != 0 ? declaration.scale : currencyScale;
        }
        return column;
    }
    throw AdoError(ErrorNumber::InvalidParamInfo, declaration.name);
}

HRESULT ParameterObject::QueryInterface(REFIID iid, void** object) {
    if (object != nullptr && iid == kParameterObject) {
        *object = this;
        AddRef();
        return S_OK;
    }
    return AutomationObject::QueryInterface(iid, object);
}

void ParameterObject::SetValue(const Value& value) {
    hasChunks_ = false;
    // No database takes an object; one that held this parameter would never be let go again.
    const VARTYPE type = value.Type();
    const bool isObject = type == VT_DISPATCH || type == VT_UNKNOWN;
    if (isObject || ((type & VT_ARRAY) != 0 && type != (VT_ARRAY | VT_UI1))) {
        throw AdoError(ErrorNumber::DataConversion, declaration_.name);
    }
    // Without a type, and while nothing is given, there is nothing to compare with.
    if (declaration_.type == 0 || value.IsEmpty()) {
        value_ = value;
        return;
    }
    Value converted = ConvertForColumn(value.Get(), ColumnOf(declaration_));
    const bool isText = converted.Type() == VT_BSTR && declaration_.size > 0 && IsVariable(declaration_.type);
    if (isText && ViewOf(converted.Get().bstrVal).size() > static_cast<std::size_t>(declaration_.size)) {
        throw AdoError(ErrorNumber::DataConversion, declaration_.name);
    }
    value_ = std::move(converted);
}

void ParameterObject::ExpectComplete() const {
    const bool isOutput = declaration_.direction != kDirectionInput && declaration_.direction != kDirectionUnknown;
    const bool hasSize = !IsVariable(declaration_.type) || declaration_.size > 0 || declaration_.type == kTypeBstr;
    if (declaration_.type == 0 || !hasSize) throw AdoError(ErrorNumber::InvalidParamInfo, declaration_.name);
    if (isOutput && declaration_.type == kTypeBstr && declaration_.size == 0) {
        throw AdoError(ErrorNumber::InvalidParamInfo, declaration_.name);
    }
    ColumnOf(declaration_);
}

std::span<const Member<ParameterObject>> ParameterObject::Members() {
    using Self = ParameterObject;
    static constexpr Member<ParameterObject> kMembers[] = {
        {0, kGet, OLESTR("Value"), &Self::GetValueMember},
        {0, kPut, OLESTR("Value"), &Self::PutValueMember, 1},
        {1, kGet, OLESTR("Name"), &Self::GetName},
        {1, kPut, OLESTR("Name"), &Self::PutName, 1},
        {2, kGet, OLESTR("Type"), &Self::GetType},
        {2, kPut, OLESTR("Type"), &Self::PutType, 1},
        {3, kGet, OLESTR("Direction"), &Self::GetDirection},
        {3, kPut, OLESTR("Direction"), &Self::PutDirection, 1},
        {4, kGet, OLESTR("Precision"), &Self::GetPrecision},
        {4, kPut, OLESTR("Precision"), &Self::PutPrecision, 1},
        {5, kGet, OLESTR("NumericScale"), &Self::GetNumericScale},
        {5, kPut, OLESTR("NumericScale"), &Self::PutNumericScale, 1},
        {6, kGet, OLESTR("Size"), &Self::GetSize},
        {6, kPut, OLESTR("Size"), &Self::PutSize, 1},
        {7, kMethod, OLESTR("AppendChunk"), &Self::AppendChunk, 1},
        {8, kGet, OLESTR("Attributes"), &Self::GetAttributes},
        {8, kPut, OLESTR("Attributes"), &Self::PutAttributes, 1},
        {0x60030000, kGet, OLESTR("Name"), &Self::GetName},
        {0x60030000, kPut, OLESTR("Name"), &Self::PutName, 1},
        {0x60030004, kGet, OLESTR("Type"), &Self::GetType},
        {0x60030004, kPut, OLESTR("Type"), &Self::PutType, 1},
        {0x60030006, kGet, OLESTR("Direction"), &Self::GetDirection},
        {0x60030006, kPut, OLESTR("Direction"), &Self::PutDirection, 1},
        {0x60030008, kGet, OLESTR("Precision"), &Self::GetPrecision},
        {0x60030008, kPut, OLESTR("Precision"), &Self::PutPrecision, 1},
        {0x6003000A, kGet, OLESTR("NumericScale"), &Self::GetNumericScale},
        {0x6003000A, kPut, OLESTR("NumericScale"), &Self::PutNumericScale, 1},
        {0x6003000C, kGet, OLESTR("Size"), &Self::GetSize},
        {0x6003000C, kPut, OLESTR("Size"), &Self::PutSize, 1},
        {0x6003000E, kMethod, OLESTR("AppendChunk"), &Self::AppendChunk, 1},
        {0x6003000F, kGet, OLESTR("Attributes"), &Self::GetAttributes},
        {0x6003000F, kPut, OLESTR("Attributes"), &Self::PutAttributes, 1},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

void ParameterObject::GetValueMember(Call& call) {
    call.Return(value_);
}
void ParameterObject::PutValueMember(Call& call) {
    SetValue(call.PlainValue(0));
}
void ParameterObject::GetName(Call& call) {
    call.ReturnText(declaration_.name);
}
void ParameterObject::PutName(Call& call) {
    declaration_.name = call.Text(0);
}
void ParameterObject::GetType(Call& call) {
    call.ReturnLong(declaration_.type);
}

void ParameterObject::PutType(Call& call) {
    ParameterDeclaration changed = declaration_;
    changed.type = call.Long(0);
    if (changed.type != 0) ColumnOf(changed);
    declaration_ = std::move(changed);
}

void ParameterObject::GetDirection(Call& call) {
    call.ReturnLong(declaration_.direction);
}

void ParameterObject::PutDirection(Call& call) {
    const LONG direction = call.Long(0);
    ExpectDirection(direction);
    declaration_.direction = direction;
}

void ParameterObject::GetPrecision(Call& call) {
    call.ReturnByte(declaration_.precision);
}
void ParameterObject::PutPrecision(Call& call) {
    declaration_.precision = call.Byte(0);
}
void ParameterObject::GetNumericScale(Call& call) {
    call.ReturnByte(declaration_.scale);
}
void ParameterObject::PutNumericScale(Call& call) {
    declaration_.scale = call.Byte(0);
}
void ParameterObject::GetSize(Call& call) {
    call.ReturnLong(declaration_.size);
}
void ParameterObject::PutSize(Call& call) {
    declaration_.size = NotNegative(call.Long(0));
}

void ParameterObject::AppendChunk(Call& call) {
    const Value piece = call.PlainValue(0);
    if ((declaration_.attributes & kParameterLong) == 0) {
        throw AdoError(ErrorNumber::IllegalOperation, declaration_.name);
    }
    // Contract: NULL takes away what has been put so far; the first piece replaces the value, the others follow it.
    const bool continues = std::exchange(hasChunks_, !piece.IsNull());
    Value whole = piece;
    if (continues && piece.Type() == VT_BSTR && value_.Type() == VT_BSTR) {
        whole = Value::Text(std::u16string(ViewOf(value_.Get().bstrVal)).append(ViewOf(piece.Get().bstrVal)));
    } else if (continues && !piece.IsNull()) {
        std::vector<BYTE> bytes = BytesOf(value_);
        const std::vector<BYTE> more = BytesOf(piece);
        bytes.insert(bytes.end(), more.begin(), more.end());
        whole = BytesValue(bytes);
    }
    const bool hasChunks = hasChunks_;
    SetValue(whole);
    hasChunks_ = hasChunks;
}

void ParameterObject::GetAttributes(Call& call) {
    call.ReturnLong(declaration_.attributes);
}
void ParameterObject::PutAttributes(Call& call) {
    declaration_.attributes = NotNegative(call.Long(0));
}

}  // namespace tk::ado
