// Recordset: many rows at once, as an array or as one text.
#include "ado/cursor/text.h"
#include "ado/objects/arrays.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

constexpr LONG kRestOfRows = -1;
constexpr LONG kClipString = 2;

/// The text of a cell in GetString.
void AppendText(const RowStore& rows, std::size_t row, std::size_t column, std::u16string_view nullText,
                std::u16string& text) {
    if (const auto cell = rows.TextAt(row, column)) {
        if (cell->data() == nullptr) {
            text += nullText;
        } else {
            text += ToUtf16(*cell);
        }
        return;
    }
    Value value;
    rows.Read(row, column, *value.Out());
    switch (value.Type()) {
        case VT_NULL:
            text += nullText;
            return;
        case VT_BOOL:
            text += value.Get().boolVal != VARIANT_FALSE ? u"True" : u"False";
            return;
        case VT_ARRAY | VT_UI1:
            for (const BYTE byte : BytesOf(value)) {
                constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
                text += kDigits[byte >> 4];
                text += kDigits[byte & 15];
            }
            return;
        default: {
            HRESULT result = S_OK;
            const Value converted = value.As(VT_BSTR, result);
            if (SUCCEEDED(result)) text += ViewOf(converted.Get().bstrVal);
        }
    }
}

}  // namespace

void Recordset::GetRows(Call& call) {
    const LONG wanted = call.Long(0, kRestOfRows);
    ClientCursor& cursor = Cursor();
    if (wanted < kRestOfRows || wanted == 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(wanted));
    const auto start = StartRow(call.Variant(1));
    std::vector<std::size_t> fields;
    if (call.IsNothing(2)) {
        for (std::size_t i = 0; i < Columns().size(); ++i)
            fields.push_back(i);
    } else {
        fields = FieldList(call.Variant(2));
    }
    SaveEdit();
    if (start) cursor.MoveTo(*start);
    const std::size_t first = cursor.Index();
    std::size_t count = 0;
    while ((wanted == kRestOfRows || count < static_cast<std::size_t>(wanted)) && cursor.HasIndex(first + count)) {
        ++count;
    }
    if (count == 0) throw AdoError(ErrorNumber::NoCurrentRecord);
    // [field][row]: the first dimension varies fastest, so a row's values lie together.
    SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(fields.size()), 0}, {static_cast<ULONG>(count), 0}};
    SAFEARRAY* const array = SafeArrayCreate(VT_VARIANT, 2, bounds);
    if (array == nullptr) throw std::bad_alloc();
    Value result;
    VARIANT* const place = result.Out();
    place->vt = VT_ARRAY | VT_VARIANT;
    place->parray = array;
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(array, &data))) throw std::bad_alloc();
    auto* cell = static_cast<VARIANT*>(data);
    const RowStore& rows = cursor.Store();
    try {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t row = cursor.RowAtIndex(first + i);
            for (const std::size_t field : fields)
                rows.Read(row, field, *cell++);
        }
    } catch (...) {
        SafeArrayUnaccessData(array);
        throw;
    }
    SafeArrayUnaccessData(array);
    if (cursor.HasIndex(first + count)) {
        cursor.MoveTo(cursor.RowAtIndex(first + count));
    } else {
        cursor.MoveAfterLast();
    }
    call.Return(std::move(result));
}

void Recordset::GetString(Call& call) {
    const LONG format = call.Long(0, kClipString);
    const LONG wanted = call.Long(1, kRestOfRows);
    const std::u16string columnText = call.Text(2, u"\t");
    const std::u16string rowText = call.Text(3, u"\r");
    const std::u16string nullText = call.Text(4, u"");
    ClientCursor& cursor = Cursor();
    if (format != kClipString || wanted < kRestOfRows) throw AdoError(ErrorNumber::InvalidArgument);
    SaveEdit();
    const std::size_t first = cursor.Index();
    const RowStore& rows = cursor.Store();
    const std::size_t columns = rows.Columns().size();
    std::u16string text;
    std::size_t index = first;
    for (; wanted == kRestOfRows || index - first < static_cast<std::size_t>(wanted); ++index) {
        if (!cursor.HasIndex(index)) break;
        const std::size_t row = cursor.RowAtIndex(index);
        for (std::size_t column = 0; column < columns; ++column) {
            if (column > 0) text += columnText;
            AppendText(rows, row, column, nullText, text);
        }
        text += rowText;
    }
    if (cursor.HasIndex(index)) {
        cursor.MoveTo(cursor.RowAtIndex(index));
    } else {
        cursor.MoveAfterLast();
    }
    call.ReturnText(text);
}

}  // namespace tk::ado
