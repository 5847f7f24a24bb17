// afx_ole_exception.h - failures of automation: COleException for a code, COleDispatchException for a described fault.
//
//   catch (COleDispatchException* e) { Show(e->m_strDescription); e->Delete(); }
//   catch (COleException* e) { Show(e->m_sc); e->Delete(); }
//
// COleDispatchException is no COleException; both are CExceptions.
// Threads: an exception belongs to the thread that caught it.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "afx_exception.h"
#include "afxstr.h"

class AFX_API COleException : public CException {
    DECLARE_DYNAMIC(COleException)
public:
    COleException();
    ~COleException() override;

    /// The system's text of m_sc as FormatMessage gives it, its CR LF at the end included.
    /// @return FALSE, and an empty text, when the system has none
    BOOL GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext = NULL) override;

    /// The code that stands for an exception: its own, or E_OUTOFMEMORY, E_NOTIMPL, E_INVALIDARG, E_UNEXPECTED.
    static SCODE Process(const CException* pAnyException);

    SCODE m_sc = S_OK;
};

class AFX_API COleDispatchException : public CException {
    DECLARE_DYNAMIC(COleDispatchException)
public:
    explicit COleDispatchException(LPCTSTR lpszDescription = NULL, UINT nHelpID = 0, WORD wCode = 0);
    ~COleDispatchException() override;

    /// m_strDescription; FALSE when it is empty.
    BOOL GetErrorMessage(LPTSTR lpszError, UINT nMaxError, PUINT pnHelpContext = NULL) override;

    /// Describes an exception for a caller of ours. The texts are the receiver's.
    static void Process(EXCEPINFO* pInfo, const CException* pAnyException);

    WORD m_wCode = 0;          // the server's own number; 0 when m_scError tells
    CString m_strDescription;  // what went wrong
    DWORD m_dwHelpContext = 0;
    CString m_strHelpFile;
    CString m_strSource;  // who reports it
    SCODE m_scError = S_OK;
};

[[noreturn]] AFX_API void AfxThrowOleException(SCODE sc);
[[noreturn]] AFX_API void AfxThrowOleDispatchException(WORD wCode, LPCTSTR lpszDescription, UINT nHelpID = 0);
