// ado/persist/gram_decoder.h - the bytes of a table-gram into values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ado/persist/gram_format.h"
#include "ado/persist/gram_source.h"
#include "ado/persist/row_collector.h"

namespace tk::ado::gram {

class Decoder {
public:
    explicit Decoder(GramSource& source) : source_(source) {}

    /// Reads one value and adds it to the column's cells. @throws AdoError ReadingFile
    void Take(const GramColumn& column, RowCollector& rows);

    /// Reads one value of a column that nobody sees.
    void Skip(const GramColumn& column);

private:
    std::size_t Length(const GramColumn& column);
    void TakeText(const GramColumn& column, RowCollector& rows);
    void TakeLongText(const GramColumn& column, std::size_t size, RowCollector& rows);
    void TakeDigits(const GramColumn& column, RowCollector& rows);
    void TakeMoment(const GramColumn& column, RowCollector& rows);

    GramSource& source_;
    std::string bytes_;
    std::vector<char16_t> units_;
    std::vector<char> utf8_;
};

}  // namespace tk::ado::gram
