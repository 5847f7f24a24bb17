#include "ado/persist/loaded_rows.h"

#include "ado/cursor/text.h"
#include "ado/persist/saved_value.h"

namespace tk::ado {
namespace {

/// The values that a change sets. As texts, which a column reads back as what they were: a VARIANT would round dates
/// and long decimals, and make an integer of a real that has no fraction.
std::vector<std::optional<Value>> ValuesOf(const LoadedChange& change, RowStore& versions, RowReader& reader) {
    const auto cells = reader.Read({change.version, RowState::Unchanged, true}, RowVersion::Current);
    std::vector<std::optional<Value>> values(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (!change.changed[i]) continue;
        const CellKind kind = versions.Columns()[i].kind;
        if (kind == CellKind::Bytes || cells[i].form == SavedValue::Form::Null) {
            versions.Read(change.version, i, *values[i].emplace().Out());
        } else {
            char buffer[64];
            values[i] = Value::Text(ToUtf16(TextOf(cells[i], kind, buffer)));
        }
    }
    return values;
}

}  // namespace

void ApplyChanges(const LoadedRows& loaded, RowStore& store) {
    RowStore versions(loaded.versions);
    RowReader reader(versions);
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
            case RowState::Updated:
                store.Change(change.row, ValuesOf(change, versions, reader), kStatusPending | kStatusModified);
                break;
        }
    }
}

}  // namespace tk::ado
