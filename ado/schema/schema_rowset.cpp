#include "ado/schema/schema_rowset.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

#include "ado/cursor/text.h"
#include "ado/objects/arrays.h"
#include "ado/rowset/type_map.h"
#include "ado/schema/schema_table.h"

namespace tk::ado {
namespace {

constexpr LONG kTextWidth = 128;
constexpr std::size_t kMostOrderColumns = 6;

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
    if (schemaColumn.type == SchemaType::Date) column.type = column.dbType = kTypeDate;  // automation's, none of ODBC's
    column.isUnsigned = row.isUnsigned;
    column.sqlType = row.sqlType;
    return column;
}

bool IsTextual(SchemaType type) {
    return type == SchemaType::Text || type == SchemaType::Guid || type == SchemaType::Date;
}

/// The value of a column as its type has it: NULL where it does not fit.
SchemaValue ValueOf(const CatalogRow& row, const SchemaColumn& column) {
    if (column.make == nullptr && column.source == 0) return {};
    if (IsTextual(column.type)) {
        const SchemaValue text = column.make != nullptr ? column.make(row) : SchemaValue::Of(row.Text(column.source));
        return text.IsText() ? text : SchemaValue();
    }
    const SchemaValue number = column.make != nullptr ? column.make(row) : SchemaValue::Of(row.Number(column.source));
    if (number.IsNull() || number.IsText()) return {};
    if (column.type == SchemaType::Flag) return SchemaValue::Flag(number.AsNumber() != 0);
    const bool isSmall = column.type == SchemaType::Small;
    const bool fits =
        column.type == SchemaType::UnsignedHuge ||
        (isSmall ? std::in_range<std::int16_t>(number.AsNumber()) : std::in_range<std::int32_t>(number.AsNumber()));
    return fits ? SchemaValue::Number(number.AsNumber()) : SchemaValue();
}

/// NULL first, numbers by value, texts by their characters.
int Order(const SchemaValue& first, const SchemaValue& second) {
    if (first.IsNull() || second.IsNull()) return static_cast<int>(second.IsNull()) - static_cast<int>(first.IsNull());
    if (first.IsText() && second.IsText()) return first.AsText().compare(second.AsText());
    return first.AsNumber() < second.AsNumber() ? -1 : second.AsNumber() < first.AsNumber() ? 1 : 0;
}

bool IsAllowed(const CatalogRow& row, const SchemaTable& table, const Restrictions& restrictions) {
    for (std::size_t i = 0; i < restrictions.Count(); ++i) {
        if (!restrictions.IsGiven(i)) continue;
        if (restrictions.Allows(i, ValueOf(row, table.columns[table.restrictions[i]]))) continue;
        const SchemaValue other = table.otherwise != nullptr ? table.otherwise(row, i) : SchemaValue();
        if (!other.IsText() || !restrictions.Allows(i, other)) return false;
    }
    return true;
}

/// The rows that are allowed, in order.
std::vector<const CatalogRow*> Selected(const CatalogRows& rows, const SchemaTable& table,
                                        const Restrictions& restrictions) {
    struct Kept {
        const CatalogRow* row;
        std::array<SchemaValue, kMostOrderColumns> key;
    };
    std::vector<Kept> kept;
    kept.reserve(rows.size());
    for (const CatalogRow& row : rows) {
        if (!IsAllowed(row, table, restrictions)) continue;
        Kept& last = kept.emplace_back(Kept{&row, {}});
        for (std::size_t i = 0; i < table.order.size(); ++i)
            last.key[i] = ValueOf(row, table.columns[table.order[i]]);
    }
    const auto isBefore = [&](const Kept& first, const Kept& second) {
        for (std::size_t i = 0; i < table.order.size(); ++i) {
            if (const int order = Order(first.key[i], second.key[i]); order != 0) return order < 0;
        }
        return false;
    };
    // Most answers come in order.
    if (!std::ranges::is_sorted(kept, isBefore)) std::ranges::stable_sort(kept, isBefore);
    std::vector<const CatalogRow*> selected;
    selected.reserve(kept.size());
    for (const Kept& each : kept)
        selected.push_back(each.row);
    return selected;
}

/// Rows of a finished set, whose cells are texts.
class RowsetBuilder {
public:
    explicit RowsetBuilder(const SchemaTable& table) : table_(table), digits_(table.columns.size()) {
        std::vector<Column> columns;
        for (const SchemaColumn& column : table.columns)
            columns.push_back(Describe(column));
        rows_ = RowSet::Build(std::move(columns));
    }
    void Append(const CatalogRow& row) {
        cells_.clear();
        for (std::size_t i = 0; i < table_.columns.size(); ++i)
            cells_.push_back(Written(ValueOf(row, table_.columns[i]), digits_[i]));
        rows_->AppendTexts(cells_);
    }
    std::shared_ptr<RowSet> Take() { return std::move(rows_); }

private:
    using Digits = std::array<char, 24>;

    static std::optional<std::string_view> Written(const SchemaValue& value, Digits& digits) {
        switch (value.Kind()) {
            case SchemaValue::Form::Null:
                return std::nullopt;
            case SchemaValue::Form::Text:
                return value.AsText();
            case SchemaValue::Form::Flag:
                return value.AsNumber() != 0 ? "1" : "0";
            case SchemaValue::Form::Number:
                break;
        }
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value.AsNumber()).ptr;
        return std::string_view(digits.data(), end);
    }

    const SchemaTable& table_;
    std::shared_ptr<RowSet> rows_;
    std::vector<std::optional<std::string_view>> cells_;
    std::vector<Digits> digits_;
};

const SchemaTable& FindSchema(LONG schema) {
    for (const auto& tables :
         {ObjectSchemas(), ColumnSchemas(), KeySchemas(), ConstraintSchemas(), ProcedureSchemas()}) {
        for (const SchemaTable& table : tables) {
            if (table.schema == schema) return table;
        }
    }
    throw AdoError(ErrorNumber::FeatureNotAvailable, NumberText(schema));
}

}  // namespace

Restrictions::Restrictions(const std::vector<Value>& given) {
    for (const Value& each : given)
        wanted_.push_back(Read(each));
}

Restrictions::Wanted Restrictions::Read(const Value& given) {
    switch (given.Type()) {
        case VT_EMPTY:
        case VT_ERROR:
            return {};
        case VT_NULL:
            return {.form = Wanted::Form::Null, .text = {}, .number = {}};
        default:
            break;
    }
    HRESULT result = S_OK;
    const Value real = given.As(VT_R8, result);
    const std::optional<double> number = SUCCEEDED(result) ? std::optional(real.Get().dblVal) : std::nullopt;
    if (given.Type() == VT_BSTR) {
        return {.form = Wanted::Form::Text, .text = ToUtf8(ViewOf(given.Get().bstrVal)), .number = number};
    }
    return {.form = number ? Wanted::Form::Number : Wanted::Form::Nothing, .text = {}, .number = number};
}

std::string Restrictions::Text(std::size_t number) const {
    return number < wanted_.size() ? wanted_[number].text : std::string();
}

bool Restrictions::Allows(std::size_t number, const SchemaValue& value) const {
    const Wanted& wanted = wanted_[number];
    const auto isNumber = [&] { return wanted.number == static_cast<double>(value.AsNumber()); };
    switch (wanted.form) {
        case Wanted::Form::Anything:
            return true;
        case Wanted::Form::Null:
            return value.IsNull();
        case Wanted::Form::Text:
            // Where a database has no such level an empty text says as much as NULL.
            if (value.IsNull()) return wanted.text.empty();
            return value.IsText() ? value.AsText() == wanted.text : isNumber();
        case Wanted::Form::Number:
            return !value.IsNull() && !value.IsText() && isNumber();
        case Wanted::Form::Nothing:
            break;
    }
    return false;
}

std::vector<Value> ReadRestrictions(const Value& given) {
    if (given.IsEmpty() || given.IsNull() || given.Type() == VT_ERROR) return {};
    if ((given.Type() == VT_DISPATCH || given.Type() == VT_UNKNOWN) && given.Get().punkVal == nullptr) return {};
    return ArrayItems(given);
}

std::shared_ptr<RowSet> OpenSchemaRowset(const std::shared_ptr<Session>& session, LONG schema,
                                         const std::vector<Value>& given) {
    const SchemaTable& table = FindSchema(schema);
    if (given.size() > table.restrictions.size()) throw AdoError(ErrorNumber::InvalidArgument);
    const Restrictions restrictions(given);
    const CatalogRows rows = table.read(session, restrictions);
    RowsetBuilder built(table);
    for (const CatalogRow* row : Selected(rows, table, restrictions))
        built.Append(*row);
    return built.Take();
}

}  // namespace tk::ado
