// Recordset: the position, what is visible and in which order, and searching.
#include <cmath>

#include "ado/cursor/columns.h"
#include "ado/cursor/criteria.h"
#include "ado/cursor/sort.h"
#include "ado/cursor/text.h"
#include "ado/objects/arrays.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// BookmarkEnum.
enum StandardBookmark : LONG { kBookmarkCurrent = 0, kBookmarkFirst = 1, kBookmarkLast = 2 };

/// FilterGroupEnum.
enum FilterGroup : LONG {
    kFilterNone = 0,
    kFilterPending = 1,
    kFilterAffected = 2,
    kFilterFetched = 3,
    kFilterConflicting = 5,
};

bool IsInteger(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_BOOL:
            return true;
        default:
            return false;
    }
}

}  // namespace

std::size_t Recordset::RowOfBookmark(const Value& bookmark) {
    HRESULT result = S_OK;
    if (bookmark.IsEmpty() || bookmark.IsNull()) throw AdoError(ErrorNumber::InvalidArgument);
    const Value number = bookmark.As(VT_R8, result);
    const double real = SUCCEEDED(result) ? number.Get().dblVal : 0;
    const bool isNumber = real >= 1 && real <= 4294967295.0 && real == std::floor(real);
    if (!isNumber || !Cursor().Store().HasRow(static_cast<std::size_t>(real) - 1)) {
        const Value text = bookmark.As(VT_BSTR, result);
        throw AdoError(ErrorNumber::InvalidArgument,
                       std::u16string(text.Type() == VT_BSTR ? ViewOf(text.Get().bstrVal) : u""));
    }
    return static_cast<std::size_t>(real) - 1;
}

std::optional<std::size_t> Recordset::StartRow(const Value& start) {
    if (start.IsEmpty() || start.IsNull() || start.Type() == VT_ERROR) return std::nullopt;
    ClientCursor& cursor = Cursor();
    if (IsInteger(start.Type())) {
        // Contract: the numbers 0, 1 and 2 as integers name places; as reals they are bookmarks.
        HRESULT result = S_OK;
        const Value number = start.As(VT_I4, result);
        const LONG place = SUCCEEDED(result) ? number.Get().lVal : -1;
        if (place == kBookmarkCurrent) return std::nullopt;
        if (place == kBookmarkFirst || place == kBookmarkLast) {
            if (!cursor.HasIndex(0)) throw AdoError(ErrorNumber::NoCurrentRecord);
            return cursor.RowAtIndex(place == kBookmarkFirst ? 0 : cursor.Count() - 1);
        }
    }
    return RowOfBookmark(start);
}

void Recordset::GetAbsolutePosition(Call& call) {
    ClientCursor& cursor = Cursor();
    call.ReturnLong(edit_.Mode() == EditMode::Add ? kPositionUnknown : cursor.AbsolutePosition());
}

void Recordset::PutAbsolutePosition(Call& call) {
    const LONG position = call.Long(0);
    Rows();
    SaveEdit();
    Cursor().SetAbsolutePosition(position, position);
}

void Recordset::GetBof(Call& call) {
    ClientCursor& cursor = Cursor();
    call.ReturnBoolean(edit_.Mode() != EditMode::Add && cursor.Bof());
}

void Recordset::GetEof(Call& call) {
    ClientCursor& cursor = Cursor();
    call.ReturnBoolean(edit_.Mode() != EditMode::Add && cursor.Eof());
}

void Recordset::GetBookmark(Call& call) {
    ClientCursor& cursor = Cursor();
    if (edit_.Mode() == EditMode::Add) throw AdoError(ErrorNumber::NoCurrentRecord);
    call.Return(Value::Real(static_cast<double>(cursor.Row()) + 1));
}

void Recordset::PutBookmark(Call& call) {
    const std::size_t row = RowOfBookmark(call.PlainValue(0));
    SaveEdit();
    Cursor().MoveTo(row);
}

void Recordset::GetRecordCount(Call& call) {
    ClientCursor& cursor = Cursor();
    const bool arriving = open_->asynchronous && !open_->store->IsComplete();
    call.ReturnLong(static_cast<LONG>(arriving ? cursor.CountArrived() : cursor.Count()));
}

void Recordset::GetAbsolutePage(Call& call) {
    const LONG position = Cursor().AbsolutePosition();
    if (edit_.Mode() == EditMode::Add) return call.ReturnLong(kPositionUnknown);
    call.ReturnLong(position < 0 ? position : (position - 1) / pageSize_ + 1);
}

void Recordset::PutAbsolutePage(Call& call) {
    const LONG page = call.Long(0);
    Rows();
    SaveEdit();
    const long long first = (static_cast<long long>(page) - 1) * pageSize_ + 1;
    Cursor().SetAbsolutePosition(first, page);
}

void Recordset::GetPageSize(Call& call) {
    call.ReturnLong(pageSize_);
}

void Recordset::PutPageSize(Call& call) {
    const LONG size = call.Long(0);
    if (size < 1) throw AdoError(ErrorNumber::InvalidArgument, NumberText(size));
    pageSize_ = size;
}

void Recordset::GetPageCount(Call& call) {
    const auto count = static_cast<long long>(Cursor().Count());
    call.ReturnLong(static_cast<LONG>((count + pageSize_ - 1) / pageSize_));
}

void Recordset::Move(Call& call) {
    const LONG count = call.Long(0);
    Rows();
    const auto start = StartRow(call.Variant(1));
    SaveEdit();
    if (start) return Cursor().MoveFrom(*start, count);
    Cursor().Move(count);
}

void Recordset::MoveNext(Call&) {
    Rows();
    SaveEdit();
    cursor_->MoveNext();
}

void Recordset::MovePrevious(Call&) {
    Rows();
    SaveEdit();
    cursor_->MovePrevious();
}

void Recordset::MoveFirst(Call&) {
    Rows();
    SaveEdit();
    cursor_->MoveFirst();
}

void Recordset::MoveLast(Call&) {
    Rows();
    SaveEdit();
    cursor_->MoveLast();
}

void Recordset::Find(Call& call) {
    const std::u16string text = call.Text(0);
    const LONG skip = call.Long(1, 0);
    const LONG direction = call.Long(2, 1);
    ClientCursor& cursor = Cursor();
    if (direction != 1 && direction != -1) throw AdoError(ErrorNumber::InvalidArgument, NumberText(direction));
    const Criteria criteria = Criteria::ParseFind(text, cursor.Store().Columns());
    const auto start = StartRow(call.Variant(3));
    SaveEdit();
    cursor.Find(criteria, skip, direction == -1, start);
}

std::function<bool(std::size_t)> Recordset::TextFilter(const Value& filter, const RowStore& rows) {
    if (filter.Type() != VT_BSTR) return {};
    const std::u16string_view text = ViewOf(filter.Get().bstrVal);
    if (text.find_first_not_of(u" \t\r\n") == std::u16string_view::npos) return {};
    auto criteria = std::make_shared<const Criteria>(Criteria::ParseFilter(text, rows.Columns()));
    return [criteria, &rows](std::size_t row) { return criteria->Matches(rows, row); };
}

std::function<bool(std::size_t)> Recordset::FilterOf(const Value& filter, bool& showDeleted) {
    showDeleted = false;
    const std::shared_ptr<RowStore> store = Rows().store;
    if (filter.IsEmpty() || filter.IsNull()) return {};
    if (filter.Type() == VT_BSTR) return TextFilter(filter, *store);
    if ((filter.Type() & VT_ARRAY) != 0) {
        auto shown = std::make_shared<std::vector<bool>>();
        for (const Value& bookmark : ArrayItems(filter)) {
            const std::size_t row = RowOfBookmark(bookmark);
            if (row >= shown->size()) shown->resize(row + 1);
            (*shown)[row] = true;
        }
        return [shown](std::size_t row) { return row < shown->size() && (*shown)[row]; };
    }
    HRESULT result = S_OK;
    const Value number = filter.As(VT_I4, result);
    if (FAILED(result)) throw AdoError(ErrorNumber::InvalidArgument);
    const RowStore* const rows = store.get();
    switch (number.Get().lVal) {
        case kFilterNone:
        case kFilterFetched:
            return {};
        case kFilterPending:
            showDeleted = true;
            return [rows](std::size_t row) { return (rows->Status(row) & kStatusPending) != 0; };
        case kFilterAffected: {
            showDeleted = true;
            auto affected = std::make_shared<const std::vector<std::size_t>>(rows->AffectedRows());
            return [affected](std::size_t row) { return std::ranges::find(*affected, row) != affected->end(); };
        }
        case kFilterConflicting:
            showDeleted = true;
            return [rows](std::size_t row) {
                const LONG status = rows->Status(row);
                return (status & kStatusFailures) != 0 && (!rows->IsDeleted(row) || (status & kStatusPending) != 0);
            };
        default:
            throw AdoError(ErrorNumber::InvalidArgument, NumberText(number.Get().lVal));
    }
}

void Recordset::GetFilter(Call& call) {
    call.Return(filter_.IsEmpty() ? Value(LONG{kFilterNone}) : filter_);
}

void Recordset::PutFilter(Call& call) {
    Value filter = call.PlainValue(0);
    Rows();
    bool showDeleted = false;
    auto visible = FilterOf(filter, showDeleted);
    SaveEdit();
    Cursor().SetFilter(std::move(visible), showDeleted);
    filter_ = std::move(filter);
}

void Recordset::GetSort(Call& call) {
    LeaveClosedRows();
    call.ReturnText(sort_);
}

void Recordset::PutSort(Call& call) {
    std::u16string sort = call.Text(0);
    LeaveClosedRows();
    if (IsOpen()) {
        auto keys = ParseSort(sort, open_->store->Columns());
        SaveEdit();
        Cursor().SetSort(std::move(keys));
    }
    sort_ = std::move(sort);
}

void Recordset::CompareBookmarks(Call& call) {
    enum : LONG { kLess = 0, kEqual = 1, kGreater = 2 };
    const Value first = call.PlainValue(0);
    const Value second = call.PlainValue(1);
    ClientCursor& cursor = Cursor();
    if (first.Type() != second.Type()) throw AdoError(ErrorNumber::InvalidArgument);
    const int order = cursor.Compare(RowOfBookmark(first), RowOfBookmark(second));
    call.ReturnLong(order < 0 ? kLess : order == 0 ? kEqual : kGreater);
}

}  // namespace tk::ado
