// quoted_list.h - names with commas between them, each in double quotes.
#pragma once

#include <afx.h>

namespace tk::catalog {

/// "\"A\",\"B\"" from "A,B". A comma inside a name is taken for the end of one.
inline CString QuotedList(CString names) {
    names.Replace(",", "\",\"");
    return "\"" + names + "\"";
}

}  // namespace tk::catalog
