#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/tkdb/split_script.h"

namespace tk::tools {
namespace {

using testing::ElementsAre;

TEST(SplitScript, EndsStatementsAtSemicolons) {
    EXPECT_THAT(SplitScript("a; b ;\n c"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(SplitScript(""), ElementsAre());
    EXPECT_THAT(SplitScript(" ;; \n;"), ElementsAre());
}

TEST(SplitScript, LeavesQuotedSemicolonsAlone) {
    EXPECT_THAT(SplitScript("insert 'a;b'; x"), ElementsAre("insert 'a;b'", "x"));
    EXPECT_THAT(SplitScript("insert 'it''s;'; x"), ElementsAre("insert 'it''s;'", "x"));
    EXPECT_THAT(SplitScript("select \"a;b\", `c;d`"), ElementsAre("select \"a;b\", `c;d`"));
}

TEST(SplitScript, LeavesCommentsAlone) {
    EXPECT_THAT(SplitScript("a -- no; end\n, b; c"), ElementsAre("a -- no; end\n, b", "c"));
    EXPECT_THAT(SplitScript("a /* ; */ b; c"), ElementsAre("a /* ; */ b", "c"));
}

TEST(SplitScript, TakesUnfinishedQuotesAndCommentsToTheEnd) {
    EXPECT_THAT(SplitScript("a 'b; c"), ElementsAre("a 'b; c"));
    EXPECT_THAT(SplitScript("a /* b; c"), ElementsAre("a /* b; c"));
    EXPECT_THAT(SplitScript("a -- b; c"), ElementsAre("a -- b; c"));
}

}  // namespace
}  // namespace tk::tools
