// Any text as a filter and as a search: accepted or refused with an ADO error, never anything else.
#include "ado/cursor/criteria.h"

#include <cstdint>
#include <string>

#include "ado/rowset/column.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<tk::ado::Column> columns = [] {
        std::vector<tk::ado::Column> made(4);
        const char16_t* names[] = {u"id", u"name", u"day", u"unit price"};
        const tk::ado::CellKind kinds[] = {tk::ado::CellKind::Integer32, tk::ado::CellKind::Text,
                                           tk::ado::CellKind::Timestamp, tk::ado::CellKind::Decimal};
        const LONG types[] = {3, 202, 135, 131};
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i].name = names[i];
            made[i].kind = kinds[i];
            made[i].type = types[i];
        }
        return made;
    }();
    std::u16string text;
    for (std::size_t i = 0; i < size; ++i)
        text += static_cast<char16_t>(data[i]);  // Latin-1: the grammar is ASCII
    for (const auto parse : {tk::ado::Criteria::ParseFilter, tk::ado::Criteria::ParseFind}) {
        try {
            parse(text, columns);
        } catch (const tk::ado::AdoError&) {}
    }
    return 0;
}
