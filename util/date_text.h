// util/date_text.h - dates as "YYYY-MM-DD hh:mm:ss", digit by digit.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afx.h>

namespace tk::util {

CString DateText(DATE date);

}  // namespace tk::util
