// Owns one open file.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tk::system {

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() {
        const int before = errno;
        if (descriptor_ >= 0) close(descriptor_);
        errno = before;
    }

    int Get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

private:
    int descriptor_;
};

}  // namespace tk::system
