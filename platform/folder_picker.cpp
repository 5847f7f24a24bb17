#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

#include <afxwin.h>

#include "platform/messages.h"
#include "tkkernel/platform.h"

CString GetSystemPath(CWnd* pParent) {
    char name[MAX_PATH] = {};
    BROWSEINFOA question = {};
    question.hwndOwner = IsValidWindow(pParent) ? pParent->GetSafeHwnd() : nullptr;
    question.pszDisplayName = name;
    question.lpszTitle = tk::platform::kFolderPrompt;
    question.ulFlags = BIF_RETURNONLYFSDIRS;
    LPITEMIDLIST folder = SHBrowseForFolderA(&question);
    if (folder == nullptr) return CString();
    char path[MAX_PATH] = {};
    const bool known = SHGetPathFromIDListA(folder, path);
    CoTaskMemFree(folder);
    return known ? CString(path) : CString();
}
