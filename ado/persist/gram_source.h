// ado/persist/gram_source.h - the bytes of a table-gram, taken a few at a time; what is not there is an error.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "ado/persist/byte_source.h"
#include "ado/persist/messages.h"

namespace tk::ado::gram {

class GramSource {
public:
    explicit GramSource(ByteSource& source)
        : source_(source), buffer_(std::make_unique_for_overwrite<char[]>(kBuffer)), unread_(source.Size()) {
        at_ = end_ = buffer_.get();
    }

    static constexpr std::size_t kMostAtOnce = 64 * 1024;

    /// The next bytes, at most kMostAtOnce; valid until the next call. @throws AdoError ReadingFile at the file's end
    const char* Take(std::size_t size) {
        if (static_cast<std::size_t>(end_ - at_) < size) [[unlikely]]
            Fill(size);
        const char* const taken = at_;
        at_ += size;
        return taken;
    }

    /// Any number of bytes; a length that the file cannot hold asks for no memory.
    void Take(std::size_t size, std::string& bytes) {
        if (size > Left()) Fail(kTextTruncated);
        bytes.resize(size);
        for (std::size_t done = 0; done < size;) {
            const std::size_t piece = std::min(size - done, kMostAtOnce);
            std::memcpy(bytes.data() + done, Take(piece), piece);
            done += piece;
        }
    }

    template <class Number>
    Number Get() {
        Number number;
        std::memcpy(&number, Take(sizeof number), sizeof number);
        return number;
    }

    std::uint64_t Left() const noexcept { return unread_ + static_cast<std::uint64_t>(end_ - at_); }
    bool AtEnd() {
        if (at_ == end_) FillSome();
        return at_ == end_;
    }

    [[noreturn]] void Fail(std::u16string_view reason) const { source_.Fail(reason); }

private:
    static constexpr std::size_t kBuffer = 256 * 1024;

    void FillSome() {
        const std::size_t kept = static_cast<std::size_t>(end_ - at_);
        std::memmove(buffer_.get(), at_, kept);
        const std::size_t count = source_.Read(buffer_.get() + kept, kBuffer - kept);
        at_ = buffer_.get();
        end_ = at_ + kept + count;
        unread_ -= std::min<std::uint64_t>(unread_, count);
    }
    void Fill(std::size_t size) {
        while (static_cast<std::size_t>(end_ - at_) < size) {
            const auto before = end_ - at_;
            FillSome();
            if (end_ - at_ == before) Fail(kTextTruncated);
        }
    }

    ByteSource& source_;
    std::unique_ptr<char[]> buffer_;
    const char* at_;
    const char* end_;
    std::uint64_t unread_;  // by the size that the file had when it was opened
};

}  // namespace tk::ado::gram
