#include "tkkernel/platform.h"

CString GetComputerNameA() {
    char name[128] = {};
    DWORD size = sizeof(name);
    return ::GetComputerNameA(name, &size) ? CString(name) : CString();
}

int IsFileExist(const char* szFile) {
    if (szFile == nullptr || *szFile == '\0') return 0;
    // The platform's own test; a folder fails it.
    OFSTRUCT file = {};
    file.cBytes = sizeof(file);
    return OpenFile(szFile, &file, OF_EXIST) != HFILE_ERROR ? 1 : 0;
}
