// ado/cursor/sort.h - the order "name [ASC|DESC], name ..." over the rows of a store.
//
// Stable; NULL first ascending and last descending; texts by the rules of a Chinese system, without regard to case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "ado/cursor/row_store.h"

namespace tk::ado {

struct SortKey {
    std::size_t column = 0;
    bool descending = false;
};

/// @throws AdoError 3265 for an unknown name, 3001 for any other fault of the text or a column of bytes
/// @return empty for an empty text: the original order
std::vector<SortKey> ParseSort(std::u16string_view text, const std::vector<Column>& columns);

/// Puts row numbers in order.
void SortRows(const RowStore& rows, const std::vector<SortKey>& keys, std::vector<std::uint32_t>& order);

}  // namespace tk::ado
