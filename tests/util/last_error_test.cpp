// The helpers work without leaving a code in the thread's last error.
#include <gtest/gtest.h>

#include <afxdisp.h>

#include <string>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

constexpr DWORD kBefore = 0x2ABCDEF0;  // no function of the platform sets it
constexpr DWORD kUnknownCode = 0x2FFFFFFF;

constexpr char kTwenty[] = "库存货物名称规格型号单位数量价格金额备注";

TEST(LastError, OfTheThreadIsKeptByTheHelpers) {
    static const struct {
        const char* label;
        void (*work)();
    } kRows[] = {
        {"the text of a value",
         [] {
             EXPECT_STREQ(VariantToString(Text(kTwenty)), kTwenty);
             EXPECT_STREQ(VariantToTrimString(Text(kTwenty)), kTwenty);
             EXPECT_STREQ(VariantToString(Date(36345.0)), "1999-07-04 00:00:00");
             EXPECT_STREQ(VariantToString(Real8(1.5)), "        1.5");
             EXPECT_STREQ(VariantToString(Decimal(1275, 2)), "12.75");
             EXPECT_STREQ(VariantToString(Error(5)), "");
         }},
        {"the literal of a value",
         [] {
             EXPECT_EQ(Std(VARIANTToString(Text(kTwenty))), "'" + std::string(kTwenty) + "'");
             EXPECT_STREQ(VARIANTToString(Unsigned4(7)), "'7'");
         }},
        {"a date that does not exist", [] { VariantToString(Date(1e300)); }},
        {"the value of a text",
         [] {
             VARIANT value;
             VariantInit(&value);
             StringToVariant(value, kTwenty);
             EXPECT_STREQ(VariantToString(value), kTwenty);
             VariantClear(&value);
         }},
        {"the order of values", [] { EXPECT_EQ(CompareVariant(Text(kTwenty), Text(kTwenty)), 0); }},
        {"numbers of values",
         [] {
             EXPECT_EQ(VariantToLong(Decimal(1275, 2)), 12);
             EXPECT_EQ(VariantToDouble(Decimal(1275, 2)), 12.0);
         }},
        {"a value in a format", [] { FormatVariant(Text(kTwenty), "%s"); }},
        {"dates of texts",
         [] {
             StringToDate("2020-02-29 13:45:06");
             StringToDate(kTwenty);
             GetLocalDate(kTwenty);
             GetDateString(kTwenty, 0);
             DateToString(36345.0, "%Y-%m-%d");
         }},
        {"letters without regard to case",
         [] {
             EXPECT_GT(FindStringNoCase("\xA2\xA0\xA9\xFE\xA6\xC1z", "Z"), 0) << "behind places that are left open";
         }},
        {"Chinese amounts and initials",
         [] {
             UpperCurrency(1234.5, 1);
             ToPyHead(kTwenty, 40);
         }},
        {"the system's text of a code",
         [] {
             EXPECT_STRNE(LookupErrorText(5), "");
             EXPECT_STREQ(LookupErrorText(kUnknownCode), "");
             EXPECT_STREQ(GetLastErrorText(), "") << "of the code that is kept";
         }},
        {"an exception's own text",
         [] {
             COleException exception;
             exception.m_sc = static_cast<SCODE>(kUnknownCode);
             EXPECT_STREQ(GetExceptionError(&exception), "");
         }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(kBefore);
        row.work();
        EXPECT_EQ(GetLastError(), kBefore);
    }
}

}  // namespace
