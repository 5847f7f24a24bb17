// Any number and any format: numbers, amounts, dates and values print something of a bounded length, the same each
// time.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tkkernel/util.h"

namespace {

constexpr int kMostDigits = 1500;  // of the widest format and the longest number

void Require(bool holds) {
    if (!holds) std::abort();
}

void TryNumber(double value, const std::string& format) {
    const CString text = DoubleToString(value, format.c_str());
    Require(text.GetLength() <= kMostDigits + static_cast<int>(format.size()));
    Require(text == DoubleToString(value, format.c_str()));
    const auto integer = static_cast<int>(static_cast<std::int64_t>(value > 2e9 || !(value > -2e9) ? 7 : value));
    IntToString(integer, format.c_str());
    NumberToChinese(static_cast<short>(integer));
}

void TryAmount(double value) {
    for (const int mode : {1, 2}) {
        const CString text = UpperCurrency(value, mode);
        // At most the sign, twelve digits with their units, three of groups, four for the fraction, the end mark.
        Require(!text.IsEmpty() && text.GetLength() <= 2 * (1 + 24 + 3 + 6 + 1));
    }
}

void TryValue(double value, const std::string& format) {
    VARIANT variant;
    VariantInit(&variant);
    for (const VARTYPE type : {VT_EMPTY, VT_I2, VT_I4, VT_UI1, VT_BOOL, VT_R4, VT_R8, VT_DATE, VT_CY}) {
        variant.vt = type;
        variant.dblVal = value;  // the others take its bits
        FormatVariant(variant, format.c_str());
    }
    if (SUCCEEDED(VarDecFromR8(value, &variant.decVal))) {
        variant.vt = VT_DECIMAL;
        FormatVariant(variant, format.c_str());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    double value = 0;
    if (size < sizeof(value)) return 0;
    std::memcpy(&value, data, sizeof(value));
    const std::string format(reinterpret_cast<const char*>(data) + sizeof(value), size - sizeof(value));
    for (const double number : {value, -1234.565, 0.0})
        TryNumber(number, format);
    TryAmount(value);
    TryValue(value, format);
    for (const double date : {value, 39354.25}) {
        const CString text = DateToString(date, format.c_str());
        Require(text.GetLength() <= 20 + 2 * static_cast<int>(format.size()));
    }
    return 0;
}
