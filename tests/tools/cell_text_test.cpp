#include "tools/tkdb/cell_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "util/values.h"

namespace tk::tools {
namespace {

using namespace tk::test;

TEST(CellText, ShowsEachTypeAsItIs) {
    const struct {
        const char* label;
        Value value;
        CellNature nature;
        const char* utf8;
    } kRows[] = {
        {"empty", Value(VT_EMPTY), CellNature::Null, ""},
        {"null", Value(VT_NULL), CellNature::Null, ""},
        {"I2", Int2(-32768), CellNature::Number, "-32768"},
        {"I4", Int4(2147483647), CellNature::Number, "2147483647"},
        {"I8", Int8(9007199254740993LL), CellNature::Number, "9007199254740993"},
        {"byte", Byte(255), CellNature::Number, "255"},
        {"R4", Real4(0.1F), CellNature::Number, "0.1"},
        {"R8", Real8(0.1), CellNature::Number, "0.1"},
        {"whole R8", Real8(100000.0), CellNature::Number, "100000"},
        {"large R8", Real8(1e20), CellNature::Number, "1e+20"},
        {"every digit of an R8", Real8(0.1 + 0.2), CellNature::Number, "0.30000000000000004"},
        {"infinite", Real8(std::numeric_limits<double>::infinity()), CellNature::Number, "inf"},
        {"currency", Currency(12345), CellNature::Number, "1.2345"},
        {"decimal", Decimal(12345, 3, true), CellNature::Number, "-12.345"},
        {"true", Bool(VARIANT_TRUE), CellNature::Boolean, "true"},
        {"false", Bool(VARIANT_FALSE), CellNature::Boolean, "false"},
        {"date", Date(39354.5), CellNature::Text, "2007-09-29 12:00:00"},
        {"text", WideText(u"a\u4E2D\U00020000"), CellNature::Text, "a\xE4\xB8\xAD\xF0\xA0\x80\x80"},
        {"empty text", WideText(u""), CellNature::Text, ""},
        {"null text", Value(VT_BSTR), CellNature::Text, ""},
        {"bytes", Bytes(std::string_view("\x00\x7F\xFF", 3)), CellNature::Text, "007fff"},
        {"bytes from another bound", Bytes("a", 5), CellNature::Text, "61"},
        {"no bytes", Bytes(""), CellNature::Text, ""},
        {"null bytes", Value(VT_ARRAY | VT_UI1), CellNature::Text, ""},
    };
    CellText cell{CellNature::Text, "what was there before"};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetCellText(row.value, cell);
        EXPECT_EQ(cell.nature, row.nature);
        EXPECT_EQ(cell.utf8, row.utf8);
    }
}

}  // namespace
}  // namespace tk::tools
