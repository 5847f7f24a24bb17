#include "afx_array.h"

IMPLEMENT_DYNAMIC(CStringArray, CObject)
IMPLEMENT_DYNAMIC(CDWordArray, CObject)
IMPLEMENT_DYNAMIC(CByteArray, CObject)
