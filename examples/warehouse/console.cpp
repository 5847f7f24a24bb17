// console.cpp - text to the console, and lines from files.
#include <windows.h>

#include <wincon.h>

#include <cstdarg>
#include <cstdio>

#include "warehouse.h"

static void Write(FILE* pFile, const CString& strText) {
    BSTR bstrText = strText.AllocSysString();
    const int nUnits = static_cast<int>(SysStringLen(bstrText));
    const UINT nCodePage = GetConsoleOutputCP();
    const int nBytes = WideCharToMultiByte(nCodePage, 0, bstrText, nUnits, NULL, 0, NULL, NULL);
    CString strBytes;
    WideCharToMultiByte(nCodePage, 0, bstrText, nUnits, strBytes.GetBufferSetLength(nBytes), nBytes, NULL, NULL);
    SysFreeString(bstrText);
    fputs(strBytes, pFile);
    fflush(pFile);
}

void Print(LPCTSTR szFormat, ...) {
    CString strText;
    va_list arguments;
    va_start(arguments, szFormat);
    strText.FormatV(szFormat, arguments);
    va_end(arguments);
    Write(stdout, strText);
}

int Report(LPCTSTR szWhat, LPCTSTR szReason) {
    CString strReason(szReason);
    strReason.TrimRight();
    strReason.TrimLeft();  // the system may have had no words of its own
    AddErrorLog(CString(szWhat) + ":" + strReason, 0, 0, NULL);
    strReason.Replace("\r\n", "\n");
    Write(stderr, CString(szWhat) + ":" + strReason + "\n");
    return 1;
}

BOOL ReadLine(FILE* pFile, CString& strLine) {
    strLine.Empty();
    char szPart[256];
    BOOL bRead = FALSE;
    while (fgets(szPart, sizeof(szPart), pFile) != NULL) {
        bRead = TRUE;
        strLine += szPart;
        if (strLine.Right(1) == "\n") break;
    }
    strLine.TrimRight("\r\n");
    return bRead;
}
