#include "catalog/dbms_tag.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tk::catalog {
namespace {

struct Tag {
    std::string_view text;  // capitals
    Dbms system;
};

// The first three characters of what the systems call themselves.
constexpr Tag kTags[] = {
    {"MIC", Dbms::SqlServer},  // Microsoft SQL Server
    {"MS ", Dbms::SqlServer},  // MS SQL Server
    {"ADA", Dbms::Sybase},     // Adaptive Server
    {"DB2", Dbms::Db2},        //
    {"ORA", Dbms::Oracle},     //
};

// By byte and for ASCII alone: no tag holds a lead byte, so a trail byte that equals a letter meets none.
constexpr char Capital(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

Dbms DbmsOf(const char* tag) noexcept {
    const std::string_view given = tag == nullptr ? std::string_view() : tag;
    const Tag* row = std::ranges::find_if(
        kTags, [&](const Tag& known) { return std::ranges::equal(given, known.text, {}, Capital); });
    return row != std::end(kTags) ? row->system : Dbms::Unknown;
}

}  // namespace tk::catalog
