// tools/tkdb/record_reader.h - the current record of a recordset as UTF-8 texts.
//
//   RecordReader reader(records);
//   for (; !records.GetEof(); records.MoveNext()) Use(reader.Read());
#pragma once

#include <tkkernel/tkkernel.h>

#include <vector>

#include "tools/tkdb/cell_text.h"

struct IRowAccess;

namespace tk::tools {

class RecordReader {
public:
    /// @param records  open; borrowed, stays open while this is used
    explicit RecordReader(CTRecordset& records);
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;
    ~RecordReader();

    /// @return valid until the next call
    const std::vector<CellText>& Read();

private:
    void ReadCell(long index, CellText& cell);

    CTRecordset& records_;
    IRowAccess* rows_ = nullptr;  // texts in place, where the object offers it
    std::vector<CellText> cells_;
};

}  // namespace tk::tools
