// ado/cursor/edit_buffer.h - the values put into one row, changed or new, until they are written.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "ado/cursor/value.h"

namespace tk::ado {

/// EditModeEnum.
enum class EditMode : LONG { None = 0, InProgress = 1, Add = 2, Delete = 4 };

class EditBuffer {
public:
    EditMode Mode() const noexcept { return mode_; }
    bool IsOpen() const noexcept { return mode_ != EditMode::None; }

    /// The row being changed; for a new row the one that was current before, if there was one.
    std::optional<std::size_t> Row() const noexcept { return row_; }

    void BeginChange(std::size_t row, std::size_t columns) { Begin(EditMode::InProgress, row, columns); }
    void BeginAdd(std::optional<std::size_t> before, std::size_t columns) { Begin(EditMode::Add, before, columns); }
    void Discard() noexcept {
        mode_ = EditMode::None;
        values_.clear();
    }

    void Set(std::size_t column, Value value) { values_[column] = std::move(value); }

    /// Null when the column was not set.
    const Value* Find(std::size_t column) const noexcept {
        return column < values_.size() && values_[column] ? &*values_[column] : nullptr;
    }
    const std::vector<std::optional<Value>>& Values() const noexcept { return values_; }

private:
    void Begin(EditMode mode, std::optional<std::size_t> row, std::size_t columns) {
        mode_ = mode;
        row_ = row;
        values_.assign(columns, std::nullopt);
    }

    EditMode mode_ = EditMode::None;
    std::optional<std::size_t> row_;
    std::vector<std::optional<Value>> values_;
};

}  // namespace tk::ado
