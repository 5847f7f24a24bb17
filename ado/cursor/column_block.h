// ado/cursor/column_block.h - the values of one column laid out one behind the other, as a parameter of many
// executions.
#pragma once

#include <string>

#include "ado/odbc/parameter.h"

namespace tk::ado {

class ColumnBlock {
public:
    /// @param target  the column that the value goes to
    void Append(const Cell& cell, const Column& target);

    /// Bytes that all the values would take with one more, each as long as the longest; at most.
    std::size_t SizeWith(const Cell& cell) const noexcept;

    /// Numbers, texts and bytes are not sent as one: the database takes a number otherwise than its text.
    bool IsMixed() const noexcept { return isMixed_; }

    /// Once, behind the last value. @return valid as long as the block
    const ParameterArray& Finish();

private:
    ParameterArray array_;  // its bytes are laid out in the end
    std::string values_;    // as they came
    std::string scratch_;
    bool isMixed_ = false;
};

}  // namespace tk::ado
