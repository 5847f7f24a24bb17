// How the list members read the rowsets of the others.
#include "catalog/messages.h"
#include "driver/guard.h"
#include "tkkernel/util.h"

using namespace tk::catalog;
using tk::driver::Guard;

/// Binds a recordset to this database and shows a schema rowset in it.
/// @param rowset  taken over; null: there is none, and whoever was asked for it has said why
/// @return 1, or 0 with the reason in the last-error text
int CTDatabase::ShowRowset(CTRecordset& records, IDispatch* rowset) {
    const COleDispatchDriver owner(rowset);
    if (rowset == nullptr) return 0;
    if (records.OpenDatabase(this) && records.OpenField(rowset)) return 1;
    return SetError("%s", static_cast<LPCTSTR>(records.GetLastErrorString()));
}

/// Appends the text of one column of every row.
/// @param rowset  as above
/// @return 1, or 0 with the reason in the last-error text
int CTDatabase::ListColumn(IDispatch* rowset, const char* szColumn, CStringArray& ar) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        COleDispatchDriver owner(rowset);  // until the recordset is there
        CTRecordset records;
        if (!ShowRowset(records, owner.DetachDispatch())) return 0;
        for (; !records.GetEof(); records.MoveNext())
            ar.Add(records.GetStringValue(szColumn));
        return 1;
    });
}

/// The same for what the list does not hold yet.
int CTDatabase::ListDistinct(IDispatch* rowset, const char* szColumn, CStringArray& ar) {
    CStringArray values;
    const int listed = ListColumn(rowset, szColumn, values);
    for (int i = 0; i < values.GetSize(); ++i) {
        if (!StringInArray(ar, values[i])) ar.Add(values[i]);
    }
    return listed;
}
