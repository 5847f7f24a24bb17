#include <afx.h>
#include <gtest/gtest.h>

#include "afx/raises.h"

namespace {

CString Forward(const CStringList& list) {
    CString text;
    for (POSITION at = list.GetHeadPosition(); at != nullptr;)
        text += list.GetNext(at);
    return text;
}

CString Backward(const CStringList& list) {
    CString text;
    for (POSITION at = list.GetTailPosition(); at != nullptr;)
        text += list.GetPrev(at);
    return text;
}

TEST(StringList, GrowsAtBothEnds) {
    CStringList list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);
    list.AddTail("b");
    list.AddTail(CString("c"));
    list.AddHead("a");
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(list.GetSize(), 3);
    EXPECT_STREQ(Forward(list), "abc");
    EXPECT_STREQ(Backward(list), "cba");
    EXPECT_STREQ(list.GetHead(), "a");
    EXPECT_STREQ(list.GetTail(), "c");
    list.GetHead() = "A";
    list.GetTail() += "!";
    EXPECT_STREQ(Forward(list), "Abc!");
}

TEST(StringList, GivesUpItsEnds) {
    CStringList list;
    for (const char* text : {"a", "b", "c"})
        list.AddTail(text);
    EXPECT_STREQ(list.RemoveHead(), "a");
    EXPECT_STREQ(list.RemoveTail(), "c");
    EXPECT_STREQ(list.RemoveTail(), "b");
    EXPECT_TRUE(list.IsEmpty());
    list.AddHead("again");
    EXPECT_STREQ(Forward(list), "again");
    list.RemoveAll();
    EXPECT_EQ(list.GetCount(), 0);
}

TEST(StringList, InsertsAndRemovesAtPositions) {
    CStringList list;
    list.AddTail("b");
    const POSITION b = list.GetHeadPosition();
    const POSITION a = list.InsertBefore(b, "a");
    const POSITION d = list.InsertAfter(b, "d");
    list.InsertAfter(b, "c");
    EXPECT_STREQ(Forward(list), "abcd");
    EXPECT_STREQ(Backward(list), "dcba");
    list.InsertBefore(nullptr, "<");
    list.InsertAfter(nullptr, ">");
    EXPECT_STREQ(Forward(list), "<abcd>");
    list.RemoveAt(b);
    EXPECT_STREQ(Forward(list), "<acd>");
    list.SetAt(d, "D");
    EXPECT_STREQ(list.GetAt(d), "D");
    list.GetAt(a) = "A";
    EXPECT_STREQ(Backward(list), ">DcA<");
}

TEST(StringList, FindsElementsByValueAndIndex) {
    CStringList list;
    for (const char* text : {"a", "b", "a"})
        list.AddTail(text);
    const POSITION first = list.Find("a");
    EXPECT_EQ(first, list.GetHeadPosition());
    EXPECT_EQ(list.Find("a", first), list.GetTailPosition());
    EXPECT_EQ(list.Find("a", list.GetTailPosition()), nullptr);
    EXPECT_EQ(list.Find("x"), nullptr);
    EXPECT_EQ(list.FindIndex(0), first);
    EXPECT_EQ(list.FindIndex(2), list.GetTailPosition());
    EXPECT_EQ(list.FindIndex(3), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
}

TEST(StringList, JoinsLists) {
    CStringList list;
    list.AddTail("a");
    list.AddTail("b");
    CStringList other;
    other.AddTail("1");
    other.AddTail("2");
    list.AddTail(&other);
    EXPECT_STREQ(Forward(list), "ab12");
    list.AddHead(&other);
    EXPECT_STREQ(Forward(list), "12ab12");
    other.AddTail(&other);
    EXPECT_STREQ(Forward(other), "1212");
    other.AddHead(&other);
    EXPECT_STREQ(Forward(other), "12121212");
    EXPECT_STREQ(Backward(other), "21212121");
}

TEST(StringList, RaisesWhereThereIsNoElement) {
    CStringList list;
    POSITION none = nullptr;
    const auto kInvalid = "CInvalidArgException";
    EXPECT_EQ(Raised([&] { list.GetHead(); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.GetTail(); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.RemoveHead(); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.RemoveTail(); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.GetNext(none); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.GetPrev(none); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.GetAt(none); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.SetAt(none, "x"); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.RemoveAt(none); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.AddTail(static_cast<CStringList*>(nullptr)); }), kInvalid);
    EXPECT_EQ(Raised([&] { list.AddHead(static_cast<CStringList*>(nullptr)); }), kInvalid);
}

}  // namespace
