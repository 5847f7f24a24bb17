#include "afx_exception.h"

#include <cstring>
#include <new>

#include "afx/messages.h"
#include "afx/multibyte.h"

IMPLEMENT_DYNAMIC(CException, CObject)
IMPLEMENT_DYNAMIC(CSimpleException, CException)

CException::CException(BOOL bAutoDelete) : autoDelete_(bAutoDelete) {}

CException::~CException() = default;

void CException::Delete() {
    if (autoDelete_) delete this;
}

BOOL CException::GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext) {
    if (pnHelpContext != nullptr) *pnHelpContext = 0;
    tk::afx::CopyCut(lpszError, nMaxError, "", 0);
    return FALSE;
}

int CException::ReportError(UINT nType, UINT nError) {
    static_cast<void>(nError);  // names a text of the program's resources; there are none to name
    char text[512] = {};
    GetErrorMessage(text, sizeof(text));
    tk::afx::EndWithin(text, sizeof(text));
    return MessageBoxA(nullptr, text, nullptr, nType);
}

CSimpleException::CSimpleException(BOOL bAutoDelete, const char* text) : CException(bAutoDelete), text_(text) {}

CSimpleException::~CSimpleException() = default;

BOOL CSimpleException::GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext) {
    if (pnHelpContext != nullptr) *pnHelpContext = 0;
    tk::afx::CopyCut(lpszError, nMaxError, text_, std::strlen(text_));
    return lpszError != nullptr && nMaxError > 1;
}

namespace {

// Raises the one shared object of a class. It is never destroyed: a throw may come as late as any destructor.
template <class Exception>
[[noreturn]] void ThrowShared() {
    alignas(Exception) static unsigned char storage[sizeof(Exception)];
    static Exception* const shared = new (storage) Exception(FALSE);
    throw shared + 0;  // by value: a pointer that is not const itself
}

}  // namespace

#define AFX_SIMPLE_EXCEPTION(class_name, text)                                                 \
    IMPLEMENT_DYNAMIC(class_name, CSimpleException)                                            \
    class_name::class_name(BOOL bAutoDelete) : CSimpleException(bAutoDelete, tk::afx::text) {} \
    class_name::~class_name() = default;

AFX_SIMPLE_EXCEPTION(CMemoryException, kOutOfMemory)
AFX_SIMPLE_EXCEPTION(CNotSupportedException, kNotSupported)
AFX_SIMPLE_EXCEPTION(CInvalidArgException, kInvalidArgument)
AFX_SIMPLE_EXCEPTION(CResourceException, kNoResource)
AFX_SIMPLE_EXCEPTION(CUserException, kUserCancelled)

#undef AFX_SIMPLE_EXCEPTION

void AfxThrowMemoryException() {
    ThrowShared<CMemoryException>();
}
void AfxThrowNotSupportedException() {
    ThrowShared<CNotSupportedException>();
}
void AfxThrowInvalidArgException() {
    ThrowShared<CInvalidArgException>();
}
void AfxThrowResourceException() {
    ThrowShared<CResourceException>();
}
void AfxThrowUserException() {
    ThrowShared<CUserException>();
}
