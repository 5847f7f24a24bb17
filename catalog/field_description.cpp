#include "catalog/field_description.h"

#include <cstring>

#include "catalog/messages.h"
#include "driver/guard.h"
#include "driver/invoke.h"
#include "util/text.h"

namespace tk::catalog {
namespace {

using driver::Guard;
using driver::Take;

constexpr int kTypeBits = 0xFF;
constexpr unsigned int kLongFlag = 0x80;
constexpr unsigned int kFixedFlag = 0x10;

int Flag(CTRecordset& columns, const char* name) {
    return Take(BooleanPart, columns.GetValue(name));
}

template <std::size_t Size>
void Store(const CString& text, char (&target)[Size]) {
    const std::string_view kept = util::WholeCharacters(util::View(text), Size - 1);
    std::memcpy(target, kept.data(), kept.size());
    target[kept.size()] = '\0';
}

}  // namespace

VARIANT_BOOL BooleanPart(const VARIANT& value) noexcept {
    switch (V_VT(&value)) {
        case VT_BOOL:
        case VT_I2:
        case VT_UI2:
            return V_BOOL(&value);
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
            return static_cast<VARIANT_BOOL>(V_I4(&value));
        default:
            return VARIANT_FALSE;
    }
}

bool DescribeField(CTRecordset& columns, FieldDescription& field) {
    return Guard::Run(columns, kGetFieldInfoFailed, false, [&] {
        if (columns.GetEof()) return false;
        field.name = columns.GetStringValue("COLUMN_NAME");
        field.size = columns.GetIntValue("CHARACTER_MAXIMUM_LENGTH");
        field.precision = columns.GetIntValue("NUMERIC_PRECISION");
        field.scale = columns.GetIntValue("NUMERIC_SCALE");
        field.nullable = Flag(columns, "IS_NULLABLE");
        field.hasDefault = Flag(columns, "COLUMN_HASDEFAULT");
        field.defaultText = columns.GetStringValue("COLUMN_DEFAULT");
        field.flags = static_cast<unsigned int>(columns.GetIntValue("COLUMN_FLAGS"));
        field.catalog = columns.GetStringValue("TABLE_CATALOG");
        field.table = columns.GetStringValue("TABLE_NAME");
        field.schema = columns.GetStringValue("TABLE_SCHEMA");
        field.ordinal = columns.GetIntValue("ORDINAL_POSITION");
        field.type = columns.GetFieldTypeStr(columns.GetIntValue("DATA_TYPE") & kTypeBits, field.size, field.precision,
                                             field.scale, static_cast<int>(field.flags & kLongFlag),
                                             static_cast<int>(field.flags & kFixedFlag));
        return true;
    });
}

void StoreField(const FieldDescription& field, _tagFIELDINFO& record) {
    Store(field.name, record.szName);
    Store(field.type, record.szType);
    record.nSize = field.size;
    record.nPrecision = field.precision;
    record.nScale = field.scale;
    record.nHasDefault = field.hasDefault;
    Store(field.defaultText, record.szDefault);
    Store(field.NullText(), record.szNull);
    record.nNullable = field.nullable;
    record.nFlags = field.flags;
    Store(field.catalog, record.szCatalog);
    Store(field.table, record.szTable);
    Store(field.schema, record.szSchema);
    record.nOrdinal = field.ordinal;
}

}  // namespace tk::catalog
