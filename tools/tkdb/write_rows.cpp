#include "tools/tkdb/write_rows.h"

#include "tools/tkdb/command_support.h"
#include "tools/tkdb/interruption.h"
#include "tools/tkdb/progress.h"
#include "tools/tkdb/record_reader.h"

namespace tk::tools {

long WriteRows(CTRecordset& records, Format format, std::FILE* out, Charset charset, long maxRows) {
    const auto writer = MakeResultWriter(format, out, charset);
    writer->Columns(ColumnNames(records));
    Progress progress("rows");
    RecordReader reader(records);
    long rows = 0;
    const auto goesOn = [&] {
        return (maxRows == 0 || rows < maxRows) && !Interruption::Wanted() && std::ferror(out) == 0;
    };
    for (; goesOn() && !records.GetEof(); records.MoveNext(), ++rows) {
        writer->Row(reader.Read());
        progress.Advance();
    }
    writer->Finish();
    return rows;
}

}  // namespace tk::tools
