#include "platform/messages.h"
#include "platform/wide_text.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace tk::platform {
namespace {

constexpr DWORD kAnyServer = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
static_assert(kAnyServer == 0x15);

IUnknown* Create(REFCLSID clsid, REFIID iid) {
    void* object = nullptr;
    const HRESULT result = CoCreateInstance(clsid, nullptr, kAnyServer, iid, &object);
    if (SUCCEEDED(result)) return static_cast<IUnknown*>(object);
    SetLastError(static_cast<DWORD>(result));
    return nullptr;
}

/// @param code  receives why there is no object; 0 is possible there
bool CreateInto(COleDispatchDriver* driver, const char* progId, HRESULT& code) {
    code = E_POINTER;
    if (driver == nullptr) return false;
    CLSID clsid;
    code = CLSIDFromString(WideText(progId).Get(), &clsid);
    if (FAILED(code)) return false;
    COleException failure;
    if (!driver->CreateDispatch(clsid, &failure)) {
        code = failure.m_sc;
        return false;
    }
    driver->m_bAutoRelease = TRUE;
    return true;
}

/// Contract: "no error" and "file not found" as the reason of a failure mean that COM was not started.
CString CreationError(HRESULT result) {
    const auto code = static_cast<DWORD>(result);
    if (code == ERROR_SUCCESS || code == ERROR_FILE_NOT_FOUND || result == CO_E_NOTINITIALIZED) return kComNotStarted;
    return LookupErrorText(code);
}

}  // namespace
}  // namespace tk::platform

int CreateIDispatch(COleDispatchDriver* pDriver, const char* szProgId, CString& error) {
    HRESULT code = S_OK;
    if (tk::platform::CreateInto(pDriver, szProgId, code)) return 1;
    error = tk::platform::CreationError(code);
    return 0;
}

IUnknown* CreateIDispatch(const char* szProgId, const GUID& iid) {
    CLSID clsid;
    const HRESULT result = CLSIDFromProgID(tk::platform::WideText(szProgId).Get(), &clsid);
    if (SUCCEEDED(result)) return tk::platform::Create(clsid, iid);
    SetLastError(static_cast<DWORD>(result));
    return nullptr;
}

IUnknown* CreateIDispatch(GUID clsid, const GUID& iid) {
    return tk::platform::Create(clsid, iid);
}

IUnknown* QueryIDispatch(GUID clsid, const GUID& iid) {
    IUnknown* object = tk::platform::Create(clsid, IID_IUnknown);
    if (object == nullptr) return nullptr;
    void* queried = nullptr;
    if (FAILED(object->QueryInterface(iid, &queried))) queried = nullptr;
    object->Release();
    return static_cast<IUnknown*>(queried);
}

void ReleaseIDispatch(IUnknown* pObject) {
    if (pObject != nullptr) CoDisconnectObject(pObject, 0);
}
