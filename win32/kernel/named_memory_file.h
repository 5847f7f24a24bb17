// The file behind the named objects: opened, made, found dead, removed; and which processes live.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "win32/system/file_descriptor.h"

namespace tk::kernel {

/// The file of this user: in the folder that TKKERNEL_OBJECTS names, else in /dev/shm.
std::string MemoryFilePath();

enum class Opened { kDone, kRetry, kFailed };

/// Opens the file, made and filled by `prepare` when it is new. Nobody else prepares it at the same time.
/// @param prepare  called with the descriptor; returns false with errno
/// @return kRetry when the file was removed meanwhile, kFailed with errno
Opened OpenMemoryFile(const std::string& path, bool (*prepare)(int descriptor), system::FileDescriptor& file);

/// Removes the file unless the path is another one's by now.
void RemoveMemoryFile(const std::string& path, int descriptor) noexcept;

/// A process lives as long as it has the lock on its byte far behind the end of the file, which the system takes from
/// it when it ends, however it ends. Children of fork do not have it.
bool ClaimLife(int descriptor, std::uint32_t process) noexcept;
bool Lives(int descriptor, std::uint32_t process) noexcept;

}  // namespace tk::kernel
