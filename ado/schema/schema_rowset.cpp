#include "ado/schema/schema_rowset.h"

#include <algorithm>

#include "ado/cursor/text.h"
#include "ado/objects/arrays.h"
#include "ado/rowset/type_map.h"
#include "ado/schema/schema_table.h"

namespace tk::ado {
namespace {

constexpr LONG kTextWidth = 128;

struct TypeRow {
    SchemaType type;
    int sqlType;
    bool isUnsigned;
};

/// The SQL type that a column of a schema rowset would have if it came from a database.
constexpr TypeRow kTypeRows[] = {
    {SchemaType::Text, SQL_WVARCHAR, false},
    {SchemaType::Guid, SQL_GUID, false},
    {SchemaType::Flag, SQL_BIT, false},
    {SchemaType::Small, SQL_SMALLINT, false},
    {SchemaType::UnsignedSmall, SQL_SMALLINT, true},
    {SchemaType::Long, SQL_INTEGER, false},
    {SchemaType::UnsignedLong, SQL_INTEGER, true},
    {SchemaType::UnsignedHuge, SQL_BIGINT, true},
    {SchemaType::Date, SQL_TYPE_TIMESTAMP, false},
};

Column Describe(const SchemaColumn& schemaColumn) {
    const TypeRow& row = *std::ranges::find(kTypeRows, schemaColumn.type, &TypeRow::type);
    const SqlTypeRule& rule = FindSqlType(row.sqlType, row.isUnsigned);
    Column column;
    column.name = schemaColumn.name;
    column.type = rule.fieldType;
    column.dbType = rule.dbType;
    column.kind = rule.kind;
    column.definedSize = rule.fixedSize != 0 ? rule.fixedSize : kTextWidth;
    column.precision = rule.precision;
    column.attributes = kFieldIsNullable | kFieldMayBeNull | (rule.fixedSize != 0 ? kFieldFixed : 0);
    column.isUnsigned = row.isUnsigned;
    column.sqlType = row.sqlType;
    return column;
}

/// The value as a cell of the column gives it.
Value Typed(Value value, SchemaType type) {
    if (value.IsNull() || value.IsEmpty()) return Value::Null();
    static constexpr struct {
        SchemaType type;
        VARTYPE value;
    } kForms[] = {
        {SchemaType::Text, VT_BSTR},        {SchemaType::Guid, VT_BSTR},
        {SchemaType::Flag, VT_BOOL},        {SchemaType::Small, VT_I2},
        {SchemaType::UnsignedSmall, VT_I4}, {SchemaType::Long, VT_I4},
        {SchemaType::UnsignedLong, VT_I4},  {SchemaType::UnsignedHuge, VT_DECIMAL},
        {SchemaType::Date, VT_DATE},
    };
    for (const auto& form : kForms) {
        if (form.type != type) continue;
        HRESULT result = S_OK;
        Value typed = value.As(form.value, result);
        return SUCCEEDED(result) ? typed : Value::Null();
    }
    return Value::Null();
}

Value Plain(const CatalogRow& row, const SchemaColumn& column) {
    if (column.source == 0) return Value::Null();
    if (column.type == SchemaType::Text || column.type == SchemaType::Guid || column.type == SchemaType::Date) {
        return TextValue(row.Text(column.source));
    }
    return NumberValue(row.Number(column.source));
}

/// NULL first, numbers by value, texts by their units.
int Order(const Value& first, const Value& second) {
    if (first.IsNull() || second.IsNull()) return static_cast<int>(second.IsNull()) - static_cast<int>(first.IsNull());
    if (first.Type() == VT_BSTR && second.Type() == VT_BSTR) {
        return ViewOf(first.Get().bstrVal).compare(ViewOf(second.Get().bstrVal));
    }
    HRESULT result = S_OK;
    const double a = first.As(VT_R8, result).Get().dblVal;
    const double b = second.As(VT_R8, result).Get().dblVal;
    return a < b ? -1 : b < a ? 1 : 0;
}

const SchemaTable& FindSchema(LONG schema) {
    for (const auto& tables : {ObjectSchemas(), ColumnSchemas(), KeySchemas()}) {
        for (const SchemaTable& table : tables) {
            if (table.schema == schema) return table;
        }
    }
    throw AdoError(ErrorNumber::FeatureNotAvailable, NumberText(schema));
}

}  // namespace

Value TextValue(const std::optional<std::u16string>& text) {
    return text ? Value::Text(*text) : Value::Null();
}

Value NumberValue(const std::optional<long long>& number) {
    if (!number) return Value::Null();
    if (*number >= INT32_MIN && *number <= INT32_MAX) return Value(static_cast<LONG>(*number));
    return Value::Real(static_cast<double>(*number));
}

std::string Restrictions::Text(std::size_t number) const {
    if (number >= given_.size() || given_[number].Type() != VT_BSTR) return {};
    return ToUtf8(ViewOf(given_[number].Get().bstrVal));
}

bool Restrictions::Allows(std::size_t number, const Value& value) const {
    if (number >= given_.size()) return true;
    const Value& wanted = given_[number];
    switch (wanted.Type()) {
        case VT_EMPTY:
        case VT_ERROR:
            return true;
        case VT_NULL:
            return value.IsNull();
        case VT_BSTR: {
            const std::u16string_view text = ViewOf(wanted.Get().bstrVal);
            // Where a database has no such level an empty text says as much as NULL.
            if (value.IsNull()) return text.empty();
            return value.Type() == VT_BSTR ? ViewOf(value.Get().bstrVal) == text : Order(value, wanted) == 0;
        }
        default:
            return !value.IsNull() && value.Type() != VT_BSTR && Order(value, wanted) == 0;
    }
}

std::vector<Value> ReadRestrictions(const Value& given) {
    if (given.IsEmpty() || given.IsNull() || given.Type() == VT_ERROR) return {};
    if ((given.Type() == VT_DISPATCH || given.Type() == VT_UNKNOWN) && given.Get().punkVal == nullptr) return {};
    return ArrayItems(given);
}

std::shared_ptr<RowSet> OpenSchemaRowset(std::shared_ptr<Session> session, LONG schema,
                                         const std::vector<Value>& given) {
    const SchemaTable& table = FindSchema(schema);
    if (given.size() > table.restrictions.size()) throw AdoError(ErrorNumber::InvalidArgument);
    const Restrictions restrictions(given);
    std::vector<std::vector<Value>> rows;
    for (const CatalogRow& source : table.read(session, restrictions)) {
        std::vector<Value> row;
        row.reserve(table.columns.size());
        for (const SchemaColumn& column : table.columns) {
            row.push_back(Typed(column.make != nullptr ? column.make(source) : Plain(source, column), column.type));
        }
        bool allowed = true;
        for (std::size_t i = 0; i < given.size(); ++i) {
            allowed = allowed && restrictions.Allows(i, row[table.restrictions[i]]);
        }
        if (allowed) rows.push_back(std::move(row));
    }
    std::ranges::stable_sort(rows, [&](const std::vector<Value>& first, const std::vector<Value>& second) {
        for (const unsigned char column : table.order) {
            if (const int order = Order(first[column], second[column]); order != 0) return order < 0;
        }
        return false;
    });
    std::vector<Column> columns;
    for (const SchemaColumn& column : table.columns)
        columns.push_back(Describe(column));
    auto built = RowSet::Build(std::move(columns));
    std::vector<VARIANT> borrowed;
    for (const std::vector<Value>& row : rows) {
        borrowed.clear();
        for (const Value& value : row)
            borrowed.push_back(value.Get());
        built->Append(borrowed);
    }
    return built;
}

}  // namespace tk::ado
