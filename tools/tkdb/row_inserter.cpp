#include "tools/tkdb/row_inserter.h"

namespace tk::tools {

RowInserter::RowInserter(CTDatabase& target) {
    connection_.AttachDispatch(target.GetDispatch(), FALSE);
    OLECHAR name[] = OLESTR("InsertRows");
    LPOLESTR names[] = {name};
    if (FAILED(connection_.m_lpDispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member_))) {
        member_ = DISPID_UNKNOWN;
    }
}

long RowInserter::Insert(CTRecordset& records, const char* table, long limit) {
    static const BYTE kTypes[] = VTS_DISPATCH VTS_BSTR VTS_I4;
    long inserted = 0;
    connection_.InvokeHelper(member_, DISPATCH_METHOD, VT_I4, &inserted, kTypes, records.GetDispatch(), table, limit);
    return inserted;
}

}  // namespace tk::tools
