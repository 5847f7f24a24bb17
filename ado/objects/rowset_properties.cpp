#include "ado/objects/rowset_properties.h"

#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

constexpr LONG kNoLimit = 0x7FFFFFFF;
constexpr LONG kLockIsReadOnly = 1;
constexpr LONG kLockIsBatch = 4;

/// A property: kept in the settings, told of by the facts, or a constant.
struct Row {
    const char16_t* name;
    VARTYPE type;
    LONG number = 0;  // of a constant
    const char16_t* text = u"";
    LONG RowsetSettings::*kept = nullptr;
    LONG WriteRules::*rule = nullptr;
    std::string WriteRules::*ruleText = nullptr;
    bool RowsetSettings::*flag = nullptr;
    LONG least = 0;
    LONG most = kNoLimit;
    LONG (*fact)(const RowsetFacts& facts) = nullptr;

    constexpr bool IsWritable() const noexcept {
        return kept != nullptr || rule != nullptr || ruleText != nullptr || flag != nullptr;
    }
};

constexpr Row kRows[] = {
    {.name = u"Update Criteria", .type = VT_I4, .rule = &WriteRules::updateCriteria, .most = kCriteriaTimeStamp},
    {.name = u"Update Resync", .type = VT_I4, .rule = &WriteRules::updateResync, .most = 15},
    {.name = u"Unique Table", .type = VT_BSTR, .ruleText = &WriteRules::uniqueTable},
    {.name = u"Unique Schema", .type = VT_BSTR, .ruleText = &WriteRules::uniqueSchema},
    {.name = u"Unique Catalog", .type = VT_BSTR, .ruleText = &WriteRules::uniqueCatalog},
    {.name = u"Command Time Out", .type = VT_I4, .rule = &WriteRules::timeoutSeconds},
    {.name = u"Maximum Rows", .type = VT_I4, .fact = [](const RowsetFacts& facts) { return facts.maxRecords; }},
    {.name = u"Maximum Open Rows", .type = VT_I4},
    {.name = u"Resync Command", .type = VT_BSTR, .ruleText = &WriteRules::resyncCommand},
    {.name = u"Batch Size", .type = VT_I4, .kept = &RowsetSettings::batchSize, .least = 1},
    {.name = u"Auto Recalc", .type = VT_I4, .kept = &RowsetSettings::autoRecalc, .most = 1},
    {.name = u"Initial Fetch Size", .type = VT_I4, .kept = &RowsetSettings::initialFetchSize},
    {.name = u"Background Fetch Size", .type = VT_I4, .kept = &RowsetSettings::backgroundFetchSize, .least = 1},
    {.name = u"Background Thread Priority",
     .type = VT_I4,
     .kept = &RowsetSettings::backgroundThreadPriority,
     .least = 1,
     .most = 5},
    {.name = u"Maintain Change Status", .type = VT_BOOL, .flag = &RowsetSettings::maintainChangeStatus},
    {.name = u"Reshape Name", .type = VT_BSTR},
    {.name = u"Bookmarkable", .type = VT_BOOL, .number = 1},
    {.name = u"IRowsetLocate", .type = VT_BOOL, .number = 1},
    {.name = u"IRowsetScroll", .type = VT_BOOL, .number = 1},
    {.name = u"IRowsetChange",
     .type = VT_BOOL,
     .fact = [](const RowsetFacts& facts) { return facts.lock != kLockIsReadOnly ? 1 : 0; }},
    {.name = u"IRowsetUpdate",
     .type = VT_BOOL,
     .fact = [](const RowsetFacts& facts) { return facts.lock == kLockIsBatch ? 1 : 0; }},
    {.name = u"Hidden Columns", .type = VT_I4},
    {.name = u"Cursor Engine Version", .type = VT_BSTR, .text = u"28.0"},
    {.name = u"Optimize", .type = VT_BOOL},
    {.name = u"Cache Child Rows", .type = VT_BOOL, .number = 1},
    {.name = u"Query Based Updates/Deletes/Inserts", .type = VT_BOOL, .number = 1},
    {.name = u"ODBC Concurrency Type", .type = VT_I4, .number = 1},
    {.name = u"ODBC Cursor Type", .type = VT_I4},
    {.name = u"BLOB accessibility on Forward-Only cursor", .type = VT_BOOL, .number = 1},
    {.name = u"Include SQL_FLOAT, SQL_DOUBLE, and SQL_REAL in QBU where clauses", .type = VT_BOOL},
    {.name = u"Position on the last row after insert", .type = VT_BOOL, .number = 1},
    {.name = u"IRowsetChangeExtInfo", .type = VT_BOOL},
    {.name = u"Generate a Rowset that can be marshaled", .type = VT_BOOL},
};

}  // namespace

std::size_t RowsetPropertyCount() noexcept {
    return std::size(kRows);
}

PropertyInfo DescribeRowsetProperty(std::size_t index) {
    const Row& row = kRows[index];
    return {row.name, row.type, row.IsWritable() ? kPropertyReadWrite : kPropertyReadOnly};
}

Value ReadRowsetProperty(std::size_t index, const RowsetSettings& settings, const RowsetFacts& facts) {
    const Row& row = kRows[index];
    LONG number = row.number;
    if (row.ruleText != nullptr) return Value::Text(ToUtf16(settings.rules.*row.ruleText));
    if (row.type == VT_BSTR) return Value::Text(row.text);
    if (row.kept != nullptr) number = settings.*row.kept;
    if (row.rule != nullptr) number = settings.rules.*row.rule;
    if (row.flag != nullptr) number = settings.*row.flag ? 1 : 0;
    if (row.fact != nullptr) number = row.fact(facts);
    return row.type == VT_BOOL ? Value::Boolean(number != 0) : Value(number);
}

void WriteRowsetProperty(std::size_t index, RowsetSettings& settings, const Value& value) {
    const Row& row = kRows[index];
    if (row.ruleText != nullptr) {
        settings.rules.*row.ruleText = ToUtf8(ViewOf(value.Get().bstrVal));
    } else if (row.flag != nullptr) {
        settings.*row.flag = value.Get().boolVal != VARIANT_FALSE;
    } else if (!row.IsWritable()) {
        throw AdoError(ErrorNumber::FeatureNotAvailable, row.name);
    } else {
        const LONG number = value.Get().lVal;
        if (number < row.least || number > row.most) throw AdoError(ErrorNumber::InvalidArgument, NumberText(number));
        (row.kept != nullptr ? settings.*row.kept : settings.rules.*row.rule) = number;
    }
}

}  // namespace tk::ado
