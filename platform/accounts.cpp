#include <windows.h>

#include <lm.h>

#include "tkkernel/platform.h"

namespace {

constexpr DWORD kUserLevel = 1;
constexpr DWORD kUsersAtOnce = 100;

}  // namespace

int GetAllAccounts(CStringArray& names) {
    names.RemoveAll();
    NET_API_STATUS status = ERROR_MORE_DATA;
    for (DWORD index = 0; status == ERROR_MORE_DATA;) {
        DWORD count = 0;
        void* buffer = nullptr;
        status =
            NetQueryDisplayInformation(nullptr, kUserLevel, index, kUsersAtOnce, MAX_PREFERRED_LENGTH, &count, &buffer);
        const auto* users = static_cast<const NET_DISPLAY_USER*>(buffer);
        // More to come, but not from here: asking for the same page again would never end.
        if (users == nullptr || count == 0) {
            NetApiBufferFree(buffer);
            break;
        }
        if (status == NERR_Success || status == ERROR_MORE_DATA) {
            for (DWORD i = 0; i < count; ++i)
                names.Add(CString(users[i].usri1_name));
            const DWORD next = users[count - 1].usri1_next_index;
            if (next == index) status = NERR_Success;  // the same page for ever
            index = next;
        }
        NetApiBufferFree(buffer);
    }
    return 1;  // Contract: also when the accounts cannot be had
}

CString GetCurrentUser() {
    char name[256] = {};
    DWORD size = sizeof(name);
    return GetUserNameA(name, &size) ? CString(name) : CString();
}
