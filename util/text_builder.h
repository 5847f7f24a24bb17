// util/text_builder.h - gathers short pieces on the stack, so that a result is allocated once, when it is complete.
#pragma once

#include <afx.h>

#include <cstring>
#include <string_view>

#include "util/messages.h"

namespace tk::util {

/// Results beyond the room on the stack go to the text piece by piece.
class TextBuilder {
public:
    void Add(char ch) {
        if (used_ == sizeof(room_)) Flush();
        room_[used_++] = ch;
    }
    void Add(Han character) {
        if (sizeof(room_) - used_ < sizeof(character.bytes)) Flush();
        std::memcpy(room_ + used_, character.bytes, sizeof(character.bytes));
        used_ += sizeof(character.bytes);
    }
    void Add(std::string_view piece) {
        if (piece.size() > sizeof(room_) - used_) {
            Flush();
            if (piece.size() > sizeof(room_)) return text_.Append(piece.data(), static_cast<int>(piece.size()));
        }
        piece.copy(room_ + used_, piece.size());
        used_ += piece.size();
    }
    void AddFill(char ch, std::size_t count) {
        for (; count > 0; --count)
            Add(ch);
    }
    void AddTwoDigits(unsigned value) {
        Add(static_cast<char>('0' + value / 10 % 10));
        Add(static_cast<char>('0' + value % 10));
    }
    bool IsEmpty() const { return used_ == 0 && text_.IsEmpty(); }

    /// The text so far; the builder is done.
    CString Take() {
        if (text_.IsEmpty()) return {room_, static_cast<int>(used_)};
        Flush();
        return static_cast<CString&&>(text_);
    }

private:
    void Flush() {
        text_.Append(room_, static_cast<int>(used_));
        used_ = 0;
    }

    char room_[240];
    std::size_t used_ = 0;
    CString text_;
};

}  // namespace tk::util
