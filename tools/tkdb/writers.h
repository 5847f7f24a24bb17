// tools/tkdb/writers.h - the forms behind MakeResultWriter, and what they share.
#pragma once

#include <string_view>

#include "tools/tkdb/result_writer.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {

/// Where a form writes to.
class Output {
public:
    Output(std::FILE* file, Charset charset) : file_(file), charset_(charset) {}

    void Write(const std::string& utf8) {
        charset_ == Charset::Utf8 ? WriteBytes(utf8) : WriteBytes(Utf8ToTerminal(utf8));
    }
    void WriteBytes(std::string_view bytes) {
        if (file_ == stdout) return PrintText(bytes);
        std::fwrite(bytes.data(), 1, bytes.size(), file_);
    }

private:
    std::FILE* file_;
    Charset charset_;
};

/// One line a row: line ends and tabs inside a value would break the picture.
std::string OneLine(std::string text);

std::unique_ptr<ResultWriter> MakeTableWriter(Output out);
std::unique_ptr<ResultWriter> MakeCsvWriter(Output out);
std::unique_ptr<ResultWriter> MakeJsonWriter(Output out);
std::unique_ptr<ResultWriter> MakeMarkdownWriter(Output out);

}  // namespace tk::tools
