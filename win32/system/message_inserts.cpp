#include "win32/system/message_inserts.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "tkwin32/text.h"

namespace tk::system {
namespace {

constexpr std::size_t kMaxFieldWidth = 0xFFFF;

bool IsDigit(char16_t character) noexcept {
    return character >= u'0' && character <= u'9';
}

/// What stands between the exclamation marks of an insert: flags, width, precision, size and type.
struct InsertFormat {
    std::string flags;
    std::optional<std::size_t> width;
    std::optional<std::size_t> precision;
    std::string size;
    char type = 's';
};

class Expansion {
public:
    Expansion(std::u16string_view text, const MessageForm& form, MessageValues& values)
        : rest_(text), form_(form), values_(values) {}

    std::optional<std::u16string> Run() {
        while (!rest_.empty() && !ended_) {
            const char16_t character = Take();
            const bool fine = character == u'%' ? Escape() : Plain(character);
            if (!fine) return std::nullopt;
        }
        return std::move(result_);
    }

private:
    char16_t Take() noexcept {
        const char16_t character = rest_.front();
        rest_.remove_prefix(1);
        return character;
    }

    bool TakeIf(char16_t wanted) noexcept {
        if (!rest_.starts_with(wanted)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    void Add(char16_t character) {
        result_ += character;
        if (result_.size() - lineStart_ > form_.maxWidth && form_.maxWidth != 0 && form_.maxWidth != 0xFF) Wrap();
    }

    /// Breaks the line that became too long at its last blank; a word longer than the line stays whole.
    void Wrap() {
        const auto blank = result_.rfind(u' ');
        if (blank == std::u16string::npos || blank < lineStart_) return;
        result_.replace(blank, 1, u"\r\n");
        lineStart_ = blank + 2;
    }

    void BreakLine() {
        result_ += u"\r\n";
        lineStart_ = result_.size();
    }

    bool Plain(char16_t character) {
        if (character != u'\r' && character != u'\n') {
            Add(character);
            return true;
        }
        if (character == u'\r') TakeIf(u'\n');
        if (form_.maxWidth != 0) {
            Add(u' ');
        } else {
            BreakLine();
        }
        return true;
    }

    bool Escape() {
        if (rest_.empty()) return false;
        const std::u16string_view from = rest_;
        const char16_t kind = Take();
        switch (kind) {
            case u'0':
                ended_ = true;
                return true;
            case u'n':
                BreakLine();
                return true;
            case u'r':
                result_ += u'\r';
                return true;
            case u't':
                Add(u'\t');
                return true;
            case u'b':
                Add(u' ');
                return true;
            default:
                break;
        }
        if (!IsDigit(kind)) {
            Add(kind);
            return true;
        }
        std::size_t number = static_cast<std::size_t>(kind - u'0');
        if (!rest_.empty() && IsDigit(rest_.front())) number = number * 10 + static_cast<std::size_t>(Take() - u'0');
        if (!form_.keepInserts) return Insert(number - 1);
        Add(u'%');
        for (const char16_t digit : from.substr(0, from.size() - rest_.size()))
            Add(digit);
        return true;
    }

    bool Insert(std::size_t index) {
        InsertFormat format;
        if (TakeIf(u'!') && !ReadFormat(index, format)) return false;
        const auto value = values_.At(index);
        if (!value) return false;
        const auto text = Print(format, *value);
        if (!text) return false;
        for (const char16_t character : *text)
            Add(character);
        return true;
    }

    /// A '*' takes its number from the values in front of the one that is shown.
    bool ReadFormat(std::size_t& index, InsertFormat& format) {
        while (!rest_.empty() && std::u16string_view(u"-+ #0").find(rest_.front()) != std::u16string_view::npos) {
            format.flags += static_cast<char>(Take());
        }
        if (!ReadNumber(index, format.width)) return false;
        if (TakeIf(u'.')) {
            format.precision = 0;
            if (!ReadNumber(index, format.precision)) return false;
        }
        while (!rest_.empty() && std::u16string_view(u"hlwI643").find(rest_.front()) != std::u16string_view::npos) {
            format.size += static_cast<char>(Take());
        }
        if (TakeIf(u'2') && format.size == "I3") format.size = "I32";
        if (rest_.empty() || rest_.front() > u'z') return false;
        format.type = static_cast<char>(Take());
        return TakeIf(u'!');
    }

    bool ReadNumber(std::size_t& index, std::optional<std::size_t>& number) {
        if (TakeIf(u'*')) {
            const auto value = values_.At(index++);
            if (!value) return false;
            number = static_cast<DWORD>(*value);
        }
        while (!rest_.empty() && IsDigit(rest_.front())) {
            number = number.value_or(0) * 10 + static_cast<std::size_t>(Take() - u'0');
            if (*number > kMaxFieldWidth) return false;
        }
        return number.value_or(0) <= kMaxFieldWidth;
    }

    std::optional<std::u16string> Print(const InsertFormat& format, DWORD_PTR value) const {
        const bool upper = format.type == 'S' || format.type == 'C';
        bool wide = form_.wideInserts != upper;  // the capital letter means the other width
        if (format.size == "h") wide = false;
        if (format.size == "l" || format.size == "w") wide = true;
        switch (format.type) {
            case 's':
            case 'S':
                return Padded(format, TextOf(value, wide, format.precision));
            case 'c':
            case 'C':
                return Padded(format, CharacterOf(value, wide));
            case 'd':
            case 'i':
            case 'u':
            case 'x':
            case 'X':
            case 'o':
            case 'p':
                return Number(format, value);
            default:
                return std::nullopt;
        }
    }

    /// No more of the text is looked at than the precision allows: it need not be terminated behind that.
    static std::u16string TextOf(DWORD_PTR value, bool wide, std::optional<std::size_t> precision) {
        if (value == 0) return std::u16string(u"(null)").substr(0, precision.value_or(6));
        std::size_t length = 0;
        if (wide) {
            const auto* text = reinterpret_cast<const char16_t*>(value);
            while (length < precision.value_or(SIZE_MAX) && text[length] != 0)
                ++length;
            return std::u16string(text, length);
        }
        const auto* text = reinterpret_cast<const char*>(value);
        const std::size_t limit = precision.value_or(SIZE_MAX);
        while (length < limit && text[length] != 0) {
            const bool isLead = text::IsGbkLead(text[length]);
            if (isLead && length + 1 == limit) break;
            length += isLead && text[length + 1] != 0 ? 2 : 1;
        }
        return text::GbkToUtf16({text, length});
    }

    static std::u16string CharacterOf(DWORD_PTR value, bool wide) {
        if (wide) return {static_cast<char16_t>(value)};
        const char narrow = static_cast<char>(value);
        return text::GbkToUtf16({&narrow, 1});
    }

    static std::u16string Padded(const InsertFormat& format, std::u16string text) {
        const std::size_t width = format.width.value_or(0);
        if (text.size() >= width) return text;
        const bool left = format.flags.find('-') != std::string::npos;
        text.insert(left ? text.size() : 0, width - text.size(), u' ');
        return text;
    }

    static std::optional<std::u16string> Number(const InsertFormat& format, DWORD_PTR value) {
        const bool whole = format.size == "I64" || format.size == "ll" || format.size == "I" || format.type == 'p';
        std::string print = "%" + format.flags;
        if (format.width) print += std::to_string(*format.width);
        if (format.precision) print += "." + std::to_string(*format.precision);
        unsigned long long number = whole ? value : static_cast<DWORD>(value);
        char type = format.type;
        if (type == 'd' || type == 'i') {
            number = static_cast<unsigned long long>(whole ? static_cast<long long>(value) : static_cast<LONG>(value));
        }
        if (type == 'p') {
            print = "%016";
            type = 'X';
        }
        print += "ll";
        print += type;
        const int length = std::snprintf(nullptr, 0, print.c_str(), number);
        if (length < 0) return std::nullopt;
        std::string digits(static_cast<std::size_t>(length) + 1, '\0');
        std::snprintf(digits.data(), digits.size(), print.c_str(), number);
        return std::u16string(digits.begin(), digits.end() - 1);
    }

    std::u16string_view rest_;
    const MessageForm& form_;
    MessageValues& values_;
    std::u16string result_;
    std::size_t lineStart_ = 0;
    bool ended_ = false;
};

}  // namespace

std::optional<DWORD_PTR> MessageValues::At(std::size_t index) {
    if (array_ != nullptr) return array_[index];
    if (list_ == nullptr) return std::nullopt;
    while (taken_.size() <= index)
        taken_.push_back(va_arg(*list_, DWORD_PTR));
    return taken_[index];
}

std::optional<std::u16string> ExpandMessage(std::u16string_view text, const MessageForm& form, MessageValues& values) {
    return Expansion(text, form, values).Run();
}

}  // namespace tk::system
