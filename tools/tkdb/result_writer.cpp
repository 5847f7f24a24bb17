#include "tools/tkdb/result_writer.h"

#include <algorithm>

#include "tools/tkdb/writers.h"

namespace tk::tools {

const std::map<std::string, Format>& FormatNames() {
    static const std::map<std::string, Format> names{
        {"table", Format::Table}, {"csv", Format::Csv}, {"json", Format::Json}, {"markdown", Format::Markdown}};
    return names;
}

std::string OneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    return text;
}

std::unique_ptr<ResultWriter> MakeResultWriter(Format format, std::FILE* out, Charset charset) {
    switch (format) {
        case Format::Csv:
            return MakeCsvWriter({out, charset});
        case Format::Json:
            return MakeJsonWriter({out, charset});
        case Format::Markdown:
            return MakeMarkdownWriter({out, charset});
        case Format::Table:
            break;
    }
    return MakeTableWriter({out, charset});
}

}  // namespace tk::tools
