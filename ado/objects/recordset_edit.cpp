// Recordset: reading and putting values, and writing one row at a time.
#include <algorithm>

#include "ado/cursor/columns.h"
#include "ado/cursor/messages.h"
#include "ado/objects/arrays.h"
#include "ado/objects/index.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// For what comes after a change that has been written.
template <class Work>
void IgnoreFailure(Work&& work) {
    try {
        work();
    } catch (const AdoError&) {
        // The rows are as they were known before.
    }
}

/// A field of the program's own has no database that would refuse a text that is too long.
void ExpectRoom(const Value& value, const Column& column) {
    const bool isLimited = column.kind == CellKind::Text && column.definedSize > 0;
    if (!isLimited || (column.attributes & kFieldLong) != 0 || value.Type() != VT_BSTR) return;
    if (ViewOf(value.Get().bstrVal).size() <= static_cast<std::size_t>(column.definedSize)) return;
    throw ProviderFailure(kDataOverflow, std::u16string(kTextTooLong) + column.name, kCursorSource);
}

}  // namespace

void Recordset::ExpectUpdatable() {
    Rows();
    if (lock_ == kLockReadOnly) throw AdoError(ErrorNumber::FeatureNotAvailable);
}

void Recordset::ExpectNoEdit() {
    if (edit_.IsOpen()) throw AdoError(ErrorNumber::IllegalOperation);
}

void Recordset::SaveEdit() {
    // Pieces of a long value are read from its beginning again after a move.
    LeaveChunks();
    if (edit_.IsOpen()) WriteEdit();
}

std::shared_ptr<Session> Recordset::WritingSession() {
    if (!open_->connection) throw AdoError(ErrorNumber::InvalidConnection);
    return open_->connection->OpenedSession(ErrorNumber::InvalidConnection);
}

std::size_t Recordset::FindField(const VARIANT& index) {
    const std::vector<Column>& columns = Columns();
    return ItemIndex(index, columns.size(), [&](std::u16string_view name) { return LookUpColumn(columns, name); });
}

std::size_t Recordset::FieldArgument(const Call& call) {
    return WithIndex(call, 0, [this](const VARIANT& index) { return FindField(index); });
}

std::vector<std::size_t> Recordset::FieldList(const Value& fields) {
    std::vector<std::size_t> list;
    for (const Value& field : ListItems(fields))
        list.push_back(FindField(field.Get()));
    return list;
}

Value Recordset::ReadField(std::size_t column, Version version) {
    ClientCursor& cursor = Cursor();
    LeaveChunks(column);
    RowStore& rows = cursor.Store();
    Value value;
    if (edit_.Mode() == EditMode::Add) {
        if (version != Version::Current) return Value::Null();
        const Value* const put = edit_.Find(column);
        return put == nullptr ? Value::Null() : *put;
    }
    const std::size_t row = cursor.Row();
    switch (version) {
        case Version::Original:
            rows.ReadOriginal(row, column, *value.Out());
            return value;
        case Version::Underlying:
            rows.ReadUnderlying(row, column, *value.Out());
            return value;
        case Version::Current:
            break;
    }
    if (const Value* const put = edit_.Find(column)) return *put;
    if (cursor.IsOnDeletedRow()) throw ProviderFailure(kDeletedRow, kTextDeletedRow, kCursorSource);
    rows.Read(row, column, *value.Out());
    return value;
}

void Recordset::WriteField(std::size_t column, const Value& value) {
    ExpectUpdatable();
    ClientCursor& cursor = Cursor();
    Value converted = ConvertForColumn(value.Get(), cursor.Store().Columns()[column]);
    if (open_->isFabricated) ExpectRoom(converted, cursor.Store().Columns()[column]);
    if (!edit_.IsOpen()) {
        const std::size_t row = cursor.Row();
        if (cursor.IsOnDeletedRow()) throw ProviderFailure(kDeletedRow, kTextDeletedRow, kCursorSource);
        edit_.BeginChange(row, cursor.Store().Columns().size());
        appended_.clear();
    }
    edit_.Set(column, std::move(converted));
    // The value is another: its pieces begin anew.
    LeaveChunks();
}

LONG Recordset::ActualSize(std::size_t column) {
    ClientCursor& cursor = Cursor();
    const Value* const put = edit_.Find(column);
    if (put == nullptr && edit_.Mode() != EditMode::Add) {
        if (cursor.IsOnDeletedRow()) throw ProviderFailure(kDeletedRow, kTextDeletedRow, kCursorSource);
        return cursor.Store().ActualSize(cursor.Row(), column);
    }
    if (put == nullptr || put->IsNull()) return 0;
    // A row of its own tells the size by the same rules as one that was read.
    const auto scratch = RowSet::Build({cursor.Store().Columns()[column]});
    const VARIANT only[] = {put->Get()};
    scratch->Append(only);
    return scratch->ActualSize(0, 0);
}

void Recordset::GetCollect(Call& call) {
    call.Return(ReadField(FieldArgument(call), Version::Current));
}

void Recordset::PutCollect(Call& call) {
    WriteField(FieldArgument(call), call.PlainValue(1));
}

void Recordset::SetFields(const Value& fields, const Value& values) {
    const std::vector<std::size_t> list = FieldList(fields);
    // One field may take an array as its value; several fields take one value each.
    const bool isList = (fields.Type() & VT_ARRAY) != 0;
    const std::vector<Value> given = isList ? ListItems(values) : std::vector<Value>{values};
    if (list.size() != given.size()) throw AdoError(ErrorNumber::InvalidArgument);
    for (std::size_t i = 0; i < list.size(); ++i)
        WriteField(list[i], given[i]);
}

void Recordset::AddNew(Call& call) {
    const bool hasFields = !call.IsNothing(0);
    if (hasFields != !call.IsOmitted(1)) throw AdoError(ErrorNumber::InvalidArgument);
    ExpectUpdatable();
    SaveEdit();
    ClientCursor& cursor = Cursor();
    edit_.BeginAdd(cursor.LiveRow(), cursor.Store().Columns().size());
    appended_.clear();
    if (!hasFields) return;
    try {
        SetFields(call.Variant(0), call.Variant(1));
    } catch (...) {
        edit_.Discard();
        throw;
    }
    if (!IsBatch()) WriteEdit();
}

void Recordset::Update(Call& call) {
    const bool hasFields = !call.IsNothing(0);
    if (hasFields != !call.IsOmitted(1) && !call.IsNothing(1)) throw AdoError(ErrorNumber::InvalidArgument);
    ExpectUpdatable();
    if (hasFields) SetFields(call.Variant(0), call.Variant(1));
    if (!edit_.IsOpen() && Cursor().IsOnDeletedRow()) throw AdoError(ErrorNumber::NoCurrentRecord);
    SaveEdit();
}

void Recordset::WriteEdit() {
    if (edit_.Mode() == EditMode::Add) {
        WriteNewRow();
    } else {
        WriteChangedRow();
    }
    edit_.Discard();
    appended_.clear();
}

void Recordset::WriteNewRow() {
    RowStore& rows = *open_->store;
    if (IsBatch() || open_->isFabricated) {
        const LONG status = IsBatch() ? kStatusPending | kStatusNew : static_cast<LONG>(kStatusOk);
        cursor_->StandOnAdded(rows.Add(edit_.Values(), status));
        return;
    }
    // The new row comes behind all that were fetched.
    rows.CountRows();
    RowWriter writer(WritingSession(), rows, settings_.rules);
    const std::size_t row = rows.Add(writer.Insert(edit_.Values()), kStatusOk);
    cursor_->StandOnAdded(row);
    // The row is written; that it cannot be read again is not a failure of the change.
    if (writer.IsRereadAfterInsert(edit_.Values())) IgnoreFailure([&] { writer.Reread(row, false); });
}

void Recordset::WriteChangedRow() {
    RowStore& rows = *open_->store;
    const std::size_t row = *edit_.Row();
    if (IsBatch()) {
        // A pending row that was refused is pending again, for another try.
        const LONG isNew = rows.Status(row) & kStatusNew;
        rows.Change(row, edit_.Values(),
                    kStatusPending | (isNew != 0 ? static_cast<LONG>(kStatusNew) : static_cast<LONG>(kStatusModified)));
        return;
    }
    std::optional<RowWriter> writer;
    if (!open_->isFabricated) {
        writer.emplace(WritingSession(), rows, settings_.rules);
        try {
            writer->Update(row, edit_.Values());
        } catch (const AdoError& error) {
            rows.SetStatus(row, (rows.Status(row) & ~kStatusFailures) | FailureStatus(error));
            const bool isConflict = FailureStatus(error) == kStatusConflict && writer->IsRereadAfterConflict();
            if (isConflict) IgnoreFailure([&] { writer->Reread(row, true); });
            throw;
        }
    }
    rows.Change(row, edit_.Values(), kStatusOk);
    rows.Accept(row, kStatusOk);
    if (writer && writer->IsRereadAfterUpdate(edit_.Values())) IgnoreFailure([&] { writer->Reread(row, false); });
}

void Recordset::CancelUpdate(Call&) {
    ClientCursor& cursor = Cursor();
    if (edit_.IsOpen()) {
        // Nothing of the change that was refused is left.
        RowStore& rows = cursor.Store();
        const auto changed = edit_.Mode() == EditMode::Add ? std::nullopt : edit_.Row();
        const bool wasRefused = changed && !IsBatch() && (rows.Status(*changed) & kStatusFailures) != 0;
        if (wasRefused) rows.SetStatus(*changed, rows.Status(*changed) & ~kStatusFailures);
        edit_.Discard();
        appended_.clear();
        return;
    }
    if (!IsBatch() || lock_ == kLockReadOnly) return;
    // In a batch the pending change of the current row goes too.
    const auto row = cursor.IsOnDeletedRow() ? std::optional(cursor.Row()) : cursor.LiveRow();
    if (row) DropPending(*row);
}

void Recordset::DeleteRow(std::size_t row) {
    RowStore& rows = *open_->store;
    rows.CountRows();
    if (IsBatch()) {
        // A new row that nobody has sent is simply gone.
        const bool isNew = (rows.Status(row) & kStatusNew) != 0;
        rows.Delete(row, isNew ? static_cast<LONG>(kStatusDeleted) : kStatusPending | kStatusDeleted);
        return;
    }
    if (!open_->isFabricated) {
        try {
            RowWriter(WritingSession(), rows, settings_.rules).Delete(row);
        } catch (const AdoError& error) {
            rows.SetStatus(row, (rows.Status(row) & ~kStatusFailures) | FailureStatus(error));
            throw;
        }
    }
    rows.Delete(row, kStatusDeleted);
}

void Recordset::Delete(Call& call) {
    enum : LONG { kCurrent = 1, kGroup = 2 };
    const LONG affect = call.Long(0, kCurrent);
    ClientCursor& cursor = Cursor();
    ExpectUpdatable();
    if (affect != kCurrent && affect != kGroup) throw AdoError(ErrorNumber::InvalidArgument, NumberText(affect));
    if (affect == kGroup && (filter_.IsEmpty() || filter_.Type() == VT_BSTR)) {
        throw AdoError(ErrorNumber::InvalidArgument);
    }
    if (edit_.Mode() == EditMode::Add) throw AdoError(ErrorNumber::IllegalOperation);
    edit_.Discard();
    std::vector<std::size_t> list;
    if (affect == kCurrent) {
        const auto row = cursor.LiveRow();
        if (!row) throw AdoError(ErrorNumber::NoCurrentRecord);
        list.push_back(*row);
    } else {
        const std::size_t count = cursor.Count();
        for (std::size_t i = 0; i < count; ++i) {
            if (!open_->store->IsDeleted(cursor.RowAtIndex(i))) list.push_back(cursor.RowAtIndex(i));
        }
    }
    if (affect == kCurrent) {
        open_->store->SetAffected(list);
        return DeleteRow(list.front());
    }
    // Of a group those that can go, go; the others stay and say why.
    std::vector<ErrorRecord> failures;
    for (const std::size_t row : list) {
        try {
            DeleteRow(row);
        } catch (const AdoError& error) {
            if (error.Records().empty()) throw;
            failures.insert(failures.end(), error.Records().begin(), error.Records().end());
        }
    }
    open_->store->SetAffected(std::move(list));
    ThrowIfAny(std::move(failures));
}

void Recordset::GetEditMode(Call& call) {
    ClientCursor& cursor = Cursor();
    if (!edit_.IsOpen() && cursor.IsOnDeletedRow()) {
        if (!IsBatch()) throw AdoError(ErrorNumber::NoCurrentRecord);
        return call.ReturnLong(static_cast<LONG>(EditMode::Delete));
    }
    call.ReturnLong(static_cast<LONG>(edit_.Mode()));
}

void Recordset::GetStatus(Call& call) {
    ClientCursor& cursor = Cursor();
    if (edit_.Mode() == EditMode::Add) return call.ReturnLong(kStatusNew);
    call.ReturnLong(cursor.Store().Status(cursor.Row()));
}

}  // namespace tk::ado
