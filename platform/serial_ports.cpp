#include <windows.h>

#include <afxwin.h>

#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

constexpr int kLastPort = 25;

/// The messages of one kind of list.
struct ListMessages {
    UINT add;
    UINT remove;
    UINT select;
};
constexpr ListMessages kComboBox = {CB_ADDSTRING, CB_DELETESTRING, CB_SETCURSEL};
constexpr ListMessages kListBox = {LB_ADDSTRING, LB_DELETESTRING, LB_SETCURSEL};
static_assert(kComboBox.add == 0x143 && kComboBox.remove == 0x144 && kComboBox.select == 0x14E);
static_assert(kListBox.add == 0x180 && kListBox.remove == 0x182 && kListBox.select == 0x186);
static_assert(CB_ERR == -1 && LB_ERR == -1);

/// @return null for a control of any other class, and for one without a window, which would answer nothing
const ListMessages* MessagesOf(CWnd* control) {
    if (!IsValidWindow(control)) return nullptr;
    if (control->IsKindOf(RUNTIME_CLASS(CComboBox))) return &kComboBox;
    return control->IsKindOf(RUNTIME_CLASS(CListBox)) ? &kListBox : nullptr;
}

/// Deletes the first item until that is an error. Each answer tells how many are left; one that does not go down comes
/// from a control that deletes nothing.
void RemoveAll(HWND control, UINT message) {
    LRESULT left = SendMessageA(control, message, 0, 0);
    while (left >= 0) {
        const LRESULT before = left;
        left = SendMessageA(control, message, 0, 0);
        if (left >= before) return;
    }
}

bool HasPort(const char* name) {
    HANDLE port = CreateFileA(name, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE) return false;
    CloseHandle(port);
    return true;
}

}  // namespace
}  // namespace tk::platform

unsigned char GetCommCount(CStringArray* pArray, CWnd* pControl) {
    using namespace tk::platform;
    if (pArray != nullptr) pArray->RemoveAll();
    const ListMessages* messages = MessagesOf(pControl);
    HWND list = messages != nullptr ? pControl->GetSafeHwnd() : nullptr;
    if (messages != nullptr) RemoveAll(list, messages->remove);
    unsigned char count = 0;
    for (int number = 1; number <= kLastPort; ++number) {
        CString name;
        name.Format("COM%d", number);
        if (!HasPort(name)) continue;
        ++count;
        if (pArray != nullptr) pArray->Add(name);
        if (messages != nullptr) {
            SendMessageA(list, messages->add, 0, reinterpret_cast<LPARAM>(static_cast<const char*>(name)));
        }
    }
    if (messages != nullptr) SendMessageA(list, messages->select, 0, 0);
    return count;
}
