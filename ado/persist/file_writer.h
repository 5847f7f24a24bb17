// ado/persist/file_writer.h - a file that appears whole or not at all.
//
//   FileWriter file("/data/goods.xml", FileWriter::Existing::Replace);
//   file.Write("<xml>");
//   file.Finish();
//
// What is written goes to a file beside the target, which takes the target's place, and its permissions, when all of it
// has reached the disk. Until then, and after a failure, the target is what it was. Whoever is killed on the way leaves
// a hidden file "<name>.tk-…" behind and no other trace.
#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ado/error.h"

namespace tk::ado {

class FileWriter {
public:
    enum class Existing { Refuse, Replace };

    /// @param path  UTF-8 or whatever bytes the file system takes; of a symbolic link the file behind it is meant
    /// @throws AdoError WritingFile with the system's text, here and in every member
    FileWriter(std::string path, Existing existing);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    /// A place for up to kRoom bytes to be written into directly; Commit tells where they end.
    static constexpr std::size_t kRoom = 128 * 1024;
    char* Room(std::size_t size) {
        if (kBuffer - used_ < size) Flush();
        return buffer_.get() + used_;
    }
    void Commit(const char* end) noexcept { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    void Write(std::string_view bytes);

    /// What is written from here on goes nowhere, until Restart; for finding out what else is wrong with the rows.
    void Discard() noexcept { isDiscarding_ = true; }

    /// Forgets everything written so far.
    void Restart();

    /// Makes it last and puts it in place.
    void Finish();

    /// @throws AdoError WritingFile that names the file
    [[noreturn]] void Fail(std::u16string_view reason) const;

private:
    static constexpr std::size_t kBuffer = 2 * kRoom;

    [[noreturn]] void FailSystem(int error) const;
    void Create();
    void Flush();
    void WriteOut(const char* data, std::size_t size);
    void SyncFolder() const noexcept;

    std::string shown_;   // as given, for messages
    std::string target_;  // links followed
    std::string temporary_;
    Existing existing_;
    std::optional<mode_t> oldMode_;
    uid_t oldOwner_ = 0;
    gid_t oldGroup_ = 0;
    int file_ = -1;
    bool isDiscarding_ = false;
    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    std::size_t begun_ = 0;  // bytes whose way to the disk has begun
    std::size_t written_ = 0;
};

}  // namespace tk::ado
