#include "ado/odbc/result_sizes.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tk::ado {
namespace {

TEST(ResultSizes, NamesTextsByEveryCharacterAndByTheirConnection) {
    const std::string text = "select id, name from item where id = 1234567";
    std::set<std::uint64_t> names = {ResultName("a", text), ResultName("b", text), ResultName("", "a" + text)};
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string other = text;
        other[i] = '?';
        names.insert(ResultName("a", other));
        names.insert(ResultName("a", text.substr(0, i)));
    }
    names.insert(ResultName("a", text + '\0'));
    EXPECT_EQ(names.size(), 3 + 2 * text.size() + 1);
    EXPECT_FALSE(names.contains(0));
}

TEST(ResultSizes, RemembersTheRowsOfTheLastTime) {
    const std::uint64_t name = ResultName("a test's connection", "select 1");
    EXPECT_EQ(RememberedRows(name), std::nullopt);
    RememberRows(name, 0);
    EXPECT_EQ(RememberedRows(name), 0u);
    RememberRows(name, 70'000);
    EXPECT_EQ(RememberedRows(name), 70'000u);
    RememberRows(name, std::size_t{1} << 40);
    EXPECT_EQ(RememberedRows(name), 0xFFFFFFFEu) << "as many as can be said";
}

}  // namespace
}  // namespace tk::ado
