// Recordset: pending changes of many rows, and reading rows again.
#include "ado/cursor/columns.h"
#include "ado/cursor/compare.h"
#include "ado/cursor/messages.h"
#include "ado/cursor/text.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// AffectEnum.
enum Affect : LONG { kAffectCurrent = 1, kAffectGroup = 2, kAffectAll = 3 };

bool IsSame(const Cell& first, const Cell& second) {
    if (first.form != second.form) return false;
    if (first.form == Cell::Form::Null) return true;
    if (first.form == Cell::Form::Date) return first.real == second.real && first.integer == second.integer;
    if (IsNumber(first.form)) return CompareNumbers(first, second) == 0;
    return first.text == second.text;
}

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
                if (!rows.IsDeleted(row)) list.push_back(row);
            }
            break;
        default:
            throw AdoError(ErrorNumber::InvalidArgument, NumberText(affect));
    }
    if (pendingOnly) std::erase_if(list, [&](std::size_t row) { return (rows.Status(row) & kStatusPending) == 0; });
    return list;
}

void Recordset::SendPending(std::size_t row) {
    RowStore& rows = *open_->store;
    const LONG status = rows.Status(row);
    RowWriter writer(WritingSession(), rows, rules_);
    if ((status & kStatusDeleted) != 0) {
        writer.Delete(row);
        rows.SetStatus(row, kStatusDeleted);
        return;
    }
    const std::size_t count = rows.Columns().size();
    RowWriter::Values values(count);
    const bool isNew = (status & kStatusNew) != 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Cell now = rows.At(row, i);
        // Of a new row NULLs are left to the table's defaults.
        const bool counts = isNew ? now.form != Cell::Form::Null : !IsSame(now, rows.OriginalAt(row, i));
        if (!counts) continue;
        values[i].emplace();
        rows.Read(row, i, *values[i]->Out());
    }
    if (!isNew) {
        writer.Update(row, values);
        rows.Accept(row, kStatusOk);
        return;
    }
    rows.Change(row, writer.Insert(values), kStatusOk);
    rows.Accept(row, kStatusOk);
}

void Recordset::UpdateBatch(Call& call) {
    const LONG affect = call.Long(0, kAffectAll);
    ExpectUpdatable();
    if (!IsBatch()) throw AdoError(ErrorNumber::FeatureNotAvailable);
    SaveEdit();
    const std::vector<std::size_t> list = AffectedRows(affect, true);
    RowStore& rows = *open_->store;
    std::vector<ErrorRecord> failures;
    if (!list.empty()) WritingSession();
    for (const std::size_t row : list) {
        const LONG pending = rows.Status(row) & ~kStatusFailures;
        try {
            SendPending(row);
        } catch (const AdoError& error) {
            // The row stays pending and says why; the others are sent all the same.
            const LONG why = FailureStatus(error);
            rows.SetStatus(row, pending | (why != 0 ? why : static_cast<LONG>(kStatusMultipleChanges)));
            failures.insert(failures.end(), error.Records().begin(), error.Records().end());
        }
    }
    rows.SetAffected(list);
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
    if ((status & kStatusNew) != 0) {
        rows.Delete(row, kStatusDeleted | kStatusCanceled);
        return;
    }
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
    for (const std::size_t row : list) {
        if (rows.IsDeleted(row) || (rows.Status(row) & kStatusNew) != 0) continue;
        if (!RowWriter(WritingSession(), rows, rules_).Reread(row, what == kUnderlyingValues)) {
            rows.SetStatus(row, rows.Status(row) | kStatusGone);
            continue;
        }
        if (what == kAllValues) rows.SetStatus(row, kStatusUnmodified);
    }
    rows.SetAffected(std::move(list));
}

}  // namespace tk::ado
