#include "ado/persist/loaded_rows.h"

namespace tk::ado {

void ApplyChanges(const LoadedRows& loaded, RowStore& store) {
    const std::size_t count = store.Columns().size();
    for (const LoadedChange& change : loaded.changes) {
        switch (change.state) {
            case RowState::Unchanged:
                break;
            case RowState::Inserted:
                store.MarkNew(change.row, change.changed, kStatusPending | kStatusNew);
                break;
            case RowState::Deleted:
                store.Delete(change.row, kStatusPending | kStatusDeleted);
                break;
            case RowState::Updated: {
                std::vector<std::optional<Value>> values(count);
                for (std::size_t i = 0; i < count; ++i) {
                    if (!change.changed[i]) continue;
                    values[i].emplace();
                    loaded.versions->Read(change.version, i, *values[i]->Out());
                }
                store.Change(change.row, values, kStatusPending | kStatusModified);
                break;
            }
        }
    }
}

}  // namespace tk::ado
