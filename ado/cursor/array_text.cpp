#include "ado/cursor/array_text.h"

#include "ado/cursor/cell_text.h"
#include "ado/error.h"
#include "ado/messages.h"

namespace tk::ado {
void ArrayText::AppendQuoted(std::string_view text) {
    text_ += '"';
    // In parts: few texts have anything to escape.
    for (std::size_t end; (end = text.find_first_of(std::string_view("\"\\\0", 3))) != std::string_view::npos;) {
        if (text[end] == '\0') throw AdoError(ErrorNumber::DataConversion, kUnsupportedParameter);
        text_.append(text.substr(0, end)).append(1, '\\').append(1, text[end]);
        text.remove_prefix(end + 1);
    }
    text_.append(text).append(1, '"');
}

void ArrayText::AppendBytes(std::string_view bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    // The backslash in front is escaped itself.
    text_ += "\"\\\\x";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text_.append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
    }
    text_ += '"';
}

void ArrayText::Append(const Cell& cell, const Column& target) {
    if (text_.size() > 1) text_ += ',';
    switch (cell.form) {
        case Cell::Form::Null:
            text_ += "NULL";
            break;
        case Cell::Form::Date:
        case Cell::Form::Text:
            AppendQuoted(CellText(cell, target, scratch_));
            break;
        case Cell::Form::Bytes:
            AppendBytes(cell.text);
            break;
        default:
            text_ += CellText(cell, target, scratch_);
    }
}

const std::string& ArrayText::Finish() {
    text_ += '}';
    return text_;
}

}  // namespace tk::ado
