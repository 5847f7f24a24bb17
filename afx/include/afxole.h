// afxole.h - automation in the framework: start-up and failures.
#pragma once

#include "afx.h"
#include "afx_ole_exception.h"

/// Starts COM on the calling thread for a process with a user interface.
/// @return FALSE when it could not be started
AFX_API BOOL AfxOleInit();
/// Ends what AfxOleInit started on this thread; nothing to end is no error.
AFX_API void AfxOleTerm(BOOL bJustRevoke = FALSE);
