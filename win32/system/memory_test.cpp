#include "tkwin32/memory_test.h"

#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <utility>

#include "winbase.h"

namespace tk::system {
namespace {

std::uintptr_t PageSize() noexcept {
    static const auto size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    return size;
}

/// Asks the kernel to copy eight bytes of the page for an operation that does not exist: it copies first, so a page
/// that cannot be read answers EFAULT, and any other EINVAL. Nothing is changed either way.
bool IsPageReadable(std::uintptr_t address) noexcept {
    constexpr int kNoSuchOperation = -1;
    constexpr std::uintptr_t kSignalSetSize = 8;
    const int before = errno;
    // A null set would be no set at all, and no read: the first page is asked about behind it.
    const std::uintptr_t aligned = address & ~(kSignalSetSize - 1);
    const std::uintptr_t inPage = aligned != 0 ? aligned : kSignalSetSize;
    const long result = syscall(SYS_rt_sigprocmask, kNoSuchOperation, inPage, nullptr, kSignalSetSize);
    const bool readable = result == 0 || errno != EFAULT;
    errno = before;
    return readable;
}

/// Whether the text can be read up to its end or the limit; each page is asked about once.
/// Sanitizers would object to reading on behind a block, which is exactly what is asked.
template <class Char>
__attribute__((no_sanitize("address", "thread", "undefined"))) bool IsTextReadable(const Char* text,
                                                                                   std::size_t limit) noexcept {
    std::uintptr_t readableEnd = 0;
    for (std::size_t i = 0; i < limit; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(text + i);
        if (address + sizeof(Char) > readableEnd) {
            if (!IsReadable(text + i, sizeof(Char))) return false;
            readableEnd = (address + sizeof(Char) - 1) / PageSize() * PageSize() + PageSize();
        }
        if (static_cast<const volatile Char*>(text)[i] == 0) return true;
    }
    return true;
}

/// Whether the map of the process has the range in writable pieces without a gap.
bool IsWritable(std::uintptr_t first, std::uintptr_t last) {
    std::FILE* map = std::fopen("/proc/self/maps", "re");
    if (map == nullptr) return false;
    char line[512];
    std::uintptr_t next = first;
    bool writable = false;
    bool lineStart = true;
    while (!writable && std::fgets(line, sizeof line, map) != nullptr) {
        const bool starts = std::exchange(lineStart, std::strchr(line, '\n') != nullptr);
        std::uintptr_t from = 0;
        std::uintptr_t to = 0;
        char rights[5] = {};
        if (!starts || std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s", &from, &to, rights) != 3) continue;
        if (to <= next) continue;
        if (from > next || rights[1] != 'w') break;
        next = to;
        writable = last < to;
    }
    std::fclose(map);
    return writable;
}

}  // namespace

bool IsReadable(const void* address, std::size_t size) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(address);
    if (first == 0) return false;
    if (size == 0) return true;
    const std::uintptr_t last = first + (size - 1);
    if (last < first) return false;
    for (std::uintptr_t page = first;; page = page / PageSize() * PageSize() + PageSize()) {
        if (!IsPageReadable(page)) return false;
        if (last - page < PageSize() - page % PageSize()) return true;
    }
}

}  // namespace tk::system

using namespace tk::system;

BOOL IsBadReadPtr(const void* lp, UINT_PTR ucb) {
    return ucb != 0 && !IsReadable(lp, ucb);
}

BOOL IsBadWritePtr(LPVOID lp, UINT_PTR ucb) {
    if (ucb == 0) return FALSE;
    const auto first = reinterpret_cast<std::uintptr_t>(lp);
    const std::uintptr_t last = first + (ucb - 1);
    return last < first || !IsWritable(first, last);
}

BOOL IsBadStringPtrA(LPCSTR lpsz, UINT_PTR ucchMax) {
    return ucchMax != 0 && !IsTextReadable(lpsz, ucchMax);
}
BOOL IsBadStringPtrW(LPCWSTR lpsz, UINT_PTR ucchMax) {
    return ucchMax != 0 && !IsTextReadable(lpsz, ucchMax);
}
