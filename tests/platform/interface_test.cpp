// Every function of the family, with its arguments and its result: what does not match does not compile.
#include <tkkernel/tkkernel.h>

#include <gtest/gtest.h>

namespace {

/// Takes the address of one overload; does not compile when there is none of exactly this type.
template <typename Function>
void Declared(Function* function) {
    EXPECT_NE(function, nullptr);
}

TEST(PlatformInterface, IsComplete) {
    using Unknown = IUnknown*;
    using Text = const char*;
    Declared<int()>(&AfxIDispatchInit);
    Declared<int()>(&AfxIDispatchUIInit);
    Declared<long()>(&AfxDispatchInit);
    Declared<void()>(&AfxIDispatchTerm);
    Declared<long(void*, unsigned long)>(&AfxISecurityInit);
    Declared<long(Unknown, COAUTHIDENTITY&)>(&AfxSetSecurityEx);
    Declared<long(Unknown, Text, Text, Text)>(&AfxSetSecurity);
    Declared<int(COleDispatchDriver*, Text, CString&)>(&CreateIDispatch);
    Declared<Unknown(Text, const GUID&)>(&CreateIDispatch);
    Declared<Unknown(GUID, const GUID&)>(&CreateIDispatch);
    Declared<Unknown(GUID, const GUID&)>(&QueryIDispatch);
    Declared<Unknown(Text, const GUID&, Text, Text, Text, Text)>(&CreateIDispatchEx);
    Declared<Unknown(GUID, const GUID&, Text, Text, Text, Text)>(&CreateIDispatchEx);
    Declared<int(MULTI_QI*, long, GUID, const GUID&, Text, Text, Text, Text)>(&CreateIDispatchEx);
    Declared<Unknown(GUID, const GUID&, Text, Text, Text, Text)>(&CreateIDispatchQueue);
    Declared<void(Unknown)>(&ReleaseIDispatch);
    Declared<int(Text)>(&LocalHost);
    Declared<CString()>(&GetCallAuthor);
    Declared<int(CStringArray&)>(&GetAllAccounts);
    Declared<CString()>(&GetCurrentUser);
    Declared<int(GUID&)>(&CLSIDExist);
    Declared<CString(const GUID&)>(&StringFromGuid);
    Declared<GUID(Text)>(&StringToGuid);
    Declared<GUID()>(&CreateGuid);
    Declared<CString(const GUID&)>(&StringFromUuid);
    Declared<GUID(Text)>(&StringToUuid);
    Declared<GUID()>(&CreateUuid);
    Declared<BSTR(Text)>(&StringCopy);
    Declared<CString(BSTR)>(&BstrCopy);
    Declared<BSTR(Text, long, long*)>(&StringToSysString);
    Declared<char*(BSTR, long, long*)>(&SysStringToString);
    Declared<int(CComModule&, HWND, unsigned int, int, unsigned int, CPoint*)>(&OnContextMenu);

    Declared<CString()>(&GetComputerNameA);
    Declared<CString(Text)>(&GetHostName);
    Declared<CString(Text)>(&GetHostAddr);
    Declared<unsigned char(CStringArray*, CWnd*)>(&GetCommCount);
    Declared<int()>(&GetSystemODBC);
    Declared<CString()>(&GetSystemDataSource);
    Declared<long(Text, Text, Text, Text, Text)>(&CreateLink);
    Declared<int(Text)>(&IsFileExist);
    Declared<int()>(&IsNT);
    Declared<int(SECURITY_ATTRIBUTES*)>(&SetSecurity);
    Declared<CString(unsigned int)>(&GetResString);
    Declared<int(CWnd*)>(&IsValidWindow);
    Declared<int(const void*, unsigned int)>(&IsValidMemory);
    Declared<int(const void*, unsigned int)>(&IsValidAddress);
    Declared<int(Text, int)>(&IsValidString);
    Declared<int(CObject*, CRuntimeClass*)>(&IsValidClass);
    Declared<void(RECT*, int)>(&NTtoWin98);
    Declared<void(SIZE*, int)>(&NTtoWin98);
    Declared<void(RECT*, int)>(&Win98toNT);
    Declared<void(SIZE*, int)>(&Win98toNT);
    Declared<void(CDC*, POINT*)>(&LPtoDP);
    Declared<void(CDC*, RECT*)>(&LPtoDP);
    Declared<void(CDC*, SIZE*)>(&LPtoDP);
    Declared<void(CDC*, POINT*)>(&DPtoLP);
    Declared<void(CDC*, RECT*)>(&DPtoLP);
    Declared<void(CDC*, SIZE*)>(&DPtoLP);
    Declared<CString(CWnd*)>(&GetSystemPath);
    Declared<CString(Text, Text)>(&GetAbsolutePath);
    Declared<int(CStringArray&)>(&GetAllDataSource);
    Declared<CString()>(&GetHostInfor);
    Declared<char(int)>(&NumberToChar);
}

}  // namespace
