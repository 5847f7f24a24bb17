#include "ado/persist/recordset_file.h"

#include "ado/persist/messages.h"

namespace tk::ado {
namespace {

constexpr std::string_view kGramStart("\x01\x07TG", 4);

bool LooksLikeXml(std::string_view start) noexcept {
    static constexpr std::string_view kMarks[] = {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"};
    for (const std::string_view mark : kMarks) {
        if (start.starts_with(mark)) return true;
    }
    const std::size_t first = start.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && start[first] == '<';
}

}  // namespace

void SaveRows(const SavedSet& set, std::string path, PersistFormat format, FileWriter::Existing existing) {
    FileWriter file(std::move(path), existing);
    if (format == PersistFormat::Xml) {
        WriteXml(set, file);
    } else {
        WriteTableGram(set, file);
    }
    file.Finish();
}

LoadedFile LoadRows(std::string path) {
    FileSource source(std::move(path));
    return LoadRows(source);
}

LoadedFile LoadRows(ByteSource& source) {
    char start[64];
    std::size_t size = 0;
    while (size < sizeof start) {
        const std::size_t count = source.Read(start + size, sizeof start - size);
        if (count == 0) break;
        size += count;
    }
    source.Rewind();
    const std::string_view seen(start, size);
    if (seen.starts_with(kGramStart)) return {ReadTableGram(source), PersistFormat::Binary};
    if (LooksLikeXml(seen)) return {ReadXml(source), PersistFormat::Xml};
    source.Fail(kTextNotSavedRows);
}

}  // namespace tk::ado
