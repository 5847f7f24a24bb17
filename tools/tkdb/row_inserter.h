// tools/tkdb/row_inserter.h - rows of a recordset into a table of another data source, many at a time.
//
//   RowInserter inserter(target);
//   while (const long rows = inserter.Insert(records, "\"item\"", 10000)) ...
#pragma once

#include <tkkernel/tkkernel.h>

namespace tk::tools {

class RowInserter {
public:
    /// @param target  open; borrowed
    explicit RowInserter(CTDatabase& target);

    /// False when the target's provider takes rows one by one only.
    bool CanInsert() const { return member_ != DISPID_UNKNOWN; }

    /// Inserts rows from the current one on and goes to the first one behind them; lets exceptions pass.
    /// @param table  GBK, in double quotes where it needs any
    /// @return how many; 0 behind the last one
    long Insert(CTRecordset& records, const char* table, long limit);

private:
    COleDispatchDriver connection_;
    DISPID member_ = DISPID_UNKNOWN;
};

}  // namespace tk::tools
