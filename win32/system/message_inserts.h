// Texts of messages: escapes, inserts and line widths.
#pragma once

#include <cstdarg>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "windef.h"

namespace tk::system {

/// The values a message is filled with, one machine word each, counted from 0.
class MessageValues {
public:
    /// No values: a message that needs one cannot be made.
    MessageValues() = default;
    explicit MessageValues(const DWORD_PTR* values) : array_(values) {}
    explicit MessageValues(va_list* values) : list_(values) {}

    std::optional<DWORD_PTR> At(std::size_t index);

private:
    const DWORD_PTR* array_ = nullptr;
    va_list* list_ = nullptr;
    std::vector<DWORD_PTR> taken_;  // from the list, which gives each only once
};

struct MessageForm {
    bool keepInserts;   // %1 and so on stay as they are
    bool wideInserts;   // an insert without a type is UTF-16, else GBK
    unsigned maxWidth;  // 0 keeps the line breaks of the text; 255 turns them into blanks; else the width of a line
};

/// @return nothing when a value is missing or a format is wrong
std::optional<std::u16string> ExpandMessage(std::u16string_view text, const MessageForm& form, MessageValues& values);

}  // namespace tk::system
