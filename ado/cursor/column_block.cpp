#include "ado/cursor/column_block.h"

#include <algorithm>

#include "ado/cursor/cell_text.h"

namespace tk::ado {

std::size_t ColumnBlock::SizeWith(const Cell& cell) const noexcept {
    constexpr std::size_t kLongestMade = 40;  // of a number or a moment
    return std::max({array_.width, cell.text.size(), kLongestMade}) * (array_.lengths.size() + 1);
}

void ColumnBlock::Append(const Cell& cell, const Column& target) {
    if (cell.form == Cell::Form::Null) {
        array_.lengths.push_back(-1);
        return;
    }
    (cell.form == Cell::Form::Bytes ? array_.isBinary : hasTexts_) = true;
    const std::string_view text = CellText(cell, target, scratch_);
    array_.lengths.push_back(static_cast<std::ptrdiff_t>(text.size()));
    array_.width = std::max(array_.width, text.size());
    texts_ += text;
}

const ParameterArray& ColumnBlock::Finish() {
    array_.width = std::max<std::size_t>(array_.width, 1);
    array_.bytes.assign(array_.width * array_.lengths.size(), '\0');
    auto from = texts_.begin();
    auto to = array_.bytes.begin();
    for (const std::ptrdiff_t length : array_.lengths) {
        if (length > 0) {
            std::copy_n(from, length, to);
            from += length;
        }
        to += static_cast<std::ptrdiff_t>(array_.width);
    }
    return array_;
}

}  // namespace tk::ado
