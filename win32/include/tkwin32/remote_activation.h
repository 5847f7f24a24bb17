// tkwin32/remote_activation.h - objects of other machines, as far as a program brings them itself.
//
//   HRESULT Activate(REFCLSID clsid, DWORD context, const COSERVERINFO* server, DWORD count, MULTI_QI* results);
//   SetRemoteActivator(&Activate);
//
// No automation travels between machines here. A program that has a way to reach its servers sets a function that
// CoCreateInstanceEx asks for a machine that is not this one; it gets what the caller gave, as it
// was given: the server's name, the authentication settings and the credentials.
// Threads: set from any thread; the function is called on the thread that creates.
#pragma once

#include "objbase.h"

/// Fills pItf and hr of each result, and answers as CoCreateInstanceEx does. The records are borrowed for the call.
using RemoteActivator = HRESULT (*)(REFCLSID clsid, DWORD context, const COSERVERINFO* server, DWORD count,
                                    MULTI_QI* results);

/// @param activator  null: other machines cannot be reached, 0x800706BA
/// @return the one before
EXTERN_C TKWIN32_API RemoteActivator SetRemoteActivator(RemoteActivator activator);
