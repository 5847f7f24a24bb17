#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include "ado/rowset/cell_reader.h"
#include "ado/rowset/date_value.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/origins.h"
#include "ado/rowset/type_map.h"
#include "ado/rowset/value.h"
#include "ado/support/sqlite_file.h"
#include "ado/support/utf8.h"

namespace tk::ado {
namespace {

using test::Utf8;

TEST(ParseCalendarTime, ReadsWhatDatabasesWrite) {
    const struct {
        const char* text;
        const char* moment;  // "" for no moment
    } rows[] = {
        {"2003-07-04", "2003-07-04 00:00:00"},
        {"2003-07-04 13:05:09", "2003-07-04 13:05:09"},
        {"2003-07-04 13:05:09.123456", "2003-07-04 13:05:09.123456"},
        {"2003-07-04 13:05:09.1234567891", "2003-07-04 13:05:09.123456789"},
        {"2003-07-04T13:05:09Z", "2003-07-04 13:05:09"},
        {"2003-07-04 13:05:09+08", "2003-07-04 13:05:09"},
        {"2003-07-04 13:05:09.5 -03:30", "2003-07-04 13:05:09.5"},
        {"2003-07-04 13:05", "2003-07-04 13:05:00"},
        {"2003-07-04   ", "2003-07-04 00:00:00"},
        {"2003/7/4", "2003-07-04 00:00:00"},
        {"2003.07.04", "2003-07-04 00:00:00"},
        {"13:05:09", "1899-12-30 13:05:09"},
        {"13:05:09.25", "1899-12-30 13:05:09.25"},
        {"7:05", "1899-12-30 07:05:00"},
        {"2004-02-29", "2004-02-29 00:00:00"},
        {"2003-02-29", ""},
        {"2003-13-01", ""},
        {"2003-00-10", ""},
        {"2003-01-32", ""},
        {"2003-07-04 24:00:00", ""},
        {"2003-07-04 13:60:00", ""},
        {"2003-07-04 13:05:60", ""},
        {"2003-07-04 13", ""},
        {"2003-07-04x", ""},
        {"2003-07/04", ""},
        {"20030704", ""},
        {"1057323909", ""},
        {"", ""},
        {"-", ""},
        {"2003-", ""},
        {"2003-07-04 13:05:09.", ""},
        {"now", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto read = ParseCalendarTime(row.text);
        EXPECT_EQ(read ? FormatCalendarTime(*read, CalendarForm::DateTime) : "", row.moment);
    }
}

TEST(ParseCalendarTime, GivesTheSameForTheUsualFormAndForOthers) {
    // A blank behind it makes it another one. Each text differs from a moment in one letter.
    const std::string moment = "2004-02-29 23:59:59";
    for (std::size_t at = 0; at < moment.size(); ++at) {
        for (int letter = 1; letter < 256; ++letter) {
            std::string text = moment;
            text[at] = static_cast<char>(letter);
            const auto usual = ParseCalendarTime(text);
            const auto other = ParseCalendarTime(text + ' ');
            ASSERT_EQ(usual.has_value(), other.has_value()) << text;
            if (usual) {
                ASSERT_EQ(FormatCalendarTime(*usual, CalendarForm::DateTime),
                          FormatCalendarTime(*other, CalendarForm::DateTime));
            }
        }
    }
}

TEST(ParseInteger, TakesTheWholeTextOrNothing) {
    constexpr long long kLargest = std::numeric_limits<long long>::max();
    const struct {
        const char* text;
        std::optional<long long> value;
    } rows[] = {
        {"0", 0},
        {"-0", 0},
        {"7", 7},
        {"-2147483648", -2147483648LL},
        {"000000000000000012", 12},
        {"999999999999999999", 999999999999999999LL},
        {"-99999999999999999", -99999999999999999LL},
        {"-999999999999999999", -999999999999999999LL},
        {"0000000000000000000000012", 12},
        {"9223372036854775807", kLargest},
        {"-9223372036854775808", -kLargest - 1},
        {"9223372036854775808", std::nullopt},
        {"", std::nullopt},
        {"-", std::nullopt},
        {"+1", std::nullopt},
        {"--1", std::nullopt},
        {"1-", std::nullopt},
        {" 1", std::nullopt},
        {"1 ", std::nullopt},
        {"1.0", std::nullopt},
        {"1e3", std::nullopt},
        {"/", std::nullopt},
        {":", std::nullopt},
        {"\xB1", std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ParseInteger(row.text), row.value);
    }
}

/// As the standard library reads it.
std::optional<double> StandardReal(const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

TEST(ParseReal, GivesTheNearestNumberToTheLastBit) {
    std::mt19937_64 random(20040229);
    const auto expectTheSame = [](const std::string& text) {
        const auto ours = ParseReal(text);
        const auto theirs = StandardReal(text);
        ASSERT_EQ(ours.has_value(), theirs.has_value()) << text;
        if (ours) {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(*ours), std::bit_cast<std::uint64_t>(*theirs)) << text;
        }
    };
    for (const char* text : {"",
                             "-",
                             ".",
                             "-.",
                             "5.",
                             ".5",
                             "-0",
                             "0.0",
                             "-0.0",
                             "1.2.3",
                             "+1",
                             "1e5",
                             "nan",
                             "inf",
                             "999999999999999",
                             "9999999999999999",
                             "0.99999999999999",
                             "0.999999999999999",
                             "123456789012345.6",
                             "1 ",
                             " 1",
                             "1,5",
                             "--1",
                             "1-"}) {
        expectTheSame(text);
    }
    for (int time = 0; time < 200'000; ++time) {
        std::string text = random() % 2 == 0 ? "-" : "";
        const std::size_t digits = random() % 19;
        for (std::size_t i = 0; i < digits; ++i)
            text += static_cast<char>('0' + random() % 10);
        if (random() % 4 != 0) text.insert(random() % (text.size() + 1), ".");
        if (random() % 16 == 0 && !text.empty()) text[random() % text.size()] = "+-.e x"[random() % 6];
        expectTheSame(text);
    }
}

TEST(AutomationDate, CountsFromTheThirtiethOfDecember) {
    const struct {
        const char* text;
        double date;
    } rows[] = {
        {"1899-12-30", 0.0},
        {"1899-12-30 12:00:00", 0.5},
        {"1899-12-31", 1.0},
        {"1900-01-01", 2.0},
        {"1899-12-29", -1.0},
        {"1899-12-29 06:00:00", -1.25},
        {"2003-07-04 12:00:00", 37806.5},
        {"0100-01-01", -657434.0},
        {"9999-12-31", 2958465.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto time = ParseCalendarTime(row.text);
        ASSERT_TRUE(time.has_value());
        const auto date = ToAutomationDate(*time);
        ASSERT_TRUE(date.has_value());
        EXPECT_DOUBLE_EQ(*date, row.date);
        const std::string full = FormatCalendarTime(*time, CalendarForm::DateTime);
        EXPECT_EQ(FormatCalendarTime(FromAutomationDate(*date), CalendarForm::DateTime), full);
    }
    EXPECT_FALSE(ToAutomationDate({99, 12, 31, 0, 0, 0, 0}).has_value());
    EXPECT_FALSE(ToAutomationDate({10000, 1, 1, 0, 0, 0, 0}).has_value());
}

TEST(AutomationDate, ComesBackFromEveryDayAndMillisecond) {
    for (int day = -657434; day <= 2958465; day += 17) {
        const CalendarTime time = FromAutomationDate(day);
        ASSERT_EQ(ToAutomationDate(time), static_cast<double>(day));
    }
    for (int ms = 0; ms < 86'400'000; ms += 6'133) {
        for (const int day : {37806, -3}) {
            CalendarTime time = FromAutomationDate(day);
            time.hour = ms / 3'600'000;
            time.minute = ms / 60'000 % 60;
            time.second = ms / 1000 % 60;
            time.nanosecond = ms % 1000 * 1'000'000;
            const CalendarTime again = FromAutomationDate(*ToAutomationDate(time));
            ASSERT_EQ(FormatCalendarTime(again, CalendarForm::DateTime),
                      FormatCalendarTime(time, CalendarForm::DateTime));
        }
    }
}

TEST(ParseDecimal, KeepsDigitsAndScale) {
    const struct {
        const char* text;
        const char* decimal;  // "" when it does not fit
    } rows[] = {
        {"0", "0"},
        {"-0", "0"},
        {"12.50", "12.50"},
        {"-12.5", "-12.5"},
        {"+7", "7"},
        {".5", "0.5"},
        {"5.", "5"},
        {"0.0001", "0.0001"},
        {"00012.30", "12.30"},
        {"79228162514264337593543950335", "79228162514264337593543950335"},
        {"-79228162514264337593543950335", "-79228162514264337593543950335"},
        {"79228162514264337593543950336", ""},
        {"123456789012345678901234567890", ""},
        {"12345678901234.123456", "12345678901234.123456"},
        {"1.00000000000000000000000000005", "1.0000000000000000000000000000"},  // half to even
        {"1.00000000000000000000000000015", "1.0000000000000000000000000002"},
        {"1.000000000000000000000000000051", "1.0000000000000000000000000001"},
        {"7922816251426433759354395033.56", "7922816251426433759354395034"},  // ...033.6 needs 97 bits
        {"79228162514264337593543950335.9", ""},
        {"79228162514264337593543950335.1", "79228162514264337593543950335"},
        {"", ""},
        {".", ""},
        {"-", ""},
        {"1e5", ""},
        {"1.2.3", ""},
        {"12a", ""},
        {" 12", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto decimal = ParseDecimal(row.text);
        EXPECT_EQ(decimal ? FormatDecimal(*decimal) : "", row.decimal);
    }
}

TEST(DecimalInteger, RoundTripsTheWholeRange) {
    using Limits = std::numeric_limits<long long>;
    for (const long long value : {0LL, 1LL, -1LL, 42LL, Limits::max(), Limits::min()}) {
        EXPECT_EQ(FormatDecimal(DecimalFromInteger(value)), std::to_string(value));
        EXPECT_EQ(IntegerFromDecimal(DecimalFromInteger(value)), value);
    }
    EXPECT_EQ(IntegerFromDecimal(*ParseDecimal("5.00")), 5);
    EXPECT_FALSE(IntegerFromDecimal(*ParseDecimal("5.01")).has_value());
    EXPECT_FALSE(IntegerFromDecimal(*ParseDecimal("9223372036854775808")).has_value());
    EXPECT_EQ(IntegerFromDecimal(*ParseDecimal("-9223372036854775808")), Limits::min());
}

TEST(NormalizeGuid, GivesTheBracedUpperCaseForm) {
    const struct {
        const char* given;
        const char* form;
    } rows[] = {
        {"a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11", "{A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11}"},
        {"{A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11}", "{A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11}"},
        {"A0EEBC999C0B4EF8BB6D6BB9BD380A11", "{A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11}"},
        {"not a guid", "not a guid"},
        {"a0eebc99", "a0eebc99"},
        {"", ""},
    };
    for (const auto& row : rows) {
        std::string text = row.given;
        NormalizeGuid(text);
        EXPECT_EQ(text, row.form);
    }
}

TEST(FindSqlType, KnowsTheTypesOfTheObjectModel) {
    const struct {
        int sqlType;
        bool isUnsigned;
        LONG fieldType;
        LONG dbType;
    } rows[] = {
        {SQL_CHAR, false, 129, 129},
        {SQL_VARCHAR, false, 200, 129},
        {SQL_VARCHAR, true, 200, 129},
        {SQL_LONGVARCHAR, false, 201, 129},
        {SQL_WCHAR, false, 130, 130},
        {SQL_WVARCHAR, false, 202, 130},
        {SQL_WLONGVARCHAR, false, 203, 130},
        {SQL_BINARY, false, 128, 128},
        {SQL_VARBINARY, false, 204, 128},
        {SQL_LONGVARBINARY, false, 205, 128},
        {SQL_BIT, false, 11, 11},
        {SQL_TINYINT, false, 16, 16},
        {SQL_TINYINT, true, 17, 17},
        {SQL_SMALLINT, false, 2, 2},
        {SQL_SMALLINT, true, 18, 18},
        {SQL_INTEGER, false, 3, 3},
        {SQL_INTEGER, true, 19, 19},
        {SQL_BIGINT, false, 20, 20},
        {SQL_BIGINT, true, 21, 21},
        {SQL_REAL, false, 4, 4},
        {SQL_FLOAT, false, 5, 5},
        {SQL_DOUBLE, false, 5, 5},
        {SQL_DOUBLE, true, 5, 5},
        {SQL_NUMERIC, false, 131, 131},
        {SQL_DECIMAL, false, 131, 131},
        {SQL_TYPE_DATE, false, 133, 133},
        {9, false, 133, 133},
        {SQL_TYPE_TIME, false, 134, 134},
        {10, false, 134, 134},
        {SQL_TYPE_TIMESTAMP, false, 135, 135},
        {11, false, 135, 135},
        {SQL_GUID, false, 72, 72},
        {101, false, 200, 129},
        {113, false, 200, 129},
        {-150, false, 202, 130},
        {0, false, 202, 130},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sqlType);
        const SqlTypeRule& rule = FindSqlType(row.sqlType, row.isUnsigned);
        EXPECT_EQ(rule.fieldType, row.fieldType);
        EXPECT_EQ(rule.dbType, row.dbType);
    }
}

TEST(MakeVariant, GivesTypesThatReadersKnow) {
    const struct {
        const char* label;
        LONG type;
        bool isExpression;
        CellKind kind;
        const char* text;
        const char* value;
    } rows[] = {
        {"tiny", 16, false, CellKind::Integer16, "-5", "I2 -5"},
        {"unsigned tiny", 17, false, CellKind::Integer16, "200", "UI1 200"},
        {"unsigned tiny, too large", 17, false, CellKind::Integer16, "300", "I4 300"},
        {"small", 2, false, CellKind::Integer16, "-32768", "I2 -32768"},
        {"small, too large", 2, false, CellKind::Integer16, "32768", "I4 32768"},
        {"unsigned small", 18, false, CellKind::Integer32, "65535", "I4 65535"},
        {"integer", 3, false, CellKind::Integer32, "2147483647", "I4 2147483647"},
        {"integer, too large", 3, false, CellKind::Integer32, "2147483648", "DECIMAL 2147483648"},
        {"integer, smallest", 3, false, CellKind::Integer32, "-2147483648", "I4 -2147483648"},
        {"unsigned integer", 19, false, CellKind::Integer64, "2147483647", "I4 2147483647"},
        {"unsigned integer, large", 19, false, CellKind::Integer64, "4294967295", "R8 4294967295"},
        {"stored 64 bits", 20, false, CellKind::Integer64, "5", "DECIMAL 5"},
        {"computed 64 bits", 20, true, CellKind::Integer64, "5", "I4 5"},
        {"computed 64 bits, large", 20, true, CellKind::Integer64, "5000000000", "DECIMAL 5000000000"},
        {"unsigned 64 bits", 21, false, CellKind::Decimal, "18446744073709551615", "DECIMAL 18446744073709551615"},
        {"single", 4, false, CellKind::Real32, "1.5", "R4 1.5"},
        {"double", 5, false, CellKind::Real64, "0.1", "R8 0.10000000000000001"},
        {"double, exponent", 5, false, CellKind::Real64, "1.0e+300", "R8 1.0000000000000001e+300"},
        {"numeric", 131, false, CellKind::Decimal, "-12.50", "DECIMAL -12.50"},
        {"numeric, very large", 131, false, CellKind::Decimal, "123456789012345678901234567890",
         "BSTR 123456789012345678901234567890"},
        {"bit", 11, false, CellKind::Boolean, "1", "BOOL true"},
        {"bit, word", 11, false, CellKind::Boolean, "False", "BOOL false"},
        {"date", 133, false, CellKind::Date, "2003-07-04", "DATE 2003-07-04 00:00:00"},
        {"time", 134, false, CellKind::Time, "13:05:09", "DATE 1899-12-30 13:05:09"},
        {"time with a day", 134, false, CellKind::Time, "2003-07-04 13:05:09", "DATE 1899-12-30 13:05:09"},
        {"time stamp", 135, false, CellKind::Timestamp, "2003-07-04 13:05:09.123", "DATE 2003-07-04 13:05:09.123"},
        {"text", 200, false, CellKind::Text, "abc  ", "BSTR abc  "},
        {"empty text", 200, false, CellKind::Text, "", "BSTR "},
        {"bytes", 205, false, CellKind::Bytes, "A\xFF", "BYTES 41ff"},
        {"no bytes", 205, false, CellKind::Bytes, "", "BYTES "},
        // What a database may keep against its own declaration.
        {"word in an integer column", 3, false, CellKind::Integer32, "abc", "BSTR abc"},
        {"nothing in an integer column", 3, false, CellKind::Integer32, "", "BSTR "},
        {"fraction in an integer column", 3, false, CellKind::Integer32, "7.5", "R8 7.5"},
        {"number and more in an integer column", 3, false, CellKind::Integer32, "7 apples", "BSTR 7 apples"},
        {"beyond 64 bits in an integer column", 3, false, CellKind::Integer32, "9.22337203685478e+18",
         "R8 9.2233720368547799e+18"},
        {"comma in a double column", 5, false, CellKind::Real64, "1,5", "BSTR 1,5"},
        {"word in a bit column", 11, false, CellKind::Boolean, "perhaps", "BSTR perhaps"},
        {"word in a date column", 135, false, CellKind::Timestamp, "soon", "BSTR soon"},
        {"seconds in a date column", 135, false, CellKind::Timestamp, "1057323909", "BSTR 1057323909"},
        {"year out of range in a date column", 135, false, CellKind::Timestamp, "0001-01-01", "BSTR 0001-01-01"},
        {"word in a decimal column", 131, false, CellKind::Decimal, "n/a", "BSTR n/a"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        Column column;
        column.type = row.type;
        column.kind = row.kind;
        column.isExpression = row.isExpression;
        test::Value value;
        MakeVariant(CellFromText(row.kind, row.text), column, value);
        EXPECT_EQ(test::Show(value), row.value);
    }
}

TEST(MakeVariant, GivesNullForEveryKind) {
    for (int kind = 0; kind <= static_cast<int>(CellKind::Guid); ++kind) {
        const Cell cell = CellFromText(static_cast<CellKind>(kind), {});
        EXPECT_EQ(cell.form, Cell::Form::Null);
        test::Value value;
        MakeVariant(cell, Column(), value);
        EXPECT_EQ(value.vt, VT_NULL);
    }
}

TEST(MakeBstr, WidensShortAndLongTexts) {
    for (const std::size_t length : {0u, 1u, 511u, 512u, 513u, 100000u}) {
        const std::string text(length, 'x');
        BSTR made = MakeBstr(text);
        EXPECT_EQ(SysStringLen(made), length);
        SysFreeString(made);
    }
    std::string chinese;
    for (int i = 0; i < 400; ++i)
        chinese += Utf8(u8"中𠀀");
    BSTR made = MakeBstr(chinese);
    EXPECT_EQ(SysStringLen(made), 1200u);
    EXPECT_EQ(made[0], u'中');
    SysFreeString(made);
}

TEST(ReadSelectList, TellsColumnsFromExpressions) {
    const struct {
        const char* sql;
        std::vector<std::string> columns;
    } rows[] = {
        {"select a, b from t", {"a", "b"}},
        {"SELECT t.a, s.t.b FROM t", {"a", "b"}},
        {"select a as x, b y, \"c\" as \"z z\", [d] e, `f` from t", {"a", "b", "c", "d", "f"}},
        {"select a 'x' from t", {"a"}},
        {"select *, t.*, a from t", {"*", "*", "a"}},
        {"select distinct a from t", {"a"}},
        {"select a+1, upper(a), (a), 'a', 1, a || b as c from t", {"", "", "", "", "", ""}},
        {"select (select b from u) as x, a from t", {"", "a"}},
        {"select case when a then b end from t", {""}},
        {"select a /* , z */, -- comment, more\n b from t", {"a", "b"}},
        {"select 物料.名称 from 物料", {Utf8(u8"名称")}},
        {"select a from t union select b from u", {}},
        {"with w as (select 1) select a from w", {}},
        {"select 1", {}},
        {"insert into t values (1)", {}},
        {"", {}},
        {"select \"never closed from t", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sql);
        const bool isChinese = row.columns.size() == 1 && row.columns[0] == Utf8(u8"名称");
        EXPECT_EQ(ReadSelectList(isChinese ? Utf8(u8"select 物料.名称 from 物料") : std::string(row.sql)), row.columns);
    }
}

TEST(ReadTables, CountsWhatTheColumnsMayComeFrom) {
    const struct {
        const char* sql;
        std::vector<std::string> tables;
    } rows[] = {
        {"select * from t", {"t"}},
        {"SELECT * FROM s.t, \"u v\" x", {"t", "u v"}},
        {"select * from a.b.[c] as d join `e` on d.x = e.x", {"c", "e"}},
        {"select * from a left outer join (b cross join c) on f(a.x, b.x), d", {"a", "b", "c", "d"}},
        {"select * from {oj a left outer join b on a.x = b.x}", {"a", "b"}},
        {"select * from (select * from a where a.x in (1, 2)) b", {"a"}},
        {"select (select x from a), y from b", {"a", "b"}},
        {"select extract(year from x) from a", {"a"}},
        {"select * from a where x in (select y from b)", {"a"}},
        {"select * from a order by b, c", {"a"}},
        {"select * from only a, lateral (select * from b) c", {"a", "b"}},
        {"select * from rows_of(1, 2) r, a", {"a"}},
        {"create view v (x, y) as select a.x, b.y from t a join t b on a.x = b.y", {"t", "t"}},
        {"select 1", {}},
        {"select * from", {}},
        {"select * from a.", {""}},
        {"select * from ((((", {}},
        {"))))", {}},
        {"", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sql);
        EXPECT_EQ(ReadTables(row.sql), row.tables);
    }
}

}  // namespace
}  // namespace tk::ado
