// Recordset: long values read and put in pieces.
#include <algorithm>

#include "ado/cursor/columns.h"
#include "ado/objects/arrays.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

void ExpectLong(const Column& column) {
    if ((column.attributes & kFieldLong) == 0) throw AdoError(ErrorNumber::IllegalOperation, column.name);
}

}  // namespace

Value Recordset::GetChunk(std::size_t column, LONG length) {
    ClientCursor& cursor = Cursor();
    ExpectLong(Columns()[column]);
    if (length < 1) throw AdoError(ErrorNumber::InvalidArgument);
    const Value value = ReadField(column, Version::Current);
    const std::size_t row = edit_.Mode() == EditMode::Add ? kNoRow : cursor.Row();
    if (row != chunkRow_ || column != chunkColumn_) {
        chunkRow_ = row;
        chunkColumn_ = column;
        chunkOffset_ = 0;
    }
    const auto take = [&](std::size_t size) {
        const std::size_t start = std::min(chunkOffset_, size);
        const std::size_t count = std::min(size - start, static_cast<std::size_t>(length));
        chunkOffset_ = start + count;
        return std::pair{start, count};
    };
    if (value.Type() == VT_BSTR) {
        const std::u16string_view text = ViewOf(value.Get().bstrVal);
        const auto [start, count] = take(text.size());
        return count == 0 ? Value::Null() : Value::Text(text.substr(start, count));
    }
    if (value.Type() == (VT_ARRAY | VT_UI1)) {
        const std::vector<BYTE> bytes = BytesOf(value);
        const auto [start, count] = take(bytes.size());
        return count == 0 ? Value::Null() : BytesValue(std::span(bytes).subspan(start, count));
    }
    return Value::Null();
}

void Recordset::AppendChunk(std::size_t column, const Value& data) {
    ExpectUpdatable();
    ExpectLong(Columns()[column]);
    // The first piece of an edit replaces what was there; NULL takes away what has been put so far.
    const bool continues = !data.IsNull() && edit_.IsOpen() && column < appended_.size() && appended_[column];
    const Value* const before = continues ? edit_.Find(column) : nullptr;
    Value whole = data;
    if (before != nullptr && before->Type() == VT_BSTR) {
        HRESULT result = S_OK;
        const Value more = data.As(VT_BSTR, result);
        if (FAILED(result)) throw AdoError(ErrorNumber::DataConversion);
        whole = Value::Text(std::u16string(ViewOf(before->Get().bstrVal)).append(ViewOf(more.Get().bstrVal)));
    } else if (before != nullptr && before->Type() == (VT_ARRAY | VT_UI1)) {
        std::vector<BYTE> bytes = BytesOf(*before);
        const std::vector<BYTE> more = BytesOf(data);
        bytes.insert(bytes.end(), more.begin(), more.end());
        whole = BytesValue(bytes);
    }
    WriteField(column, whole);
    appended_.resize(Columns().size());
    appended_[column] = !data.IsNull();
}

}  // namespace tk::ado
