// A DLL finds its imports through a table of addresses: replacing entries of the library's table puts us in front.
#include <cstring>

#include "util/platform_calls.h"

namespace tk::test {
namespace {

template <class T>
T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}

/// The entry of an imported function in the table; null when the module does not import it by name.
ULONG_PTR* FindImport(HMODULE module, const char* name) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (const auto* from = At<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress); from->Name != 0; ++from) {
        const auto* names = At<IMAGE_THUNK_DATA>(module, from->OriginalFirstThunk);
        auto* addresses = At<IMAGE_THUNK_DATA>(module, from->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* import = At<IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(names->u1.AddressOfData));
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0) return &addresses->u1.Function;
        }
    }
    return nullptr;
}

template <class Function>
bool Replace(const char* name, Function* replacement) {
    ULONG_PTR* entry = FindImport(GetModuleHandleA("TKKernel32.dll"), name);
    DWORD before = 0;
    if (entry == nullptr || !VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &before)) return false;
    *entry = reinterpret_cast<ULONG_PTR>(replacement);
    return VirtualProtect(entry, sizeof(*entry), before, &before) != 0;
}

}  // namespace

bool StandInFront() {
    return Replace("Beep", &FrontBeep) && Replace("Sleep", &FrontSleep) &&
           Replace("RegisterEventSourceA", &FrontRegisterEventSource) && Replace("ReportEventA", &FrontReportEvent) &&
           Replace("DeregisterEventSource", &FrontDeregisterEventSource) &&
           Replace("GetModuleFileNameA", &FrontGetModuleFileName) && Replace("GetTickCount", &FrontGetTickCount);
}

const OwnFunctions& Own() {
    static const OwnFunctions own = {&::Beep,
                                     &::Sleep,
                                     &::RegisterEventSourceA,
                                     &::ReportEventA,
                                     &::DeregisterEventSource,
                                     &::GetModuleFileNameA,
                                     &::GetTickCount};
    return own;
}

const SamplePath kSamplePath = {
    "C:\\Data\\库存\\bin\\stock.v2.exe", "C:", "\\Data\\库存\\bin\\", "stock.v2", ".exe", "C:\\Data\\库存\\bin\\"};
const SamplePath kSamplePathWithoutExtension = {"C:\\stock", "C:", "\\", "stock", "", "C:\\"};

std::string LongFolder() {
    return "C:\\" + std::string(120, 'a') + "\\" + std::string(120, 'a') + "\\";
}

}  // namespace tk::test
