// What the platform decides, where it is ours: other platforms take these values in other ways.
#include <gtest/gtest.h>

#include "tkkernel/util.h"
#include "util/counted_object.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(CopyVariant, KeepsADestinationThatIsInUse) {
    Value destination = Bytes("abc");
    void* data = nullptr;
    ASSERT_GE(SafeArrayAccessData(destination->parray, &data), 0);
    CopyVariant(destination.Get(), Int4(1));
    EXPECT_EQ(destination->vt, VT_ARRAY | VT_UI1);
    SafeArrayUnaccessData(destination->parray);
    EXPECT_STREQ(VariantToString(destination), "abc");
}

TEST(CopyVariant, DoesNotCopyTheDatabaseLayersNumeric) {
    Value destination = Text("old");
    CopyVariant(destination.Get(), Decimal(1275, 2, false, 131));
    EXPECT_EQ(destination->vt, VT_EMPTY);
}

TEST(VariantPlus, WidensBytesThatOutgrowAByte) {
    VARIANT sum = VariantPlus(Byte(200), Byte(100));
    EXPECT_EQ(sum.vt, VT_I2);
    EXPECT_EQ(sum.iVal, 300);
    VariantClear(&sum);
}

TEST(VariantPlus, IsEmptyForAnAmountBeyondTheLargest) {
    VARIANT sum = VariantPlus(Currency(9223372036854775807LL), Currency(1));
    EXPECT_EQ(sum.vt, VT_EMPTY);
    VariantClear(&sum);
}

TEST(VariantToString, IsZeroForADecimalThatDoesNotExist) {
    for (const int type : {static_cast<int>(VT_DECIMAL), 131}) {
        SCOPED_TRACE(type);
        VARIANT value = {};
        value.decVal = MakeDecimal(1, 29);
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_STREQ(VariantToString(value), "0");
        EXPECT_STREQ(VARIANTToString(value), "0");
    }
}

TEST(VariantToSqlText, TakesTheDefaultValueOfAnObject) {
    CountedObject object(OLESTR("O'Brien"));
    VARIANT value = {};
    value.vt = VT_DISPATCH;
    value.pdispVal = &object;
    EXPECT_STREQ(VARIANTToString(value), "'O'Brien'");
    EXPECT_EQ(value.vt, VT_DISPATCH);
    EXPECT_EQ(value.pdispVal, &object);
    EXPECT_EQ(object.References(), 1U);

    value.pdispVal = nullptr;
    EXPECT_STREQ(VARIANTToString(value), "");
}

TEST(VariantToSqlText, IsEmptyForAnArrayBehindAReference) {
    Value bytes = Bytes("abc");
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &bytes.Get();
    EXPECT_STREQ(VARIANTToString(reference), "");
    EXPECT_EQ(reference.pvarVal, &bytes.Get());
    EXPECT_STREQ(VariantToString(bytes), "abc");
}

TEST(StringToDouble, KnowsTheSignOfTheCurrency) {
    EXPECT_EQ(StringToDouble("￥12.5"), 12.5);
    EXPECT_STREQ(DecimalToString(StringToDecimal("￥12.5")), "12.5");
}

TEST(StringToDouble, IsZeroForANumberBeyondTheLargest) {
    EXPECT_EQ(StringToDouble("1e400"), 0.0);
    EXPECT_EQ(StringToDouble("-1e400"), 0.0);
}

TEST(DecimalToString, HasNoNegativeZero) {
    EXPECT_STREQ(DecimalToString(MakeDecimal(0, 0, true)), "0");
    EXPECT_STREQ(DecimalToString(MakeDecimal(0, 2, true)), "0");
}

TEST(DecimalToString, IsEmptyForADecimalThatDoesNotExist) {
    EXPECT_STREQ(DecimalToString(MakeDecimal(1, 29)), "");  // scales end at 28
}

TEST(DecimalToDouble, IsZeroForADecimalThatDoesNotExist) {
    EXPECT_EQ(DecimalToDouble(MakeDecimal(1, 29)), 0.0);
}

TEST(LookupErrorText, KnowsTheCodesOfComponents) {
    EXPECT_STREQ(LookupErrorText(2), "错误[0x00000002]:系统找不到指定的文件。\r\n");
    for (const DWORD code : {0x80004002U, 0x80040154U, 0x800706BAU, 0x800401F0U, 0x80070005U}) {
        CString head;
        head.Format("错误[0x%08X]:", static_cast<unsigned>(code));
        const CString text = LookupErrorText(code);
        EXPECT_STREQ(text.Left(head.GetLength()), head);
        EXPECT_GT(text.GetLength(), head.GetLength() + 2);
    }
}

}  // namespace
