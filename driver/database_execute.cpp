#include "afx/dispatch_call.h"
#include "afx/text_codes.h"
#include "driver/argument_list.h"
#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/util.h"

using namespace tk::driver;

namespace {

constexpr long kTextWithoutRecords = 129;  // adCmdText + adExecuteNoRecords
constexpr long kTextFetchedAhead = 33;     // adCmdText + adAsyncFetch
constexpr long kStateOpen = 1;
constexpr long kCommandSeconds = 3600;

CString Formatted(const char* format, va_list arguments) {
    CString text;
    if (format != nullptr) text.FormatV(format, arguments);
    return text;
}

bool IsTold(const VARIANT& recordsAffected) noexcept {
    return V_VT(&recordsAffected) != VT_EMPTY;
}

/// Execute(text, affected, options), with ready arguments: each statement of an application comes by here.
IDispatch* Execute(COleDispatchDriver& object, const char* text, VARIANT* affected, long options) {
    tk::afx::OwnedVariant sql;
    sql.bstrVal = tk::afx::NewBstr(text);
    sql.vt = VT_BSTR;
    VARIANT arguments[3] = {};  // the last one first
    arguments[0].vt = VT_I4;
    arguments[0].lVal = static_cast<LONG>(options);
    arguments[1].vt = VT_VARIANT | VT_BYREF;
    arguments[1].pvarVal = affected;
    arguments[2] = sql;
    tk::afx::OwnedVariant result;
    tk::afx::CallMember(object.m_lpDispatch, connection::kExecute, DISPATCH_METHOD, arguments, 3, &result);
    IDispatch* records = nullptr;
    tk::afx::StoreResult(result, VT_DISPATCH, &records);
    return records;
}

/// @return 0 when the number is not known
long Affected(const COleVariant& told) {
    COleVariant number;
    COleVariant source(told);  // some declarations of the conversion want a source they could write to
    if (!IsTold(told) || FAILED(VariantChangeType(&number, &source, 0, VT_I4))) return 0;
    return V_I4(&number) == -1 ? 0 : V_I4(&number);
}

}  // namespace

IDispatch* CTDatabase::OnExecute(const char* szSQL, VARIANT* pRecordsAffected, long nOptions) {
    COleVariant ignored;
    VARIANT* told = pRecordsAffected == nullptr ? &ignored : pRecordsAffected;
    VariantClear(told);
    COleDispatchDriver records;
    // Before the first open there is nothing to call; the report below says so.
    if (dispatch_.m_lpDispatch != nullptr) records.AttachDispatch(Execute(dispatch_, szSQL, told, nOptions));
    if (!IsTold(*told)) ReportNoRows();
    return records.DetachDispatch();
}

IDispatch* CTDatabase::OnExecute(long nValue) {
    // Contract: the number of a Command's Execute, which a Connection knows as Close.
    static constexpr BYTE parms[] = VTS_I4;
    return CallForObject(dispatch_, command::kExecute, parms, nValue);
}

void CTDatabase::ReportNoRows() {
    DWORD code = 0;
    const CString text = GetLastErrorText(&code);
    lastError_ = code == 0 ? CString(kDatabaseNotOpened) : text;
}

/// @return the rows affected as the connection told them; VT_EMPTY when it did not
COleVariant CTDatabase::RunStatement(const char* szSQL) {
    COleVariant told;
    if (IDispatch* records = OnExecute(szSQL, &told, kTextWithoutRecords)) CTRecordset(records).Close();
    return told;
}

int CTDatabase::ExecuteSQL(const char* szSQL) {
    return Guard::Run(*this, szSQL, 0, [&] { return IsTold(RunStatement(szSQL)) ? 1 : 0; });
}

int CTDatabase::ExecuteEx(const char* szFormat, ...) {
    va_list arguments;
    va_start(arguments, szFormat);
    const ArgumentListEnd end{arguments};
    const CString sql = Formatted(szFormat, arguments);
    return ExecuteSQL(sql);
}

long CTDatabase::ExecSQL(const char* szFormat, ...) {
    va_list arguments;
    va_start(arguments, szFormat);
    const ArgumentListEnd end{arguments};
    const CString sql = Formatted(szFormat, arguments);
    return Guard::Run(*this, sql, 0L, [&] { return Affected(RunStatement(sql)); });
}

IDispatch* CTDatabase::GetRecordset(const char* szSQL) {
    return Guard::Run(*this, szSQL, static_cast<IDispatch*>(nullptr),
                      [&] { return OnExecute(szSQL, nullptr, kTextFetchedAhead); });
}

int CTDatabase::ExecuteCommand(const char* szText) {
    return Guard::Run(*this, szText, 0, [&] {
        if (GetState() != kStateOpen) return 0;
        // Contract: the steps of an ADO Command, sent to the Connection itself; its member 2 is the command time-out
        // and its member 5 is Close.
        SetRefActiveConnection(dispatch_.m_lpDispatch);
        SetCommandText(szText);
        SetCommandTimeout(kCommandSeconds);
        CallWithLong(dispatch_, command::kExecute, kTextWithoutRecords);
        return 1;
    });
}
