// Texts put together at random from what the grammars are made of: they are taken or refused, and nothing else happens.
#include <gtest/gtest.h>

#include <random>

#include "ado/cursor/client_cursor.h"
#include "sample_rows.h"

namespace tk::ado::test {
namespace {

constexpr const char16_t* kPieces[] = {
    u"id", u"name", u"price", u"born", u"flag", u"[item code]", u"nothing", u"[",     u"]",          u"(",      u")",
    u"=",  u"<",    u">",     u"<>",   u"<=",   u"LIKE",        u"IS",      u"NOT",   u"NULL",       u"AND",    u"OR",
    u"'",  u"''",   u"#",     u"'a*'", u"'%",   u"1",           u"-2.5",    u"$",     u"e9",         u"1e400",  u"TRUE",
    u"中", u",",    u"ASC",   u"DESC", u" ",    u"　",          u"\t",      u"'中%'", u"#7/4/2003#", u"\xD800", u"%",
};

class RandomText {
public:
    explicit RandomText(unsigned seed) : random_(seed) {}

    std::u16string Next() {
        std::u16string text;
        for (unsigned count = Below(14); count > 0; --count) {
            text += kPieces[Below(std::size(kPieces))];
            if (Below(3) != 0) text += u' ';
        }
        return text;
    }
    /// A clause or a few joined: inside the grammar, though not every value suits its column.
    std::u16string NextClauses() {
        static constexpr const char16_t* kNames[] = {u"id", u"name", u"price", u"[item code]", u"born", u"flag"};
        static constexpr const char16_t* kOperators[] = {u"=", u"<>", u"<", u">=", u" LIKE "};
        static constexpr const char16_t* kValues[] = {u"1", u"'a*'", u"-2.5", u"#7/4/2003#", u"NULL", u"'中'", u"TRUE"};
        static constexpr const char16_t* kJoints[] = {u" AND ", u" OR "};
        std::u16string text;
        for (unsigned count = Below(4) + 1; count > 0; --count) {
            text += kNames[Below(6)];
            text += kOperators[Below(5)];
            text += kValues[Below(7)];
            if (count > 1) text += kJoints[Below(2)];
        }
        return text;
    }
    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

private:
    std::mt19937 random_;
};

unsigned Seed() {
    const unsigned seed = std::random_device{}();
    ::testing::Test::RecordProperty("seed", std::to_string(seed));
    return seed;
}

TEST(RandomCriteria, AreTakenOrRefused) {
    const unsigned seed = Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText texts(seed);
    const auto store = Goods();
    int taken = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::u16string text = texts.Below(2) == 0 ? texts.Next() : texts.NextClauses();
        const int error = ErrorOf([&] {
            const Criteria criteria = Criteria::ParseFilter(text, store->Columns());
            for (std::size_t row = 0; row < 5; ++row)
                criteria.Matches(*store, row);
            ++taken;
        });
        ASSERT_TRUE(error == 0 || error == 3001 || error == 3265) << error << " for " << ToUtf8(text);
        const int sortError = ErrorOf([&] { ParseSort(text, store->Columns()); });
        ASSERT_TRUE(sortError == 0 || sortError == 3001 || sortError == 3265) << sortError << " for " << ToUtf8(text);
    }
    // A generator that never meets the grammar would prove nothing.
    EXPECT_GT(taken, 500);
}

/// A list kept by hand beside the cursor: what is visible and where it stands.
TEST(RandomMoves, AgreeWithAPlainList) {
    const unsigned seed = Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText random(seed);
    for (int round = 0; round < 200; ++round) {
        const auto size = static_cast<long long>(random.Below(8));
        ClientCursor cursor(Counted(static_cast<LONG>(size)));
        long long place = 0;  // -1: BOF, size: EOF
        for (int step = 0; step < 40; ++step) {
            const bool atBof = place < 0 || size == 0;
            const bool atEof = place >= size || size == 0;
            int expected = 0;
            int error = 0;
            switch (random.Below(5)) {
                case 0:
                    expected = size == 0 ? 3021 : 0;
                    if (size != 0) place = 0;
                    error = ErrorOf([&] { cursor.MoveFirst(); });
                    break;
                case 1:
                    expected = size == 0 ? 3021 : 0;
                    if (size != 0) place = size - 1;
                    error = ErrorOf([&] { cursor.MoveLast(); });
                    break;
                case 2:
                    expected = atEof ? 3021 : 0;
                    if (!atEof) ++place;
                    error = ErrorOf([&] { cursor.MoveNext(); });
                    break;
                case 3:
                    expected = atBof ? 3021 : 0;
                    if (!atBof) --place;
                    error = ErrorOf([&] { cursor.MovePrevious(); });
                    break;
                default: {
                    const LONG count = static_cast<LONG>(random.Below(13)) - 6;
                    const bool refused =
                        (count > 0 && atEof) || (count < 0 && atBof) || (count == 0 && (atBof || atEof));
                    expected = refused ? 3021 : 0;
                    if (!refused) place = std::clamp(place + count, -1LL, size);
                    error = ErrorOf([&] { cursor.Move(count); });
                }
            }
            ASSERT_EQ(error, expected) << "round " << round << " step " << step;
            ASSERT_EQ(cursor.Bof(), place < 0 || size == 0);
            ASSERT_EQ(cursor.Eof(), place >= size || size == 0);
            if (place >= 0 && place < size) {
                ASSERT_EQ(cursor.Row(), static_cast<std::size_t>(place));
            }
        }
    }
}

/// Deletions, additions, filters and sorts in any order: two cursors on one store always show the same rows as a list.
TEST(RandomChanges, ShowTheSameRowsToEveryCursor) {
    const unsigned seed = Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText random(seed);
    for (int round = 0; round < 100; ++round) {
        const auto store = Counted(static_cast<LONG>(random.Below(10)));
        ClientCursor plain(store);
        ClientCursor sorted(store);
        sorted.SetSort(ParseSort(u"id DESC", store->Columns()));
        LONG next = 100;
        for (int step = 0; step < 30; ++step) {
            const std::size_t count = store->CountRows();
            if (count == 0 || random.Below(3) == 0) {
                const std::vector<std::optional<Value>> fresh = {Number(next++)};
                store->Add(fresh, kStatusOk);
            } else {
                store->Delete(random.Below(static_cast<unsigned>(count)), kStatusDeleted);
            }
            if (random.Below(4) == 0) plain.SetFilter([](std::size_t row) { return row % 2 == 0; });
            if (random.Below(4) == 0) plain.SetFilter({});
            if (random.Below(4) == 0) sorted.SetSort(ParseSort(u"id DESC", store->Columns()));
            std::size_t alive = 0;
            for (std::size_t row = 0; row < store->CountRows(); ++row)
                alive += store->IsDeleted(row) ? 0 : 1;
            ASSERT_EQ(sorted.Count(), alive) << "round " << round << " step " << step;
            std::size_t walked = 0;
            if (alive != 0) {
                for (sorted.MoveFirst(); !sorted.Eof(); sorted.MoveNext()) {
                    ASSERT_FALSE(store->IsDeleted(sorted.Row()));
                    ++walked;
                }
            }
            ASSERT_EQ(walked, alive);
        }
        plain.SetFilter({});
        ASSERT_EQ(plain.Count(), sorted.Count());
    }
}

}  // namespace
}  // namespace tk::ado::test
