// The ODBC data sources of the user and of the system, and the program that keeps them.
#include "platform/registry_key.h"
#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

constexpr char kDataSources[] = "Software\\ODBC\\ODBC.INI\\ODBC Data Sources";
constexpr UINT kFirstSuccess = 32;
constexpr DWORD kLongestName = 256;

bool Has(const CStringArray& names, const CString& name) {
    for (int i = 0; i < names.GetSize(); ++i) {
        if (names[i].CompareNoCase(name) == 0) return true;
    }
    return false;
}

void AddSources(HKEY root, CStringArray& names) {
    const RegistryKey sources(root, kDataSources);
    if (sources.Get() == nullptr) return;
    for (DWORD i = 0;; ++i) {
        char name[kLongestName] = {};
        DWORD length = kLongestName;
        const LSTATUS result = RegEnumValueA(sources.Get(), i, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (result == static_cast<LSTATUS>(ERROR_MORE_DATA)) continue;  // no data source has such a name
        if (result != ERROR_SUCCESS) return;
        const CString source(name);
        if (!source.IsEmpty() && !Has(names, source)) names.Add(source);
    }
}

}  // namespace
}  // namespace tk::platform

int GetAllDataSource(CStringArray& names) {
    names.RemoveAll();
    // The user's come first and hide the system's of the same name.
    tk::platform::AddSources(HKEY_CURRENT_USER, names);
    tk::platform::AddSources(HKEY_LOCAL_MACHINE, names);
    return names.GetSize();
}

int GetSystemODBC() {
    char folder[128] = {};
    GetWindowsDirectoryA(folder, sizeof(folder));
    CString command;
    command.Format("%s\\system32\\odbcad32.exe", folder);
    return WinExec(command, SW_SHOW) >= tk::platform::kFirstSuccess ? 1 : 0;
}
