#include <gtest/gtest.h>

#include <cstddef>
#include <thread>

#include "tkkernel/catalog.h"

namespace tk::test {
namespace {

using Fields = CTArray<_tagFIELDINFO, _tagFIELDINFO&>;

_tagFIELDINFO Numbered(int ordinal) {
    _tagFIELDINFO field = {};
    field.nOrdinal = ordinal;
    return field;
}

TEST(FieldInfo, HasItsLayout) {
    EXPECT_EQ(sizeof(_tagFIELDINFO), 484u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, szType), 64u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nSize), 128u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nPrecision), 132u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nScale), 136u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nHasDefault), 140u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, szDefault), 144u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, szNull), 208u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nNullable), 272u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nFlags), 276u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, szCatalog), 280u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, szTable), 344u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, szSchema), 408u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nOrdinal), 472u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nPrimaryKey), 476u);
    EXPECT_EQ(offsetof(_tagFIELDINFO, nReserved), 480u);
}

TEST(FieldArray, GrowsWithZeros) {
    Fields fields;
    EXPECT_EQ(fields.GetSize(), 0);
    EXPECT_EQ(fields.GetUpperBound(), -1);
    _tagFIELDINFO field = Numbered(7);
    fields.SetAtGrow(2, field);
    EXPECT_EQ(fields.GetSize(), 3);
    EXPECT_EQ(fields.GetUpperBound(), 2);
    EXPECT_EQ(fields.GetAt(0).nOrdinal, 0);
    EXPECT_EQ(fields.GetAt(2).nOrdinal, 7);
    field.nOrdinal = 8;
    fields.SetAtGrow(1, field);
    EXPECT_EQ(fields.GetSize(), 3) << "nothing to grow";
    EXPECT_EQ(fields[1].nOrdinal, 8);
    EXPECT_EQ(fields.Add(field), 3);
    fields[3].nOrdinal = 9;
    EXPECT_EQ(fields.ElementAt(3).nOrdinal, 9);
    fields.SetAt(0, field);
    const Fields& constant = fields;
    EXPECT_EQ(constant[0].nOrdinal, 8);
    fields.SetAtGrow(4, fields.ElementAt(0));
    EXPECT_EQ(fields.GetAt(4).nOrdinal, 8) << "an element of its own";
    fields.SetSize(1);
    EXPECT_EQ(fields.GetSize(), 1);
    fields.SetSize(3, 16);
    EXPECT_EQ(fields.GetAt(2).nOrdinal, 0);
    fields.RemoveAll();
    EXPECT_EQ(fields.GetSize(), 0);
}

TEST(FieldArray, RefusesIndexesThatDoNotExist) {
    Fields fields;
    fields.SetSize(2);
    _tagFIELDINFO field = {};
    static constexpr int kNone[] = {-1, 2, 2147483647, -2147483647 - 1};
    for (const int index : kNone) {
        SCOPED_TRACE(index);
        for (const auto& use : {+[](Fields&f, int i, _tagFIELDINFO&) { static_cast<void>(f.GetAt(i)); },
                                +[](Fields&f, int i, _tagFIELDINFO&) { static_cast<void>(f.ElementAt(i)); },
                                +[](Fields&f, int i, _tagFIELDINFO&) { static_cast<void>(f[i]); },
                                +[](Fields&f, int i, _tagFIELDINFO&e) { f.SetAt(i, e); }}) {
            try {
                use(fields, index, field);
                ADD_FAILURE() << "no exception";
            } catch (CException* e) {
                EXPECT_TRUE(e->IsKindOf(RUNTIME_CLASS(CInvalidArgException)));
                e->Delete();
            }
        }
    }
    for (const auto& use :
         {+[](Fields&f, _tagFIELDINFO&e) { f.SetAtGrow(-1, e); }, +[](Fields&f, _tagFIELDINFO&) { f.SetSize(-1); }}) {
        try {
            use(fields, field);
            ADD_FAILURE() << "no exception";
        } catch (CException* e) {
            e->Delete();
        }
    }
    EXPECT_EQ(fields.GetSize(), 2);
    fields.Lock();  // the failures above left it
    fields.Unlock();
}

TEST(FieldArray, TakesStoresFromManyThreads) {
    Fields fields;
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&fields] {
            for (int i = 0; i < kEach; ++i) {
                _tagFIELDINFO field = Numbered(1);
                fields.Add(field);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_EQ(fields.GetSize(), kThreads * kEach);
    int sum = 0;
    for (int i = 0; i < fields.GetSize(); ++i)
        sum += fields.GetAt(i).nOrdinal;
    EXPECT_EQ(sum, kThreads * kEach);
}

TEST(FieldArray, KeepsOthersOutWhileLocked) {
    Fields fields;
    fields.Lock();
    fields.Lock();
    std::thread other([&fields] {
        _tagFIELDINFO field = {};
        fields.Add(field);
    });
    _tagFIELDINFO field = Numbered(1);
    fields.Add(field);
    EXPECT_EQ(fields.GetSize(), 1);
    fields.Unlock();
    EXPECT_EQ(fields.GetSize(), 1) << "locked twice";
    fields.Unlock();
    other.join();
    EXPECT_EQ(fields.GetSize(), 2);
    EXPECT_EQ(fields.GetAt(0).nOrdinal, 1);
}

}  // namespace
}  // namespace tk::test
