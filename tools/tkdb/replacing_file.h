// tools/tkdb/replacing_file.h - a file that takes the place of another one only when it is whole.
//
//   ReplacingFile file("orders.csv");
//   std::fputs("...", file.Open());
//   file.Commit();                  // without it, what was there before stays as it was
//
// The work is done in a folder of its own beside the target, so that the last step is a rename.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>

namespace tk::tools {

class ReplacingFile {
public:
    /// @throws std::system_error when nothing can be written beside the target, or the target is a folder or a device
    explicit ReplacingFile(const std::filesystem::path& target);
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;
    /// Removes whatever was not committed.
    ~ReplacingFile();

    /// The stream to write to, opened at the first call. @throws std::system_error
    std::FILE* Open();
    /// Where to write for somebody who opens the file himself; nothing is there yet.
    const std::filesystem::path& Path() const { return file_; }
    /// Bytes written so far, by whomever.
    std::uintmax_t Size() const noexcept;

    /// Puts the file in its place. @throws std::system_error when it cannot be written to the end
    void Commit();

private:
    std::filesystem::path target_;
    std::filesystem::path folder_;
    std::filesystem::path file_;
    std::FILE* stream_ = nullptr;
};

}  // namespace tk::tools
