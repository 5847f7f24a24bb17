// Recordset: pending changes of many rows, and reading rows again.
#include "ado/cursor/batch_writer.h"
#include "ado/cursor/messages.h"
#include "ado/cursor/text.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// AffectEnum.
enum Affect : LONG { kAffectCurrent = 1, kAffectGroup = 2, kAffectAll = 3 };

}  // namespace

std::vector<std::size_t> Recordset::AffectedRows(LONG affect, bool pendingOnly) {
    ClientCursor& cursor = Cursor();
    RowStore& rows = cursor.Store();
    std::vector<std::size_t> list;
    switch (affect) {
        case kAffectCurrent:
            list.push_back(cursor.Row());
            break;
        case kAffectGroup: {
            const std::size_t count = cursor.Count();
            if (count == 0) throw AdoError(ErrorNumber::NoCurrentRecord);
            for (std::size_t i = 0; i < count; ++i)
                list.push_back(cursor.RowAtIndex(i));
            break;
        }
        case kAffectAll:
            if (pendingOnly) return rows.PendingRows();
            for (std::size_t row = 0; row < rows.CountRows(); ++row) {
                if (!rows.IsDeleted(row) || (rows.Status(row) & kStatusPending) != 0) list.push_back(row);
            }
            break;
        default:
            throw AdoError(ErrorNumber::InvalidArgument, NumberText(affect));
    }
    if (pendingOnly) std::erase_if(list, [&](std::size_t row) { return (rows.Status(row) & kStatusPending) == 0; });
    return list;
}

std::vector<ErrorRecord> Recordset::SendPending(std::span<const std::size_t> list) {
    RowStore& rows = *open_->store;
    if (list.empty()) return {};
    if (!open_->isFabricated) return BatchWriter(WritingSession(), rows, settings_.rules).Send(list);
    // There is no database: the changes are simply not pending any more.
    for (const std::size_t row : list) {
        if (rows.IsDeleted(row)) {
            rows.SetStatus(row, kStatusDeleted);
        } else {
            rows.Accept(row, kStatusOk);
        }
    }
    return {};
}

void Recordset::UpdateBatch(Call& call) {
    const LONG affect = call.Long(0, kAffectAll);
    ExpectUpdatable();
    if (!IsBatch()) throw AdoError(ErrorNumber::FeatureNotAvailable);
    SaveEdit();
    std::vector<std::size_t> list = AffectedRows(affect, true);
    std::vector<ErrorRecord> failures = SendPending(list);
    open_->store->SetAffected(std::move(list));
    ThrowIfAny(std::move(failures));
}

void Recordset::ThrowIfAny(std::vector<ErrorRecord> failures) {
    if (failures.empty()) return;
    ErrorRecord summary;
    summary.number = kErrorsOccurred;
    summary.description = std::u16string(kTextBatchFailed) + failures.front().description;
    summary.source = kCursorSource;
    failures.insert(failures.begin(), std::move(summary));
    throw AdoError(std::move(failures));
}

void Recordset::DropPending(std::size_t row) {
    RowStore& rows = *open_->store;
    const LONG status = rows.Status(row);
    if ((status & kStatusPending) == 0) return;
    if ((status & kStatusNew) != 0) return rows.Delete(row, kStatusDeleted);
    if ((status & kStatusDeleted) != 0) rows.Restore(row, kStatusUnmodified);
    rows.Revert(row, kStatusUnmodified);
}

void Recordset::CancelBatch(Call& call) {
    const LONG affect = call.Long(0, kAffectAll);
    ExpectUpdatable();
    if (!IsBatch()) {
        if (affect != kAffectCurrent) throw AdoError(ErrorNumber::IllegalOperation);
        edit_.Discard();
        return;
    }
    edit_.Discard();
    std::vector<std::size_t> list = AffectedRows(affect, true);
    for (const std::size_t row : list)
        DropPending(row);
    open_->store->SetAffected(std::move(list));
}

void Recordset::Resync(Call& call) {
    enum : LONG { kUnderlyingValues = 1, kAllValues = 2 };
    const LONG affect = call.Long(0, kAffectAll);
    const LONG what = call.Long(1, kAllValues);
    Rows();
    if (what != kUnderlyingValues && what != kAllValues) throw AdoError(ErrorNumber::InvalidArgument, NumberText(what));
    ExpectUpdatable();
    std::vector<std::size_t> list = AffectedRows(affect, false);
    if (what == kAllValues) edit_.Discard();
    RowStore& rows = *open_->store;
    std::optional<RowWriter> writer;
    for (const std::size_t row : list) {
        const LONG status = rows.Status(row);
        const bool isPending = (status & kStatusPending) != 0;
        if ((status & kStatusNew) != 0 || (rows.IsDeleted(row) && !isPending)) continue;
        if (open_->isFabricated) {
            if (what == kAllValues) DropPending(row);
            continue;
        }
        if (!writer) writer.emplace(WritingSession(), rows, settings_.rules, list.size() > 1);
        if (!writer->Reread(row, what == kUnderlyingValues)) {
            rows.SetStatus(row, status | kStatusGone);
            continue;
        }
        if (what != kAllValues) continue;
        if (rows.IsDeleted(row)) rows.Restore(row, kStatusUnmodified);
        rows.SetStatus(row, kStatusUnmodified);
    }
    rows.SetAffected(std::move(list));
}

}  // namespace tk::ado
