// ado/persist/gram_encoder.h - values into the bytes of a table-gram.
#pragma once

#include <vector>

#include "ado/persist/file_writer.h"
#include "ado/persist/gram_format.h"
#include "ado/persist/saved_value.h"

namespace tk::ado::gram {

class Encoder {
public:
    explicit Encoder(FileWriter& file) : file_(file) {}

    /// Writes a value that is not NULL.
    /// @return false when the column's coding cannot hold it to the last digit; what has been written is then worthless
    bool Put(const GramColumn& column, CellKind kind, const SavedValue& value);

private:
    bool PutInteger(const GramColumn& column, const SavedValue& value);
    bool PutReal(const GramColumn& column, const SavedValue& value);
    bool PutDigits(const GramColumn& column, const SavedValue& value);
    bool PutMoment(const GramColumn& column, const SavedValue& value);
    bool PutGuid(const SavedValue& value);
    bool PutText(const GramColumn& column, std::string_view text);
    bool PutLongText(const GramColumn& column, std::string_view text);
    bool PutBytes(const GramColumn& column, std::string_view bytes);

    FileWriter& file_;
    std::vector<char16_t> units_;
};

}  // namespace tk::ado::gram
