#include "tools/tkdb/writers.h"

namespace tk::tools {
namespace {

void AppendEscaped(std::string& line, char c) {
    static constexpr char kDigits[] = "0123456789abcdef";
    switch (c) {
        case '"':
        case '\\':
            line += '\\';
            line += c;
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
            line += "\\u00";
            line += kDigits[static_cast<unsigned char>(c) >> 4];
            line += kDigits[static_cast<unsigned char>(c) & 0xF];
    }
}

void AppendText(std::string& line, const std::string& text) {
    line += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20) {
            AppendEscaped(line, c);
        } else {
            line += c;
        }
    }
    line += '"';
}

// Infinities and the like have no form as numbers, nor have digits behind a leading zero.
bool IsNumber(const std::string& text) {
    const std::size_t digits = text.starts_with('-') ? 1 : 0;
    const auto isDigit = [&](std::size_t at) { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
    return isDigit(digits) && !(text[digits] == '0' && isDigit(digits + 1)) && text.back() != '.' &&
           text.find_first_not_of("+-.0123456789eE") == std::string::npos;
}

// An array of objects, one a line; always UTF-8, as the format demands.
class JsonWriter : public ResultWriter {
public:
    explicit JsonWriter(Output out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        for (const auto& name : names) {
            keys_.emplace_back(keys_.empty() ? "" : ", ");
            AppendText(keys_.back(), name);
            keys_.back() += ": ";
        }
        out_.WriteBytes("[");
    }

    void Row(const std::vector<CellText>& cells) override {
        line_ = first_ ? "\n  {" : ",\n  {";
        first_ = false;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line_ += keys_[i];
            Append(cells[i]);
        }
        line_ += '}';
        out_.WriteBytes(line_);
    }

    void Finish() override { out_.WriteBytes(first_ ? "]\n" : "\n]\n"); }

private:
    void Append(const CellText& cell) {
        if (cell.nature == CellNature::Null) {
            line_ += "null";
        } else if (cell.nature == CellNature::Boolean || (cell.nature == CellNature::Number && IsNumber(cell.utf8))) {
            line_ += cell.utf8;
        } else {
            AppendText(line_, cell.utf8);
        }
    }

    Output out_;
    std::vector<std::string> keys_;
    std::string line_;
    bool first_ = true;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeJsonWriter(Output out) {
    return std::make_unique<JsonWriter>(out);
}

}  // namespace tk::tools
