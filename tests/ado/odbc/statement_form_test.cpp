#include "ado/odbc/statement_form.h"

#include <gtest/gtest.h>

#include <set>
#include <string_view>

namespace tk::ado {
namespace {

TEST(StatementForm, LeavesOutNumbersAndQuotedTexts) {
    static constexpr std::string_view kSame[][2] = {
        {"select a from t where id = 1", "select a from t where id = 123456"},
        {"select a from t where b = 'x'", "select a from t where b = 'another one'"},
        {"select a from t where b = ''", "select a from t where b = '--;$\"/*'"},
        {"select 1, 'a', 2.5 from t", "select 22, 'bb', 0.125 from t"},
        {"select a from t limit 10 offset 20", "select a from t limit 1 offset 2"},
        {"select \"a 1\" from t where id=1", "select \"a 1\" from t where id=2"},
        {"select a from t where b - 1 / 2 > 0", "select a from t where b - 2 / 3 > 1"},
        {"select [a 1], `b 1` from t where id=1", "select [a 1], `b 1` from t where id=2"},
        {"select a from t where b in(1,2)and c=3", "select a from t where b in(12,13)and c=14"},
    };
    for (const auto& [one, other] : kSame) {
        EXPECT_NE(StatementForm(one), 0u) << one;
        EXPECT_EQ(StatementForm(one), StatementForm(other)) << other;
    }
}

TEST(StatementForm, KeepsEverythingElse) {
    static constexpr std::string_view kTexts[] = {
        "select a from t where id = 1",
        "select b from t where id = 1",
        "select a from t1 where id = 1",
        "select a from t2 where id=1",
        "select a from \"t 1\" where id=1",
        "select a from \"t 2\" where id=1",
        "select a1 from t",
        "select a2 from t",
        "select a from t where id = -1",
        "select a from t where id = '1'",
        "select a from t where id = 1.5",
        "SELECT a from t where id = 1",
        "select a from t where id in (1)",
        "select a from t where id in (1,2)",
        "select \xE4\xB8\xAD\x31 from t",
        "select \xE4\xB8\xAD\x32 from t",
        "select 1",
        "select 1 ",
        "select '1",
        "",
        "select 'a''b'",
        "select 'a' 'b'",
    };
    std::set<std::uint64_t> forms;
    std::size_t told = 0;
    for (const std::string_view text : kTexts) {
        const std::uint64_t form = StatementForm(text);
        if (form == 0) continue;
        ++told;
        forms.insert(form);
    }
    EXPECT_EQ(told, std::size(kTexts) - 1) << "but for the quote without an end";
    EXPECT_EQ(forms.size(), told);
}

TEST(StatementForm, IsNotToldOfTextsThatItCouldMisread) {
    for (const std::string_view text :
         {"select a -- it's", "select a /* it's */ from t", "select E'it\\'s'", "select 'c:\\'", "select $$it's$$",
          "select $1", "select 1; select 2", "select 'open", "select \"open", "select # it's", "select [it's] from t",
          "select a['x]'] from t", "select `it's`", "select \"it's\"", "select \"a\\\"\"",
          "select 1 as U&\"a!0062\" uescape '!'", "select U&'a!0062'", "select [open", "select `open"}) {
        EXPECT_EQ(StatementForm(text), 0u) << text;
    }
}

}  // namespace
}  // namespace tk::ado
