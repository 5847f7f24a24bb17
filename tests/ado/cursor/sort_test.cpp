#include "ado/cursor/sort.h"

#include <gtest/gtest.h>

#include <numeric>

#include "ado/cursor/compare.h"
#include "sample_rows.h"

namespace tk::ado::test {
namespace {

std::string Sorted(const RowStore& rows, std::size_t count, std::u16string_view text) {
    std::string ids;
    const int error = ErrorOf([&] {
        std::vector<std::uint32_t> order(count);
        std::iota(order.begin(), order.end(), 0u);
        SortRows(rows, ParseSort(text, rows.Columns()), order);
        for (const std::uint32_t row : order)
            ids += (ids.empty() ? "" : " ") + std::to_string(row + 1);
    });
    return error != 0 ? std::to_string(error) : ids;
}

TEST(Sort, OrdersByEveryKindOfColumn) {
    static constexpr struct {
        const char* label;
        const char16_t* text;
        const char* ids;
    } kRows[] = {
        {"integers down", u"id DESC", "5 4 3 2 1"},
        {"ascending said", u"id ASC", "1 2 3 4 5"},
        {"no text keeps the order", u"", "1 2 3 4 5"},
        {"decimals by value, NULL first", u"price", "3 5 1 2 4"},
        {"decimals down, NULL last", u"price desc", "4 2 1 5 3"},
        {"dates, those before the first in order", u"born", "3 4 1 2 5"},
        {"texts without case, chinese last", u"name", "3 1 2 5 4"},
        {"truth: False before True", u"flag, id desc", "3 5 2 4 1"},
        {"two keys", u"flag DESC, price ASC", "1 4 5 2 3"},
        {"equal texts stay as they are", u"[item code] desc", "4 2 3 5 1"},
        {"blanks and case", u"  PRICE   DeSc  ", "4 2 1 5 3"},
        {"unknown column", u"nothing", "3265"},
        {"unknown word", u"id DOWN", "3001"},
        {"a comma behind", u"id,", "3001"},
        {"no comma", u"id price", "3001"},
        {"bracket not closed", u"[id", "3001"},
        {"direction in brackets", u"id [DESC]", "3001"},
    };
    const auto store = Goods();
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Sorted(*store, 5, row.text), row.ids);
    }
}

TEST(Sort, PutsCommonCharactersInPinyinOrder) {
    const RowStore store(Rows(Columns({{u"city", kVarWChar}}),
                              {{Text(u"重庆")}, {Text(u"上海")}, {Text(u"北京")}, {Text(u"安徽")}, {Text(u"广州")}}));
    EXPECT_EQ(Sorted(store, 5, u"city"), "4 3 5 2 1");
}

TEST(Sort, RefusesColumnsOfBytes) {
    const RowStore store(Rows(Columns({{u"data", kVarBinary}}), {}));
    EXPECT_EQ(Sorted(store, 0, u"data"), "3001");
}

TEST(CompareDecimalDigits, IsExactWhateverTheLength) {
    static constexpr struct {
        const char* first;
        const char* second;
        int order;
    } kRows[] = {
        {"0", "-0.00", 0},
        {"1", "1.000", 0},
        {"007", "7", 0},
        {"9", "10", -1},
        {"-9", "-10", 1},
        {"-1", "1", -1},
        {"12345678901234567890123456789012345678", "12345678901234567890123456789012345679", -1},
        {"0.10000000000000000000000000001", "0.1", 1},
        {".5", "0.5", 0},
        {"5.", "5", 0},
        {"1e3", "999", 1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(std::string(row.first) + " and " + row.second);
        EXPECT_EQ(CompareDecimalDigits(row.first, row.second), row.order);
        EXPECT_EQ(CompareDecimalDigits(row.second, row.first), -row.order);
    }
}

TEST(DateMilliseconds, CountsTheTimeOfNegativeDaysForward) {
    EXPECT_EQ(DateMilliseconds(0.0), 0);
    EXPECT_EQ(DateMilliseconds(1.5), 86400000 + 43200000);
    EXPECT_EQ(DateMilliseconds(-1.25), -86400000 + 21600000);
    EXPECT_EQ(DateMilliseconds(-0.5), 43200000);
    EXPECT_LT(DateMilliseconds(-2.9), DateMilliseconds(-1.1));
}

}  // namespace
}  // namespace tk::ado::test
