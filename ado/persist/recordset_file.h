// ado/persist/recordset_file.h - recordsets in files: XML for everybody, a table-gram for speed.
//
//   RowFeed feed(store);
//   SaveRows(SavedSet{feed, rules, updatable}, "/data/goods.xml", PersistFormat::Xml, FileWriter::Existing::Refuse);
//   LoadedRows loaded = LoadRows("/data/goods.xml");
//
// Both directions stream: beside the rows themselves a file of any length takes a few megabytes. What comes back is
// what was saved: types, sizes, flags, NULLs, every digit, and the changes that were pending. Formats:
// docs/saved-recordsets.md.
#pragma once

#include <string>

#include "ado/persist/byte_source.h"
#include "ado/persist/file_writer.h"
#include "ado/persist/loaded_rows.h"
#include "ado/persist/row_feed.h"

namespace tk::ado {

/// PersistFormatEnum.
enum class PersistFormat : LONG { Binary = 0, Xml = 1 };

/// What is saved.
struct SavedSet {
    RowFeed& feed;
    const WriteRules& rules;
    bool isUpdatable = false;
};

/// @param path  UTF-8
/// @throws AdoError WritingFile with the reason; the file is then what it was before
void SaveRows(const SavedSet& set, std::string path, PersistFormat format, FileWriter::Existing existing);

struct LoadedFile {
    LoadedRows rows;
    PersistFormat format;
};

/// @throws AdoError OpeningFile, or ReadingFile for what is no saved recordset, damaged or cut off
LoadedFile LoadRows(std::string path);

/// The same from any bytes; the format is told by the first of them.
LoadedFile LoadRows(ByteSource& source);

// --- the two formats ---

void WriteXml(const SavedSet& set, FileWriter& file);
LoadedRows ReadXml(ByteSource& source);
void WriteTableGram(const SavedSet& set, FileWriter& file);
LoadedRows ReadTableGram(ByteSource& source);

/// Memory that rows of a file of a size may plausibly take: a short file must not ask for a lot of it.
constexpr std::uint64_t PlausibleBytes(std::uint64_t fileSize) noexcept {
    constexpr std::uint64_t kAnyway = 256 * 1024 * 1024;
    constexpr std::uint64_t kMostGrowth = 64;  // rows of many columns, nearly all NULL
    return kAnyway + fileSize * kMostGrowth;
}

}  // namespace tk::ado
