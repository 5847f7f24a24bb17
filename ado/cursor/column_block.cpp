#include "ado/cursor/column_block.h"

#include <algorithm>

#include "ado/cursor/cell_text.h"

namespace tk::ado {
namespace {

/// How a value travels.
Cell::Form SentForm(Cell::Form form) noexcept {
    switch (form) {
        case Cell::Form::Boolean:
            return Cell::Form::Integer;
        case Cell::Form::Integer:
        case Cell::Form::Real:
        case Cell::Form::Bytes:
            return form;
        default:
            return Cell::Form::Text;
    }
}

template <class Number>
std::string_view BytesOf(const Number& number) noexcept {
    static_assert(sizeof number == 8);
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

}  // namespace

std::size_t ColumnBlock::SizeWith(const Cell& cell) const noexcept {
    constexpr std::size_t kLongestMade = 40;  // of a number or a moment
    return std::max({array_.width, cell.text.size(), kLongestMade}) * (array_.lengths.size() + 1);
}

void ColumnBlock::Append(const Cell& cell, const Column& target) {
    if (cell.form == Cell::Form::Null) {
        array_.lengths.push_back(-1);
        return;
    }
    const Cell::Form form = SentForm(cell.form);
    const bool isFirst = array_.width == 0;
    isMixed_ = isMixed_ || (!isFirst && form != array_.form);
    array_.form = form;
    const std::string_view value = form == Cell::Form::Integer ? BytesOf(cell.integer)
                                   : form == Cell::Form::Real  ? BytesOf(cell.real)
                                                               : CellText(cell, target, scratch_);
    array_.lengths.push_back(static_cast<std::ptrdiff_t>(value.size()));
    array_.width = std::max({array_.width, value.size(), std::size_t{1}});
    values_ += value;
}

const ParameterArray& ColumnBlock::Finish() {
    array_.width = std::max<std::size_t>(array_.width, 1);
    array_.bytes.assign(array_.width * array_.lengths.size(), '\0');
    auto from = values_.begin();
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
