#include "ado/cursor/criteria.h"

#include <gtest/gtest.h>

#include "sample_rows.h"

namespace tk::ado::test {
namespace {

/// The ids of the goods that pass, such as "1 4"; "3001" and the like for a refused text.
std::string Passing(std::u16string_view text) {
    const auto store = Goods();
    std::string ids;
    const int error = ErrorOf([&] {
        const Criteria criteria = Criteria::ParseFilter(text, store->Columns());
        for (std::size_t row = 0; store->HasRow(row); ++row) {
            if (criteria.Matches(*store, row)) ids += (ids.empty() ? "" : " ") + std::to_string(row + 1);
        }
    });
    return error != 0 ? std::to_string(error) : ids;
}

struct FilterRow {
    const char* label;
    const char16_t* text;
    const char* ids;
};

void Check(std::span<const FilterRow> rows) {
    for (const FilterRow& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Passing(row.text), row.ids);
    }
}

TEST(Criteria, ComparesNumbersByValue) {
    static constexpr FilterRow kRows[] = {
        {"equal", u"id = 3", "3"},
        {"no blanks", u"id=3", "3"},
        {"not equal", u"id <> 3", "1 2 4 5"},
        {"less", u"id < 3", "1 2"},
        {"less or equal", u"id <= 3", "1 2 3"},
        {"greater", u"id > 3", "4 5"},
        {"greater or equal", u"id >= 3", "3 4 5"},
        {"fraction against integers", u"id > 2.5", "3 4 5"},
        {"exponent", u"id < 2.5e0", "1 2"},
        {"negative", u"price < -3.7", "5"},
        {"decimal, other scale", u"price = 1.5", "1"},
        {"decimal, sign and zeros", u"price = +01.500", "1"},
        {"amount of money", u"price = $10", "4"},
        {"negative amount", u"price = -$3.75", "5"},
        {"a number as text", u"price = '10.00'", "4"},
        {"beyond 64 bits", u"id < 99999999999999999999999", "1 2 3 4 5"},
        {"a point in front", u"price > .5", "1 2 4"},
        {"a point behind", u"price = 10.", "4"},
        {"no number", u"id = 'three'", "3001"},
        {"half a number", u"id = 3x", "3001"},
        {"exponent without digits", u"id = 3e", "3001"},
        {"like on numbers", u"id LIKE '3*'", "3001"},
        {"a date against a number", u"id = #1/1/2000#", "3001"},
    };
    Check(kRows);
}

TEST(Criteria, ComparesRealsWithNumbersOfEveryForm) {
    const RowStore store(Rows(
        Columns({{u"weight", kDouble}}),
        {{Value::Real(1.5)}, {Value::Real(2.25)}, {Value::Real(10)}, {Value::Real(0.1)}, {Null()}, {Value::Real(-3)}}));
    static constexpr FilterRow kRows[] = {
        {"an integer", u"weight > 2", "2 3"},
        {"an equal integer", u"weight = 10", "3"},
        {"a negative integer", u"weight <= -3", "6"},
        {"zero", u"weight < 0", "6"},
        {"a fraction", u"weight > 2.0", "2 3"},
        {"a fraction that no real is", u"weight = 0.1", "4"},
        {"an exponent", u"weight = 1e1", "3"},
        {"an amount of money", u"weight = $1.5", "1"},
        {"beyond 64 bits", u"weight < 99999999999999999999999", "1 2 3 4 6"},
    };
    for (const FilterRow& row : kRows) {
        SCOPED_TRACE(row.label);
        const Criteria criteria = Criteria::ParseFilter(row.text, store.Columns());
        std::string passing;
        for (std::size_t i = 0; i < 6; ++i) {
            if (criteria.Matches(store, i)) passing += (passing.empty() ? "" : " ") + std::to_string(i + 1);
        }
        EXPECT_EQ(passing, row.ids);
    }
}

TEST(Criteria, ComparesTextsWithoutCase) {
    static constexpr FilterRow kRows[] = {
        {"equal", u"name = 'apple'", "1"},
        {"upper case", u"name = 'BANANA'", "2"},
        {"chinese", u"name = '中国茶'", "4"},
        {"not equal leaves NULL out", u"name <> 'apple'", "2 4 5"},
        {"doubled quote", u"name = 'o''neil'", "5"},
        {"text in number signs", u"[item code] = #'#x'#", "5"},
        {"less", u"name < 'b'", "1"},
        {"greater or equal", u"name >= 'banana'", "2 4 5"},
        {"a number as text", u"[item code] = 5", ""},
        {"like at the end", u"name LIKE 'app*'", "1"},
        {"like with per cent", u"name like 'APP%'", "1"},
        {"like at both ends", u"name LIKE '*an*'", "2"},
        {"like in chinese", u"name LIKE '%国%'", "4"},
        {"like without wildcard", u"name LIKE 'apple'", "1"},
        {"like everything", u"name LIKE '*'", "1 2 4 5"},
        {"underscore is itself", u"name LIKE 'a_ple'", ""},
        {"wildcard in front only", u"name LIKE '*ple'", "3001"},
        {"wildcard inside", u"name LIKE 'a*e'", "3001"},
        {"per cent inside", u"[item code] LIKE 'b%2'", "3001"},
        {"equal takes wildcards as they are", u"[item code] = 'B%2'", "4"},
        {"truth of a text", u"name = TRUE", "3001"},
        {"no end", u"name = 'apple", "3001"},
    };
    Check(kRows);
}

TEST(Criteria, ComparesDatesInMonthDayYear) {
    static constexpr FilterRow kRows[] = {
        {"a day", u"born = #7/4/2003#", "1"},
        {"iso", u"born = #2003-07-04#", "1"},
        {"with time", u"born = #7/4/2003 13:05:09#", "2"},
        {"in quotes", u"born = '2003-07-04'", "1"},
        {"after", u"born > #7/4/2003#", "2 5"},
        {"days before the first are in order", u"born < #12/30/1899#", "4"},
        {"day and time of a negative day", u"born = #12/29/1899 06:00:00#", "4"},
        {"no date", u"born = #nonsense#", "3001"},
        {"like", u"born LIKE '2003*'", "3001"},
        {"no end", u"born = #7/4/2003", "3001"},
    };
    Check(kRows);
}

TEST(Criteria, KnowsTruthAndNull) {
    static constexpr FilterRow kRows[] = {
        {"true", u"flag = True", "1 4"},
        {"false", u"flag = FALSE", "2 5"},
        {"not true", u"flag <> true", "2 5"},
        {"true as a text", u"flag = 'True'", "1 4"},
        {"false as a text", u"flag = 'FALSE'", "2 5"},
        {"another word for a flag", u"flag = 'yes'", "3001"},
        {"true as a number", u"id = 'True'", "3001"},
        {"one", u"flag = 1", "1 4"},
        {"minus one", u"flag = -1", "1 4"},
        {"zero", u"flag = 0", "2 5"},
        {"null", u"name = NULL", "3"},
        {"not null", u"name <> null", "1 2 4 5"},
        {"is null", u"price IS NULL", "3"},
        {"is not null", u"price is not null", "1 2 4 5"},
        {"order with null", u"name < NULL", "3001"},
        {"is something", u"name IS 3", "3001"},
    };
    Check(kRows);
}

TEST(Criteria, JoinsAndBeforeOr) {
    static constexpr FilterRow kRows[] = {
        {"and", u"id > 1 AND id < 4", "2 3"},
        {"or", u"id = 1 OR id = 5", "1 5"},
        {"and first", u"id = 1 OR id > 3 AND flag = true", "1 4"},
        {"groups of ands", u"(id = 1 AND flag = true) OR (id = 2 AND flag = false)", "1 2"},
        {"one in parentheses", u"(id = 1)", "1"},
        {"parentheses twice", u"((id = 1))", "1"},
        {"or in parentheses alone", u"(id = 1 OR id = 2)", "1 2"},
        {"and of and groups", u"(id > 1 AND id < 4) AND name = NULL", "3"},
        {"or inside and", u"(id = 1 OR id = 2) AND flag = true", "3001"},
        {"and before an or group", u"flag = true AND (id = 1 OR id = 2)", "3001"},
        {"lower case words", u"id = 1 or id = 2 and flag = false", "1 2"},
        {"no blanks around parentheses", u"(id=1)OR(id=2)", "1 2"},
    };
    Check(kRows);
}

TEST(Criteria, RefusesWhatIsOutsideTheGrammar) {
    static constexpr FilterRow kRows[] = {
        {"a name alone", u"id", "3001"},
        {"no value", u"id =", "3001"},
        {"no name", u"= 3", "3001"},
        {"unknown column", u"nothing = 3", "3265"},
        {"unknown column in brackets", u"[no such] = 3", "3265"},
        {"name in brackets", u"[item code] = 'a1'", "2 3"},
        {"bracket not closed", u"[id = 3", "3001"},
        {"empty brackets", u"[] = 3", "3001"},
        {"not", u"NOT id = 3", "3265"},
        {"two values", u"id = 3 4", "3001"},
        {"open parenthesis", u"(id = 3", "3001"},
        {"close parenthesis", u"id = 3)", "3001"},
        {"empty parentheses", u"()", "3001"},
        {"trailing and", u"id = 3 AND", "3001"},
        {"leading or", u"OR id = 3", "3265"},
        {"between", u"id BETWEEN 1 AND 3", "3001"},
        {"in", u"id IN (1, 2)", "3001"},
        {"operator apart", u"id < = 3", "3001"},
        {"wrong way round", u"id => 3", "3001"},
        {"exclamation mark", u"id != 3", "3001"},
        {"column against column", u"id = price", "3001"},
        {"number sign alone", u"born = #", "3001"},
        {"only blanks", u"   ", "3001"},
        {"wide blanks between words", u"id　=　3", "3"},
    };
    Check(kRows);
}

TEST(Criteria, RefusesParenthesesWithoutEnd) {
    const std::u16string deep(100000, u'(');
    EXPECT_EQ(Passing(deep), "3001");
    EXPECT_EQ(Passing(deep + u"id = 1" + std::u16string(100000, u')')), "3001");
    EXPECT_EQ(Passing(std::u16string(100, u'(') + u"id = 1" + std::u16string(100, u')')), "1");
}

TEST(Criteria, TakesExactlyOneClauseToFind) {
    const auto store = Goods();
    const auto error = [&](const char16_t* text) {
        return ErrorOf([&] { Criteria::ParseFind(text, store->Columns()); });
    };
    EXPECT_EQ(error(u"id = 3"), 0);
    EXPECT_EQ(error(u"name LIKE 'a*'"), 0);
    EXPECT_EQ(error(u"id = 3 AND id = 4"), 3001);
    EXPECT_EQ(error(u"id = 3 OR id = 4"), 3001);
    EXPECT_EQ(error(u"(id = 3)"), 3001);
    EXPECT_EQ(error(u""), 3001);
}

TEST(Criteria, FoldsLettersBeyondAscii) {
    const auto store = std::make_shared<RowStore>(
        Rows(Columns({{u"t", kVarWChar}}), {{Text(u"ÉCOLE")}, {Text(u"Ωmega")}, {Text(u"ａｂｃ")}}));
    const auto matches = [&](const char16_t* text, std::size_t row) {
        return Criteria::ParseFilter(text, store->Columns()).Matches(*store, row);
    };
    EXPECT_TRUE(matches(u"t = 'école'", 0));
    EXPECT_TRUE(matches(u"t LIKE 'éc*'", 0));
    EXPECT_TRUE(matches(u"t LIKE '*ω*'", 1));
    EXPECT_TRUE(matches(u"t = 'ＡＢＣ'", 2));
    EXPECT_FALSE(matches(u"t = 'ecole'", 0));
}

}  // namespace
}  // namespace tk::ado::test
