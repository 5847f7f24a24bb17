#include <algorithm>

#include "tools/tkdb/writers.h"

namespace tk::tools {
namespace {

std::string Padded(const std::string& text, std::size_t width, bool right) {
    const std::size_t used = DisplayWidth(text);
    const std::string blanks(width > used ? width - used : 0, ' ');
    return right ? blanks + text : text + blanks;
}

std::string WithoutTrailingBlanks(const std::string& line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

// Widths come from the first rows, so that a long result starts to print at once and needs no memory.
class TableWriter : public ResultWriter {
public:
    explicit TableWriter(Output out) : out_(out) {}

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
        out_.Write(WithoutTrailingBlanks(line) + "\n" + rule + "\n");
        for (const auto& row : waiting_)
            Print(row);
        waiting_.clear();
    }

    void Print(const std::vector<CellText>& cells) {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line += (i == 0 ? "" : "  ") + Padded(OneLine(cells[i].utf8), widths_[i], right_[i]);
        }
        out_.Write(WithoutTrailingBlanks(line) + "\n");
    }

    Output out_;
    std::vector<std::string> names_;
    std::vector<std::size_t> widths_;
    std::vector<bool> right_;
    std::vector<std::vector<CellText>> waiting_;
    bool printing_ = false;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeTableWriter(Output out) {
    return std::make_unique<TableWriter>(out);
}

}  // namespace tk::tools
