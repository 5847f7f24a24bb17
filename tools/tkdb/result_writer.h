// tools/tkdb/result_writer.h - rows in the form that was asked for.
//
//   const auto writer = MakeResultWriter(Format::Csv, stdout, Charset::Terminal);
//   writer->Columns(names);
//   for (...) writer->Row(cells);
//   writer->Finish();
#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/tkdb/cell_text.h"

namespace tk::tools {

enum class Format { Table, Csv, Json, Markdown };

/// The words of the command line.
const std::map<std::string, Format>& FormatNames();

/// Of what is written; JSON is UTF-8 whatever is asked for.
enum class Charset { Terminal, Utf8 };

/// Columns first, then each row, then Finish. Texts are UTF-8 inside. What the file makes of them shows in its state.
class ResultWriter {
public:
    virtual ~ResultWriter() = default;
    virtual void Columns(const std::vector<std::string>& names) = 0;
    virtual void Row(const std::vector<CellText>& cells) = 0;
    virtual void Finish() = 0;
};

/// @param out  borrowed until the writer is gone
std::unique_ptr<ResultWriter> MakeResultWriter(Format format, std::FILE* out, Charset charset);

}  // namespace tk::tools
