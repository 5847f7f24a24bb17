#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/util.h"

using namespace tk::driver;

namespace {

// Where a search starts (ADO BookmarkEnum), and which way it goes.
constexpr short kFromCurrent = 0;
constexpr short kFromFirst = 1;
constexpr long kForward = 1;

}  // namespace

int CTRecordset::Move(long nCount, short nStart) {
    return Guard::Run(*this, kMoveFailed, 0, [&] {
        Move(nCount, COleVariant(nStart));
        return 1;
    });
}

int CTRecordset::Find(const char* szCriteria) {
    return Guard::Run(*this, kFindFailed, 0, [&] {
        static constexpr BYTE parms[] = VTS_BSTR;
        Call(dispatch_, recordset::kFind, parms, szCriteria);
        return 1;
    });
}

int CTRecordset::FindFirst(const char* szCriteria) {
    return Guard::Run(*this, kFindFailed, 0, [&] {
        if (GetEof() || GetBof()) return 0;
        Find(szCriteria, 0, kForward, COleVariant(kFromFirst));
        return 1;
    });
}

int CTRecordset::FindNext(const char* szCriteria) {
    return Guard::Run(*this, kFindFailed, 0, [&] {
        if (GetEof() || GetBof()) return 0;
        Find(szCriteria, 1, kForward, COleVariant(kFromCurrent));
        return 1;
    });
}

int CTRecordset::SetFilter(const char* szFilter) {
    return Guard::Run(*this, szFilter, 0, [&] {
        PutVariant(dispatch_, recordset::kFilter, COleVariant(szFilter, VT_BSTR));
        return 1;
    });
}

CString CTRecordset::GetFilter() {
    return Guard::Run(*this, kGetFilterFailed, CString(),
                      [&] { return Take(VariantToString, GetVariant(dispatch_, recordset::kFilter)); });
}
