// ado/persist/loaded_rows.h - what a file held: rows, the changes that were pending, and how they are to be written
// back.
#pragma once

#include <memory>
#include <vector>

#include "ado/cursor/row_store.h"
#include "ado/cursor/row_writer.h"
#include "ado/persist/row_feed.h"

namespace tk::ado {

/// A pending change; an inserted row is there as it was inserted, a deleted one as it was before.
struct LoadedChange {
    std::size_t row = 0;
    RowState state = RowState::Unchanged;
    std::size_t version = 0;    // of an update: the row of the changed values
    std::vector<bool> changed;  // of an update or an insertion: the columns that were set
};

struct LoadedRows {
    std::shared_ptr<RowSet> rows;
    std::shared_ptr<RowSet> versions;
    std::vector<LoadedChange> changes;
    WriteRules rules;
};

/// Makes the changes pending in a store of the rows.
void ApplyChanges(const LoadedRows& loaded, RowStore& store);

}  // namespace tk::ado
