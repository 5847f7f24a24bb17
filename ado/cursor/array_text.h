// ado/cursor/array_text.h - the values of one column as the text of an array: {1,"a\"b",NULL}.
#pragma once

#include <string>

#include "ado/rowset/cell.h"
#include "ado/rowset/column.h"

namespace tk::ado {

class ArrayText {
public:
    void Clear() { text_.assign(1, '{'); }

    /// Bytes so far.
    std::size_t Size() const noexcept { return text_.size(); }

    /// @param target  the column that the value goes to: says which part of a moment it takes
    /// @throws AdoError DataConversion for a text with a zero character, which the array would lose
    void Append(const Cell& cell, const Column& target);

    /// Closes the array. @return valid until the next Clear
    const std::string& Finish();

private:
    void AppendQuoted(std::string_view text);
    void AppendBytes(std::string_view bytes);

    std::string text_ = std::string(1, '{');
    std::string scratch_;
};

}  // namespace tk::ado
