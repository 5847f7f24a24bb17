// ado/persist/saved_value.h - the values of a row on their way into a file, as they are kept and not a digit less.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "ado/cursor/row_store.h"
#include "ado/persist/row_feed.h"
#include "ado/rowset/date_value.h"

namespace tk::ado {

struct SavedValue {
    enum class Form : unsigned char { Null, Text, Integer, Real, Boolean, Moment } form = Form::Null;
    CalendarTime moment;
    long long integer = 0;  // Boolean: 0 or 1
    double real = 0;
    std::string_view text;  // UTF-8, or bytes: what the driver gave, to be understood by the column's kind
};

enum class RowVersion : unsigned char { Current, Original };

/// Reads whole rows of a store.
class RowReader {
public:
    explicit RowReader(RowStore& rows);

    /// The values stay valid until the next call.
    std::span<const SavedValue> Read(const SavedRow& row, RowVersion version);

private:
    void ReadFetched(std::size_t row);
    void ReadCell(std::size_t row, std::size_t column, RowVersion version);

    RowStore& rows_;
    std::vector<SavedValue> values_;
    std::vector<std::string> texts_;  // of dates that have no other form
};

/// Whether a change from one to the other is a change.
bool IsSameValue(const SavedValue& first, const SavedValue& second) noexcept;

/// A value that is no text, as the text that its column's kind is read from.
/// @param buffer  of at least 64 bytes
std::string_view TextOf(const SavedValue& value, CellKind kind, char* buffer);

}  // namespace tk::ado
