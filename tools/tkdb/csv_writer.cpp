#include <algorithm>
#include <array>

#include "tools/tkdb/writers.h"

namespace tk::tools {
namespace {

constexpr auto kNeedsQuotes = [] {
    std::array<bool, 256> table{};
    for (const char c : {',', '"', '\r', '\n'})
        table[static_cast<unsigned char>(c)] = true;
    return table;
}();

bool NeedsQuotes(const std::string& text) {
    return std::ranges::any_of(text, [](char c) { return kNeedsQuotes[static_cast<unsigned char>(c)]; });
}

void AppendQuoted(std::string& line, const std::string& text) {
    line += '"';
    for (const char c : text) {
        if (c == '"') line += '"';
        line += c;
    }
    line += '"';
}

// RFC 4180: CR LF after each record, quotes around what needs them, quotes doubled inside.
class CsvWriter : public ResultWriter {
public:
    explicit CsvWriter(Output out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        for (const auto& name : names)
            Append(name, false);
        Write();
    }

    void Row(const std::vector<CellText>& cells) override {
        for (const auto& cell : cells) {
            // An empty text is "" and a null is nothing, so that the two stay apart.
            Append(cell.utf8, cell.nature != CellNature::Null && cell.utf8.empty());
        }
        Write();
    }

    void Finish() override {}

private:
    void Append(const std::string& text, bool quoted) {
        if (quoted || NeedsQuotes(text)) {
            AppendQuoted(line_, text);
        } else {
            line_ += text;
        }
        line_ += ',';
    }

    void Write() {
        if (!line_.empty()) line_.pop_back();  // the comma behind the last cell
        line_ += "\r\n";
        out_.Write(line_);
        line_.clear();
    }

    Output out_;
    std::string line_;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeCsvWriter(Output out) {
    return std::make_unique<CsvWriter>(out);
}

}  // namespace tk::tools
