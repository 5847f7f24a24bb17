// afxcoll.h - the framework's ready-made collections of texts and numbers.
//
//   CStringArray names;
//   names.Add("id");
//   CMapStringToString map;
//   map["Provider"] = "MSDASQL";
//
// An index or position that does not exist raises CInvalidArgException, a failed allocation CMemoryException.
// Threads: one caller at a time per object.
#pragma once

#include "afx_array.h"
#include "afx_map.h"
#include "afx_string_list.h"
