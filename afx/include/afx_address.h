// afx_address.h - whether memory may be touched. No fault and no signal is raised by asking.
//
// The answer holds at the moment of the question: another thread may unmap the memory right after it.
// Threads: any.
#pragma once

#include <windows.h>

#include "afx_export.h"

/// Whether all of the bytes can be read, and written too unless told otherwise. False for null.
AFX_API BOOL AfxIsValidAddress(const void* lp, UINT nBytes, BOOL bReadWrite = TRUE);

/// Whether a text can be read up to its NUL or for the given number of bytes, whichever ends first. False for null.
/// @param nLength  -1: up to the NUL, however far
AFX_API BOOL AfxIsValidString(LPCSTR lpsz, int nLength = -1);
AFX_API BOOL AfxIsValidString(LPCWSTR lpsz, int nLength = -1);
