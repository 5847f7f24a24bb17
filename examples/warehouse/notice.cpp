// notice.cpp - the desk that waits: another process posts, a named event tells this one.
#include "warehouse.h"

/// @return how many receipts were printed
static int PrintNewReceipts(CWarehouse& warehouse, CStringArray& arKnown) {
    CStringArray arNumbers;
    warehouse.GetReceiptNumbers(arNumbers);
    int nPrinted = 0;
    for (int i = 0; i < arNumbers.GetSize(); i++) {
        if (StringInArray(arKnown, arNumbers[i])) continue;
        CReceipt receipt;
        if (!warehouse.GetReceipt(arNumbers[i], receipt)) continue;  // until the next notice
        arKnown.Add(arNumbers[i]);
        Print("新的入库单:\n%s", (LPCTSTR)GetVoucher(receipt, &warehouse));
        nPrinted++;
    }
    return nPrinted;
}

BOOL WatchReceipts(CWarehouse& warehouse, DWORD dwSeconds, CString& strError) {
    const DWORD dwStart = GetTickCount();
    const DWORD dwTime = dwSeconds * 1000;
    CTEvent eventPosted;
    if (!eventPosted.OpenEventA(EVENT_POSTED)) {
        strError = eventPosted.GetLastErrorString();
        return FALSE;
    }
    // Opened before the list is read: what is posted in between is in the list or sets the event, or both.
    CStringArray arKnown;
    if (!warehouse.GetReceiptNumbers(arKnown)) {
        strError = warehouse.GetLastErrorString();
        return FALSE;
    }
    Print("等待入库通知\n");
    // A notice may bring nothing new, such as a receipt that is in the list already: it does not lengthen the time.
    for (DWORD dwSpent = 0; eventPosted.WaitForEvent(dwTime - dwSpent);) {
        if (PrintNewReceipts(warehouse, arKnown) > 0) return TRUE;
        dwSpent = GetTickCount() - dwStart;  // right across the wrap of the counter
        if (dwSpent >= dwTime) break;
    }
    strError.Format("%u 秒内没有新的入库单", static_cast<unsigned>(dwSeconds));
    return FALSE;
}
