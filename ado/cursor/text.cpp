#include "ado/cursor/text.h"

#include <array>
#include <memory>

namespace tk::ado {
namespace {

/// Upper case of every UTF-16 unit, asked from the platform once.
class FoldTable {
public:
    FoldTable() : units_(std::make_unique<std::array<char16_t, 0x10000>>()) {
        for (unsigned unit = 0; unit < 0x10000; ++unit)
            (*units_)[unit] = static_cast<char16_t>(unit);
        // Surrogates and the zero unit are left alone: they are no characters of their own.
        MapRange(1, 0xD800);
        MapRange(0xE000, 0x10000);
    }
    char16_t Upper(char16_t unit) const noexcept { return (*units_)[unit]; }

private:
    void MapRange(unsigned first, unsigned end) { CharUpperBuffW(units_->data() + first, end - first); }

    std::unique_ptr<std::array<char16_t, 0x10000>> units_;
};

}  // namespace

void StoreUtf16(std::string_view utf8, std::u16string& text) {
    text.resize(tk::text::Utf8ToUtf16Bound(utf8.size()));
    text.resize(tk::text::Utf8ToUtf16(utf8, text.data(), text.size()).written);
}

char16_t FoldUnit(char16_t unit) noexcept {
    if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    static const FoldTable table;
    return table.Upper(unit);
}

bool SameName(std::u16string_view first, std::u16string_view second) noexcept {
    if (first.size() != second.size()) return false;
    for (std::size_t i = 0; i < first.size(); ++i) {
        if (first[i] != second[i] && FoldUnit(first[i]) != FoldUnit(second[i])) return false;
    }
    return true;
}

std::u16string NumberText(long long number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

}  // namespace tk::ado
