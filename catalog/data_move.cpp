// The thread that copies rows into a list and reports each one.
#include <objbase.h>

#include "driver/guard.h"

using tk::driver::Guard;

namespace {

constexpr UINT kRowMoved = WM_USER + 200;

struct DataMove {
    DWORD notifiedThread;
    CStringList* rows;
    CString* fieldNames;
    IDispatch* source;
    CTDatabase* database;
};

void MoveRows(CTRecordset& records, const DataMove& move) {
    const int fields = records.GetAllFieldNames(*move.fieldNames);
    // Contract: as many rows as there are fields.
    for (int i = 0; i < fields; ++i) {
        move.rows->AddTail(records.GetCurRecordToString(","));
        records.MoveNext();
        PostThreadMessageA(move.notifiedThread, kRowMoved, 0, 0);
    }
}

}  // namespace

unsigned int CTDatabase::OnDataMove(void* pParam) {
    const auto* move = static_cast<const DataMove*>(pParam);
    if (move == nullptr || move->rows == nullptr || move->fieldNames == nullptr || move->database == nullptr) return 0;
    // Contract: left to the end of the thread to take back.
    if (FAILED(CoInitialize(nullptr))) return 0;
    CTRecordset records(move->database);
    // Behind the last row there is nothing to move on from: that ends the work, and nobody is left to be told why.
    Guard::Do(records, "", [&] {
        if (records.OpenDispatch(move->source)) MoveRows(records, *move);
    });
    return 0;
}
