#include "ado/cursor/columns.h"

#include "ado/cursor/text.h"
#include "ado/error.h"

namespace tk::ado {
namespace {

[[noreturn]] void Refuse(const Column& column) {
    throw AdoError(ErrorNumber::DataConversion, column.name);
}

/// The automation type that a value of each data type has; every other type is a text.
constexpr struct {
    LONG type;
    VARTYPE value;
} kValueTypes[] = {
    {2, VT_I2},
    {3, VT_I4},
    {4, VT_R4},
    {5, VT_R8},
    {6, VT_CY},
    {7, VT_DATE},
    {11, VT_BOOL},
    {14, VT_DECIMAL},
    {16, VT_I2},
    {17, VT_UI1},
    {18, VT_I4},
    {19, VT_I4},  // above 2^31 - 1: VT_R8
    {20, VT_DECIMAL},
    {21, VT_DECIMAL},
    {128, VT_ARRAY | VT_UI1},
    {131, VT_DECIMAL},
    {133, VT_DATE},
    {134, VT_DATE},
    {135, VT_DATE},
    {204, VT_ARRAY | VT_UI1},
    {205, VT_ARRAY | VT_UI1},
};

VARTYPE TypeOf(const Column& column) noexcept {
    for (const auto& row : kValueTypes) {
        if (row.type == column.type) return row.value;
    }
    return VT_BSTR;
}

}  // namespace

std::optional<std::size_t> LookUpColumn(const std::vector<Column>& columns, std::u16string_view name) noexcept {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (SameName(columns[i].name, name)) return i;
    }
    return std::nullopt;
}

std::size_t FindColumn(const std::vector<Column>& columns, std::u16string_view name) {
    const auto found = LookUpColumn(columns, name);
    if (!found) throw AdoError(ErrorNumber::ItemNotFound, std::u16string(name));
    return *found;
}

Value ConvertForColumn(const VARIANT& value, const Column& column) {
    const Value given(value);
    // An empty value is stored as NULL.
    if (given.IsNull() || given.IsEmpty()) return Value::Null();
    const VARTYPE type = TypeOf(column);
    // Whether a text is too long is the database's to say: drivers describe lengths they do not know.
    if (given.Type() == type) return given;
    if (type == (VT_ARRAY | VT_UI1)) Refuse(column);
    HRESULT result = S_OK;
    Value converted = given.As(type, result);
    if (result == DISP_E_OVERFLOW && column.type == 19) converted = given.As(VT_R8, result);
    if (FAILED(result)) Refuse(column);
    return converted;
}

}  // namespace tk::ado
