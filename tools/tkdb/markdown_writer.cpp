#include "tools/tkdb/writers.h"

namespace tk::tools {
namespace {

std::string Escaped(const std::string& text) {
    std::string result;
    for (const char c : OneLine(text)) {
        if (c == '|' || c == '\\') result += '\\';
        result += c;
    }
    return result;
}

class MarkdownWriter : public ResultWriter {
public:
    explicit MarkdownWriter(Output out) : out_(out) {}

    void Columns(const std::vector<std::string>& names) override {
        std::string line = "|";
        std::string rule = "|";
        for (const auto& name : names) {
            line += " " + Escaped(name) + " |";
            rule += " --- |";
        }
        out_.Write(line + "\n" + rule + "\n");
    }

    void Row(const std::vector<CellText>& cells) override {
        line_ = "|";
        for (const auto& cell : cells)
            line_ += " " + Escaped(cell.utf8) + " |";
        line_ += '\n';
        out_.Write(line_);
    }

    void Finish() override {}

private:
    Output out_;
    std::string line_;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeMarkdownWriter(Output out) {
    return std::make_unique<MarkdownWriter>(out);
}

}  // namespace tk::tools
