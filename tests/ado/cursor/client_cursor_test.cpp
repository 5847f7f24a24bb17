#include "ado/cursor/client_cursor.h"

#include <gtest/gtest.h>

#include "sample_rows.h"

namespace tk::ado::test {
namespace {

constexpr int kNoRecord = 3021;
constexpr int kInvalid = 3001;

/// Where a cursor is: a row number from 1, "BOF", "EOF" or "both".
std::string PlaceOf(ClientCursor& cursor) {
    const bool bof = cursor.Bof();
    const bool eof = cursor.Eof();
    if (bof && eof) return "both";
    if (bof) return "BOF";
    if (eof) return "EOF";
    return std::to_string(cursor.Row() + 1) + (cursor.IsOnDeletedRow() ? " deleted" : "");
}

enum class Start { Bof, First, Middle, Last, Eof };

void Bring(ClientCursor& cursor, Start start) {
    cursor.MoveFirst();
    switch (start) {
        case Start::Bof:
            cursor.MovePrevious();
            break;
        case Start::First:
            break;
        case Start::Middle:
            cursor.MoveNext();
            break;
        case Start::Last:
            cursor.MoveLast();
            break;
        case Start::Eof:
            cursor.MoveLast();
            cursor.MoveNext();
            break;
    }
}

TEST(ClientCursor, MovesByTheTableOfPositions) {
    using Step = void (*)(ClientCursor&);
    const Step first = [](ClientCursor& cursor) { cursor.MoveFirst(); };
    const Step last = [](ClientCursor& cursor) { cursor.MoveLast(); };
    const Step next = [](ClientCursor& cursor) { cursor.MoveNext(); };
    const Step previous = [](ClientCursor& cursor) { cursor.MovePrevious(); };
    const Step forwardTwo = [](ClientCursor& cursor) { cursor.Move(2); };
    const Step backTwo = [](ClientCursor& cursor) { cursor.Move(-2); };
    const Step farForward = [](ClientCursor& cursor) { cursor.Move(0x7FFFFFFF); };
    const Step farBack = [](ClientCursor& cursor) { cursor.Move(-0x7FFFFFFF - 1); };
    const Step nowhere = [](ClientCursor& cursor) { cursor.Move(0); };
    const struct {
        const char* label;
        Start start;
        Step step;
        int error;
        const char* place;
    } kRows[] = {
        {"first from BOF", Start::Bof, first, 0, "1"},
        {"first from EOF", Start::Eof, first, 0, "1"},
        {"last from BOF", Start::Bof, last, 0, "3"},
        {"last from EOF", Start::Eof, last, 0, "3"},
        {"next from BOF", Start::Bof, next, 0, "1"},
        {"next from the first", Start::First, next, 0, "2"},
        {"next from the last", Start::Last, next, 0, "EOF"},
        {"next from EOF", Start::Eof, next, kNoRecord, "EOF"},
        {"previous from BOF", Start::Bof, previous, kNoRecord, "BOF"},
        {"previous from the first", Start::First, previous, 0, "BOF"},
        {"previous from the last", Start::Last, previous, 0, "2"},
        {"previous from EOF", Start::Eof, previous, 0, "3"},
        {"two on from BOF", Start::Bof, forwardTwo, 0, "2"},
        {"two on from the first", Start::First, forwardTwo, 0, "3"},
        {"two on past the end", Start::Middle, forwardTwo, 0, "EOF"},
        {"two on from EOF", Start::Eof, forwardTwo, kNoRecord, "EOF"},
        {"two back from EOF", Start::Eof, backTwo, 0, "2"},
        {"two back past the start", Start::Middle, backTwo, 0, "BOF"},
        {"two back from BOF", Start::Bof, backTwo, kNoRecord, "BOF"},
        {"the largest step", Start::First, farForward, 0, "EOF"},
        {"the largest step back", Start::Last, farBack, 0, "BOF"},
        {"none from BOF", Start::Bof, nowhere, kNoRecord, "BOF"},
        {"none from EOF", Start::Eof, nowhere, kNoRecord, "EOF"},
        {"none on a row", Start::Middle, nowhere, 0, "2"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        ClientCursor cursor(Counted(3));
        Bring(cursor, row.start);
        EXPECT_EQ(ErrorOf([&] { row.step(cursor); }), row.error);
        EXPECT_EQ(PlaceOf(cursor), row.place);
    }
}

TEST(ClientCursor, RefusesEveryMoveOnAnEmptySet) {
    ClientCursor cursor(Counted(0));
    EXPECT_EQ(PlaceOf(cursor), "both");
    EXPECT_EQ(cursor.AbsolutePosition(), -1);
    EXPECT_EQ(cursor.Count(), 0u);
    EXPECT_EQ(ErrorOf([&] { cursor.MoveFirst(); }), kNoRecord);
    EXPECT_EQ(ErrorOf([&] { cursor.MoveLast(); }), kNoRecord);
    EXPECT_EQ(ErrorOf([&] { cursor.MoveNext(); }), kNoRecord);
    EXPECT_EQ(ErrorOf([&] { cursor.MovePrevious(); }), kNoRecord);
    for (const LONG count : {-1, 0, 1})
        EXPECT_EQ(ErrorOf([&] { cursor.Move(count); }), kNoRecord) << count;
    EXPECT_EQ(ErrorOf([&] { cursor.Row(); }), kNoRecord);
    EXPECT_EQ(ErrorOf([&] { cursor.MoveTo(0); }), kNoRecord);
    EXPECT_EQ(ErrorOf([&] { cursor.SetAbsolutePosition(1, 1); }), kInvalid);
    EXPECT_EQ(PlaceOf(cursor), "both");
}

TEST(ClientCursor, TellsItsPositionFromOne) {
    ClientCursor cursor(Counted(4));
    EXPECT_EQ(cursor.AbsolutePosition(), 1);
    cursor.MovePrevious();
    EXPECT_EQ(cursor.AbsolutePosition(), -2);
    cursor.MoveLast();
    EXPECT_EQ(cursor.AbsolutePosition(), 4);
    cursor.MoveNext();
    EXPECT_EQ(cursor.AbsolutePosition(), -3);
    cursor.SetAbsolutePosition(2, 2);
    EXPECT_EQ(PlaceOf(cursor), "2");
    for (const LONG outside : {0, -1, 5}) {
        EXPECT_EQ(ErrorOf([&] { cursor.SetAbsolutePosition(outside, outside); }), kInvalid) << outside;
    }
    EXPECT_EQ(PlaceOf(cursor), "2");
}

TEST(ClientCursor, CountsAMoveFromAGivenRow) {
    ClientCursor cursor(Counted(5));
    cursor.MoveLast();
    cursor.MoveNext();
    cursor.MoveFrom(1, 2);
    EXPECT_EQ(PlaceOf(cursor), "4");
    cursor.MoveFrom(0, -1);
    EXPECT_EQ(PlaceOf(cursor), "BOF");
    cursor.MoveFrom(4, 1);
    EXPECT_EQ(PlaceOf(cursor), "EOF");
    EXPECT_EQ(ErrorOf([&] { cursor.MoveFrom(5, 0); }), kInvalid);
}

TEST(ClientCursor, ShowsTheFilteredRowsOnly) {
    ClientCursor cursor(Counted(10));
    cursor.SetFilter([](std::size_t row) { return row % 3 == 1; });  // 2, 5, 8
    EXPECT_EQ(cursor.Count(), 3u);
    EXPECT_EQ(PlaceOf(cursor), "2");
    cursor.MoveLast();
    EXPECT_EQ(PlaceOf(cursor), "8");
    EXPECT_EQ(cursor.AbsolutePosition(), 3);
    EXPECT_EQ(ErrorOf([&] { cursor.MoveTo(0); }), kInvalid);
    cursor.MoveTo(4);
    EXPECT_EQ(cursor.AbsolutePosition(), 2);
    cursor.SetFilter([](std::size_t) { return false; });
    EXPECT_EQ(PlaceOf(cursor), "both");
    cursor.SetFilter({});
    EXPECT_EQ(PlaceOf(cursor), "1");
    EXPECT_EQ(cursor.Count(), 10u);
}

TEST(ClientCursor, StaysOnADeletedRowBetweenItsNeighbours) {
    const auto store = Counted(4);
    ClientCursor cursor(store);
    cursor.Move(1);
    store->Delete(1, kStatusDeleted);
    EXPECT_EQ(PlaceOf(cursor), "2 deleted");
    EXPECT_EQ(cursor.Count(), 3u);
    EXPECT_FALSE(cursor.LiveRow().has_value());
    cursor.MoveNext();
    EXPECT_EQ(PlaceOf(cursor), "3");
    EXPECT_EQ(cursor.AbsolutePosition(), 2);
    store->Delete(2, kStatusDeleted);
    cursor.MovePrevious();
    EXPECT_EQ(PlaceOf(cursor), "1");
    cursor.MoveNext();
    EXPECT_EQ(PlaceOf(cursor), "4");
}

TEST(ClientCursor, StaysOnTheLastRowThatIsDeletedUntilItIsMoved) {
    const auto store = Counted(1);
    ClientCursor cursor(store);
    store->Delete(0, kStatusDeleted);
    EXPECT_EQ(PlaceOf(cursor), "1 deleted");
    cursor.MoveNext();
    EXPECT_EQ(PlaceOf(cursor), "both");
    EXPECT_EQ(ErrorOf([&] { cursor.MoveFirst(); }), kNoRecord);
}

TEST(ClientCursor, CountsASecondMoveFromTheGapOfADeletedRow) {
    const auto store = Counted(5);
    ClientCursor cursor(store);
    cursor.Move(2);
    store->Delete(2, kStatusDeleted);
    cursor.Move(1);
    EXPECT_EQ(PlaceOf(cursor), "4");
    cursor.MoveTo(3);
    store->Delete(3, kStatusDeleted);
    cursor.Move(-2);
    EXPECT_EQ(PlaceOf(cursor), "1");
}

TEST(ClientCursor, WalksThroughDeletedRowsThatAreShown) {
    const auto store = Counted(5);
    ClientCursor cursor(store);
    for (const std::size_t row : {0, 2, 3, 4})
        store->Delete(row, kStatusPending | kStatusDeleted);
    cursor.SetFilter([&](std::size_t row) { return (store->Status(row) & kStatusPending) != 0; }, true);
    EXPECT_EQ(cursor.Count(), 4u);
    for (const char* const place : {"1 deleted", "3 deleted", "4 deleted", "5 deleted", "EOF"}) {
        EXPECT_EQ(PlaceOf(cursor), place);
        if (std::string(place) != "EOF") cursor.MoveNext();
    }
    for (const char* const place : {"5 deleted", "4 deleted", "3 deleted", "1 deleted", "BOF"}) {
        cursor.MovePrevious();
        EXPECT_EQ(PlaceOf(cursor), place);
    }
    cursor.MoveFirst();
    cursor.Move(2);
    EXPECT_EQ(PlaceOf(cursor), "4 deleted");
    cursor.Move(-1);
    EXPECT_EQ(PlaceOf(cursor), "3 deleted");
    cursor.Move(5);
    EXPECT_EQ(PlaceOf(cursor), "EOF");
}

TEST(ClientCursor, FollowsWhatAnotherCursorDoes) {
    const auto store = Counted(5);
    ClientCursor one(store);
    ClientCursor other(store);
    other.MoveTo(3);
    store->Delete(0, kStatusDeleted);
    store->Delete(4, kStatusDeleted);
    EXPECT_EQ(PlaceOf(one), "1 deleted");
    EXPECT_EQ(PlaceOf(other), "4");
    EXPECT_EQ(other.AbsolutePosition(), 3);
    other.MoveNext();
    EXPECT_EQ(PlaceOf(other), "EOF");
    const std::vector<std::optional<Value>> fresh = {Number(99)};
    const std::size_t added = store->Add(fresh, kStatusOk);
    EXPECT_EQ(added, 5u);
    one.MoveLast();
    EXPECT_EQ(PlaceOf(one), "6");
    EXPECT_EQ(one.Count(), 4u);
    store->Restore(0, kStatusUnmodified);
    one.MoveFirst();
    EXPECT_EQ(PlaceOf(one), "1");
}

TEST(ClientCursor, StandsOnAnAddedRowThatTheFilterWouldHide) {
    const auto store = Counted(3);
    ClientCursor cursor(store);
    cursor.SetFilter([](std::size_t row) { return row < 2; });
    const std::vector<std::optional<Value>> fresh = {Number(7)};
    cursor.StandOnAdded(store->Add(fresh, kStatusOk));
    EXPECT_EQ(PlaceOf(cursor), "4");
    EXPECT_EQ(cursor.Count(), 3u);
    cursor.MoveNext();
    EXPECT_EQ(PlaceOf(cursor), "EOF");
}

TEST(ClientCursor, FindsForwardAndBackward) {
    const auto store = Goods();
    ClientCursor cursor(store);
    const auto find = [&](const char16_t* text, LONG skip, bool backward, std::optional<std::size_t> start) {
        cursor.Find(Criteria::ParseFind(text, store->Columns()), skip, backward, start);
        return PlaceOf(cursor);
    };
    EXPECT_EQ(find(u"id >= 1", 0, false, {}), "1");
    EXPECT_EQ(find(u"id >= 1", 1, false, {}), "2");
    EXPECT_EQ(find(u"flag = True", 0, false, {}), "4");
    EXPECT_EQ(find(u"flag = True", 1, true, {}), "1");
    EXPECT_EQ(find(u"name = 'nobody'", 0, true, {}), "BOF");
    EXPECT_EQ(ErrorOf([&] { find(u"id = 1", 0, false, {}); }), kNoRecord);
    EXPECT_EQ(find(u"id = 5", 0, false, 0), "5");
    EXPECT_EQ(find(u"id = 1", 0, false, {}), "EOF");
    EXPECT_EQ(ErrorOf([&] { find(u"id = 1", 0, false, {}); }), kNoRecord);
    EXPECT_EQ(ErrorOf([&] { find(u"id = 1", 0, false, 9); }), kInvalid);
}

TEST(ClientCursor, PassesOverDeletedRowsWhenItFinds) {
    const auto store = Counted(4);
    ClientCursor cursor(store);
    store->Delete(0, kStatusDeleted);
    cursor.Find(Criteria::ParseFind(u"id > 0", store->Columns()), 0, false, {});
    EXPECT_EQ(PlaceOf(cursor), "2");
}

TEST(ClientCursor, FindsTheNeighboursOfARowThatWasJustDeleted) {
    static constexpr struct {
        LONG skip;
        bool isBackward;
        const char* place;
    } kRows[] = {
        {0, false, "4"}, {1, false, "4"}, {2, false, "5"}, {3, false, "EOF"}, {-1, false, "2"}, {-2, false, "1"},
        {0, true, "2"},  {1, true, "2"},  {2, true, "1"},  {3, true, "BOF"},  {-1, true, "4"},  {-2, true, "5"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(::testing::Message() << row.skip << " " << row.isBackward);
        const auto store = Counted(5);
        ClientCursor cursor(store);
        cursor.MoveTo(2);
        store->Delete(2, kStatusDeleted);
        ASSERT_EQ(PlaceOf(cursor), "3 deleted");
        cursor.Find(Criteria::ParseFind(u"id > 0", store->Columns()), row.skip, row.isBackward, {});
        EXPECT_EQ(PlaceOf(cursor), row.place);
    }
}

TEST(ClientCursor, ComparesRowsByTheOrderShown) {
    const auto store = Counted(3);
    ClientCursor cursor(store);
    EXPECT_LT(cursor.Compare(0, 2), 0);
    cursor.SetSort(ParseSort(u"id desc", store->Columns()));
    EXPECT_GT(cursor.Compare(0, 2), 0);
    EXPECT_EQ(cursor.Compare(1, 1), 0);
    EXPECT_EQ(PlaceOf(cursor), "3");
    cursor.MoveTo(0);
    EXPECT_EQ(cursor.AbsolutePosition(), 3);
}

}  // namespace
}  // namespace tk::ado::test
