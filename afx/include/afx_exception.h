// afx_exception.h - the framework's exceptions, thrown and caught by pointer.
//
//   try { ... } catch (CException* e) {
//       char text[256];
//       e->GetErrorMessage(text, sizeof(text));
//       e->Delete();
//   }
//
// Whoever catches one for good calls Delete, once.
// Threads: an exception belongs to the thread that caught it; the shared ones are never changed.
#pragma once

#include "afx_object.h"

class AFX_API CException : public CObject {
    DECLARE_DYNAMIC(CException)
public:
    /// @param bAutoDelete  whether Delete frees the object; FALSE for objects that were not made with new
    explicit CException(BOOL bAutoDelete = TRUE);

    void Delete();
    /// Writes the message, cut between characters to the room there is and always terminated.
    /// @param nMaxError  bytes of the buffer; 0, or a null buffer, writes nothing
    /// @param pnHelpContext  receives the help context, 0 when there is none; may be null
    /// @return FALSE when the exception has no text, or there is no room for any
    virtual BOOL GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext = NULL);
    /// Shows the message; @return what the message box returned
    virtual int ReportError(UINT nType = 0, UINT nError = 0);

protected:
    ~CException() override;

private:
    BOOL autoDelete_;
};

/// Exceptions whose message is fixed; one shared object of each, which Delete leaves alone.
class AFX_API CSimpleException : public CException {
    DECLARE_DYNAMIC(CSimpleException)
public:
    BOOL GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext = NULL) override;

protected:
    CSimpleException(BOOL bAutoDelete, const char* text);
    ~CSimpleException() override;

private:
    const char* text_;
};

#define AFX_SIMPLE_EXCEPTION(class_name)                 \
    class AFX_API class_name : public CSimpleException { \
        DECLARE_DYNAMIC(class_name)                      \
    public:                                              \
        explicit class_name(BOOL bAutoDelete = TRUE);    \
        ~class_name() override;                          \
    };

AFX_SIMPLE_EXCEPTION(CMemoryException)
AFX_SIMPLE_EXCEPTION(CNotSupportedException)
AFX_SIMPLE_EXCEPTION(CInvalidArgException)
AFX_SIMPLE_EXCEPTION(CResourceException)
AFX_SIMPLE_EXCEPTION(CUserException)

#undef AFX_SIMPLE_EXCEPTION

[[noreturn]] AFX_API void AfxThrowMemoryException();
[[noreturn]] AFX_API void AfxThrowNotSupportedException();
[[noreturn]] AFX_API void AfxThrowInvalidArgException();
[[noreturn]] AFX_API void AfxThrowResourceException();
[[noreturn]] AFX_API void AfxThrowUserException();
