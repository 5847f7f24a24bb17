#include <afxdisp.h>
#include <gtest/gtest.h>

#include <cstring>

#include "afx/raises.h"

namespace {

TEST(OleSafeArray, HoldsOneDimension) {
    const BYTE kData[] = {1, 2, 3, 4};
    COleSafeArray array;
    EXPECT_EQ(array.vt, VT_EMPTY);
    EXPECT_EQ(array.GetDim(), 0u);
    array.CreateOneDim(VT_UI1, 4, kData, 10);
    EXPECT_EQ(array.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(array.GetDim(), 1u);
    EXPECT_EQ(array.GetElemSize(), 1u);
    EXPECT_EQ(array.GetOneDimSize(), 4u);
    long bound = 0;
    array.GetLBound(1, &bound);
    EXPECT_EQ(bound, 10);
    array.GetUBound(1, &bound);
    EXPECT_EQ(bound, 13);
    void* data = nullptr;
    array.AccessData(&data);
    EXPECT_EQ(std::memcmp(data, kData, 4), 0);
    array.UnaccessData();
    array.Lock();
    array.Unlock();
    array.ResizeOneDim(6);
    EXPECT_EQ(array.GetOneDimSize(), 6u);
    BYTE element = 99;
    const long kLast = 15;
    array.GetElement(&kLast, &element);
    EXPECT_EQ(element, 0);
}

TEST(OleSafeArray, HoldsSeveralDimensions) {
    COleSafeArray array;
    DWORD sizes[] = {2, 3};
    array.Create(VT_I4, 2, sizes);
    EXPECT_EQ(array.GetDim(), 2u);
    for (long row = 0; row < 2; ++row) {
        for (long column = 0; column < 3; ++column) {
            const long index[] = {row, column};
            LONG value = static_cast<LONG>(10 * row + column);
            array.PutElement(index, &value);
        }
    }
    const long kIndex[] = {1, 2};
    LONG value = 0;
    array.GetElement(kIndex, &value);
    EXPECT_EQ(value, 12);
    void* at = nullptr;
    array.PtrOfIndex(kIndex, &at);
    EXPECT_EQ(*static_cast<LONG*>(at), 12);
    long bound = 0;
    array.GetUBound(2, &bound);
    EXPECT_EQ(bound, 2);
    SAFEARRAYBOUND bounds[] = {{1, 5}, {1, -1}};
    array.Create(VT_R8, 2, bounds);
    array.GetLBound(2, &bound);
    EXPECT_EQ(bound, -1);
    EXPECT_EQ(array.GetElemSize(), 8u);
}

TEST(OleSafeArray, OwnsTheTextsInIt) {
    COleSafeArray array;
    array.CreateOneDim(VT_BSTR, 2);
    const long kFirst = 0;
    const BSTR text = SysAllocString(OLESTR("text"));
    array.PutElement(&kFirst, text);
    SysFreeString(text);
    BSTR copy = nullptr;
    array.GetElement(&kFirst, static_cast<void*>(&copy));
    EXPECT_STREQ(CString(copy), "text");
    SysFreeString(copy);
    COleSafeArray other(array);
    EXPECT_NE(other.parray, array.parray);
    EXPECT_FALSE(other == static_cast<const VARIANT&>(array)) << "texts never compare as equal";
}

TEST(OleSafeArray, CopiesAttachesAndDetaches) {
    const LONG kData[] = {5, 6};
    COleSafeArray array;
    array.CreateOneDim(VT_I4, 2, kData);
    COleSafeArray copy(array);
    EXPECT_TRUE(copy == static_cast<const VARIANT&>(array));
    EXPECT_TRUE(copy == *array.parray);
    COleSafeArray fromArray(*array.parray, VT_I4);
    EXPECT_TRUE(fromArray == static_cast<const VARIANT&>(array));
    EXPECT_TRUE(COleSafeArray(array.parray, VT_I4) == *array.parray);
    VARIANT detached = array.Detach();
    EXPECT_EQ(array.vt, VT_EMPTY);
    array.Attach(detached);
    EXPECT_EQ(detached.vt, VT_EMPTY);
    EXPECT_EQ(array.GetOneDimSize(), 2u);
    const VARIANT& plain = array;
    COleSafeArray fromVariant(plain);
    EXPECT_TRUE(fromVariant == plain);
    const LONG kOther[] = {5, 7};
    copy.CreateOneDim(VT_I4, 2, kOther);
    EXPECT_FALSE(copy == plain);
    copy.CreateOneDim(VT_I4, 2, kData, 1);
    EXPECT_FALSE(copy == plain) << "other bounds";
    array.Destroy();
    EXPECT_EQ(array.vt, VT_EMPTY);
}

TEST(OleSafeArray, RaisesWhatThePlatformAnswers) {
    COleSafeArray array;
    long index = 0;
    LONG value = 0;
    void* data = nullptr;
    EXPECT_EQ(RaisedCode([&] { array.GetElement(&index, &value); }), E_INVALIDARG);
    EXPECT_EQ(RaisedCode([&] { array.AccessData(&data); }), E_INVALIDARG);
    EXPECT_EQ(RaisedCode([&] { array.GetOneDimSize(); }), E_INVALIDARG);
    EXPECT_EQ(RaisedCode([&] { array.ResizeOneDim(3); }), E_INVALIDARG);
    EXPECT_EQ(RaisedCode([&] { array.Create(VT_I4, 0, static_cast<DWORD*>(nullptr)); }), E_INVALIDARG);
    EXPECT_EQ(RaisedCode([&] { array = COleVariant(5L); }), DISP_E_TYPEMISMATCH);
    array.CreateOneDim(VT_I4, 2);
    index = 2;
    EXPECT_EQ(RaisedCode([&] { array.GetElement(&index, &value); }), DISP_E_BADINDEX);
    EXPECT_EQ(RaisedCode([&] { array.PutElement(&index, &value); }), DISP_E_BADINDEX);
    EXPECT_EQ(RaisedCode([&] { array.GetElement(nullptr, &value); }), E_INVALIDARG);
    EXPECT_EQ(RaisedCode([&] { array.GetLBound(2, &index); }), DISP_E_BADINDEX);
    SAFEARRAY* const held = array.parray;
    array.Lock();
    EXPECT_EQ(RaisedCode([&] { array.Clear(); }), DISP_E_ARRAYISLOCKED);
    SafeArrayUnlock(held);
}

}  // namespace
