// afx.h - the framework's ground floor: objects, texts, collections, exceptions, address checks.
//
//   #include <afx.h>
//   CString name("stock");
#pragma once

#include <windows.h>

#include "afx_address.h"
#include "afx_exception.h"
#include "afx_export.h"
#include "afx_object.h"
#include "afx_position.h"
#include "afxcoll.h"
#include "afxstr.h"
