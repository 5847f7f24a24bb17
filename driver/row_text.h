// row_text.h - names and texts on the short cut to the current record, without a BSTR on the way.
//
// Each function either does what the late-bound calls would have done, or nothing.
#pragma once

#include "tkkernel/driver.h"
#include "tkkernel/row_access.h"

namespace tk::driver {

/// The number of the field of that name. @return false: not known here
bool FindField(IRowAccess& rows, const char* name, LONG* index);

/// The text of a text field, or "" for a NULL in it, in GBK. @return false: not a text field, or not known here
bool ReadText(IRowAccess& rows, LONG index, CString* text);

/// The SQL literal of a text field, or "" for a NULL in it, in GBK. @return false: not a text field, or not known here
bool ReadLiteral(IRowAccess& rows, LONG index, CString* text);

}  // namespace tk::driver
