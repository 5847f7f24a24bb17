// tests/ado/persist/saved_rows.h - rows made in memory, saved, loaded and compared to the last bit.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "../cursor/sample_rows.h"
#include "../support/sqlite_file.h"
#include "ado/persist/recordset_file.h"
#include "ado/rowset/chunk.h"

namespace tk::ado::test {

inline constexpr PersistFormat kBothFormats[] = {PersistFormat::Binary, PersistFormat::Xml};

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void SaveStore(RowStore& store, const std::filesystem::path& path, PersistFormat format,
                      const WriteRules& rules = {}) {
    RowFeed feed(store);
    SaveRows(SavedSet{feed, rules, true}, path.string(), format, FileWriter::Existing::Replace);
}

/// The bytes of a saved store.
inline std::string SavedBytes(RowStore& store, PersistFormat format) {
    const tk::test::TemporaryFolder folder;
    SaveStore(store, folder.Path() / "saved", format);
    return ReadFile(folder.Path() / "saved");
}

inline LoadedFile Load(std::string_view bytes) {
    MemorySource source(bytes);
    return LoadRows(source);
}

/// A store with the pending changes of a file.
inline std::shared_ptr<RowStore> StoreOf(const LoadedFile& loaded) {
    auto store = std::make_shared<RowStore>(loaded.rows.rows);
    ApplyChanges(loaded.rows, *store);
    return store;
}

inline std::shared_ptr<RowStore> RoundTrip(RowStore& store, PersistFormat format) {
    return StoreOf(Load(SavedBytes(store, format)));
}

/// Type and bits of a value: texts and arrays by what they hold.
inline std::string Exactly(const VARIANT& value) {
    std::string bits = std::to_string(value.vt) + ":";
    if (value.vt == VT_BSTR) return bits + ToUtf8(ViewOf(value.bstrVal));
    if (value.vt == (VT_ARRAY | VT_UI1)) {
        return bits.append(static_cast<const char*>(value.parray->pvData), value.parray->rgsabound[0].cElements);
    }
    if (value.vt == VT_DECIMAL) {
        const DECIMAL& decimal = value.decVal;
        return bits + std::to_string(decimal.scale) + "," + std::to_string(decimal.sign) + "," +
               std::to_string(decimal.Hi32) + "," + std::to_string(decimal.Lo64);
    }
    switch (value.vt) {
        case VT_NULL:
            return bits;
        case VT_BOOL:
        case VT_I2:
            return bits + std::to_string(value.iVal);
        case VT_UI1:
            return bits + std::to_string(value.bVal);
        case VT_I4:
            return bits + std::to_string(value.lVal);
        case VT_R4:
            return bits.append(reinterpret_cast<const char*>(&value.fltVal), sizeof value.fltVal);
        case VT_R8:
        case VT_DATE:
            return bits.append(reinterpret_cast<const char*>(&value.dblVal), sizeof value.dblVal);
        case VT_CY:
            return bits + std::to_string(value.cyVal.int64);
        default:
            return bits + "?";
    }
}

inline std::string Exactly(const RowStore& store, std::size_t row, std::size_t column) {
    Value value;
    store.Read(row, column, *value.Out());
    return Exactly(value.Get());
}
inline std::string ExactOriginal(const RowStore& store, std::size_t row, std::size_t column) {
    Value value;
    store.ReadOriginal(row, column, *value.Out());
    return Exactly(value.Get());
}

inline void ExpectSameColumn(const Column& a, const Column& b) {
    SCOPED_TRACE(ToUtf8(a.name));
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.type, b.type);
    EXPECT_EQ(a.dbType, b.dbType);
    EXPECT_EQ(a.kind, b.kind);
    EXPECT_EQ(a.definedSize, b.definedSize);
    EXPECT_EQ(a.precision, b.precision);
    EXPECT_EQ(a.scale, b.scale);
    EXPECT_EQ(a.attributes, b.attributes);
    EXPECT_EQ(a.isUnsigned, b.isUnsigned);
    EXPECT_EQ(a.isAutoIncrement, b.isAutoIncrement);
    EXPECT_EQ(a.isCaseSensitive, b.isCaseSensitive);
    EXPECT_EQ(a.isExpression, b.isExpression);
    EXPECT_EQ(a.searchable, b.searchable);
    EXPECT_EQ(a.sqlType, b.sqlType);
    EXPECT_EQ(a.baseCatalog, b.baseCatalog);
    EXPECT_EQ(a.baseSchema, b.baseSchema);
    EXPECT_EQ(a.baseTable, b.baseTable);
    EXPECT_EQ(a.baseColumn, b.baseColumn);
    EXPECT_EQ(a.isKey, b.isKey);
}

/// Every column, every value, every original and every pending state; rows that are to be left out are not expected.
inline void ExpectSame(RowStore& saved, RowStore& loaded) {
    ASSERT_EQ(saved.Columns().size(), loaded.Columns().size());
    for (std::size_t i = 0; i < saved.Columns().size(); ++i)
        ExpectSameColumn(saved.Columns()[i], loaded.Columns()[i]);
    RowFeed wanted(saved);
    RowFeed found(loaded);
    SavedRow a;
    SavedRow b;
    std::size_t rows = 0;
    while (wanted.Next(a)) {
        SCOPED_TRACE("row " + std::to_string(rows++));
        ASSERT_TRUE(found.Next(b));
        EXPECT_EQ(a.state, b.state);
        for (std::size_t i = 0; i < saved.Columns().size(); ++i) {
            SCOPED_TRACE(ToUtf8(saved.Columns()[i].name));
            if (a.state != RowState::Deleted) {
                EXPECT_EQ(Exactly(saved, a.row, i), Exactly(loaded, b.row, i));
            }
            if (a.state == RowState::Updated || a.state == RowState::Deleted) {
                EXPECT_EQ(ExactOriginal(saved, a.row, i), ExactOriginal(loaded, b.row, i));
            }
            if (a.state == RowState::Inserted) {
                EXPECT_EQ(saved.WasGiven(a.row, i), loaded.WasGiven(b.row, i));
            }
        }
        if (testing::Test::HasFailure()) return;
    }
    EXPECT_FALSE(found.Next(b));
}

inline void ExpectRoundTrips(RowStore& store) {
    for (const PersistFormat format : kBothFormats) {
        SCOPED_TRACE(format == PersistFormat::Xml ? "XML" : "binary");
        const auto loaded = RoundTrip(store, format);
        ExpectSame(store, *loaded);
        // What has been loaded is saved the same way, from cells that are kept in another way.
        for (const PersistFormat again : kBothFormats) {
            SCOPED_TRACE(again == PersistFormat::Xml ? "again as XML" : "again as binary");
            ExpectSame(store, *RoundTrip(*loaded, again));
        }
    }
}

/// A set of texts as a driver gives them; a null pointer is NULL.
inline std::shared_ptr<RowSet> TextRows(std::vector<Column> columns,
                                        const std::vector<std::vector<const char*>>& rows) {
    RowLayout layout(columns, true);
    ChunkBuilder builder(layout);
    for (const auto& row : rows) {
        for (const char* cell : row)
            cell == nullptr ? builder.AddNull() : builder.AddBytes(cell, std::strlen(cell));
    }
    std::vector<std::unique_ptr<Chunk>> chunks;
    if (!rows.empty()) chunks.push_back(builder.Seal(0, rows.size(), {}));
    return RowSet::Assemble(std::move(columns), std::move(layout), std::move(chunks));
}

}  // namespace tk::ado::test
