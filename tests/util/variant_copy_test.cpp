#include <gtest/gtest.h>

#include <cstring>

#include "tkkernel/util.h"
#include "util/counted_object.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(StringToVariant, OverwritesWhatTheDestinationHeld) {
    VARIANT value;
    std::memset(&value, 0xCC, sizeof(value));  // would crash if it were released
    StringToVariant(value, "库存");
    EXPECT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(SysStringLen(value.bstrVal), 2U);
    EXPECT_EQ(value.bstrVal[0], u'\u5E93');
    EXPECT_EQ(value.bstrVal[1], u'\u5B58');
    VariantClear(&value);
}

TEST(StringToVariant, MakesAnEmptyTextOfNothing) {
    for (const char* text : {"", static_cast<const char*>(nullptr)}) {
        VARIANT value;
        StringToVariant(value, text);
        EXPECT_EQ(value.vt, VT_BSTR);
        EXPECT_EQ(SysStringLen(value.bstrVal), 0U);
        VariantClear(&value);
    }
}

TEST(CopyVariant, ClearsTheDestinationAndCopiesDeep) {
    Value destination = Text("old");
    Value source = Text("new");
    CopyVariant(destination.Get(), source);
    EXPECT_STREQ(VariantToString(destination), "new");
    EXPECT_NE(destination->bstrVal, source->bstrVal);
    source->bstrVal[0] = 'N';
    EXPECT_STREQ(VariantToString(destination), "new");
}

TEST(CopyVariant, CopiesTheBytesOfAnArray) {
    Value destination = Int4(1);
    Value source = Bytes("abc", 5);
    CopyVariant(destination.Get(), source);
    ASSERT_EQ(destination->vt, VT_ARRAY | VT_UI1);
    EXPECT_NE(destination->parray, source->parray);
    LONG index = 5;
    BYTE changed = 'X';
    ASSERT_EQ(SafeArrayPutElement(source->parray, &index, &changed), S_OK);
    EXPECT_STREQ(VariantToString(source), "Xbc");
    EXPECT_STREQ(VariantToString(destination), "abc");
}

TEST(CopyVariant, SharesAnObject) {
    CountedObject object;
    {
        Value destination = Text("old");
        VARIANT source = {};
        source.vt = VT_DISPATCH;
        source.pdispVal = &object;
        CopyVariant(destination.Get(), source);
        EXPECT_EQ(destination->vt, VT_DISPATCH);
        EXPECT_EQ(destination->pdispVal, &object);
        EXPECT_EQ(object.References(), 2U);
        CopyVariant(destination.Get(), Value(VT_EMPTY));
        EXPECT_EQ(object.References(), 1U) << "a destination lets go of what it held";
    }
    EXPECT_EQ(object.References(), 1U);
}

TEST(CopyVariant, LeavesTheDestinationClearedWhenTheSourceCannotBeCopied) {
    Value destination = Text("old");
    VARIANT source = {};
    source.vt = 200;  // no type
    CopyVariant(destination.Get(), source);
    EXPECT_EQ(destination->vt, VT_EMPTY);
}

TEST(CopyVariant, KeepsAValueCopiedToItself) {
    Value value = Text("same");
    CopyVariant(value.Get(), value);
    EXPECT_STREQ(VariantToString(value), "same");
}

class Sum {
public:
    Sum(const VARIANT& first, const VARIANT& second) : value_(VariantPlus(first, second)) {}
    Sum(const Sum&) = delete;
    Sum& operator=(const Sum&) = delete;
    ~Sum() { VariantClear(&value_); }
    const VARIANT& Get() const { return value_; }

private:
    VARIANT value_;
};

TEST(VariantPlus, AddsAsThePlatformDoes) {
    const Sum integers(Int4(40), Int4(2));
    EXPECT_EQ(integers.Get().vt, VT_I4);
    EXPECT_EQ(integers.Get().lVal, 42);

    const Sum reals(Real8(0.5), Int4(1));
    EXPECT_EQ(reals.Get().vt, VT_R8);
    EXPECT_EQ(reals.Get().dblVal, 1.5);

    const Sum texts(Text("库"), Text("存"));
    EXPECT_EQ(texts.Get().vt, VT_BSTR);
    EXPECT_STREQ(VariantToString(texts.Get()), "库存");

    const Sum withNull(Int4(1), Value(VT_NULL));
    EXPECT_EQ(withNull.Get().vt, VT_NULL);

    const Sum digits(Text("2"), Int4(3));
    EXPECT_EQ(digits.Get().vt, VT_R8);
    EXPECT_EQ(digits.Get().dblVal, 5.0);

    const Sum dates(Date(1.0), Real8(0.5));
    EXPECT_EQ(dates.Get().vt, VT_DATE);
    EXPECT_EQ(dates.Get().date, 1.5);

    const Sum withNothing(Value(VT_EMPTY), Int4(3));
    EXPECT_EQ(withNothing.Get().vt, VT_I4);
    EXPECT_EQ(withNothing.Get().lVal, 3);
}

TEST(VariantPlus, IsEmptyWhenTheTwoCannotBeAdded) {
    const Sum sum(Bytes("a"), Int4(1));
    EXPECT_EQ(sum.Get().vt, VT_EMPTY);
    const Sum text(Text("no number"), Int4(1));
    EXPECT_EQ(text.Get().vt, VT_EMPTY);
}

TEST(VariantPlus, LeavesItsArgumentsAsTheyAre) {
    const Value first = Text("a");
    const Value second = Text("b");
    const Sum sum(first, second);
    EXPECT_STREQ(VariantToString(first), "a");
    EXPECT_STREQ(VariantToString(second), "b");
}

}  // namespace
