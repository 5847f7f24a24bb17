#include "catalog/column_type.h"

#include <algorithm>

namespace tk::catalog {
namespace {

const char* FormatOf(const TypeRule& rule, const ColumnType& column) {
    if (rule.choose != nullptr) return rule.choose(column);
    if (column.longFlag != 0 && rule.longText != nullptr) return rule.longText;
    if (column.fixedFlag != 0 && rule.fixedText != nullptr) return rule.fixedText;
    return rule.text;
}

}  // namespace

CString SpellType(std::span<const TypeRule> rules, const ColumnType& column) {
    const auto rule = std::ranges::lower_bound(rules, column.code, {}, &TypeRule::code);
    if (rule == rules.end() || rule->code != column.code) return "UNKNOWN";
    const char* format = FormatOf(*rule, column);
    CString text;
    switch (rule->uses) {
        case Uses::Nothing:
            text = format;
            break;
        case Uses::Size:
            text.Format(format, column.size);
            break;
        case Uses::PrecisionScale:
            text.Format(format, column.precision, column.scale);
            break;
    }
    return text;
}

}  // namespace tk::catalog
