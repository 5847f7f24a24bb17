#include "ado/rowset/chunk.h"

#include <gtest/gtest.h>

#include "ado/rowset/moment_fields.h"

namespace tk::ado {
namespace {

std::vector<Column> Columns(std::initializer_list<CellKind> kinds) {
    std::vector<Column> columns;
    for (const CellKind kind : kinds)
        columns.emplace_back().kind = kind;
    return columns;
}

TEST(RowLayout, PutsTheWidestValuesFirst) {
    const auto columns = Columns({CellKind::Boolean, CellKind::Text, CellKind::Integer64, CellKind::Integer16,
                                  CellKind::Decimal, CellKind::Timestamp});
    const RowLayout layout(columns, false);
    EXPECT_EQ(layout.VariableCount(), 2u);
    EXPECT_EQ(layout.FixedCount(), 4u);
    EXPECT_TRUE(layout.At(1).isVariable);
    EXPECT_EQ(layout.At(1).slot, 0);
    EXPECT_EQ(layout.At(4).slot, 1);
    EXPECT_EQ(layout.FixedWidth(0), 16u);  // the time stamp
    EXPECT_EQ(layout.At(5).slot, 0);
    EXPECT_EQ(layout.At(2).slot, 1);
    EXPECT_EQ(layout.At(3).slot, 2);
    EXPECT_EQ(layout.At(0).slot, 3);
    EXPECT_EQ(layout.FixedBefore(3), 26u);
    EXPECT_EQ(layout.FixedRowBytes(), 27u);
    EXPECT_EQ(RowLayout(columns, true).VariableCount(), 6u);
}

TEST(Chunk, GivesBackTextsNullsAndLongTexts) {
    const auto columns = Columns({CellKind::Text, CellKind::Text, CellKind::Bytes});
    const RowLayout layout(columns, true);
    ChunkBuilder builder(layout);
    const std::string longText(100'000, 'L');
    const std::string edge(32 * 1024, 'e');
    for (int row = 0; row < 3; ++row) {
        builder.AddBytes("ab", 2);
        if (row == 1) {
            builder.AddBytes(longText.data(), longText.size());
        } else {
            builder.AddNull();
        }
        builder.AddBytes(row == 2 ? edge.data() : "", row == 2 ? edge.size() : 0);
    }
    const auto chunk = builder.Seal(40, 3, {});
    EXPECT_TRUE(chunk->Covers(40));
    EXPECT_TRUE(chunk->Covers(42));
    EXPECT_FALSE(chunk->Covers(43));
    EXPECT_FALSE(chunk->Covers(39));
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(chunk->Variable(layout, row, 0), "ab");
    EXPECT_EQ(chunk->Variable(layout, 0, 1).data(), nullptr);
    EXPECT_EQ(chunk->Variable(layout, 1, 1), longText);
    EXPECT_NE(chunk->Variable(layout, 0, 2).data(), nullptr);
    EXPECT_EQ(chunk->Variable(layout, 0, 2).size(), 0u);
    EXPECT_EQ(chunk->Variable(layout, 2, 2), edge);
    EXPECT_GT(chunk->Bytes(), longText.size() + edge.size());
    EXPECT_LT(chunk->Bytes(), longText.size() + edge.size() + 1000);
    EXPECT_EQ(builder.VariableCells(), 0u);  // ready for the next one
}

TEST(Chunk, GivesBackFixedValuesAndTheirNulls) {
    const auto columns = Columns({CellKind::Integer32, CellKind::Text, CellKind::Integer64});
    const RowLayout layout(columns, false);
    for (const std::size_t rows : {1u, 7u, 8u, 9u, 100u}) {
        SCOPED_TRACE(rows);
        std::vector<int> numbers(rows);
        std::vector<long long> large(rows);
        std::vector<long> present(rows, 4);
        std::vector<long> sometimes(rows);
        ChunkBuilder builder(layout);
        for (std::size_t row = 0; row < rows; ++row) {
            numbers[row] = static_cast<int>(row) * 3;
            large[row] = static_cast<long long>(row) << 40;
            sometimes[row] = row % 3 == 0 ? -1 : 8;
            builder.AddBytes("xyz", row % 4);
        }
        std::vector<ChunkBuilder::FixedBlock> blocks(2);
        blocks[layout.At(0).slot] = {reinterpret_cast<const char*>(numbers.data()), present.data()};
        blocks[layout.At(2).slot] = {reinterpret_cast<const char*>(large.data()), sometimes.data()};
        const auto chunk = builder.Seal(0, rows, blocks);
        for (std::size_t row = 0; row < rows; ++row) {
            EXPECT_EQ(chunk->Fixed<int>(layout, row, layout.At(0).slot), static_cast<int>(row) * 3);
            EXPECT_FALSE(chunk->IsNullFixed(row, layout.At(0).slot));
            EXPECT_EQ(chunk->IsNullFixed(row, layout.At(2).slot), row % 3 == 0);
            EXPECT_EQ(chunk->Fixed<long long>(layout, row, layout.At(2).slot), static_cast<long long>(row) << 40);
            EXPECT_EQ(chunk->Variable(layout, row, 0), std::string_view("xyz").substr(0, row % 4));
        }
    }
}

TEST(Chunk, KeepsTextsForMomentsThatNoStructureHolds) {
    for (const std::uint32_t number : {0u, 1u, 0x7FFFu, 0x8000u, 0xFFFFu, 0x10000u, 0xFFFFFFFFu}) {
        SQL_DATE_STRUCT date = {2003, 7, 4};
        EXPECT_EQ(TextNumberOf(date), std::nullopt);
        SetTextNumber(date, number);
        EXPECT_EQ(TextNumberOf(date), number);
        SQL_TIMESTAMP_STRUCT stamp = {0, 0, 0, 0, 0, 0, 0};  // some databases have such a date
        EXPECT_EQ(TextNumberOf(stamp), std::nullopt);
        SetTextNumber(stamp, number);
        EXPECT_EQ(TextNumberOf(stamp), number);
    }
    const auto columns = Columns({CellKind::Date, CellKind::Text});
    const RowLayout layout(columns, false);
    ChunkBuilder builder(layout);
    builder.AddBytes("a", 1);
    builder.AddOutside(std::string(100, 'x'));
    SQL_DATE_STRUCT dates[2] = {{2003, 7, 4}, {}};
    SetTextNumber(dates[1], builder.Keep("infinity"));
    const std::vector<long> present(2, 6);
    const ChunkBuilder::FixedBlock block = {reinterpret_cast<const char*>(dates), present.data()};
    const auto chunk = builder.Seal(0, 2, {&block, 1});
    const auto number = TextNumberOf(chunk->Fixed<SQL_DATE_STRUCT>(layout, 1, layout.At(0).slot));
    ASSERT_TRUE(number);
    EXPECT_EQ(chunk->Text(*number), "infinity");
    EXPECT_EQ(chunk->Variable(layout, 1, layout.At(1).slot), std::string(100, 'x'));
}

TEST(Chunk, MayHaveNoColumns) {
    const RowLayout layout({}, true);
    ChunkBuilder builder(layout);
    const auto chunk = builder.Seal(0, 5, {});
    EXPECT_EQ(chunk->Rows(), 5u);
}

}  // namespace
}  // namespace tk::ado
