#include "tools/tkdb/column_type_text.h"

#include <fmt/format.h>

namespace tk::tools {
namespace {

enum class Measure { None, Size, Digits };

constexpr struct {
    long type;
    const char* word;
    Measure measure = Measure::None;
} kTypes[] = {
    {2, "smallint"},
    {3, "integer"},
    {4, "real"},
    {5, "double"},
    {6, "currency"},
    {7, "date and time"},
    {11, "boolean"},
    {14, "decimal", Measure::Digits},
    {16, "tinyint"},
    {17, "unsigned tinyint"},
    {18, "unsigned smallint"},
    {19, "unsigned integer"},
    {20, "bigint"},
    {21, "unsigned bigint"},
    {72, "guid"},
    {128, "binary", Measure::Size},
    {129, "char", Measure::Size},
    {130, "char", Measure::Size},
    {131, "numeric", Measure::Digits},
    {133, "date"},
    {134, "time"},
    {135, "timestamp"},
    {200, "varchar", Measure::Size},
    {201, "text"},
    {202, "varchar", Measure::Size},
    {203, "text"},
    {204, "varbinary", Measure::Size},
    {205, "blob"},
};

}  // namespace

long ExactType(long type, unsigned flags) {
    constexpr unsigned kFixed = 0x10;
    constexpr unsigned kLong = 0x80;
    static constexpr struct {
        long type;
        long variable;
        long unlimited;
    } kFamilies[] = {{128, 204, 205}, {129, 200, 201}, {130, 202, 203}};
    for (const auto& family : kFamilies) {
        if (family.type != type) continue;
        if ((flags & kLong) != 0) return family.unlimited;
        return (flags & kFixed) != 0 ? type : family.variable;
    }
    return type;
}

std::string ColumnTypeText(long type, long size, long precision, long scale) {
    for (const auto& row : kTypes) {
        if (row.type != type) continue;
        if (row.measure == Measure::Size && size > 0) return fmt::format("{}({})", row.word, size);
        if (row.measure == Measure::Digits && precision > 0)
            return fmt::format("{}({},{})", row.word, precision, scale);
        return row.word;
    }
    return fmt::format("type {}", type);
}

}  // namespace tk::tools
