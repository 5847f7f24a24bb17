// tkkernel/platform.h - starting COM, making objects from their names, identifiers and texts across it; small questions
// to the system.
//
//   if (!AfxIDispatchInit()) return 1;                       // the reason is in the event log
//   COleDispatchDriver connection;
//   CString error;
//   if (!CreateIDispatch(&connection, "ADODB.Connection", error)) Show(error);
//   AfxIDispatchTerm();
//
// Text: 8-bit GBK, zero-terminated; a null text counts as an empty one.
// Failures: nothing here raises. Functions that make objects leave the HRESULT in the thread's last error, for
// GetLastErrorText; the start functions say where their reason goes.
// Threads: all functions are reentrant. COM is entered and left by each thread for itself.
#pragma once

#include <windows.h>

#include <ole2.h>

#include <afx.h>
#include <afxdisp.h>
#include <afxwin.h>
#include <atlbase.h>

#include "tkkernel/export.h"

// ---- COM start-up -----------------------------------------------------------------------------------

/// Starts a process without a user interface: the network functions, the multithreaded apartment for the calling
/// thread, and call security for the process (connect-level authentication, impersonation).
/// @return 1; 0 with the reason in the event log. What was started before the failure stays started.
/// @note Call security is settled once in a process: a second call fails there.
TKKERNEL_API int AfxIDispatchInit();

/// Starts a process with a user interface: as above, in a single-threaded apartment.
/// @return 1; 0 with the reason in a message box
TKKERNEL_API int AfxIDispatchUIInit();

/// The network functions and the multithreaded apartment alone, for further threads.
/// @return the HRESULT of the start, 0 or more: S_OK is 0 as well
/// @return 0 when something failed, with the reason in the event log
TKKERNEL_API long AfxDispatchInit();

/// Leaves COM on the calling thread; one for each start that succeeded.
TKKERNEL_API void AfxIDispatchTerm();

/// Settles call security of the process with a descriptor of the caller's and an authentication level.
/// @return the HRESULT
TKKERNEL_API long AfxISecurityInit(void* pSecurityDescriptor, unsigned long nAuthnLevel);

/// Makes calls through a proxy run under an account: connect-level authentication, impersonation, no authorisation.
/// @param identity  the platform's record, as it stands
/// @return the HRESULT; E_NOINTERFACE for an object of this process, which is no proxy
TKKERNEL_API long AfxSetSecurityEx(IUnknown* pProxy, COAUTHIDENTITY& identity);
/// The same with the account as texts; null and empty ones are left out of the record.
TKKERNEL_API long AfxSetSecurity(IUnknown* pProxy, const char* szUser, const char* szDomain, const char* szPassword);

// ---- object creation ----------------------------------------------------------------------------------

/// Creates the object of a class into a driver, which will release it.
/// @param szProgId  a ProgID or a braced class identifier
/// @param error     receives the reason of a failure: the text of its code, or that COM was not started on this thread
/// @return 1 or 0
TKKERNEL_API int CreateIDispatch(COleDispatchDriver* pDriver, const char* szProgId, CString& error);

/// Creates an object in-process, local or remote, whichever the class offers first.
/// @return owned by the caller; null with the HRESULT as the thread's last error
TKKERNEL_API IUnknown* CreateIDispatch(const char* szProgId, const GUID& iid);
TKKERNEL_API IUnknown* CreateIDispatch(GUID clsid, const GUID& iid);

/// As CreateIDispatch, but for classes whose objects must be made for IUnknown first and asked then.
/// @return owned by the caller; null with the HRESULT as the thread's last error when the object could not be made, and
///         null with the last error left alone when it does not have the interface
TKKERNEL_API IUnknown* QueryIDispatch(GUID clsid, const GUID& iid);

/// Creates an object on a machine, under an account.
/// @param szHost  null, empty or this machine by LocalHost: as CreateIDispatch, the account is not used; else the name
///                goes to the platform as it is, and no in-process server is asked
/// @param szUser  null or empty: the caller's own account; else calls through the object run under this one as well
/// @return owned by the caller; null with the HRESULT as the thread's last error
TKKERNEL_API IUnknown* CreateIDispatchEx(const char* szProgId, const GUID& iid, const char* szHost, const char* szUser,
                                         const char* szDomain, const char* szPassword);
TKKERNEL_API IUnknown* CreateIDispatchEx(GUID clsid, const GUID& iid, const char* szHost, const char* szUser,
                                         const char* szDomain, const char* szPassword);
/// Several at once: locally an object for each entry, elsewhere one object for all of them, all asked for the same
/// interface. The name of the machine goes to the platform behind two backslashes.
/// @param pResults  nCount entries, which are overwritten; each tells its own HRESULT, and pItf is the caller's even
///                  when the call fails. pIID points to iid afterwards.
/// @return 1 when at least one object is there; 0 with the HRESULT as the last error, which for another machine's
///         refusal is in the event log too. An account that cannot be set on a proxy fails the call.
TKKERNEL_API int CreateIDispatchEx(MULTI_QI* pResults, long nCount, GUID clsid, const GUID& iid, const char* szHost,
                                   const char* szUser, const char* szDomain, const char* szPassword);
/// @return null: creation through a queue is not offered
TKKERNEL_API IUnknown* CreateIDispatchQueue(GUID clsid, const GUID& iid, const char* szHost, const char* szUser,
                                            const char* szDomain, const char* szPassword);

/// Ends the connections of others to an object. The caller's own reference stays: it is not released.
TKKERNEL_API void ReleaseIDispatch(IUnknown* pObject);

/// Whether a name means this machine: "127.0.0.1", "localhost" (both without any look-up), the machine's host name or
/// one of that name's addresses, in either case.
/// @return 1 or 0; -1 when the host name, of 31 characters at most, or its addresses cannot be had
TKKERNEL_API int LocalHost(const char* szHost);

// ---- who is calling, and who is there -------------------------------------------------------------------

/// Inside a server's call: the caller's account, as the platform writes it.
/// @return "" outside a call, and when the platform does not tell
TKKERNEL_API CString GetCallAuthor();
/// The user accounts of this machine.
/// @return 1, also when they cannot be had
TKKERNEL_API int GetAllAccounts(CStringArray& names);
/// The account that the thread runs under; "" when its name has more than 255 characters.
TKKERNEL_API CString GetCurrentUser();

// ---- identifiers and texts ------------------------------------------------------------------------------

/// The braced upper-case form of 38 characters.
TKKERNEL_API CString StringFromGuid(const GUID& guid);
/// @param szText  a braced identifier or a ProgID
/// @return all zero for anything else
TKKERNEL_API GUID StringToGuid(const char* szText);
TKKERNEL_API GUID CreateGuid();
/// The form without braces, in lower case.
TKKERNEL_API CString StringFromUuid(const GUID& uuid);
/// @param szText  the form without braces, in either case
/// @return all zero for anything else
TKKERNEL_API GUID StringToUuid(const char* szText);
TKKERNEL_API GUID CreateUuid();
/// @return 1 when the class is registered with an in-process server whose file is there, else 0
TKKERNEL_API int CLSIDExist(GUID& clsid);

/// @return a new BSTR, the caller's
TKKERNEL_API BSTR StringCopy(const char* szText);
/// The text of a BSTR, which is freed: the caller's pointer is of no use afterwards.
TKKERNEL_API CString BstrCopy(BSTR text);

/// @param nLength     bytes to convert; -1: up to the terminator
/// @param pOutLength  receives the UTF-16 units of the result, terminator not counted; may be null
/// @return a new BSTR, the caller's; null when there is no memory
TKKERNEL_API BSTR StringToSysString(const char* szText, long nLength, long* pOutLength);

/// @param nLength     UTF-16 units to convert; -1: up to the terminator
/// @param pOutLength  receives the bytes of the result, terminator not counted; may be null
/// @return a terminated text from malloc, the caller's; null when there is no memory
TKKERNEL_API char* SysStringToString(BSTR text, long nLength, long* pOutLength);

// ---- the system ---------------------------------------------------------------------------------------------

/// The computer's name; "" when the system has none.
TKKERNEL_API CString GetComputerNameA();

/// Lets the user compose a connection in the platform's dialog, and connects once to try it.
/// @return the connection string, password included; "" when cancelled, not connected, or nobody can be asked
TKKERNEL_API CString GetSystemDataSource();

/// @return 1 when the file can be opened for reading; 0 for anything else, a folder included
TKKERNEL_API int IsFileExist(const char* szFile);

/// Whether the system is of the NT family. @return 1 or 0
TKKERNEL_API int IsNT();

/// Fills a record that lets everybody open the object it is given to: no list of rights, inheritable handles.
/// @return 1 with a descriptor that is the caller's, freed with LocalFree; 0 with an empty record
TKKERNEL_API int SetSecurity(SECURITY_ATTRIBUTES* pAttributes);

/// A text of the program's string table. @return "" when there is none
TKKERNEL_API CString GetResString(unsigned int nId);

/// Lets the user pick a folder in the platform's dialog.
/// @param pParent  may be null
/// @return its path; "" when cancelled or nobody can be asked
TKKERNEL_API CString GetSystemPath(CWnd* pParent);

/// Where a path leads from a base folder. Both separators count; "." and ".." are carried out. A target behind a drive,
/// a share of another machine or, where the base has no drive, a '/' needs no base; one behind a separator starts from
/// the base's root. Behind a drive or a share the result is written with backslashes, else with slashes.
/// @return the path; when neither of them has a drive, share or '/' to start from, the text "no drive"; when the target
///         is empty, relative to a drive ("C:name") or leads out above the root, the text "wrong target" (in Chinese)
TKKERNEL_API CString GetAbsolutePath(const char* szBase, const char* szTarget);

/// Writes a shortcut: the shell's format, or a desktop entry when the name of the file ends in ".desktop".
/// @param szLinkFile  at most 259 characters
/// @return the HRESULT of the first step that failed, or of saving. COM has to be started.
TKKERNEL_API long CreateLink(const char* szTarget, const char* szArguments, const char* szLinkFile,
                             const char* szDirectory, const char* szDescription);

/// The digit of a number: 0 to 9, then A (10) to Z (35). @return NUL for any other number
TKKERNEL_API char NumberToChar(int nNumber);

// ---- hosts, data sources, ports -----------------------------------------------------------------------------

/// The name of the host that has an address, or the computer's own name.
/// @param szAddress  four decimal numbers with points; anything else, null included, asks for the own name
/// @return "" when nobody knows the address
TKKERNEL_API CString GetHostName(const char* szAddress);
/// The IPv4 addresses of a host, separated by semicolons.
/// @param szHost  the first 79 bytes count, cut between characters; null or "" for this computer
/// @return "" when nobody knows the host
TKKERNEL_API CString GetHostAddr(const char* szHost);
/// This computer: its name and, behind a colon, its addresses where there are any.
TKKERNEL_API CString GetHostInfor();

/// The names of the ODBC data sources, the user's before the system's, each once.
/// @return how many there are
TKKERNEL_API int GetAllDataSource(CStringArray& names);
/// Starts the program that keeps the ODBC data sources, and does not wait for it. @return 1, or 0 when there is none
TKKERNEL_API int GetSystemODBC();

/// The serial ports among COM1 to COM25 that can be opened.
/// @param pArray    receives the names; may be null
/// @param pControl  a combo box or list box that gets them too, the first one selected; any other control, and one
///                  without a window, is left alone. On the thread that owns it.
/// @return how many there are
TKKERNEL_API unsigned char GetCommCount(CStringArray* pArray, CWnd* pControl = NULL);

// ---- menus and coordinates ----------------------------------------------------------------------------------

/// Shows a sub-menu of a menu in the module's resources; the owner gets the chosen command as WM_COMMAND.
/// @param nDefaultItem  the command that is marked as the usual one; 0 for none
/// @param pAt  where, on the screen; null: at the pointer
/// @return 1; 0 when there is no such menu
TKKERNEL_API int OnContextMenu(CComModule& module, HWND hOwner, unsigned int nMenuId, int nSubMenu,
                               unsigned int nDefaultItem, CPoint* pAt);

/// Coordinates of the NT family in those of Windows 95 and 98, and back, in place; only on the NT family. They differ
/// in MM_LOMETRIC and MM_TWIPS. Null changes nothing.
TKKERNEL_API void NTtoWin98(RECT* pRect, int nMapMode);
TKKERNEL_API void NTtoWin98(SIZE* pSize, int nMapMode);
TKKERNEL_API void Win98toNT(RECT* pRect, int nMapMode);
TKKERNEL_API void Win98toNT(SIZE* pSize, int nMapMode);
/// Win98toNT in the context's mapping mode, then the platform's LPtoDP.
TKKERNEL_API void LPtoDP(CDC* pDC, POINT* pPoint);
TKKERNEL_API void LPtoDP(CDC* pDC, RECT* pRect);
TKKERNEL_API void LPtoDP(CDC* pDC, SIZE* pSize);
/// The platform's DPtoLP, then NTtoWin98 in the context's mapping mode.
TKKERNEL_API void DPtoLP(CDC* pDC, POINT* pPoint);
TKKERNEL_API void DPtoLP(CDC* pDC, RECT* pRect);
TKKERNEL_API void DPtoLP(CDC* pDC, SIZE* pSize);

// ---- validity -----------------------------------------------------------------------------------------------

/// @return 1, whatever is given: a name that old callers need. IsValidAddress really looks.
TKKERNEL_API int IsValidMemory(const void* pMemory, unsigned int nLength);
/// Whether every byte of a range can be read now. No fault, no signal.
/// @return 1 or 0; 0 for null
TKKERNEL_API int IsValidAddress(const void* pAddress, unsigned int nLength);
/// Whether a text can be read up to its terminator or for nLength bytes, whichever comes first.
/// @param nLength  -1: up to the terminator
/// @return 1 or 0; 0 for null
TKKERNEL_API int IsValidString(const char* szText, int nLength);
/// Whether a window is there. @return 1 or 0; 0 for null
TKKERNEL_API int IsValidWindow(CWnd* pWindow);
/// Whether an object's memory can be read and its class is the given one or one of its descendants.
/// @return 1 or 0; 0 for null. Memory that can be read and holds no object is not found out.
TKKERNEL_API int IsValidClass(CObject* pObject, CRuntimeClass* pClass);
