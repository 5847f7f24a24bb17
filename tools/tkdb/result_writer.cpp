#include "tools/tkdb/result_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

void Put(std::FILE* out, const std::string& utf8) {
    const std::string text = Utf8ToTerminal(utf8);
    std::fwrite(text.data(), 1, text.size(), out);
}

std::string Padded(const std::string& text, std::size_t width, bool right) {
    const std::size_t used = DisplayWidth(text);
    const std::string blanks(width > used ? width - used : 0, ' ');
    return right ? blanks + text : text + blanks;
}

// One line a row: line ends and tabs inside a value would break the picture.
std::string OneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    return text;
}

std::string WithoutTrailingBlanks(const std::string& line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

// Widths come from the first rows, so that a long result starts to print at once and needs no memory.
class TableWriter : public ResultWriter {
public:
    explicit TableWriter(std::FILE* out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        names_ = names;
        for (const auto& name : names)
            widths_.push_back(DisplayWidth(name));
        right_.assign(names.size(), true);
    }

    void Row(const std::vector<CellText>& cells) override {
        if (printing_) return Print(cells);
        waiting_.push_back(cells);
        if (waiting_.size() == kLookAhead) Flush();
    }

    void Finish() override { Flush(); }

private:
    static constexpr std::size_t kLookAhead = 200;

    void Flush() {
        if (printing_) return;
        printing_ = true;
        for (const auto& row : waiting_) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                widths_[i] = std::max(widths_[i], DisplayWidth(OneLine(row[i].utf8)));
                if (row[i].nature == CellNature::Text || row[i].nature == CellNature::Boolean) right_[i] = false;
            }
        }
        std::string line;
        std::string rule;
        for (std::size_t i = 0; i < names_.size(); ++i) {
            line += (i == 0 ? "" : "  ") + Padded(names_[i], widths_[i], right_[i]);
            rule += (i == 0 ? "" : "  ") + std::string(widths_[i], '-');
        }
        Put(out_, WithoutTrailingBlanks(line) + "\n" + rule + "\n");
        for (const auto& row : waiting_)
            Print(row);
        waiting_.clear();
    }

    void Print(const std::vector<CellText>& cells) {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line += (i == 0 ? "" : "  ") + Padded(OneLine(cells[i].utf8), widths_[i], right_[i]);
        }
        while (!line.empty() && line.back() == ' ')
            line.pop_back();
        Put(out_, line + "\n");
    }

    std::FILE* out_;
    std::vector<std::string> names_;
    std::vector<std::size_t> widths_;
    std::vector<bool> right_;
    std::vector<std::vector<CellText>> waiting_;
    bool printing_ = false;
};

// RFC 4180: CR LF after each record, quotes around what needs them, quotes doubled inside.
class CsvWriter : public ResultWriter {
public:
    explicit CsvWriter(std::FILE* out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        std::string line;
        for (const auto& name : names)
            line += (&name == names.data() ? "" : ",") + Quoted(name, false);
        Put(out_, line + "\r\n");
    }

    void Row(const std::vector<CellText>& cells) override {
        std::string line;
        for (const auto& cell : cells) {
            if (&cell != cells.data()) line += ',';
            // An empty text is "" and a null is nothing, so that the two stay apart.
            if (cell.nature != CellNature::Null) line += Quoted(cell.utf8, cell.utf8.empty());
        }
        Put(out_, line + "\r\n");
    }

    void Finish() override {}

private:
    static std::string Quoted(const std::string& text, bool always) {
        if (!always && text.find_first_of(",\"\r\n") == std::string::npos) return text;
        std::string result = "\"";
        for (const char c : text) {
            if (c == '"') result += '"';
            result += c;
        }
        return result + "\"";
    }

    std::FILE* out_;
};

std::string JsonText(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        switch (c) {
            case '"':
                result += "\\\"";
                break;
            case '\\':
                result += "\\\\";
                break;
            case '\n':
                result += "\\n";
                break;
            case '\r':
                result += "\\r";
                break;
            case '\t':
                result += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    result += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
                } else {
                    result += c;
                }
        }
    }
    return result + "\"";
}

// An array of objects, one a line; always UTF-8, as the format demands.
class JsonWriter : public ResultWriter {
public:
    explicit JsonWriter(std::FILE* out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        for (const auto& name : names)
            keys_.push_back(JsonText(name));
        std::fputs("[", out_);
    }

    void Row(const std::vector<CellText>& cells) override {
        std::string line = first_ ? "\n  {" : ",\n  {";
        first_ = false;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line += (i == 0 ? "" : ", ") + keys_[i] + ": " + Value(cells[i]);
        }
        std::fputs((line + "}").c_str(), out_);
    }

    void Finish() override { std::fputs(first_ ? "]\n" : "\n]\n", out_); }

private:
    static std::string Value(const CellText& cell) {
        switch (cell.nature) {
            case CellNature::Null:
                return "null";
            case CellNature::Boolean:
                return cell.utf8;
            case CellNature::Number:
                return IsJsonNumber(cell.utf8) ? cell.utf8 : JsonText(cell.utf8);
            case CellNature::Text:
                break;
        }
        return JsonText(cell.utf8);
    }

    // Infinities and the like have no JSON form as numbers.
    static bool IsJsonNumber(const std::string& text) {
        return !text.empty() && text.find_first_not_of("+-.0123456789eE") == std::string::npos;
    }

    std::FILE* out_;
    std::vector<std::string> keys_;
    bool first_ = true;
};

class MarkdownWriter : public ResultWriter {
public:
    explicit MarkdownWriter(std::FILE* out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        std::string line = "|";
        std::string rule = "|";
        for (const auto& name : names) {
            line += " " + Escaped(name) + " |";
            rule += " --- |";
        }
        Put(out_, line + "\n" + rule + "\n");
    }

    void Row(const std::vector<CellText>& cells) override {
        std::string line = "|";
        for (const auto& cell : cells)
            line += " " + Escaped(cell.utf8) + " |";
        Put(out_, line + "\n");
    }

    void Finish() override {}

private:
    static std::string Escaped(const std::string& text) {
        std::string result;
        for (const char c : OneLine(text)) {
            if (c == '|' || c == '\\') result += '\\';
            result += c;
        }
        return result;
    }

    std::FILE* out_;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeResultWriter(Format format, std::FILE* out) {
    switch (format) {
        case Format::Csv:
            return std::make_unique<CsvWriter>(out);
        case Format::Json:
            return std::make_unique<JsonWriter>(out);
        case Format::Markdown:
            return std::make_unique<MarkdownWriter>(out);
        case Format::Table:
            break;
    }
    return std::make_unique<TableWriter>(out);
}

}  // namespace tk::tools
