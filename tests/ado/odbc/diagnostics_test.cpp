#include "ado/odbc/diagnostics.h"

#include <gtest/gtest.h>

#include "ado/support/utf8.h"

namespace tk::ado {
namespace {

using test::Utf8;

constexpr unsigned kFail = 0x80004005;

TEST(Classify, TellsTheCauseByStateNativeCodeAndText) {
    const struct {
        const char* label;
        DiagnosticRecord record;
        unsigned code;
        const char16_t* words;
        bool lost;
    } rows[] = {
        {"syntax, standard state", {"42000", 1064, "You have an error"}, 0x80040E14, u"语法错误", false},
        {"syntax, server's state", {"42601", 7, "syntax error"}, 0x80040E14, u"语法错误", false},
        {"old state", {"37000", 170, "Line 1"}, 0x80040E14, u"语法错误", false},
        {"syntax by text", {"HY000", 1, "near \"x\": syntax error (1)"}, 0x80040E14, u"语法错误", false},
        {"several statements", {"HY000", -1, "only one SQL statement allowed"}, 0x80040E14, u"语法错误", false},
        {"no state at all", {"", 1, "Couldn't parse SQL"}, 0x80040E14, u"语法错误", false},
        {"no table", {"42S02", 208, ""}, 0x80040E37, u"对象不存在", false},
        {"no table, old", {"S0002", 208, ""}, 0x80040E37, u"对象不存在", false},
        {"no relation", {"42P01", 7, ""}, 0x80040E37, u"对象不存在", false},
        {"no table by text", {"HY000", 1, "no such table: t (1)"}, 0x80040E37, u"对象不存在", false},
        {"no column", {"42S22", 1054, ""}, 0x80040E14, u"对象不存在", false},
        {"no column by text", {"HY000", 1, "no such column: c (1)"}, 0x80040E14, u"对象不存在", false},
        {"table exists", {"42P07", 7, ""}, 0x80040E14, u"", false},
        {"duplicate key", {"23000", 2627, ""}, 0x80040E2F, u"违反约束", false},
        {"duplicate key, server's state", {"23505", 7, ""}, 0x80040E2F, u"违反约束", false},
        {"constraint by text", {"HY000", 19, "UNIQUE constraint failed: t.id (19)"}, 0x80040E2F, u"违反约束", false},
        {"permission", {"42501", 7, ""}, 0x80040E09, u"权限不足", false},
        {"permission by number", {"42000", 229, ""}, 0x80040E09, u"权限不足", false},
        {"read-only file", {"HY000", 8, "attempt to write a readonly database (8)"}, 0x80040E09, u"权限不足", false},
        {"too long", {"22001", 7, ""}, 0x80040E57, u"数据溢出", false},
        {"out of range", {"22003", 7, ""}, 0x80040E57, u"数据溢出", false},
        {"cannot convert", {"22018", 7, ""}, 0x80040E07, u"", false},
        {"parameter missing", {"07002", 0, ""}, 0x80040E10, u"语法错误", false},
        {"deadlock", {"40001", 1213, ""}, 0x80040E38, u"并发冲突", false},
        {"locked by text", {"HY000", 5, "database is locked (5)"}, 0x80040E38, u"并发冲突", false},
        {"lock wait", {"HY000", 1205, "Lock wait timeout exceeded"}, 0x80040E38, u"并发冲突", false},
        {"time limit", {"HYT00", 0, ""}, 0x80040E31, u"超时", false},
        {"time limit by number", {"HY018", 1969, "max_statement_time exceeded"}, 0x80040E31, u"超时", false},
        {"cancelled", {"HY008", 0, ""}, 0x80040E4E, u"已取消", false},
        {"cancelled, server's state", {"57014", 7, ""}, 0x80040E4E, u"已取消", false},
        {"cancelled by number", {"HY018", 1317, "Query execution was interrupted"}, 0x80040E4E, u"已取消", false},
        {"cancelled by text", {"HY000", 9, "interrupted (9)"}, 0x80040E4E, u"已取消", false},
        {"login", {"28000", 1045, ""}, 0x80040E4D, u"连接失败", false},
        {"not connected", {"08001", 101, ""}, kFail, u"连接失败", true},
        {"lost", {"08S01", 2013, ""}, kFail, u"连接失败", true},
        {"server went down", {"57P01", 35, ""}, kFail, u"连接失败", true},
        {"lost by number", {"01000", 20017, "Unexpected EOF"}, kFail, u"连接失败", true},
        {"no data source", {"IM002", 0, ""}, kFail, u"连接失败", false},
        {"not offered", {"HYC00", 0, ""}, 0x80040E53, u"", false},
        {"anything", {"HY000", 77, "oops"}, kFail, u"", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const FailureClass found = Classify(row.record);
        EXPECT_EQ(static_cast<unsigned>(found.code), row.code);
        EXPECT_TRUE(std::u16string_view(found.words) == row.words);
        EXPECT_EQ(found.connectionLost, row.lost);
    }
}

TEST(StripPrefixes, TakesTheBracketsInFront) {
    EXPECT_EQ(StripPrefixes("[SQLite]no such table: t (1)"), "no such table: t (1)");
    EXPECT_EQ(StripPrefixes("[unixODBC][Driver Manager] Can't open lib"), "Can't open lib");
    EXPECT_EQ(StripPrefixes("no [brackets] in front"), "no [brackets] in front");
    EXPECT_EQ(StripPrefixes("[never closed"), "[never closed");
    EXPECT_EQ(StripPrefixes("[only]"), "");
    EXPECT_EQ(StripPrefixes(""), "");
}

TEST(MakeError, PutsTheCauseInFrontOfAllMessages) {
    const AdoError error = MakeError({{"42S02", 208, "[FreeTDS][SQL Server]Invalid object name 't'."},
                                      {"42000", 8180, "[FreeTDS][SQL Server]Statement could not be prepared."}});
    EXPECT_EQ(static_cast<unsigned>(error.Code()), 0x80040E37u);
    EXPECT_TRUE(error.Description() == u"对象不存在：Invalid object name 't'.; Statement could not be prepared.");
    EXPECT_TRUE(error.Source() == u"Microsoft OLE DB Provider for ODBC Drivers");
    ASSERT_EQ(error.Records().size(), 2u);
    EXPECT_EQ(error.Records()[0].sqlState, "42S02");
    EXPECT_EQ(error.Records()[0].nativeError, 208);
    EXPECT_EQ(error.Records()[1].nativeError, 8180);
    EXPECT_TRUE(error.Records()[1].description == u"Statement could not be prepared.");
}

TEST(MakeError, TakesTheCauseFromALaterRecord) {
    const AdoError error = MakeError({{"01000", 5701, "Changed database context"}, {"23000", 2627, "Duplicate"}});
    EXPECT_EQ(static_cast<unsigned>(error.Code()), 0x80040E2Fu);
    EXPECT_TRUE(error.Description() == u"违反约束：Changed database context; Duplicate");
}

TEST(MakeError, KeepsChineseMessagesWhole) {
    const AdoError error = MakeError({{"23505", 7, Utf8(u8"[驱动]错误: 键值“名称”重复")}});
    EXPECT_TRUE(error.Description() == u"违反约束：错误: 键值“名称”重复");
}

TEST(MakeError, SaysSoWhenTheDriverSaysNothing) {
    const AdoError error = MakeError({});
    EXPECT_EQ(static_cast<unsigned>(error.Code()), kFail);
    EXPECT_TRUE(error.Description() == u"驱动程序没有说明原因");
    ASSERT_EQ(error.Records().size(), 1u);
}

TEST(MakeError, DoesNotRepeatAMessage) {
    const AdoError error = MakeError({{"HY000", 1, "oops"}, {"HY000", 1, "oops"}});
    EXPECT_TRUE(error.Description() == u"oops");
    EXPECT_EQ(error.Records().size(), 2u);
}

TEST(MakeTimeoutError, ReadsCancelledAsOutOfTime) {
    EXPECT_TRUE(MakeTimeoutError({{"57014", 7, "canceling statement"}}, false).Description() ==
                u"超时：canceling statement");
    EXPECT_TRUE(MakeTimeoutError({{"23505", 7, "duplicate"}}, false).Description() == u"违反约束：duplicate");
    EXPECT_TRUE(MakeTimeoutError({{"HY000", 7, "what"}}, false).Description() == u"what");
    EXPECT_TRUE(MakeTimeoutError({{"HY000", 7, "what"}}, true).Description() == u"超时：what");
    EXPECT_EQ(static_cast<unsigned>(MakeTimeoutError({{"HY000", 9, "interrupted"}}, true).Code()), 0x80040E31u);
}

TEST(AdoErrorNumber, CarriesItsOwnTextAndDetail) {
    const AdoError plain(ErrorNumber::ObjectClosed);
    EXPECT_EQ(static_cast<unsigned>(plain.Code()), 0x800A0E78u);
    EXPECT_TRUE(plain.Description() == u"对象已关闭，不能执行此操作");
    EXPECT_TRUE(plain.Source().empty());
    EXPECT_TRUE(plain.Records().empty());
    const AdoError detailed(ErrorNumber::ItemNotFound, u"名称");
    EXPECT_EQ(static_cast<unsigned>(detailed.Code()), 0x800A0CC1u);
    EXPECT_TRUE(detailed.Description() == u"集合中没有此名称或序号的项目：名称");
}

}  // namespace
}  // namespace tk::ado
