// afx/text_codes.h - GBK to BSTR and back, without a block of its own for the short texts that calls are made of.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace tk::afx {

/// What the interface's 8-bit texts are written in, whatever the system's own page is.
inline constexpr UINT kTextCodePage = 936;

/// Converts wide units to GBK without a terminator.
/// @param room  bytes of the buffer; with two for each unit everything fits, and the thread's last error stays as it is
/// @return the bytes written; 0 with ERROR_INSUFFICIENT_BUFFER as the last error when they do not fit
int NarrowText(LPCWSTR text, int length, char* buffer, int room) noexcept;

/// A new BSTR of a GBK text; null when the text is. CMemoryException when there is no memory.
BSTR NewBstr(LPCSTR text);
BSTR NewBstr(LPCSTR text, int length);

}  // namespace tk::afx
