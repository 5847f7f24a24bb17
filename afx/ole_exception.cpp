#include "afx_ole_exception.h"

#include "afx/kept_last_error.h"
#include "afx/multibyte.h"
#include "afx/text_codes.h"

IMPLEMENT_DYNAMIC(COleException, CException)
IMPLEMENT_DYNAMIC(COleDispatchException, CException)

COleException::COleException() = default;

COleException::~COleException() = default;

BOOL COleException::GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext) {
    if (pnHelpContext != nullptr) *pnHelpContext = 0;
    const tk::afx::KeptLastError kept;  // many codes have no text, which is no failure
    LPSTR text = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, static_cast<DWORD>(m_sc), 0, reinterpret_cast<LPSTR>(&text), 0, nullptr);
    tk::afx::CopyCut(lpszError, nMaxError, length == 0 ? "" : text, length);
    LocalFree(text);
    return length != 0 && lpszError != nullptr && nMaxError > 1;
}

namespace {

struct KnownClass {
    const CRuntimeClass* type;
    SCODE code;
};
const KnownClass kKnownClasses[] = {
    {RUNTIME_CLASS(CMemoryException), E_OUTOFMEMORY},
    {RUNTIME_CLASS(CNotSupportedException), E_NOTIMPL},
    {RUNTIME_CLASS(CInvalidArgException), E_INVALIDARG},
};

}  // namespace

SCODE COleException::Process(const CException* pAnyException) {
    if (pAnyException == nullptr) return E_UNEXPECTED;
    if (pAnyException->IsKindOf(RUNTIME_CLASS(COleException))) {
        return static_cast<const COleException*>(pAnyException)->m_sc;
    }
    for (const KnownClass& known : kKnownClasses) {
        if (pAnyException->IsKindOf(known.type)) return known.code;
    }
    return E_UNEXPECTED;
}

COleDispatchException::COleDispatchException(LPCTSTR lpszDescription, UINT nHelpID, WORD wCode)
    : m_wCode(wCode), m_strDescription(lpszDescription), m_dwHelpContext(nHelpID) {}

COleDispatchException::~COleDispatchException() = default;

BOOL COleDispatchException::GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext) {
    if (pnHelpContext != nullptr) *pnHelpContext = m_dwHelpContext;
    tk::afx::CopyCut(lpszError, nMaxError, m_strDescription, static_cast<std::size_t>(m_strDescription.GetLength()));
    return !m_strDescription.IsEmpty() && lpszError != nullptr && nMaxError > 1;
}

void COleDispatchException::Process(EXCEPINFO* pInfo, const CException* pAnyException) {
    *pInfo = EXCEPINFO{};
    if (pAnyException != nullptr && pAnyException->IsKindOf(RUNTIME_CLASS(COleDispatchException))) {
        const auto* const described = static_cast<const COleDispatchException*>(pAnyException);
        pInfo->wCode = described->m_wCode;
        pInfo->scode = described->m_wCode != 0 ? S_OK : described->m_scError;
        pInfo->dwHelpContext = described->m_dwHelpContext;
        pInfo->bstrSource = described->m_strSource.AllocSysString();
        pInfo->bstrDescription = described->m_strDescription.AllocSysString();
        if (!described->m_strHelpFile.IsEmpty()) pInfo->bstrHelpFile = described->m_strHelpFile.AllocSysString();
        return;
    }
    pInfo->scode = COleException::Process(pAnyException);
    if (pAnyException == nullptr) return;
    char text[256] = {};
    const_cast<CException*>(pAnyException)->GetErrorMessage(text, sizeof(text));
    tk::afx::EndWithin(text, sizeof(text));
    pInfo->bstrDescription = tk::afx::NewBstr(text);
}

void AfxThrowOleException(SCODE sc) {
    auto* const exception = new COleException;
    exception->m_sc = sc;
    throw exception;
}

void AfxThrowOleDispatchException(WORD wCode, LPCTSTR lpszDescription, UINT nHelpID) {
    throw new COleDispatchException(lpszDescription, nHelpID, wCode);
}
