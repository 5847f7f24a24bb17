// windows.h - the platform's front door: types, results, base services and code pages under their usual names.
//
//   #include <windows.h>
//   DWORD started = GetTickCount();
#pragma once

#include "windef.h"
#include "winerror.h"

#include "tkwin32/crt_text.h"
#include "tkwin32/device_files.h"
#include "tkwin32/message_box.h"
#include "tkwin32/programs.h"
#include "winbase.h"
#include "wingdi.h"
#include "winnls.h"
#include "winreg.h"
#include "winuser.h"
