#include "ado/cursor/sort.h"

#include <algorithm>
#include <string>

#include "ado/cursor/columns.h"
#include "ado/cursor/compare.h"
#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

class SortText {
public:
    explicit SortText(std::u16string_view text) : text_(text) {}

    bool AtEnd() {
        SkipBlanks();
        return at_ == text_.size();
    }
    bool TakeComma() {
        if (AtEnd() || text_[at_] != u',') return false;
        ++at_;
        return true;
    }

    /// A word or a name in brackets; empty when there is none.
    std::u16string_view TakeName(bool& bracketed) {
        SkipBlanks();
        bracketed = at_ < text_.size() && text_[at_] == u'[';
        const std::size_t start = bracketed ? at_ + 1 : at_;
        std::size_t end = start;
        if (bracketed) {
            end = text_.find(u']', start);
            if (end == std::u16string_view::npos) Refuse();
            at_ = end + 1;
        } else {
            while (end < text_.size() && !IsBlank(text_[end]) && text_[end] != u',')
                ++end;
            at_ = end;
        }
        return text_.substr(start, end - start);
    }
    [[noreturn]] void Refuse() const { throw AdoError(ErrorNumber::InvalidArgument, std::u16string(text_)); }

private:
    static bool IsBlank(char16_t unit) { return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u3000'; }
    void SkipBlanks() {
        while (at_ < text_.size() && IsBlank(text_[at_]))
            ++at_;
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
};

/// One column of the rows to be sorted, made ready for many comparisons.
class KeyColumn {
public:
    KeyColumn(const RowStore& rows, SortKey key, const std::vector<std::uint32_t>& order) : rows_(rows), key_(key) {
        if (rows.Columns()[key.column].kind != CellKind::Text) return;
        // Texts become UTF-16 once, not once a comparison.
        std::uint32_t last = 0;
        for (const std::uint32_t row : order)
            last = std::max(last, row);
        places_.resize(order.empty() ? 0 : last + std::size_t{1});
        std::u16string scratch;
        for (const std::uint32_t row : order) {
            const Cell cell = rows.At(row, key.column);
            if (cell.form == Cell::Form::Null) continue;
            StoreUtf16(cell.text, scratch);
            places_[row] = {arena_.size(), scratch.size(), true};
            arena_ += scratch;
        }
    }

    int Compare(std::uint32_t first, std::uint32_t second) const {
        const int order = places_.empty() ? CompareInPlace(first, second) : CompareTextsOf(first, second);
        return key_.descending ? -order : order;
    }

private:
    struct TextPlace {
        std::size_t start = 0;
        std::size_t length = 0;
        bool known = false;
    };

    int CompareTextsOf(std::uint32_t first, std::uint32_t second) const {
        const TextPlace& a = places_[first];
        const TextPlace& b = places_[second];
        if (!a.known || !b.known) return static_cast<int>(a.known) - static_cast<int>(b.known);
        const std::u16string_view all = arena_;
        return CompareTexts(all.substr(a.start, a.length), all.substr(b.start, b.length));
    }
    int CompareInPlace(std::uint32_t first, std::uint32_t second) const {
        const Cell a = rows_.At(first, key_.column);
        const Cell b = rows_.At(second, key_.column);
        const bool aKnown = a.form != Cell::Form::Null;
        const bool bKnown = b.form != Cell::Form::Null;
        if (!aKnown || !bKnown) return static_cast<int>(aKnown) - static_cast<int>(bKnown);
        return CompareCells(a, b);
    }

    const RowStore& rows_;
    SortKey key_;
    std::u16string arena_;
    std::vector<TextPlace> places_;  // by row number; empty unless the column holds texts
};

}  // namespace

std::vector<SortKey> ParseSort(std::u16string_view text, const std::vector<Column>& columns) {
    std::vector<SortKey> keys;
    SortText source(text);
    if (source.AtEnd()) return keys;
    do {
        bool bracketed = false;
        const std::u16string_view name = source.TakeName(bracketed);
        if (name.empty()) source.Refuse();
        SortKey key{FindColumn(columns, name), false};
        if (columns[key.column].kind == CellKind::Bytes) source.Refuse();
        if (const std::u16string_view word = source.TakeName(bracketed); !word.empty()) {
            key.descending = SameName(word, u"DESC");
            if (bracketed || (!key.descending && !SameName(word, u"ASC"))) source.Refuse();
        }
        keys.push_back(key);
    } while (source.TakeComma());
    if (!source.AtEnd()) source.Refuse();
    return keys;
}

void SortRows(const RowStore& rows, const std::vector<SortKey>& keys, std::vector<std::uint32_t>& order) {
    std::vector<KeyColumn> columns;
    columns.reserve(keys.size());
    for (const SortKey& key : keys)
        columns.emplace_back(rows, key, order);
    std::ranges::stable_sort(order, [&](std::uint32_t first, std::uint32_t second) {
        for (const KeyColumn& column : columns) {
            if (const int result = column.Compare(first, second); result != 0) return result < 0;
        }
        return false;
    });
}

}  // namespace tk::ado
