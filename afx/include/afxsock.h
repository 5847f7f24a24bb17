// afxsock.h - starting the network functions.
#pragma once

#include "afx.h"

struct WSAData;

/// Makes the platform's host functions usable in this process; may be called again.
/// @param lpwsaData  receives the platform's record where there is one; may be null
/// @return FALSE when they are not available
AFX_API BOOL AfxSocketInit(WSAData* lpwsaData = NULL);
