// The dynamic properties of a Field: where its column comes from.
#include "ado/cursor/text.h"
#include "ado/objects/fields.h"

namespace tk::ado {
namespace {

Value TextOrNull(const std::string& utf8) {
    return utf8.empty() ? Value::Null() : Value::Text(ToUtf16(utf8));
}

struct Row {
    const char16_t* name;
    VARTYPE type;
    Value (*read)(const Column& column);  // null: always NULL
};

constexpr Row kRows[] = {
    {u"BASECATALOGNAME", VT_BSTR, [](const Column& column) { return TextOrNull(column.baseCatalog); }},
    {u"BASESCHEMANAME", VT_BSTR, [](const Column& column) { return TextOrNull(column.baseSchema); }},
    {u"BASETABLENAME", VT_BSTR, [](const Column& column) { return TextOrNull(column.baseTable); }},
    {u"BASECOLUMNNAME", VT_BSTR, [](const Column& column) { return TextOrNull(column.baseColumn); }},
    {u"ISAUTOINCREMENT", VT_BOOL, [](const Column& column) { return Value::Boolean(column.isAutoIncrement); }},
    {u"ISCASESENSITIVE", VT_BOOL, [](const Column& column) { return Value::Boolean(column.isCaseSensitive); }},
    {u"ISSEARCHABLE", VT_I4, [](const Column& column) { return Value(static_cast<LONG>(column.searchable)); }},
    {u"OCTETLENGTH", VT_I4,
     [](const Column& column) {
         const bool isWide = column.dbType == 130;
         return Value(isWide && column.definedSize < 0x3FFFFFFF ? column.definedSize * 2 : column.definedSize);
     }},
    {u"KEYCOLUMN", VT_BOOL, [](const Column& column) { return Value::Boolean(column.isKey); }},
    {u"DATETIMEPRECISION", VT_I4, nullptr},
    {u"DEFAULTVALUE", VT_BSTR, nullptr},
    {u"ISUNIQUE", VT_BOOL, nullptr},
    {u"CLSID", VT_BSTR, nullptr},
    {u"COLLATINGSEQUENCE", VT_I4, nullptr},
    {u"RELATIONCONDITIONS", VT_BSTR, nullptr},
    {u"CALCULATIONINFO", VT_BSTR, nullptr},
    {u"OPTIMIZE", VT_BOOL, nullptr},
};

/// The last one can be put; it is kept and nothing else: sorting and searching need no index here.
constexpr std::size_t kOptimize = std::size(kRows) - 1;

}  // namespace

std::size_t Field::PropertyCount() {
    return std::size(kRows);
}

PropertyInfo Field::DescribeProperty(std::size_t index) {
    return {kRows[index].name, kRows[index].type, index == kOptimize ? kPropertyReadWrite : kPropertyReadOnly};
}

Value Field::ReadProperty(std::size_t index) {
    Description();
    if (index == kOptimize) return Value::Boolean(optimize_);
    if (kRows[index].read == nullptr) return Value::Null();
    owner_->DescribeOrigins();
    return kRows[index].read(Description());
}

void Field::WriteProperty(std::size_t, const Value& value) {
    OpenColumn();
    optimize_ = value.Get().boolVal != VARIANT_FALSE;
}

}  // namespace tk::ado
