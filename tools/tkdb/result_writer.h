// tools/tkdb/result_writer.h - rows on standard output in the form that was asked for.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/tkdb/cell_text.h"

namespace tk::tools {

enum class Format { Table, Csv, Json, Markdown };

/// Columns first, then each row, then Finish. Texts are UTF-8 inside and go out in the terminal's character set.
class ResultWriter {
public:
    virtual ~ResultWriter() = default;
    virtual void Columns(const std::vector<std::string>& names) = 0;
    virtual void Row(const std::vector<CellText>& cells) = 0;
    virtual void Finish() = 0;
};

/// @param out  borrowed until the writer is gone
std::unique_ptr<ResultWriter> MakeResultWriter(Format format, std::FILE* out);

}  // namespace tk::tools
