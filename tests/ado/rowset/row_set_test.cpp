#include "ado/rowset/row_set.h"

#include <gtest/gtest.h>
#include <tkwin32/text.h>
#include <unistd.h>

#include <atomic>
#include <bit>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "ado/odbc/odbc_api.h"
#include "ado/rowset/chunk.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/type_map.h"
#include "ado/rowset/value.h"
#include "ado/support/sqlite_file.h"
#include "ado/support/utf8.h"

namespace tk::ado {
namespace {

using test::Do;
using test::Query;
using test::Show;
using test::SqliteFile;
using test::Utf8;

/// A table `item` of so many rows: id, name "n<id>", note (NULL in every third row).
void Fill(Session& session, int rows) {
    Do(session, "drop table if exists item");
    Do(session, "create table item (id integer primary key, name varchar(20), note text)");
    if (rows == 0) return;
    Do(session, "insert into item with recursive s(i) as (select 1 union all select i+1 from s where i<" +
                    std::to_string(rows) + ") select i, 'n'||i, case when i % 3 <> 0 then 'note '||i end from s");
}

TEST(RowSet, ReadsResultsOfEverySizeWhole) {
    const SqliteFile file;
    const auto session = file.Open();
    for (const int count : {0, 1, 2, 15, 16, 17, 255, 256, 257, 1279, 1280, 1281, 2303, 2304, 2305, 5000}) {
        for (const bool asynchronous : {false, true}) {
            for (const char* sql : {"select * from item", "select * from item where id > 0"}) {
                SCOPED_TRACE(std::to_string(count) + (asynchronous ? " asynchronous " : " ") + sql);
                Fill(*session, count);
                const auto rows = Query(session, sql, {asynchronous, 0});
                std::size_t row = 0;
                for (; rows->HasRow(row); ++row) {
                    const std::string number = std::to_string(row + 1);
                    ASSERT_EQ(Show(*rows, row, 0), "I4 " + number);
                    ASSERT_EQ(rows->TextAt(row, 1), "n" + number);
                    ASSERT_EQ(rows->IsNull(row, 2), (row + 1) % 3 == 0);
                }
                EXPECT_EQ(row, static_cast<std::size_t>(count));
                EXPECT_EQ(rows->CountRows(), row);
                EXPECT_EQ(rows->ArrivedRows(), row);
                EXPECT_TRUE(rows->IsComplete());
                for (; row-- > 0;)
                    ASSERT_EQ(rows->At(row, 0).integer, static_cast<long long>(row) + 1);
                EXPECT_EQ(rows->TakeNextResult(), nullptr);
            }
        }
    }
}

TEST(RowSet, FindsRowsInAnyOrder) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 5000);
    const auto rows = Query(session, "select * from item");
    unsigned at = 12345;
    for (int i = 0; i < 20000; ++i) {
        at = at * 1103515245u + 12345u;
        const std::size_t row = at / 7 % 5000;
        ASSERT_TRUE(rows->HasRow(row));
        ASSERT_EQ(rows->At(row, 0).integer, static_cast<long long>(row) + 1);
    }
}

TEST(RowSet, StopsAtTheMostRowsWanted) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 3000);
    for (const LONG most : {1, 10, 16, 17, 300, 2999, 3000, 5000}) {
        SCOPED_TRACE(most);
        ExecuteOptions options;
        options.maxRows = most;
        const auto rows = RowSet::Fetch(session->Execute("select * from item", options), session, {false, most});
        EXPECT_EQ(rows->CountRows(), static_cast<std::size_t>(std::min<LONG>(most, 3000)));
    }
}

TEST(RowSet, ReadsTextsAndBytesOfEveryLength) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer primary key, short varchar(5), note text, data blob)");
    const std::size_t lengths[] = {0,    1,    31,   32,    33,    254,   255,   256,   257,     4095, 4096,
                                   4097, 8191, 8192, 32767, 32768, 65535, 65536, 65537, 1000000, 1,    3000000};
    int id = 0;
    for (const std::size_t length : lengths) {
        const std::string size = std::to_string(length);
        Do(*session, "insert into item values (" + std::to_string(++id) + ", substr(hex(zeroblob(" + size + ")),1," +
                         size + "), substr(hex(zeroblob(" + size + ")),1," + size + "), zeroblob(" + size + "))");
    }
    for (const char* order : {"id", "id desc"}) {
        const auto rows = Query(session, std::string("select short, note, data, id from item order by ") + order);
        ASSERT_EQ(rows->CountRows(), std::size(lengths));
        for (std::size_t row = 0; row < std::size(lengths); ++row) {
            const auto index = static_cast<std::size_t>(rows->At(row, 3).integer) - 1;
            SCOPED_TRACE(lengths[index]);
            EXPECT_EQ(rows->TextAt(row, 0), std::string(lengths[index], '0'));
            EXPECT_EQ(rows->TextAt(row, 1), std::string(lengths[index], '0'));
            EXPECT_EQ(rows->At(row, 2).text, std::string(lengths[index], '\0'));
            EXPECT_EQ(rows->ActualSize(row, 1), static_cast<LONG>(lengths[index]));
            EXPECT_EQ(rows->ActualSize(row, 2), static_cast<LONG>(lengths[index]));
        }
    }
}

TEST(RowSet, KeepsChineseTextAndNames) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, Utf8(u8"create table 物料 (编号 integer primary key, 名称 varchar(20))"));
    Do(*session, Utf8(u8"insert into 物料 values (1, '中文é€𠀀')"));
    const auto rows = Query(session, Utf8(u8"select 编号, 名称, 名称||'!' as 别名 from 物料"));
    ASSERT_EQ(rows->CountRows(), 1u);
    EXPECT_TRUE(rows->Columns()[0].name == u"编号");
    EXPECT_TRUE(rows->Columns()[1].name == u"名称");
    EXPECT_TRUE(rows->Columns()[2].name == u"别名");
    test::Value value;
    test::Read(*rows, 0, 1, value);
    ASSERT_EQ(value.vt, VT_BSTR);
    const std::u16string_view wide = u"中文é€𠀀";  // the assertions print their text, which has to be GBK
    const std::string narrow = Utf8(u8"中文é€𠀀");
    EXPECT_TRUE(std::u16string_view(value.bstrVal) == wide);
    EXPECT_EQ(rows->TextAt(0, 1), narrow);
}

TEST(RowSet, KeepsLongNamesWhole) {
    const SqliteFile file;
    const auto session = file.Open();
    // Bytes around the size of the first buffer, and a character that would be split there.
    for (const std::size_t size : {128u, 509u, 510u, 511u, 512u, 513u, 1000u, 5000u}) {
        SCOPED_TRACE(size);
        const std::string name(size, 'n');
        auto rows = Query(session, "select 1 as " + name);
        EXPECT_EQ(rows->Columns()[0].name.size(), size);
        EXPECT_TRUE(rows->Columns()[0].name == std::u16string(size, u'n'));
        const std::string wide = std::string(size - 2, 'n') + Utf8(u8"é中");
        rows = Query(session, "select 1 as \"" + wide + "\"");
        EXPECT_TRUE(rows->Columns()[0].name == std::u16string(size - 2, u'n') + u"é中");
    }
}

/// A driver whose only column has a name of its own, of which it gives so many bytes at most.
class NameDriver {
public:
    NameDriver(std::string text, std::size_t most, std::size_t character, SQLRETURN whenCut) {
        name = {std::move(text), most, character, whenCut};
        static OdbcApi table;
        table = OdbcApi();
        table.DescribeCol = [](SQLHSTMT, SQLUSMALLINT, SQLCHAR* out, SQLSMALLINT room, SQLSMALLINT* length,
                               SQLSMALLINT* type, SQLULEN* size, SQLSMALLINT* digits, SQLSMALLINT* nullable) {
            const std::size_t fits = std::min(static_cast<std::size_t>(room) - 1, name.most);
            const std::size_t given = std::min(name.text.size(), fits - fits % name.character);
            std::memcpy(out, name.text.data(), given);
            out[given] = '\0';
            *length = static_cast<SQLSMALLINT>(given);
            *type = SQL_INTEGER;
            *size = 10;
            *digits = 0;
            *nullable = SQL_NULLABLE;
            return given < name.text.size() ? name.whenCut : SQLRETURN{SQL_SUCCESS};
        };
        former_ = &SetOdbcForTest(table);
    }
    NameDriver(const NameDriver&) = delete;
    NameDriver& operator=(const NameDriver&) = delete;
    ~NameDriver() { SetOdbcForTest(*former_); }

private:
    struct Name {
        std::string text;
        std::size_t most;
        std::size_t character;  // it cuts in front of a whole one of so many bytes
        SQLRETURN whenCut;
    };
    static inline Name name;
    const OdbcApi* former_ = nullptr;
};

TEST(RowSet, CutsNamesOfADriverThatCutsThemAtACharacter) {
    const SqliteFile file;
    const auto session = file.Open();
    // However much room there is, it gives so many bytes; the last character is half there.
    for (const std::size_t most : {510u, 126u}) {
        SCOPED_TRACE(most);
        const NameDriver driver(std::string(most - 1, 'n') + "\xE4\xB8\xAD", most, 1, SQL_SUCCESS_WITH_INFO);
        EXPECT_EQ(Query(session, "select 1 as one")->Columns()[0].name, std::u16string(most - 1, u'n'));
    }
}

TEST(RowSet, AsksAgainForANameThatWasCutBetweenTwoCharacters) {
    const SqliteFile file;
    const auto session = file.Open();
    // More than the first buffer, and more than the second.
    for (const int characters : {150, 1500}) {
        SCOPED_TRACE(characters);
        std::string name;
        std::u16string wide;
        for (int i = 0; i < characters; ++i) {
            name += Utf8(u8"\U00020000");
            wide += u"\U00020000";
        }
        const NameDriver driver(name, 32000, 4, SQL_SUCCESS_WITH_INFO);
        EXPECT_TRUE(Query(session, "select 1 as one")->Columns()[0].name == wide);
    }
}

TEST(RowSet, ReadsEveryColumnTypeOfSqlite) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session,
       "create table item (i integer, i2 int, sm smallint, ti tinyint, bi bigint, b bool, r real, f float, d double, "
       "n numeric(12,2), vc varchar(20), c char(5), tx text, bl blob, dt date, tm time, ts timestamp, dtm datetime)");
    Do(*session,
       "insert into item values (7, -8, 1, 2, 9007199254740993, 1, 1.5, 2.5, 0.25, 12.50, 'abc', 'ab', 'long', "
       "x'4142ff', "
       "'2003-07-04', '13:05:09', '2003-07-04 13:05:09.123', '2003-07-04 13:05:09')");
    Do(*session, "insert into item default values");
    Do(*session,
       "insert into item values (5000000000, 'abc', 'x', '', 1e300, 'perhaps', 'text', '', '1,5', 'n/a', 12345, 1.5, "
       "7, "
       "'text', 'soon', '25:61', 1057323909, 'x')");
    const struct {
        LONG type;
        const char* usual;
        const char* odd;
    } expected[] = {
        {3, "I4 7", "DECIMAL 5000000000"},
        {3, "I4 -8", "BSTR abc"},
        {2, "I2 1", "BSTR x"},
        {16, "I2 2", "BSTR "},
        {20, "DECIMAL 9007199254740993", "R8 1.0000000000000001e+300"},
        {11, "BOOL true", "BSTR perhaps"},
        {5, "R8 1.5", "BSTR text"},
        {5, "R8 2.5", "BSTR "},
        {5, "R8 0.25", "BSTR 1,5"},
        {5, "R8 12.5", "BSTR n/a"},
        {200, "BSTR abc", "BSTR 12345"},
        {200, "BSTR ab", "BSTR 1.5"},
        {201, "BSTR long", "BSTR 7"},
        {205, "BYTES 4142ff", "BYTES 74657874"},
        {133, "DATE 2003-07-04 00:00:00", "BSTR soon"},
        {134, "DATE 1899-12-30 13:05:09", "BSTR 25:61"},
        {135, "DATE 2003-07-04 13:05:09.123", "BSTR 1057323909"},
        {135, "DATE 2003-07-04 13:05:09", "BSTR x"},
    };
    for (const char* sql : {"select * from item", "select * from item where 1 = 1"}) {  // streamed and not
        SCOPED_TRACE(sql);
        const auto rows = Query(session, sql);
        ASSERT_EQ(rows->CountRows(), 3u);
        for (std::size_t column = 0; column < std::size(expected); ++column) {
            SCOPED_TRACE(column);
            EXPECT_EQ(rows->Columns()[column].type, expected[column].type);
            EXPECT_EQ(Show(*rows, 0, column), expected[column].usual);
            EXPECT_EQ(Show(*rows, 1, column), "NULL");
            EXPECT_EQ(Show(*rows, 2, column), expected[column].odd);
        }
    }
}

TEST(RowSet, GivesSmallNumbersForComputedColumns) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 10);
    EXPECT_EQ(Show(*Query(session, "select count(*) from item"), 0, 0), "I4 10");
    EXPECT_EQ(Show(*Query(session, "select max(id) + 5000000000 from item"), 0, 0), "DECIMAL 5000000010");
    EXPECT_EQ(Show(*Query(session, "select 1.5 * 2"), 0, 0), "R8 3");
    EXPECT_EQ(Show(*Query(session, "select 'a' || 'b'"), 0, 0), "BSTR ab");
    EXPECT_EQ(Show(*Query(session, "select null"), 0, 0), "NULL");
}

TEST(RowSet, DescribesColumns) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer not null, name varchar(20), code char(5), note text, data blob)");
    const auto rows = Query(session, "select * from item");
    const auto& columns = rows->Columns();
    ASSERT_EQ(columns.size(), 5u);
    EXPECT_EQ(columns[0].definedSize, 4);
    EXPECT_EQ(columns[0].precision, 10);
    EXPECT_NE(columns[0].attributes & 0x10, 0);
    EXPECT_EQ(columns[1].definedSize, 20);
    EXPECT_EQ(columns[1].dbType, 129);
    EXPECT_EQ(columns[1].attributes & 0x10, 0);
    EXPECT_EQ(columns[1].attributes & 0x80, 0);
    EXPECT_NE(columns[3].attributes & 0x80, 0);
    EXPECT_EQ(columns[3].definedSize, 2147483647);
    EXPECT_EQ(columns[4].dbType, 128);
    EXPECT_NE(columns[4].attributes & 0x80, 0);
    EXPECT_EQ(columns[4].definedSize, 2147483647);
}

TEST(RowSet, FindsTheTableBehindTheColumnsWhenAsked) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer primary key, name varchar(20), kind int)");
    Do(*session, "create table pair (a int not null, b int not null, c int, primary key (a, b))");
    Do(*session, "create table code (c varchar(5) not null unique, t varchar(20))");
    const auto rows = Query(session, "select name as id, id as name, kind + 1, kind k from item");
    EXPECT_TRUE(rows->Columns()[0].baseColumn.empty());
    rows->DescribeOrigins();
    const auto& columns = rows->Columns();
    EXPECT_EQ(columns[0].baseTable, "item");
    EXPECT_EQ(columns[0].baseColumn, "name");
    EXPECT_FALSE(columns[0].isKey);
    EXPECT_EQ(columns[1].baseColumn, "id");
    EXPECT_TRUE(columns[1].isKey);
    EXPECT_TRUE(columns[1].isAutoIncrement);
    EXPECT_NE(columns[1].attributes & 0x8000, 0);
    EXPECT_TRUE(columns[2].baseTable.empty());
    EXPECT_TRUE(columns[2].isExpression);
    EXPECT_EQ(columns[3].baseColumn, "kind");

    const auto pair = Query(session, "select p.*, i.* from pair p, item i");
    pair->DescribeOrigins();
    for (const auto& column : pair->Columns())
        EXPECT_TRUE(column.baseColumn.empty());  // two stars: not told apart
    const auto keys = Query(session, "select *, 1 from pair");
    keys->DescribeOrigins();
    EXPECT_TRUE(keys->Columns()[0].isKey);
    EXPECT_TRUE(keys->Columns()[1].isKey);
    EXPECT_FALSE(keys->Columns()[0].isAutoIncrement);
    EXPECT_FALSE(keys->Columns()[2].isKey);

    const auto code = Query(session, "select * from code");
    code->DescribeOrigins();
    EXPECT_TRUE(code->Columns()[0].isKey);  // unique and never NULL
    EXPECT_FALSE(code->Columns()[1].isKey);

    const auto compound = Query(session, "select id, name from item union select a, b from pair");
    compound->DescribeOrigins();
    EXPECT_TRUE(compound->Columns()[0].baseColumn.empty());
}

TEST(RowSet, OutlivesItsSessionOnceItIsComplete) {
    const SqliteFile file;
    auto session = file.Open();
    Fill(*session, 3000);
    const auto rows = Query(session, "select * from item");
    session.reset();
    EXPECT_EQ(rows->CountRows(), 3000u);
    EXPECT_EQ(Show(*rows, 2999, 1), "BSTR n3000");
    rows->DescribeOrigins();  // too late: nothing to ask
    EXPECT_TRUE(rows->Columns()[0].baseTable.empty());
}

TEST(RowSet, CanBeDroppedAtAnyMomentOfItsFetch) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 60000);
    for (const char* sql : {"select * from item", "select * from item where id > 0"}) {
        for (int delay = 0; delay < 40; ++delay) {
            const auto rows = Query(session, sql, {true, 0});
            usleep(static_cast<useconds_t>(delay) * 300);
        }
    }
    EXPECT_EQ(Query(session, "select * from item where id < 3")->CountRows(), 2u);
}

TEST(RowSet, KeepsWhatHasArrivedAfterCancel) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 60000);
    const auto rows = Query(session, "select * from item", {true, 0});
    rows->Cancel();
    EXPECT_TRUE(rows->IsComplete());
    const std::size_t arrived = rows->CountRows();
    EXPECT_GE(arrived, 1u);
    EXPECT_LE(arrived, 60000u);
    EXPECT_TRUE(rows->HasRow(0));
    EXPECT_FALSE(rows->HasRow(arrived));
    EXPECT_EQ(Show(*rows, 0, 0), "I4 1");
    EXPECT_EQ(Query(session, "select * from item where id < 3")->CountRows(), 2u);
}

TEST(RowSet, IsCancelledFromAnotherThread) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 100000);
    for (int round = 0; round < 10; ++round) {
        const auto rows = Query(session, "select * from item", {true, 0});
        std::thread canceller([&] { rows->Cancel(); });
        std::size_t row = 0;
        while (rows->HasRow(row))
            ++row;
        canceller.join();
        EXPECT_EQ(row, rows->ArrivedRows());
    }
}

TEST(RowSet, ServesMoreFetchesThanThereAreThreads) {
    const SqliteFile file;
    {
        const auto session = file.Open();
        Fill(*session, 5000);
    }
    std::vector<std::shared_ptr<RowSet>> sets;
    for (int i = 0; i < 30; ++i)
        sets.push_back(Query(file.Open(), "select * from item", {true, 0}));
    for (const auto& rows : sets)
        EXPECT_EQ(rows->CountRows(), 5000u);
}

TEST(RowSet, FinishesByItselfWithoutAReader) {
    const SqliteFile file;
    const auto session = file.Open();
    Fill(*session, 5000);
    const auto rows = Query(session, "select * from item", {true, 0});
    for (int i = 0; i < 500 && !rows->IsComplete(); ++i)
        usleep(10'000);
    EXPECT_TRUE(rows->IsComplete());
    EXPECT_EQ(rows->ArrivedRows(), 5000u);
}

TEST(RowSet, HoldsRowsInLittleMoreThanTheirValues) {
    const SqliteFile file;
    const auto session = file.Open();
    constexpr std::size_t kRows = 100000;
    Do(*session,
       "create table big (id integer primary key, name varchar(20), price double, qty integer, stamp timestamp)");
    Do(*session,
       "insert into big with recursive s(i) as (select 1 union all select i+1 from s where i<100000) select i, "
       "'name of item '||i, i*1.25, i%1000, datetime(1057323909+i*60,'unixepoch') from s");
    const auto rows = Query(session, "select * from big");
    ASSERT_EQ(rows->CountRows(), kRows);
    std::size_t values = 0;
    for (std::size_t row = 0; row < kRows; ++row)
        values += 4 + rows->TextAt(row, 1)->size() + 8 + 4 + 16;
    EXPECT_LE(rows->MemoryBytes(), values * 3 / 2 + kRows * 32);
}

TEST(RowSet, ReadsEveryRowOfALargeResult) {
    const SqliteFile file;
    const auto session = file.Open();
    constexpr std::size_t kRows = 200000;
    Fill(*session, kRows);
    const auto rows = Query(session, "select id, printf('%0100d', id) from item order by id", {true, 0});
    for (std::size_t row = 0; row < kRows; ++row) {
        ASSERT_TRUE(rows->HasRow(row));
        const std::string number = std::to_string(row + 1);
        ASSERT_EQ(rows->TextAt(row, 1), std::string(100 - number.size(), '0') + number);
    }
    EXPECT_FALSE(rows->HasRow(kRows));
    for (std::size_t row = kRows; row-- != 0;)
        ASSERT_EQ(Show(*rows, row, 0), "I4 " + std::to_string(row + 1));
}

TEST(BuiltRowSet, GivesBackWhatWasPutIn) {
    std::vector<Column> columns(7);
    const LONG types[] = {3, 200, 135, 131, 11, 205, 5};
    const CellKind kinds[] = {CellKind::Integer32, CellKind::Text,  CellKind::Timestamp, CellKind::Decimal,
                              CellKind::Boolean,   CellKind::Bytes, CellKind::Real64};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].type = types[i];
        columns[i].kind = kinds[i];
    }
    const auto rows = RowSet::Build(columns);
    EXPECT_TRUE(rows->IsComplete());
    EXPECT_FALSE(rows->HasRow(0));
    constexpr int kRows = 1000;
    for (int row = 0; row < kRows; ++row) {
        std::vector<VARIANT> values(7);
        values[0].vt = VT_I4;
        values[0].lVal = row;
        values[1].vt = VT_BSTR;
        values[1].bstrVal = SysAllocString(u"物料");
        values[2].vt = VT_DATE;
        values[2].date = 37806.5;
        values[3].vt = VT_CY;
        values[3].cyVal.int64 = 125000;
        values[4].vt = VT_BOOL;
        values[4].boolVal = row % 2 == 0 ? VARIANT_TRUE : VARIANT_FALSE;
        values[5].vt = VT_ARRAY | VT_UI1;
        values[5].parray = SafeArrayCreateVector(VT_UI1, 0, 2);
        std::memcpy(values[5].parray->pvData, "\0\x01", 2);
        values[6].vt = VT_NULL;
        rows->Append(values);
        for (VARIANT& value : values)
            VariantClear(&value);
        if (row % 333 != 0) continue;
        EXPECT_EQ(Show(*rows, static_cast<std::size_t>(row), 0), "I4 " + std::to_string(row));
    }
    EXPECT_EQ(rows->CountRows(), static_cast<std::size_t>(kRows));
    for (std::size_t row = 0; row < kRows; ++row) {
        ASSERT_EQ(Show(*rows, row, 0), "I4 " + std::to_string(row));
        ASSERT_EQ(Show(*rows, row, 1), "BSTR " + Utf8(u8"物料"));
        ASSERT_EQ(Show(*rows, row, 2), "DATE 2003-07-04 12:00:00");
        ASSERT_EQ(Show(*rows, row, 3), "DECIMAL 12.5000");
        ASSERT_EQ(Show(*rows, row, 4), row % 2 == 0 ? "BOOL true" : "BOOL false");
        ASSERT_EQ(Show(*rows, row, 5), "BYTES 0001");
        ASSERT_EQ(Show(*rows, row, 6), "NULL");
    }
}

TEST(BuiltRowSet, TakesShortRowsAndRefusesObjects) {
    std::vector<Column> columns(2);
    const auto rows = RowSet::Build(columns);
    rows->Append({});
    EXPECT_EQ(Show(*rows, 0, 1), "NULL");
    VARIANT object = {};
    object.vt = VT_UNKNOWN;
    EXPECT_THROW(rows->Append(std::span<const VARIANT>(&object, 1)), AdoError);
    EXPECT_EQ(rows->CountRows(), 1u);
}

/// A value in words, to the last bit.
std::string Exactly(const VARIANT& value) {
    const std::string type = std::to_string(value.vt) + ' ';
    switch (value.vt) {
        case VT_NULL:
            return type;
        case VT_I4:
            return type + std::to_string(value.lVal);
        case VT_R8:
        case VT_DATE:
            return type + std::to_string(std::bit_cast<std::uint64_t>(value.dblVal));
        case VT_BSTR:
            return type + text::Utf16ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)});
        case VT_DECIMAL:
            return type + FormatDecimal(value.decVal);
        default:
            return type + "unexpected";
    }
}

/// Every cell of a column reads as the VARIANT that its Cell makes.
void ExpectReadAsMade(const RowSet& rows, const Column& column) {
    for (std::size_t row = 0; row < rows.ArrivedRows(); ++row) {
        SCOPED_TRACE(row);
        test::Value read;
        test::Read(rows, row, 0, read);
        test::Value made;
        MakeVariant(rows.At(row, 0), column, made);
        EXPECT_EQ(Exactly(read), Exactly(made));
    }
}

Column ColumnOf(CellKind kind, LONG type) {
    Column column;
    column.name = u"value";
    column.kind = kind;
    column.type = column.dbType = type;
    return column;
}

TEST(RowSet, ReadsTextsOfNumbersAndMomentsAsTheirCellsSay) {
    const Column columns[] = {
        ColumnOf(CellKind::Integer32, kTypeInteger),     ColumnOf(CellKind::Integer32, kTypeUnsignedInt),
        ColumnOf(CellKind::Integer64, kTypeBigInt),      ColumnOf(CellKind::Real64, kTypeDouble),
        ColumnOf(CellKind::Timestamp, kTypeDbTimestamp), ColumnOf(CellKind::Date, kTypeDbDate),
    };
    const std::optional<std::string_view> texts[] = {
        "0",
        "-0",
        "7",
        "-7",
        "2147483647",
        "-2147483648",
        "2147483648",
        "-2147483649",
        "99999999999999999999",
        "1.5",
        "-1.25",
        "1e300",
        "nan",
        "",
        "-",
        "x",
        "2003-07-04",
        "2003-07-04 13:05:09",
        "2003-07-04 13:05:09.5",
        "13:05",
        "0099-12-31 00:00:00",
        "0100-01-01 00:00:00",
        "9999-12-31 23:59:59",
        "2003-02-29 00:00:00",
        "infinity",
        std::nullopt,
    };
    for (const Column& column : columns) {
        SCOPED_TRACE(static_cast<int>(column.kind));
        const auto rows = RowSet::Build({column});
        for (const auto& text : texts)
            rows->AppendTexts({&text, 1});
        ASSERT_EQ(rows->ArrivedRows(), std::size(texts));
        ExpectReadAsMade(*rows, column);
    }
}

template <class Fixed, std::size_t Count>
std::shared_ptr<RowSet> SetOf(const Column& column, const Fixed (&values)[Count]) {
    RowLayout layout({&column, 1}, false);
    std::vector<long> indicators(Count, sizeof(Fixed));
    indicators.back() = -1;  // NULL
    const ChunkBuilder::FixedBlock block = {reinterpret_cast<const char*>(values), indicators.data()};
    std::vector<std::unique_ptr<Chunk>> chunks;
    chunks.push_back(ChunkBuilder(layout).Seal(0, Count, {&block, 1}));
    return RowSet::Assemble({column}, std::move(layout), std::move(chunks));
}

TEST(RowSet, ReadsFixedWidthValuesAsTheirCellsSay) {
    const int integers[] = {0, 1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), 5};
    for (const LONG type : {kTypeInteger, kTypeUnsignedInt}) {
        const Column column = ColumnOf(CellKind::Integer32, type);
        ExpectReadAsMade(*SetOf(column, integers), column);
    }
    const double reals[] = {0.0, -0.0, 1.5, 1e300, std::numeric_limits<double>::infinity(), 5.0};
    const Column real = ColumnOf(CellKind::Real64, kTypeDouble);
    ExpectReadAsMade(*SetOf(real, reals), real);

    const SQL_TIMESTAMP_STRUCT stamps[] = {
        {2003, 7, 4, 13, 5, 9, 0},   {2003, 7, 4, 13, 5, 9, 123'456'789},
        {1899, 12, 30, 0, 0, 0, 0},  {1899, 12, 29, 12, 0, 0, 0},
        {100, 1, 1, 0, 0, 0, 0},     {9999, 12, 31, 23, 59, 59, 999'000'000},
        {99, 12, 31, 23, 59, 59, 0}, {10000, 1, 1, 0, 0, 0, 0},
        {-44, 3, 15, 0, 0, 0, 0},    {2003, 7, 4, 0, 0, 0, 0},
    };
    const Column stamp = ColumnOf(CellKind::Timestamp, kTypeDbTimestamp);
    const auto rows = SetOf(stamp, stamps);
    for (std::size_t row = 0; row < std::size(stamps); ++row) {
        SCOPED_TRACE(row);
        test::Value read;
        test::Read(*rows, row, 0, read);
        if (row >= 6 && row <= 8) {  // no automation date says these
            EXPECT_EQ(read.vt, VT_BSTR);
            continue;
        }
        test::Value made;
        MakeVariant(rows->At(row, 0), stamp, made);
        EXPECT_EQ(Exactly(read), Exactly(made));
    }
}

}  // namespace
}  // namespace tk::ado
