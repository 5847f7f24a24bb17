#include "ado/cursor/row_store.h"

#include <gtest/gtest.h>

#include "sample_rows.h"

namespace tk::ado::test {
namespace {

LONG Current(const RowStore& store, std::size_t row) {
    Value value;
    store.Read(row, 0, *value.Out());
    return value.Get().lVal;
}

LONG Original(const RowStore& store, std::size_t row) {
    Value value;
    store.ReadOriginal(row, 0, *value.Out());
    return value.Get().lVal;
}

LONG Underlying(const RowStore& store, std::size_t row) {
    Value value;
    store.ReadUnderlying(row, 0, *value.Out());
    return value.Get().lVal;
}

TEST(RowStore, KeepsTheOriginalUntilAChangeIsAccepted) {
    const auto store = Counted(2);
    const std::vector<std::optional<Value>> changed = {Number(20)};
    EXPECT_EQ(store->Status(1), 8);
    store->Change(1, changed, kStatusPending | kStatusModified);
    EXPECT_EQ(Current(*store, 1), 20);
    EXPECT_EQ(Original(*store, 1), 2);
    EXPECT_EQ(store->Status(1), 0x82);
    EXPECT_EQ(store->PendingRows(), std::vector<std::size_t>{1});
    store->Revert(1, kStatusUnmodified);
    EXPECT_EQ(Current(*store, 1), 2);
    store->Change(1, changed, kStatusOk);
    store->Accept(1, kStatusOk);
    EXPECT_EQ(Original(*store, 1), 20);
    EXPECT_EQ(Underlying(*store, 1), 20);
    EXPECT_EQ(Current(*store, 0), 1);
}

TEST(RowStore, TakesOverUnderlyingValuesAlone) {
    const auto store = Counted(1);
    const auto read = [] { return Rows(Columns({{u"id", kInteger}}), {{Number(5)}}); };
    store->Refresh(0, read(), {0}, true);
    EXPECT_EQ(Underlying(*store, 0), 5);
    EXPECT_EQ(Original(*store, 0), 1);
    EXPECT_EQ(Current(*store, 0), 1);
    store->Refresh(0, read(), {0}, false);
    EXPECT_EQ(Original(*store, 0), 5);
    EXPECT_EQ(Current(*store, 0), 5);
}

TEST(RowStore, LeavesTheOtherColumnsOfAChangedRowWhereTheyWereRead) {
    const auto store = Goods();
    std::vector<std::optional<Value>> changed(6);
    changed[1] = Text(u"pear");
    const char* const code = store->TextAt(3, 5)->data();
    store->Change(3, changed, kStatusOk);
    EXPECT_EQ(store->TextAt(3, 5)->data(), code);
    EXPECT_EQ(*store->TextAt(3, 1), "pear");
}

TEST(RowStore, NumbersAddedRowsBehindTheFetchedOnes) {
    const auto store = Counted(2);
    const std::vector<std::optional<Value>> fresh = {Number(30)};
    EXPECT_EQ(store->Add(fresh, kStatusNew), 2u);
    EXPECT_EQ(store->Add(fresh, kStatusNew), 3u);
    EXPECT_EQ(store->CountRows(), 4u);
    EXPECT_TRUE(store->HasRow(3));
    EXPECT_FALSE(store->HasRow(4));
    EXPECT_EQ(Current(*store, 3), 30);
    EXPECT_EQ(store->Status(2), 1);
}

TEST(RowStore, CountsDeletedRowsOnce) {
    const auto store = Counted(2);
    const auto before = store->Version();
    store->Delete(0, kStatusDeleted);
    const auto after = store->Version();
    EXPECT_NE(before, after);
    store->Delete(0, kStatusDeleted);
    EXPECT_EQ(store->Version(), after);
    EXPECT_TRUE(store->HasDeletedRows());
    EXPECT_TRUE(store->HasRow(0));
    store->Restore(0, kStatusUnmodified);
    EXPECT_FALSE(store->HasDeletedRows());
    EXPECT_FALSE(store->IsDeleted(0));
}

}  // namespace
}  // namespace tk::ado::test
