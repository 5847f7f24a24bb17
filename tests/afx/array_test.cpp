#include <afx.h>
#include <gtest/gtest.h>

#include "afx/raises.h"

namespace {

CString Joined(const CStringArray& array) {
    CString text;
    for (int i = 0; i < array.GetSize(); ++i) {
        if (i > 0) text += ',';
        text += array[i];
    }
    return text;
}

TEST(StringArray, KeepsElementsInOrder) {
    CStringArray array;
    EXPECT_EQ(array.GetSize(), 0);
    EXPECT_EQ(array.GetUpperBound(), -1);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetData(), nullptr);
    EXPECT_EQ(array.Add("a"), 0);
    EXPECT_EQ(array.Add(CString("b")), 1);
    EXPECT_EQ(array.GetUpperBound(), 1);
    EXPECT_STREQ(array.GetAt(0), "a");
    EXPECT_STREQ(array[1], "b");
    array.SetAt(0, "c");
    array[1] += "!";
    array.ElementAt(0) += "?";
    EXPECT_STREQ(Joined(array), "c?,b!");
    EXPECT_STREQ(array.GetData()[1], "b!");
}

TEST(StringArray, GrowsToTheIndexThatIsSet) {
    CStringArray array;
    array.SetAtGrow(2, "x");
    EXPECT_EQ(array.GetSize(), 3);
    EXPECT_STREQ(Joined(array), ",,x");
    array.SetAtGrow(0, "y");
    EXPECT_STREQ(Joined(array), "y,,x");
    array.SetAtGrow(9, array[2]);
    EXPECT_STREQ(array[9], "x") << "an element of the array itself";
}

TEST(StringArray, ChangesItsSize) {
    CStringArray array;
    array.SetSize(3, 10);
    EXPECT_STREQ(Joined(array), ",,");
    array.SetAt(0, "a");
    array.SetSize(1);
    EXPECT_STREQ(Joined(array), "a");
    array.FreeExtra();
    array.SetSize(0);
    EXPECT_TRUE(array.IsEmpty());
    array.Add("b");
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
}

TEST(StringArray, InsertsAndRemovesRuns) {
    CStringArray array;
    array.Add("a");
    array.Add("d");
    array.InsertAt(1, "b", 2);
    EXPECT_STREQ(Joined(array), "a,b,b,d");
    array.InsertAt(0, array[3]);
    EXPECT_STREQ(Joined(array), "d,a,b,b,d");
    array.InsertAt(6, "e");
    EXPECT_STREQ(Joined(array), "d,a,b,b,d,,e") << "beyond the end the array grows";
    array.InsertAt(1, "n", 0);
    EXPECT_EQ(array.GetSize(), 7);
    array.RemoveAt(5);
    array.RemoveAt(1, 3);
    EXPECT_STREQ(Joined(array), "d,d,e");
    array.RemoveAt(3, 0);
    array.InsertAt(1, &array);
    EXPECT_STREQ(Joined(array), "d,d,d,e,d,e");
    array.RemoveAt(0, 6);
    EXPECT_TRUE(array.IsEmpty());
}

TEST(StringArray, CopiesAndAppendsOtherArrays) {
    CStringArray first;
    first.Add("a");
    CStringArray second;
    second.Add("b");
    second.Add("c");
    EXPECT_EQ(first.Append(second), 1);
    EXPECT_STREQ(Joined(first), "a,b,c");
    EXPECT_EQ(first.Append(first), 3);
    EXPECT_STREQ(Joined(first), "a,b,c,a,b,c");
    first.Copy(second);
    EXPECT_STREQ(Joined(first), "b,c");
    first.Copy(first);
    EXPECT_STREQ(Joined(first), "b,c");
}

TEST(StringArray, RaisesForIndexesThatDoNotExist) {
    CStringArray array;
    array.Add("a");
    const CStringArray& constant = array;
    const auto kInvalid = "CInvalidArgException";
    EXPECT_EQ(Raised([&] { array.GetAt(1); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.GetAt(-1); }), kInvalid);
    EXPECT_EQ(Raised([&] { constant[1]; }), kInvalid);
    EXPECT_EQ(Raised([&] { array[-1] = "x"; }), kInvalid);
    EXPECT_EQ(Raised([&] { array.ElementAt(1); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.SetAt(1, "x"); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.SetAtGrow(-1, "x"); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.SetSize(-1); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.InsertAt(-1, "x"); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.InsertAt(0, "x", -1); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.InsertAt(0, static_cast<CStringArray*>(nullptr)); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.RemoveAt(1); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.RemoveAt(0, 2); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.RemoveAt(0, -1); }), kInvalid);
    EXPECT_EQ(Raised([&] { array.RemoveAt(-1); }), kInvalid);
    EXPECT_STREQ(Joined(array), "a");
}

TEST(DWordArray, KeepsUnsignedNumbers) {
    CDWordArray array;
    array.Add(0xFFFFFFFFu);
    array.SetAtGrow(2, 7);
    EXPECT_EQ(array.GetSize(), 3);
    EXPECT_EQ(array[0], 0xFFFFFFFFu);
    EXPECT_EQ(array[1], 0u);
    EXPECT_EQ(array[2], 7u);
    array[1] = 5;
    EXPECT_EQ(array.GetData()[1], 5u);
    array.InsertAt(0, 1);
    EXPECT_EQ(array[0], 1u);
    EXPECT_EQ(Raised([&] { array.GetAt(4); }), "CInvalidArgException");
}

TEST(ByteArray, StartsNewElementsAtZero) {
    CByteArray array;
    array.SetSize(3);
    EXPECT_EQ(array[2], 0);
    array.Add(255);
    EXPECT_EQ(array[3], 255);
}

TEST(ArrayClasses, KnowTheirNames) {
    EXPECT_STREQ(CStringArray().GetRuntimeClass()->m_lpszClassName, "CStringArray");
    EXPECT_TRUE(CDWordArray().IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(CDWordArray().IsKindOf(RUNTIME_CLASS(CStringArray)));
}

}  // namespace
