// afxtempl.h - the framework's collection templates.
#pragma once

#include "afx_array.h"
