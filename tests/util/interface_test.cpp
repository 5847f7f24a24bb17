// The interface as programs see it: one header, and the exact types of every function.
#include <tkkernel/tkkernel.h>

#include <gtest/gtest.h>

namespace {

/// Takes the address of one overload; does not compile when there is none of exactly this type.
template <class Function>
void Declared(Function* function) {
    EXPECT_NE(function, nullptr);
}

TEST(Interface, DeclaresTextsAndValues) {
    Declared<CString(DWORD)>(&LookupErrorText);
    Declared<CString()>(&GetLastErrorText);
    Declared<CString(DWORD*)>(&GetLastErrorText);
    Declared<CString(CException*)>(&GetExceptionError);
    Declared<CString(const char*, const char*)>(&GetExceptionError);
    Declared<int(_tagPATHITEM*)>(&GetAppName);
    Declared<int(const char*, const char*, DWORD, WORD, WORD, void*)>(&AddLog);
    Declared<int(const char*, int, WORD, void*)>(&AddErrorLog);
    Declared<int(const char*, const char*, WORD, void*)>(&AddWarnLog);
    Declared<int(const char*, const char*, WORD, void*)>(&AddInforLog);
    Declared<int(const char*, const char*, CString*)>(&AddExcepLog);
    Declared<int(CException*, const char*, CString*)>(&AddExcepLog);
    Declared<int()>(&MsgBeep);
    Declared<void(int)>(&OnWarningMessage);
    Declared<CString(const VARIANT&)>(&VariantToString);
    Declared<CString(const VARIANT&)>(&VARIANTToString);
    Declared<CString(const VARIANT&)>(&VariantToTrimString);
    Declared<long(const VARIANT&)>(&VariantToLong);
    Declared<double(const VARIANT&)>(&VariantToDouble);
    Declared<void(VARIANT&, const char*)>(&StringToVariant);
    Declared<int(const VARIANT&, const VARIANT&)>(&CompareVariant);
    Declared<void(VARIANT&, const VARIANT&)>(&CopyVariant);
    Declared<VARIANT(const VARIANT&, const VARIANT&)>(&VariantPlus);
    Declared<CString(DECIMAL)>(&DecimalToString);
    Declared<double(DECIMAL)>(&DecimalToDouble);
    Declared<DECIMAL(const char*)>(&StringToDecimal);
    Declared<double(const char*)>(&StringToDouble);
    Declared<CString(CString&)>(&TruncDouble);
    Declared<void(CStringArray&, const char*, const char*)>(&StringToArray);
    Declared<void(CStringArray&, const char*, int)>(&StringToArray);
    Declared<CString(const CStringArray&, const char*)>(&ArrayToString);
    Declared<void(CMapStringToString&, const char*)>(&StringToMap);
    Declared<CString(const CMapStringToString&)>(&MapToString);
    Declared<CString(CString&, char)>(&DivideString);
    Declared<int(const char*, char)>(&CountSubString);
    Declared<int(const char*, const char*)>(&FindStringPos);
    Declared<int(const char*, const char*)>(&FindStringNoCase);
    Declared<CString(const char*, const char*)>(&FindString);
    Declared<CString(const char*, const char*, const char*)>(&GetUnit);
    Declared<CString(const char*, const char*, const char*, int&)>(&GetUnitPos);
    Declared<CString(const char*, const char*, const char*, int&)>(&GetUnitNoCase);
    Declared<CString(const char*, const char*, int, int)>(&GetSubString);
    Declared<int(char*, const char*)>(&TrimLeft);
    Declared<int(char*, const char*)>(&TrimRight);
    Declared<CString(const char*, char)>(&TruncString);
    Declared<void(CString&, const char*, const char*)>(&ReplaceTextA);
    Declared<CString(const char*, const char*, const char*)>(&ReplaceString);
    Declared<int(const CStringArray&, const char*)>(&StringInArray);
    Declared<int(const CStringArray&, const char*)>(&StringInArrayPos);
    Declared<int(const CDWordArray&, DWORD)>(&DWordInArray);
    Declared<void(CStringArray&)>(&SortArray);
    Declared<char(int)>(&DecToHex);
    Declared<int(char)>(&HexToDec);
    Declared<int(char*, int, char)>(&GetInput);
    Declared<int(const char*, char)>(&IsExist);
    Declared<CString(const char*, char)>(&CutString);
    Declared<int(const char*, char*, int)>(&StringLeft);
    Declared<int(char*, int)>(&StringLeft);
    Declared<int(const char*, char*, int)>(&StringRight);
    Declared<int(char*, int)>(&StringRight);
    Declared<int(const char*)>(&IsDigit);
    Declared<CString(const char*)>(&StringToHexString);
    Declared<CString(const char*)>(&HexStringToString);
    Declared<unsigned short(const char*)>(&StringToWord);
    Declared<CString(unsigned int, int)>(&NumberToString);
    Declared<unsigned int(const char*, int)>(&StringToNumber);
    Declared<int(void*)>(&GetMemoryLength);
    Declared<int(const char*)>(&StrLen);
    Declared<int(const OLECHAR*)>(&WStrLen);
    Declared<CString(DATE, const char*)>(&DateToString);
    Declared<CString(const char*)>(&GetCurDate);
    Declared<CString(const char*, int)>(&GetDateString);
    Declared<DATE(const char*)>(&StringToDate);
    Declared<void(char*, char*, char*, char*)>(&GetLocalDate);
    Declared<COleDateTime(const char*)>(&GetLocalDate);
    Declared<COleDateTime(COleDateTime*)>(&GetLocalDate);
    Declared<CString(int, const char*)>(&IntToString);
    Declared<CString(double, const char*)>(&DoubleToString);
    Declared<double(const char*, int)>(&Round);
    Declared<int(int, int)>(&GetRandom);
    Declared<double(double)>(&Arsinh);
    Declared<double(double)>(&Arcosh);
    Declared<double(double)>(&Artanh);
    Declared<double(double)>(&DEG);
    Declared<double(double)>(&RAD);
    Declared<CString(VARIANT, const char*)>(&FormatVariant);
    Declared<CString(short)>(&NumberToChinese);
    Declared<CString(double, int)>(&UpperCurrency);
    Declared<CString(const char*, int)>(&ToPyHead);
    Declared<CString(CString&)>(&ToPyHead);
}

TEST(Interface, DeclaresComAndSystem) {
    Declared<int()>(&AfxIDispatchInit);
    Declared<int()>(&AfxIDispatchUIInit);
    Declared<long()>(&AfxDispatchInit);
    Declared<void()>(&AfxIDispatchTerm);
    Declared<long(void*, unsigned long)>(&AfxISecurityInit);
    Declared<int(COleDispatchDriver*, const char*, CString&)>(&CreateIDispatch);
    Declared<IUnknown*(const char*, const GUID&)>(&CreateIDispatch);
    Declared<IUnknown*(GUID, const GUID&)>(&CreateIDispatch);
    Declared<IUnknown*(GUID, const GUID&)>(&QueryIDispatch);
    Declared<void(IUnknown*)>(&ReleaseIDispatch);
    Declared<CString(const GUID&)>(&StringFromGuid);
    Declared<GUID(const char*)>(&StringToGuid);
    Declared<GUID()>(&CreateGuid);
    Declared<BSTR(const char*)>(&StringCopy);
    Declared<CString(BSTR)>(&BstrCopy);
    Declared<BSTR(const char*, long, long*)>(&StringToSysString);
    Declared<char*(BSTR, long, long*)>(&SysStringToString);
    Declared<CString()>(&GetComputerNameA);
    Declared<CString()>(&GetSystemDataSource);
    Declared<int(const char*)>(&IsFileExist);
    Declared<int(const void*, unsigned int)>(&IsValidMemory);
    Declared<int(const void*, unsigned int)>(&IsValidAddress);
    Declared<int(const char*, int)>(&IsValidString);
}

TEST(Interface, HasDefaultArgumentsWhereTheyAreNeeded) {
    int (*const byPlace)(const char*, const char*) = [](const char* where, const char* what) {
        return AddExcepLog(where, what);
    };
    int (*const byException)(CException*, const char*) = [](CException* e, const char* where) {
        return AddExcepLog(e, where);
    };
    EXPECT_NE(byPlace, nullptr);
    EXPECT_NE(byException, nullptr);
}

}  // namespace
