// What the platform decides, where it is ours: other platforms take these values in other ways.
#include <gtest/gtest.h>

#include "tkkernel/util.h"
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
