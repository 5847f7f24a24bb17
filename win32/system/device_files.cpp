#include "tkwin32/device_files.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "win32/kernel/handle_table.h"
#include "win32/system/file_descriptor.h"
#include "win32/system/file_names.h"
#include "win32/system/serial_ports.h"
#include "win32/system/system_call_error.h"
#include "winbase.h"

namespace tk::system {
namespace {

class DeviceFile final : public kernel::Closable {
public:
    explicit DeviceFile(FileDescriptor file) noexcept : file_(std::move(file)) {}

private:
    ~DeviceFile() override = default;

    FileDescriptor file_;
};

int FlagsOf(DWORD access) noexcept {
    // Nothing waits for a line of the port, and the port does not become this process's terminal.
    constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
    if ((access & kBoth) == kBoth) return O_RDWR | kAlways;
    if ((access & GENERIC_WRITE) != 0) return O_WRONLY | kAlways;
    if ((access & GENERIC_READ) != 0) return O_RDONLY | kAlways;
    return O_PATH | O_CLOEXEC;
}

/// @param path  a file or a port's device
/// @return closed, with the reason as the last error
FileDescriptor Open(const std::string& path, DWORD access, bool isPort, bool isShared) {
    if (isPort && !HasPort(path)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FileDescriptor();
    }
    FileDescriptor file(open(path.c_str(), FlagsOf(access)));
    struct stat state {};
    if (!file || fstat(file.Get(), &state) != 0) {
        // A port that somebody keeps for himself.
        SetLastError(isPort && errno == EBUSY ? ERROR_ACCESS_DENIED : ErrorFromErrno(errno));
        return FileDescriptor();
    }
    if (S_ISDIR(state.st_mode)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FileDescriptor();
    }
    if (isPort && !isShared && (access & (GENERIC_READ | GENERIC_WRITE)) != 0) ioctl(file.Get(), TIOCEXCL);
    return file;
}

}  // namespace
}  // namespace tk::system

HANDLE CreateFileA(LPCSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES lpAttributes,
                   DWORD dwCreationDisposition, DWORD, HANDLE) {
    using namespace tk::system;
    if (lpFileName == nullptr || dwCreationDisposition != OPEN_EXISTING) {
        SetLastError(lpFileName == nullptr ? ERROR_INVALID_PARAMETER : ERROR_NOT_SUPPORTED);
        return INVALID_HANDLE_VALUE;
    }
    const std::string name = ToFileSystem(lpFileName);
    const auto port = PortDevice(name);
    FileDescriptor file = Open(port.value_or(name), dwDesiredAccess, port.has_value(), dwShareMode != 0);
    if (!file) return INVALID_HANDLE_VALUE;
    const bool inherit = lpAttributes != nullptr && lpAttributes->bInheritHandle;
    const HANDLE handle = tk::kernel::OpenHandle(new DeviceFile(std::move(file)), dwDesiredAccess, inherit);
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}
