// What is saved comes back: types, sizes, flags, NULLs, every digit, and pending changes.
#include <random>

#include "ado/rowset/chunk.h"
#include "saved_rows.h"

namespace tk::ado::test {
namespace {

constexpr LONG kAllTypes[] = {2,   3,   4,   5,   6,   7,   11,  14,  16,  17,  18,  19,  20, 72,
                              128, 129, 130, 131, 133, 134, 135, 200, 201, 202, 203, 204, 205};

std::u16string NameOfType(LONG type) {
    return u"t" + NumberText(type);
}

std::vector<Column> EveryType(LONG size) {
    std::vector<Column> columns;
    for (const LONG type : kAllTypes)
        columns.push_back(MakeColumn(NameOfType(type), type, size, 0x60));
    return columns;
}

TEST(SavedRecordset, KeepsEveryColumnOfEveryType) {
    RowStore store(RowSet::Build(EveryType(40)));
    ExpectRoundTrips(store);
}

TEST(SavedRecordset, KeepsWhatADriverSaysOfAColumn) {
    std::vector<Column> columns = EveryType(0);
    LONG number = 0;
    for (Column& column : columns) {
        ++number;
        column.definedSize = number * 7;
        column.precision = static_cast<BYTE>(number);
        column.scale = static_cast<BYTE>(number % 9);
        column.attributes ^= 0x4 | (number % 2 != 0 ? 0x1208 : 0x20);
        column.isUnsigned = !column.isUnsigned;
        column.isAutoIncrement = number % 3 == 0;
        column.isCaseSensitive = number % 2 == 0;
        column.isExpression = number % 4 == 0;
        column.searchable = 1 + number % 4;
        column.sqlType = -static_cast<int>(number);
        column.isKey = number % 5 == 0;
        if (number % 2 == 0) {
            column.baseTable = "goods \"and\" 货物";
            column.baseColumn = number % 4 == 0 ? ToUtf8(column.name) : "other";
            column.baseSchema = number % 3 == 0 ? "public" : "";
            column.baseCatalog = number % 5 == 0 ? "stock" : "";
        }
    }
    RowStore store(RowSet::Build(std::move(columns)));
    ExpectRoundTrips(store);
}

TEST(SavedRecordset, KeepsNamesThatAreNoNamesInXml) {
    std::vector<Column> columns;
    for (const char16_t* name : {u"id", u"unit price", u"id", u"c1", u"单价", u"2nd", u"xmlns", u"a:b", u"<&'\">", u"",
                                 u"c3", u"𠮷", u"a\tb\n", u"é"}) {
        columns.push_back(MakeColumn(name, 3, 0, 0x60));
    }
    std::vector<std::vector<Value>> rows(2);
    for (LONG i = 0; i < 14; ++i) {
        rows[0].push_back(Number(i));
        rows[1].push_back(i % 3 == 0 ? Null() : Number(-i));
    }
    RowStore store(Rows(std::move(columns), rows));
    ExpectRoundTrips(store);
}

TEST(SavedRecordset, KeepsTheGoods) {
    ExpectRoundTrips(*Goods());
}

TEST(SavedRecordset, KeepsAnEmptySet) {
    RowStore store(RowSet::Build(Columns({{u"id", kInteger}, {u"name", kVarWChar}})));
    ExpectRoundTrips(store);
}

/// For each type what a database may have in such a column, well and ill.
struct TypeValues {
    LONG type;
    std::vector<const char*> values;
};

const TypeValues kValues[] = {
    {2, {"0", "-32768", "32767", "32768", "abc", "", "1.5"}},
    {3, {"0", "2147483647", "-2147483648", "2147483648", "0012", "1e3", "x"}},
    {4, {"0", "1.5", "-3.4028235e38", "1e-45", "0.1", "1e300", "nan", "inf", "text"}},
    {5, {"0", "0.1", "1.7976931348623157e308", "5e-324", "-0", "123456789.123456789", "1e999", "?"}},
    {6, {"12.3400", "-922337203685477.5808", "0.0001", "12.5", "922337203685477.5807", "1e5"}},
    {7,
     {"2003-07-04 13:05:09", "1899-12-29 06:00:00", "0100-01-01 00:00:00", "9999-12-31 23:59:59.999",
      "2003-07-04 13:05:09.123456", "0099-01-01", "never"}},
    {11, {"1", "0", "true", "False", "t", "-1", "2", "maybe"}},
    {14,
     {"1.50", "-79228162514264337593543950335", "0.0000000000000000000000000001", "100", "1e2",
      "79228162514264337593543950336"}},
    {16, {"-128", "127", "128", "-129"}},
    {17, {"0", "255", "256", "-1"}},
    {18, {"0", "65535", "65536"}},
    {19, {"0", "4294967295", "2147483648", "4294967296", "-1"}},
    {20, {"0", "9223372036854775807", "-9223372036854775808", "9223372036854775808"}},
    {72,
     {"{6F9619FF-8B86-D011-B42D-00C04FC964FF}", "{00000000-0000-0000-0000-000000000000}", "no guid",
      "{6F9619FF-8B86-D011-B42D-00C04FC964F}"}},
    {129, {"abc", "", "0123456789", "中文", "a\x01z"}},
    {130, {"0123456789", "short", "甲乙丙丁戊己庚辛壬癸"}},
    {131,
     {"12.50", "-0.001", "99999999999999999999999999999999999999", "0.00000000000000000000000000000000000001",
      "1234567890123456789012345678901234567890", "-5", "007.10", ".5", "5.", "+3", "1e10", "-0"}},
    {133, {"2003-07-04", "0100-01-01", "9999-12-31", "2003-07-04 12:00:00", "0000-00-00", "2003-02-30"}},
    {134, {"13:05:09", "00:00:00", "23:59:59.5", "2003-07-04 01:02:03", "25:00:00"}},
    {135,
     {"2003-07-04 13:05:09", "2003-07-04T13:05:09", "2003-07-04 13:05:09.123456789", "2003-07-04",
      "2003-07-04 13:05:09+08", "0050-01-01 00:00:00", "2003-99-01 00:00:00", "2003-99-01T00:00:00", "x"}},
    {200, {"", " leading", "trailing ", "a\tb\r\nc", "<&>\"'", "\xFF\xFE bad", "\xED\xA0\x80", "\xEF\xBF\xBE", "\x7F"}},
    {201, {"", "long", "中文𠮷😀"}},
    {202, {"a", "0123456789", "01234567890 longer than described", "中文𠮷", "\x01\x02", "]]>", "&amp;"}},
    {203, {"", "x"}},
    {204, {"", "bytes", "\xFF\x80\x01", "01234567890 more bytes than described"}},
    {205, {"", "\xFF"}},
    {128, {"0123456789", "abc"}},
};

TEST(SavedRecordset, KeepsEveryValueOfEveryTypeWhetherItFitsOrNot) {
    for (const TypeValues& each : kValues) {
        SCOPED_TRACE(each.type);
        // All together, and each by itself: one that does not fit must not be what makes another one right.
        std::vector<std::vector<const char*>> all;
        for (const char* value : each.values) {
            all.push_back({value});
            all.push_back({nullptr});
            SCOPED_TRACE(value);
            RowStore alone(TextRows({MakeColumn(u"v", each.type, 10, 0x60)}, {{value}}));
            ExpectRoundTrips(alone);
        }
        RowStore store(TextRows({MakeColumn(u"v", each.type, 10, 0x60)}, all));
        ExpectRoundTrips(store);
    }
}

TEST(SavedRecordset, KeepsNullsInColumnsThatSayTheyHaveNone) {
    RowStore store(TextRows({MakeColumn(u"a", 3, 0, 0), MakeColumn(u"b", 202, 10, 0)},
                            {{"1", "x"}, {nullptr, "y"}, {"3", nullptr}, {nullptr, nullptr}}));
    ExpectRoundTrips(store);
}

TEST(SavedRecordset, KeepsLongTextsAndBytes) {
    std::string text;
    for (int i = 0; i < 300'000; ++i)
        text += i % 7 == 0 ? "中" : i % 11 == 0 ? "𠮷" : i % 13 == 0 ? "<" : "x";
    std::string bytes = "x";
    for (int i = 0; i < 500'000; ++i)
        bytes += static_cast<char>(1 + i * 31 % 255);
    for (const std::size_t size : {254u, 255u, 256u, 4095u, 4096u, 4097u, 16384u, 32768u, 32769u, 65536u, 131072u}) {
        const std::string some = bytes.substr(0, size);
        const std::string words = std::string(size, 'w');
        RowStore store(TextRows({MakeColumn(u"b", 205, 2147483647, 0x60), MakeColumn(u"t", 203, 1073741823, 0x60)},
                                {{some.c_str(), words.c_str()}}));
        ExpectRoundTrips(store);
    }
    RowStore store(TextRows({MakeColumn(u"b", 205, 2147483647, 0x60), MakeColumn(u"t", 203, 1073741823, 0x60),
                             MakeColumn(u"s", 201, 2147483647, 0x60)},
                            {{bytes.c_str(), text.c_str(), text.c_str()}, {nullptr, "", nullptr}}));
    ExpectRoundTrips(store);
}

TEST(SavedRecordset, KeepsZeroBytesInTextsAndBytes) {
    auto set = RowSet::Build({MakeColumn(u"t", 202, 20, 0x60)});
    const std::u16string text(u"a\0b\0", 4);
    const Value value = Value::Text(text);
    const VARIANT only[] = {value.Get()};
    set->Append(only);
    RowStore store(set);
    ExpectRoundTrips(store);
}

TEST(SavedRecordset, KeepsPendingChanges) {
    const auto store = Goods();
    const std::size_t columns = store->Columns().size();
    const auto values = [&](std::initializer_list<std::pair<std::size_t, Value>> set) {
        std::vector<std::optional<Value>> all(columns);
        for (const auto& [column, value] : set)
            all[column] = value;
        return all;
    };
    store->Change(0, values({{1, Text(u"Pear <&'\">")}, {2, Decimal(u"9.90")}}), kStatusPending | kStatusModified);
    store->Change(1, values({{1, Null()}, {3, Date(45000.25)}, {5, Text(u"")}}), kStatusPending | kStatusModified);
    store->Delete(2, kStatusPending | kStatusDeleted);
    store->Change(3, values({{4, Value::Boolean(false)}}), kStatusPending | kStatusModified);
    store->Delete(3, kStatusPending | kStatusDeleted);
    const std::size_t added =
        store->Add(values({{0, Number(6)}, {1, Text(u"new")}, {5, Null()}}), kStatusPending | kStatusNew);
    store->Add(values({}), kStatusPending | kStatusNew);
    const std::size_t gone = store->Add(values({{0, Number(8)}}), kStatusPending | kStatusNew);
    store->Delete(gone, kStatusDeleted);
    store->Delete(4, kStatusDeleted);
    EXPECT_TRUE(store->WasGiven(added, 5));
    ExpectRoundTrips(*store);

    const auto loaded = RoundTrip(*store, PersistFormat::Xml);
    EXPECT_EQ(loaded->Status(0), kStatusPending | kStatusModified);
    EXPECT_EQ(loaded->Status(2), kStatusPending | kStatusDeleted);
    EXPECT_TRUE(loaded->IsDeleted(2));
    EXPECT_EQ(loaded->Status(4), kStatusPending | kStatusNew);
    EXPECT_EQ(loaded->CountRows(), 6u);
    EXPECT_EQ(loaded->PendingRows().size(), 6u);
    // What was changed can be taken back.
    loaded->Revert(0, kStatusUnmodified);
    EXPECT_EQ(Exactly(*loaded, 0, 1), "8:Apple");
}

/// Values that other values of their column would be taken for, were they not saved as they are kept.
TEST(SavedRecordset, KeepsChangedValuesToTheLastDigit) {
    const struct {
        LONG type;
        const char16_t* changed;
    } rows[] = {
        {3, u"20.0"},     {20, u"7454912030520236.5"},
        {20, u"1e3"},     {131, u"1234567890123456789012345678901234567.8"},
        {131, u"1.50e0"}, {135, u"2003-07-04 13:05:09.123456789"},
        {5, u"0.1"},      {72, u"no guid"},
        {11, u"maybe"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.changed));
        RowStore store(TextRows({MakeColumn(u"v", row.type, 10, 0x60)}, {{"1"}}));
        store.Change(0, {Text(row.changed)}, kStatusPending | kStatusModified);
        ExpectRoundTrips(store);
        for (const PersistFormat format : kBothFormats) {
            EXPECT_EQ(SavedBytes(*RoundTrip(store, format), PersistFormat::Xml), SavedBytes(store, PersistFormat::Xml));
        }
    }
}

TEST(SavedRecordset, KeepsHowRowsAreToBeWrittenBack) {
    const auto store = Goods();
    WriteRules rules;
    rules.updateCriteria = kCriteriaAllColumns;
    rules.updateResync = 15;
    rules.timeoutSeconds = 77;
    rules.uniqueTable = "goods";
    rules.uniqueSchema = "模式";
    rules.uniqueCatalog = "a'b";
    const tk::test::TemporaryFolder folder;
    for (const PersistFormat format : kBothFormats) {
        SaveStore(*store, folder.Path() / "goods", format, rules);
        const LoadedFile loaded = LoadRows((folder.Path() / "goods").string());
        EXPECT_EQ(loaded.format, format);
        EXPECT_EQ(loaded.rows.rules.updateCriteria, kCriteriaAllColumns);
        EXPECT_EQ(loaded.rows.rules.updateResync, 15);
        EXPECT_EQ(loaded.rows.rules.timeoutSeconds, 77);
        EXPECT_EQ(loaded.rows.rules.uniqueTable, "goods");
        EXPECT_EQ(loaded.rows.rules.uniqueSchema, "模式");
        EXPECT_EQ(loaded.rows.rules.uniqueCatalog, "a'b");
    }
}

TEST(SavedRecordset, KeepsTheRowsOfAQuery) {
    const tk::test::SqliteFile file;
    const auto session = file.Open();
    tk::test::Do(*session,
                 "create table item (id integer primary key, name varchar(20), price double, stock integer, "
                 "stamp timestamp, blob blob, day date, big bigint, cost decimal(10,2))");
    tk::test::Do(
        *session,
        "with recursive s(n) as (select 1 union all select n + 1 from s where n < 3000) insert into item select n, "
        "case when n % 5 = 0 then null else printf('item %07d', n) end, n * 0.25, n % 1000, "
        "datetime('2020-01-01', (n % 86400) || ' seconds'), case when n % 3 = 0 then randomblob(n % 700) end, "
        "date('2020-01-01', n || ' days'), n * 4294967296, n * 1.25 from s");
    for (const char* sql : {"select * from item", "select count(*), sum(price), 'x' from item",
                            "select id, name, price from item where id < 0"}) {
        SCOPED_TRACE(sql);
        RowStore store(tk::test::Query(session, sql));
        store.Fetched().DescribeOrigins();
        ExpectRoundTrips(store);
    }
}

/// Random sets: columns, values of all sorts, changes; whatever the seed, what is saved comes back.
class RandomSets : public testing::TestWithParam<unsigned> {
protected:
    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    std::string RandomText() {
        static constexpr const char* kPieces[] = {"a",  "Z",  "0",  " ", "中",   "𠮷",   "<",   "&",   "'", "\"",
                                                  "\t", "\n", "\r", "é", "\x01", "\xFF", "]]>", "xyz", "-", "."};
        std::string text;
        const unsigned pieces = Below(4) == 0 ? Below(400) : Below(12);
        for (unsigned i = 0; i < pieces; ++i)
            text += kPieces[Below(std::size(kPieces))];
        return text;
    }

    std::string RandomNumber() {
        std::string text = Below(2) == 0 ? "-" : "";
        const unsigned digits = 1 + Below(Below(3) == 0 ? 42 : 9);
        const unsigned point = Below(2) == 0 ? Below(digits + 1) : digits + 1;
        for (unsigned i = 0; i < digits; ++i) {
            if (i == point) text += '.';
            text += static_cast<char>('0' + Below(10));
        }
        return text;
    }

    std::string RandomMoment() {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%04u-%02u-%02u", Below(10000), 1 + Below(12), 1 + Below(29));
        std::string text = buffer;
        if (Below(3) == 0) return text;
        std::snprintf(buffer, sizeof buffer, " %02u:%02u:%02u", Below(24), Below(60), Below(60));
        text += buffer;
        if (Below(2) == 0) text += "." + std::to_string(Below(1'000'000'000));
        return text;
    }

    std::string RandomGuid() {
        std::string text = "{";
        for (const unsigned digits : {8u, 4u, 4u, 4u, 12u}) {
            for (unsigned i = 0; i < digits; ++i)
                text += "0123456789ABCDEF"[Below(16)];
            text += '-';
        }
        text.back() = '}';
        return text;
    }

    std::string RandomCell(const Column& column) {
        if (Below(60) == 0) return RandomText();
        switch (column.kind) {
            case CellKind::Text:
            case CellKind::Bytes:
                return RandomText();
            case CellKind::Date:
            case CellKind::Time:
            case CellKind::Timestamp:
                return RandomMoment();
            case CellKind::Boolean:
                return Below(2) == 0 ? "1" : "0";
            case CellKind::Guid:
                return RandomGuid();
            default:
                return RandomNumber();
        }
    }

    std::mt19937_64 random_{GetParam()};
};

TEST_P(RandomSets, ComeBackAsTheyWere) {
    std::vector<Column> columns;
    const unsigned count = 1 + Below(20);
    for (unsigned i = 0; i < count; ++i) {
        const LONG type = kAllTypes[Below(std::size(kAllTypes))];
        Column column = MakeColumn(ToUtf16(RandomText().substr(0, 3)) + NumberText(i), type,
                                   static_cast<LONG>(Below(3) == 0 ? 0 : Below(300)), Below(2) == 0 ? 0x60 : 0);
        // Characters that XML excludes cannot be in its names.
        std::erase_if(column.name, [](char16_t unit) { return unit == 1; });
        columns.push_back(std::move(column));
    }
    std::vector<std::vector<std::string>> cells(Below(50));
    std::vector<std::vector<const char*>> rows(cells.size());
    for (std::size_t row = 0; row < cells.size(); ++row) {
        for (const Column& column : columns)
            cells[row].push_back(RandomCell(column));
        for (const std::string& cell : cells[row])
            rows[row].push_back(Below(5) == 0 ? nullptr : cell.c_str());
    }
    RowStore store(TextRows(columns, rows));
    const auto change = [&](std::vector<std::optional<Value>>& values) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (Below(2) == 0 || columns[i].kind == CellKind::Bytes) continue;
            values[i] = Below(4) == 0 ? Value::Null() : Value::Text(ToUtf16(RandomCell(columns[i])));
        }
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        std::vector<std::optional<Value>> values(columns.size());
        if (Below(4) == 0) {
            change(values);
            store.Change(row, values, kStatusPending | kStatusModified);
        }
        if (Below(8) == 0) store.Delete(row, Below(2) == 0 ? kStatusPending | kStatusDeleted : LONG{kStatusDeleted});
        if (Below(8) == 0) {
            change(values);
            store.Add(values, kStatusPending | kStatusNew);
        }
    }
    ExpectRoundTrips(store);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSets, testing::Range(1u, 121u));

TEST(SavedRecordset, FollowsAViewAndPutsItsDeletedRowsLast) {
    const auto store = Goods();
    store->Delete(1, kStatusPending | kStatusDeleted);
    RowView view(store);
    view.SetSort({{0, true}});
    const auto visible = [](std::size_t row) { return row != 3; };
    view.SetFilter(visible, false);
    RowFeed feed(view, visible);
    const tk::test::TemporaryFolder folder;
    const std::string path = (folder.Path() / "goods.xml").string();
    SaveRows(SavedSet{feed, {}, false}, path, PersistFormat::Xml, FileWriter::Existing::Refuse);
    const auto loaded = StoreOf(LoadRows(path));
    ASSERT_EQ(loaded->CountRows(), 4u);
    EXPECT_EQ(Exactly(*loaded, 0, 0), "3:5");
    EXPECT_EQ(Exactly(*loaded, 1, 0), "3:3");
    EXPECT_EQ(Exactly(*loaded, 2, 0), "3:1");
    EXPECT_EQ(ExactOriginal(*loaded, 3, 0), "3:2");
    EXPECT_TRUE(loaded->IsDeleted(3));
}

}  // namespace
}  // namespace tk::ado::test
