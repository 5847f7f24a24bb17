// afx/string_format.h - the printf behind CString::Format: no locale, no length limit, wide texts through code page
// 936.
#pragma once

#include <cstdarg>

#include "afxstr.h"

namespace tk::afx {

/// Appends the formatted text. Neither the format nor an argument lies in the target.
/// What is no conversion is copied as it stands and takes no argument.
void AppendFormatted(CString& target, LPCSTR format, va_list arguments);

}  // namespace tk::afx
