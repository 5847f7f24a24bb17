#include <errno.h>
#include <pthread.h>
#include <pwd.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "tkwin32/text.h"
#include "winbase.h"

namespace tk::system {
namespace {

std::string UserName() {
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE && buffer.size() < 1 << 20) {
        buffer.resize(buffer.size() * 2);
    }
    return found != nullptr ? text::Utf8ToGbk(found->pw_name) : std::to_string(geteuid());
}

/// The machine's own part of its name: everything before the domain.
std::string ComputerName() {
    utsname names{};
    uname(&names);
    const std::string full = names.nodename;
    return text::Utf8ToGbk(full.substr(0, full.find('.')));
}

}  // namespace
}  // namespace tk::system

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

DWORD GetCurrentThreadId() {
    // One system call for each thread. The only thread of a forked child is a new one, so its copy is forgotten.
    static constinit thread_local DWORD id = 0;
    [[maybe_unused]] static const int watching = pthread_atfork(nullptr, nullptr, [] { id = 0; });
    if (id == 0) id = static_cast<DWORD>(syscall(SYS_gettid));
    return id;
}

// 10.0, build 19045.
DWORD GetVersion() {
    return (19045u << 16) | 10u;
}

BOOL GetComputerNameA(LPSTR lpBuffer, LPDWORD nSize) {
    const std::string name = tk::system::ComputerName();
    if (lpBuffer == nullptr || *nSize <= name.size()) {
        *nSize = static_cast<DWORD>(name.size() + 1);
        SetLastError(ERROR_BUFFER_OVERFLOW);
        return FALSE;
    }
    std::memcpy(lpBuffer, name.c_str(), name.size() + 1);
    *nSize = static_cast<DWORD>(name.size());
    return TRUE;
}

BOOL GetUserNameA(LPSTR lpBuffer, LPDWORD pcbBuffer) {
    const std::string name = tk::system::UserName();
    const auto needed = static_cast<DWORD>(name.size() + 1);
    if (lpBuffer == nullptr || *pcbBuffer < needed) {
        *pcbBuffer = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(lpBuffer, name.c_str(), needed);
    *pcbBuffer = needed;
    return TRUE;
}

int MulDiv(int nNumber, int nNumerator, int nDenominator) {
    if (nDenominator == 0) return -1;
    const std::int64_t product = static_cast<std::int64_t>(nNumber) * nNumerator;
    const std::int64_t divisor = nDenominator;
    const bool negative = (product < 0) != (divisor < 0);
    const std::uint64_t magnitude = product < 0 ? 0 - static_cast<std::uint64_t>(product) : product;
    const std::uint64_t by = divisor < 0 ? 0 - static_cast<std::uint64_t>(divisor) : divisor;
    const std::uint64_t quotient = (magnitude + by / 2) / by;
    if (quotient > (negative ? 0x80000000u : 0x7FFFFFFFu)) return -1;
    return static_cast<int>(negative ? -static_cast<std::int64_t>(quotient) : static_cast<std::int64_t>(quotient));
}
