// What the text of a SELECT tells where the server tells nothing: the one table, and the columns of its list.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ado/rowset/origins.h"

namespace tk::ado::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ReadOnlyTable, GivesThePartsOfTheName) {
    EXPECT_THAT(ReadOnlyTable("select * from goods"), ElementsAre("goods"));
    EXPECT_THAT(ReadOnlyTable("SELECT a FROM dbo.[Order Lines] WHERE a = 1 ORDER BY a"),
                ElementsAre("dbo", "Order Lines"));
    EXPECT_THAT(ReadOnlyTable("select * from \"test\".dbo.goods g"), ElementsAre("test", "dbo", "goods"));
    EXPECT_THAT(ReadOnlyTable("select * from test..goods"), ElementsAre("test", "", "goods"));
    EXPECT_THAT(ReadOnlyTable("select * from goods where id in (select id from sold)"), ElementsAre("goods"));
}

TEST(ReadOnlyTable, GivesNothingForMoreThanOne) {
    for (const char* sql : {"select * from a, b", "select * from a join b on a.id = b.id",
                            "select * from (select * from a) x", "select 1", "update a set b = 1", ""}) {
        EXPECT_THAT(ReadOnlyTable(sql), IsEmpty()) << sql;
    }
}

TEST(ReadSelectList, PassesOverTop) {
    EXPECT_THAT(ReadSelectList("select top 10 id, name from goods"), ElementsAre("id", "name"));
    EXPECT_THAT(ReadSelectList("select distinct top (5) percent with ties * from goods"), ElementsAre("*"));
    EXPECT_THAT(ReadSelectList("select top, id from goods"), ElementsAre("top", "id"));
}

}  // namespace
}  // namespace tk::ado::test
