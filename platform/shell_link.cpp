#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

#include "tkkernel/platform.h"

namespace {

// Identifiers under names of our own: some declarations of the interfaces come without their values.
constexpr CLSID kLinkClass = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kLinkId = {0x000214EE, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kPersistFileId = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

const char* Given(const char* text) {
    return text != nullptr ? text : "";
}

HRESULT Save(IPersistFile& file, const char* name) {
    WCHAR wide[MAX_PATH] = {};
    if (MultiByteToWideChar(CP_ACP, 0, Given(name), -1, wide, MAX_PATH) == 0) {
        return HRESULT_FROM_WIN32(GetLastError());
    }
    return file.Save(wide, TRUE);
}

}  // namespace

long CreateLink(const char* szTarget, const char* szArguments, const char* szLinkFile, const char* szDirectory,
                const char* szDescription) {
    IShellLinkA* link = nullptr;
    HRESULT result =
        CoCreateInstance(kLinkClass, nullptr, CLSCTX_INPROC_SERVER, kLinkId, reinterpret_cast<void**>(&link));
    if (FAILED(result)) return result;
    link->SetPath(Given(szTarget));
    link->SetDescription(Given(szDescription));
    link->SetWorkingDirectory(Given(szDirectory));
    link->SetArguments(Given(szArguments));
    IPersistFile* file = nullptr;
    result = link->QueryInterface(kPersistFileId, reinterpret_cast<void**>(&file));
    if (SUCCEEDED(result)) {
        result = Save(*file, szLinkFile);
        file->Release();
    }
    link->Release();
    return result;
}
