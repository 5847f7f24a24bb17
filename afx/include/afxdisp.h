// afxdisp.h - late-bound calls and the automation value classes.
//
//   #include <afxdisp.h>
//   COleVariant key("name");
#pragma once

#include "afx_currency.h"
#include "afx_datetime.h"
#include "afx_dispatch.h"
#include "afx_ole_exception.h"
#include "afx_safearray.h"
#include "afx_variant.h"
#include "afxole.h"
