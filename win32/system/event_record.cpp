#include <charconv>

#include "tkwin32/event_log.h"
#include "win32/system/base64.h"
#include "winbase.h"

namespace tk::system {
namespace {

constexpr struct {
    WORD type;
    std::string_view name;
} kTypeNames[] = {
    {EVENTLOG_SUCCESS, "success"},
    {EVENTLOG_ERROR_TYPE, "error"},
    {EVENTLOG_WARNING_TYPE, "warning"},
    {EVENTLOG_INFORMATION_TYPE, "information"},
    {EVENTLOG_AUDIT_SUCCESS, "audit-success"},
    {EVENTLOG_AUDIT_FAILURE, "audit-failure"},
};

/// A type without a name is written as its number.
std::string TypeName(WORD type) {
    for (const auto& row : kTypeNames) {
        if (row.type == type) return std::string(row.name);
    }
    return std::to_string(type);
}

template <class Number>
bool ParseNumber(std::string_view text, Number& number) {
    const auto end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

bool ParseType(std::string_view name, WORD& type) {
    for (const auto& row : kTypeNames) {
        if (row.name == name) {
            type = row.type;
            return true;
        }
    }
    return ParseNumber(name, type);
}

void AddQuoted(std::string& line, std::string_view text) {
    constexpr char kHex[] = "0123456789abcdef";
    line += '"';
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        switch (character) {
            case '"':
            case '\\':
                line += {'\\', character};
                break;
            case '\n':
                line += "\\n";
                break;
            case '\r':
                line += "\\r";
                break;
            case '\t':
                line += "\\t";
                break;
            default:
                if (byte < 0x20 || byte == 0x7F) {
                    line += {'\\', 'u', '0', '0', kHex[byte >> 4], kHex[byte & 15]};
                } else {
                    line += character;
                }
        }
    }
    line += '"';
}

/// Reads the lines that FormatEventRecord writes, with any order of members and blanks between the parts.
class LineReader {
public:
    explicit LineReader(std::string_view line) : rest_(line) {}

    std::optional<EventRecord> Read() {
        EventRecord record;
        if (!Take('{')) return std::nullopt;
        bool first = true;
        while (!Take('}')) {
            if (!first && !Take(',')) return std::nullopt;
            first = false;
            const auto name = Text();
            if (!name || !Take(':') || !Member(*name, record)) return std::nullopt;
        }
        SkipBlanks();
        if (!rest_.empty() || record.time.empty()) return std::nullopt;
        return record;
    }

private:
    bool Member(const std::string& name, EventRecord& record) {
        if (name == "time") return TextInto(record.time);
        if (name == "source") return TextInto(record.source);
        if (name == "category") return NumberInto(record.category);
        if (name == "id") return NumberInto(record.id);
        if (name == "pid") return NumberInto(record.process);
        if (name == "strings") return TextsInto(record.strings);
        std::string text;
        if (!TextInto(text)) return false;
        if (name == "type") return ParseType(text, record.type);
        if (name != "data") return true;  // a text of a later version
        auto data = FromBase64(text);
        if (!data) return false;
        record.data = *std::move(data);
        return true;
    }

    void SkipBlanks() noexcept { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r"), rest_.size())); }

    bool Take(char wanted) noexcept {
        SkipBlanks();
        if (!rest_.starts_with(wanted)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    template <class Number>
    bool NumberInto(Number& number) noexcept {
        SkipBlanks();
        const auto digits = rest_.substr(0, rest_.find_first_not_of("0123456789"));
        rest_.remove_prefix(digits.size());
        return ParseNumber(digits, number);
    }

    bool TextInto(std::string& target) {
        auto text = Text();
        if (!text) return false;
        target = *std::move(text);
        return true;
    }

    bool TextsInto(std::vector<std::string>& texts) {
        if (!Take('[')) return false;
        while (!Take(']')) {
            if (!texts.empty() && !Take(',')) return false;
            auto text = Text();
            if (!text) return false;
            texts.push_back(*std::move(text));
        }
        return true;
    }

    std::optional<std::string> Text() {
        if (!Take('"')) return std::nullopt;
        std::string text;
        while (!rest_.empty()) {
            const char character = rest_.front();
            rest_.remove_prefix(1);
            if (character == '"') return text;
            if (character != '\\') {
                text += character;
            } else if (!Escape(text)) {
                break;
            }
        }
        return std::nullopt;
    }

    /// Only control characters are written as numbers.
    bool Escape(std::string& text) {
        if (rest_.empty()) return false;
        const char kind = rest_.front();
        rest_.remove_prefix(1);
        if (kind == 'u') {
            unsigned code = 0;
            const auto digits = rest_.substr(0, 4);
            const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
            if (error != std::errc() || stop != digits.data() + 4 || code > 0x7F) return false;
            rest_.remove_prefix(4);
            text += static_cast<char>(code);
            return true;
        }
        constexpr std::string_view kKinds = "\"\\/nrtbf";
        constexpr std::string_view kMeanings = "\"\\/\n\r\t\b\f";
        const auto place = kKinds.find(kind);
        if (place == std::string_view::npos) return false;
        text += kMeanings[place];
        return true;
    }

    std::string_view rest_;
};

}  // namespace

std::string FormatEventRecord(const EventRecord& record) {
    std::string line = "{\"time\":";
    AddQuoted(line, record.time);
    line += ",\"source\":";
    AddQuoted(line, record.source);
    line += ",\"type\":";
    AddQuoted(line, TypeName(record.type));
    line += ",\"category\":" + std::to_string(record.category);
    line += ",\"id\":" + std::to_string(record.id);
    line += ",\"pid\":" + std::to_string(record.process);
    line += ",\"strings\":[";
    for (std::size_t i = 0; i < record.strings.size(); ++i) {
        if (i != 0) line += ',';
        AddQuoted(line, record.strings[i]);
    }
    line += "],\"data\":";
    AddQuoted(line, ToBase64(record.data));
    line += '}';
    return line;
}

std::optional<EventRecord> ParseEventRecord(std::string_view line) {
    return LineReader(line).Read();
}

}  // namespace tk::system
