// Batches of random changes against another writer's, checked row by row against plain maps.
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

/// What a row holds; NULL as an empty optional.
struct Item {
    std::optional<std::string> name;
    std::optional<int> n;
    bool operator==(const Item&) const = default;
};
using Items = std::map<int, Item>;

std::string Describe(const Items& items) {
    std::string text;
    for (const auto& [id, item] : items) {
        text += std::to_string(id) + ":" + item.name.value_or("NULL") + "," +
                (item.n ? std::to_string(*item.n) : "NULL") + " ";
    }
    return text;
}

class RandomWritingTest : public SystemTest {
protected:
    static constexpr int kRows = 10;
    static constexpr int kMostSteps = 10'000;

    void SetUp() override {
        SystemTest::SetUp();
        seed_ = std::random_device{}();
        random_.seed(seed_);
        other_ = Connect();
    }
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    Item AnyItem() {
        static constexpr const char* kNames[] = {"a", "b", "", "it's"};
        Item item;
        if (const int at = Below(5); at < 4) item.name = kNames[at];
        if (const int n = Below(4); n < 3) item.n = n;
        return item;
    }
    static std::u16string Literal(const Item& item) {
        std::u16string text = u"null";
        if (item.name) {
            text = u"'";
            for (const char letter : *item.name)
                text += letter == '\'' ? u"''" : std::u16string(1, static_cast<char16_t>(letter));
            text += u"'";
        }
        return text;
    }
    static std::u16string NumberOf(const Item& item) { return item.n ? NumberText(*item.n) : u"null"; }

    void InsertBy(const Object& writer, int id, const Item& item) const {
        Execute(writer, u"insert into tallies values (" + NumberText(id) + u", " + Literal(item) + u", " +
                            NumberOf(item) + u")");
    }
    Items Start() {
        Drop(u"tallies");
        Do(u"create table tallies (id integer primary key, name varchar(10), n integer)");
        Items items;
        for (int id = 1; id <= kRows; ++id)
            InsertBy(connection_, id, items[id] = AnyItem());
        return items;
    }
    Items Stored() const {
        Items items;
        const Object rows = OpenRows(connection_, u"select id, name, n from tallies", 1);
        for (; !rows.Get(kEof).True(); rows.Call(kMoveNext))
            items[std::stoi(ValueOf(rows, u"id"))] = ItemAt(rows);
        return items;
    }
    static Item ItemAt(const Object& rows) {
        Item item;
        const Value name = rows.Get(kCollect, {Text(u"name")}).value;
        const Value n = rows.Get(kCollect, {Text(u"n")}).value;
        if (!name.IsNull()) item.name = ToUtf8(ViewOf(name.Get().bstrVal));
        if (!n.IsNull()) item.n = std::stoi(ValueOf(rows, u"n"));
        return item;
    }
    static Value NameValue(const Item& item) { return item.name ? Text(ToUtf16(*item.name)) : Value::Null(); }
    static Value NumberValue(const Item& item) { return item.n ? Number(*item.n) : Value::Null(); }

    /// The other writer's turn: some rows changed, some gone, some new.
    void Theirs(Items& items) {
        for (int step = 0; step < 4; ++step) {
            const int id = 1 + Below(kRows + 3);
            if (!items.contains(id)) {
                InsertBy(other_, id, items[id] = AnyItem());
                continue;
            }
            if (Below(4) == 0) {
                Execute(other_, u"delete from tallies where id = " + NumberText(id));
                items.erase(id);
                continue;
            }
            items[id] = AnyItem();
            Execute(other_, u"update tallies set name = " + Literal(items[id]) + u", n = " + NumberOf(items[id]) +
                                u" where id = " + NumberText(id));
        }
    }

    /// What is to come of one batch.
    struct Turn {
        std::map<int, std::optional<Item>> changed;  // empty: deleted
        Items added;
    };
    Turn Mine(const Object& rows, const Items& seen) {
        Turn turn;
        for (LONG position = 1; position <= kRows; ++position) {
            rows.Put(kAbsolutePosition, Number(position));
            const int kind = Below(4);
            if (kind < 2) continue;
            const int id = std::stoi(ValueOf(rows, u"id"));
            Item item = seen.at(id);
            const Item fresh = AnyItem();
            if (const int columns = Below(3); columns != 0) {
                item.n = fresh.n;
                PutValue(rows, u"n", NumberValue(item));
                if (columns == 2) item.name = fresh.name;
                if (columns == 2) PutValue(rows, u"name", NameValue(item));
            } else {
                item.name = fresh.name;
                PutValue(rows, u"name", NameValue(item));
            }
            turn.changed[id] = item;
        }
        const int gone = Below(3);
        for (int i = 0; i < gone; ++i) {
            const int id = 1 + Below(kRows);
            if (turn.changed.contains(id)) continue;
            rows.Call(kMoveFirst);
            rows.Call(kFind, {Text(u"id = " + NumberText(id))});
            EXPECT_TRUE(rows.Call(kDelete).Ok());
            turn.changed[id] = std::nullopt;
        }
        for (int id = kRows + 1; id <= kRows + 3; ++id) {
            if (Below(2) == 0) continue;
            const Item item = turn.added[id] = AnyItem();
            EXPECT_TRUE(rows.Call(kAddNew, {Array({Text(u"id"), Text(u"name"), Text(u"n")}),
                                            Array({Number(id), NameValue(item), NumberValue(item)})})
                            .Ok());
        }
        return turn;
    }

    static bool IsConflict(LONG criteria, const Item& seen, const std::optional<Item>& mine, const Items& stored,
                           int id) {
        const auto found = stored.find(id);
        // What was put as it was before is not sent.
        if (mine && *mine == seen) return false;
        if (found == stored.end()) return true;
        if (criteria == 1) return found->second != seen;
        if (criteria != 2 || !mine) return false;
        return (mine->name != seen.name && found->second.name != seen.name) ||
               (mine->n != seen.n && found->second.n != seen.n);
    }

    unsigned seed_ = 0;
    std::mt19937 random_;
    Object other_;
};

TEST_P(RandomWritingTest, KeepsWhatConflictsAndWritesTheRest) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    int conflicts = 0;
    int steps = 0;
    int written = 0;
    for (int round = 0; round < 25; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const Items seen = Start();
        const LONG criteria = Below(3);
        SCOPED_TRACE("criteria " + std::to_string(criteria) + ", seen " + Describe(seen));
        const Object rows = OpenRows(connection_, u"select id, name, n from tallies order by id", 4);
        SetProperty(rows, u"Update Criteria", Number(criteria));
        const Turn turn = Mine(rows, seen);
        Items stored = seen;
        Theirs(stored);
        SCOPED_TRACE("theirs " + Describe(stored));
        // What is to be pending afterwards, with its status, and what is to be stored.
        std::map<int, LONG> pending;
        for (const auto& [id, mine] : turn.changed) {
            if (IsConflict(criteria, seen.at(id), mine, stored, id)) {
                pending[id] = mine ? 0x882 : 0x884;
            } else if (!mine) {
                stored.erase(id);
            } else if (stored.contains(id)) {
                if (mine->name != seen.at(id).name) stored[id].name = mine->name;
                if (mine->n != seen.at(id).n) stored[id].n = mine->n;
            }
        }
        for (const auto& [id, item] : turn.added) {
            if (stored.contains(id)) {
                pending[id] = 0x1081;
            } else {
                stored[id] = item;
                ++written;
            }
        }
        const Outcome sent = rows.Call(kUpdateBatch);
        EXPECT_EQ(sent.Error(), pending.empty() ? 0u : 0x80040E21u) << sent;
        EXPECT_EQ(Describe(Stored()), Describe(stored));
        rows.Put(kFilter, Number(1));
        std::map<int, LONG> left;
        const Object key = rows.Get(kFields, {Text(u"id")}).Result();
        for (; !rows.Get(kEof).True(); rows.Call(kMoveNext)) {
            ASSERT_LE(++steps, kMostSteps) << "the walk does not end";
            left[std::stoi(key.Get(field::kOriginalValue).Utf8())] = rows.Get(kStatus).Long();
        }
        EXPECT_EQ(left, pending);
        conflicts += static_cast<int>(pending.size());
        // Given up and read again, the set shows what is stored; rows that are gone say so.
        rows.Put(kFilter, Number(0));
        ASSERT_TRUE(rows.Call(kCancelBatch).Ok());
        const Outcome read = rows.Call(kResync);
        ASSERT_TRUE(read.Ok()) << read;
        for (rows.Call(kMoveFirst); !rows.Get(kEof).True(); rows.Call(kMoveNext)) {
            ASSERT_LE(++steps, kMostSteps) << "the walk does not end";
            const int id = std::stoi(ValueOf(rows, u"id"));
            const bool isGone = (rows.Get(kStatus).Long() & 0x40000) != 0;
            EXPECT_EQ(isGone, !stored.contains(id)) << id;
            if (isGone || !stored.contains(id)) continue;
            EXPECT_EQ(Describe({{id, ItemAt(rows)}}), Describe({{id, stored.at(id)}}));
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(conflicts, 5);
    EXPECT_GT(written, 5);
}

INSTANTIATE_TEST_SUITE_P(All, RandomWritingTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

}  // namespace
}  // namespace tk::ado::test
