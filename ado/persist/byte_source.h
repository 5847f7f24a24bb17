// ado/persist/byte_source.h - the bytes of a saved recordset, from a file or from memory, front to back.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "ado/error.h"

namespace tk::ado {

class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Up to `size` bytes; 0 at the end. @throws AdoError ReadingFile
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
    virtual void Rewind() = 0;

    /// All bytes there are: what lengths inside are measured by.
    virtual std::uint64_t Size() const noexcept = 0;

    /// @throws AdoError ReadingFile that names the source
    [[noreturn]] void Fail(std::u16string_view reason) const;

protected:
    /// The file's name; empty for what has none.
    virtual std::string_view Name() const noexcept = 0;
};

/// A regular file; anything else could keep its reader waiting.
class FileSource final : public ByteSource {
public:
    /// @throws AdoError OpeningFile with the system's text
    explicit FileSource(std::string path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    std::size_t Read(char* buffer, std::size_t size) override;
    void Rewind() override;
    std::uint64_t Size() const noexcept override { return size_; }

private:
    std::string_view Name() const noexcept override { return path_; }

    std::string path_;
    int file_ = -1;
    std::uint64_t size_ = 0;
};

class MemorySource final : public ByteSource {
public:
    /// @param bytes  borrowed
    explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = std::min(size, bytes_.size() - at_);
        std::memcpy(buffer, bytes_.data() + at_, count);
        at_ += count;
        return count;
    }
    void Rewind() override { at_ = 0; }
    std::uint64_t Size() const noexcept override { return bytes_.size(); }

private:
    std::string_view Name() const noexcept override { return {}; }

    std::string_view bytes_;
    std::size_t at_ = 0;
};

}  // namespace tk::ado
