#include "tools/tkdb/record_reader.h"

#include <tkkernel/row_access.h>

namespace tk::tools {

RecordReader::RecordReader(CTRecordset& records)
    : records_(records), cells_(static_cast<std::size_t>(records.GetFieldCount())) {
    void* rows = nullptr;
    if (SUCCEEDED(records.GetDispatch()->QueryInterface(IID_IRowAccess, &rows))) rows_ = static_cast<IRowAccess*>(rows);
}

RecordReader::~RecordReader() {
    if (rows_ != nullptr) rows_->Release();
}

const std::vector<CellText>& RecordReader::Read() {
    for (std::size_t i = 0; i < cells_.size(); ++i)
        ReadCell(static_cast<long>(i), cells_[i]);
    return cells_;
}

void RecordReader::ReadCell(long index, CellText& cell) {
    const char* text = nullptr;
    ULONG length = 0;
    if (rows_ != nullptr && rows_->GetText(static_cast<LONG>(index), &text, &length) == S_OK) {
        cell.nature = text == nullptr ? CellNature::Null : CellNature::Text;
        cell.utf8.assign(text == nullptr ? "" : text, length);
        return;
    }
    VARIANT value = records_.GetValue(index);
    SetCellText(value, cell);
    VariantClear(&value);
}

}  // namespace tk::tools
