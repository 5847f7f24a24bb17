#include "afx/multibyte.h"
#include "driver/argument_list.h"
#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

using namespace tk::driver;

namespace {

// The tag of a wrapper that no connection has told its own yet.
constexpr char kDefaultTag[] = "Mic";
constexpr UINT kPropertyBuckets = 10;

const char* OrEmpty(const char* text) noexcept {
    return text == nullptr ? "" : text;
}

}  // namespace

CTDataDriver::CTDataDriver() {
    properties_.InitHashTable(kPropertyBuckets);
}

CTDataDriver::CTDataDriver(IDispatch* pDispatch) : dispatch_(pDispatch), dbmsTag_(kDefaultTag) {
    properties_.InitHashTable(kPropertyBuckets);
}

CTDataDriver::CTDataDriver(const CTDataDriver& other) : dispatch_(other.dispatch_), dbmsTag_(kDefaultTag) {
    properties_.InitHashTable(kPropertyBuckets);
}

CTDataDriver::~CTDataDriver() = default;

CString CTDataDriver::GetLastErrorString() {
    return lastError_;
}

IDispatch* CTDataDriver::GetDispatch() {
    return dispatch_.m_lpDispatch;
}

int CTDataDriver::OnInitCLSID(const char* szClsid) {
    // A wrapper made from an object or as a copy keeps what it was given.
    if (dispatch_.m_lpDispatch == nullptr && !CreateIDispatch(&dispatch_, szClsid, lastError_)) return 0;
    lastError_ = kOperationDone;
    return 1;
}

int CTDataDriver::OnInitProperty(IDispatch* pProperties) {
    if (!IsValidAddress(pProperties, 4)) return 0;
    return Guard::Run(*this, kGetPropertyValueFailed, 0, [&] {
        CTProperties properties;
        properties.AttachDispatch(pProperties, FALSE);
        properties_.RemoveAll();
        VARIANT index;
        V_VT(&index) = VT_I4;
        V_I4(&index) = 0;
        for (; V_I4(&index) < properties.GetCount(); ++V_I4(&index)) {
            CTProperty property = properties.GetItem(index);
            const CString text = Take(VariantToString, property.GetValue());
            properties_.SetAt(property.GetName(), text);
        }
        return V_I4(&index) > 0 ? 1 : 0;
    });
}

CString CTDataDriver::GetStandardSQL(const char* szName) {
    CString quoted;
    quoted.Format("\"%s\"", OrEmpty(szName));
    return quoted;
}

int CTDataDriver::SetError(const char* szFormat, ...) {
    if (szFormat == nullptr) return 0;
    CString text;  // apart, as an argument may be the last-error text itself
    va_list arguments;
    va_start(arguments, szFormat);
    const ArgumentListEnd end{arguments};
    text.FormatV(szFormat, arguments);
    lastError_ = text;
    return 0;
}

int CTDataDriver::SetErrorString(const char* szFirst, const char* szSecond) {
    return SetError("%s\r\n%s", OrEmpty(szFirst), OrEmpty(szSecond));
}

int CTDataDriver::ThrowException(CException* e, const char* szContext) {
    char text[256] = {};
    if (e != nullptr) e->GetErrorMessage(text, sizeof(text), nullptr);
    // An exception of the application's may fill the buffer to its end.
    tk::afx::EndWithin(text, sizeof(text));
    return SetErrorString(text, szContext);
}
