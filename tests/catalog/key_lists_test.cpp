// Primary and foreign keys.
#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

constexpr char kListFailed[] = "筛选数据对象出错";
constexpr char kCreated[] = "返回编码:[0x00000000]操作完全成功。";

class KeyLists : public CatalogTest {
protected:
    void SetUp() override { Open(database_, "DB2/NT"); }

    static std::vector<Row> Columns(std::vector<const char*> names) {
        std::vector<Row> rows;
        for (const char* name : names)
            rows.push_back({{"COLUMN_NAME", Text(name)}, {"colname", Text(name)}, {"PK_NAME", Text("PK_T")}});
        return rows;
    }

    void TearDown() override {
        held_.reset();
        CatalogTest::TearDown();
    }

    std::unique_ptr<CTDatabase> held_ = std::make_unique<CTDatabase>();
    CTDatabase& database_ = *held_;
    CStringArray names_;
};

TEST_F(KeyLists, ThePrimaryKeyIsItsColumnsInTheRowsetsOrder) {
    Show(Columns({"B", "A", "编号"}));
    EXPECT_STREQ(database_.GetPrimaryKey("ORDERS"), "B,A,编号");
    EXPECT_THAT(Calls(), ElementsAre("connection.get 18",                                                      //
                                     "connection.call 19 (I4 28, VARIANT[] {EMPTY, EMPTY, BSTR \"ORDERS\"})",  //
                                     "connection.get 18", "connection.get 0", "connection.get 18",             //
                                     "records.putref 1056 (UNKNOWN rowset)", "records.get 1006",               //
                                     "records.get 0", "records.call 1018", "records.get 1006",                 //
                                     "records.get 0", "records.call 1018", "records.get 1006",                 //
                                     "records.get 0", "records.call 1018", "records.get 1006",                 //
                                     "records.get 1054"));
}

TEST_F(KeyLists, CommasAtTheEndAreCut) {
    static const struct {
        const char* label;
        std::vector<const char*> columns;
        const char* text;
    } kRows[] = {
        {"none", {}, ""},
        {"one", {"ID"}, "ID"},
        {"a name without a text", {"ID", ""}, "ID"},
        {"in front", {"", "ID"}, ",ID"},
        {"only such", {"", ""}, ""},
        {"a comma in a name", {"A,B", "C,"}, "A,B,C"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(Columns(row.columns));
        EXPECT_STREQ(database_.GetPrimaryKey("T"), row.text);
        Show(Columns(row.columns));
        EXPECT_STREQ(database_.GetDB2PrimaryKey("T", "DB2ADMIN"), row.text);
    }
}

TEST_F(KeyLists, ThePrimaryKeysNameIsThatOfTheFirstRow) {
    Show({{{"PK_NAME", Text("PK_订单")}}, {{"PK_NAME", Text("OTHER")}}});
    EXPECT_STREQ(database_.GetPrimaryKeyName("ORDERS"), "PK_订单");
    EXPECT_THAT(
        Calls(),
        ElementsAre("connection.get 18", "connection.call 19 (I4 28, VARIANT[] {EMPTY, EMPTY, BSTR \"ORDERS\"})",
                    "connection.get 18", "connection.get 0", "connection.get 18",
                    "records.putref 1056 (UNKNOWN rowset)", "records.get 1006", "records.get 0", "records.get 1054"));
    Show({{{"PK_NAME", Null()}}});
    EXPECT_STREQ(database_.GetPrimaryKeyName("ORDERS"), "");
    Show({});
    EXPECT_STREQ(database_.GetPrimaryKeyName("ORDERS"), "");
    EXPECT_EQ(ErrorOf(database_), kCreated);
}

TEST_F(KeyLists, WithoutARowsetThereIsNoKey) {
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_STREQ(database_.GetPrimaryKey("T"), "");
    EXPECT_EQ(ErrorOf(database_), Failure("不支持", "OpenSchema 出错!"));
    EXPECT_STREQ(database_.GetPrimaryKeyName("T"), "");
    EXPECT_EQ(database_.GetForeignKeyNames("T", names_), 0);
    CTDatabase closed;
    EXPECT_STREQ(closed.GetPrimaryKey("T"), "");
    EXPECT_STREQ(closed.GetPrimaryKeyName("T"), "");
    EXPECT_EQ(closed.GetForeignKeyNames("T", names_), 0);
    EXPECT_EQ(ErrorOf(closed), "");
    EXPECT_EQ(names_.GetSize(), 0);
}

TEST_F(KeyLists, AFailingWalkIsReported) {
    const auto fail = [&] {
        Show(Columns({"ID"}));
        records_->On(Get(1006)) = Script();
        records_->On(Get(1006)).Fails("断开");
    };
    fail();
    EXPECT_STREQ(database_.GetPrimaryKey("T"), "");
    EXPECT_EQ(ErrorOf(database_), Failure("断开", kListFailed));
    fail();
    EXPECT_STREQ(database_.GetPrimaryKeyName("T"), "");
    fail();
    EXPECT_EQ(database_.GetForeignKeyNames("T", names_), 0);
    fail();
    EXPECT_STREQ(database_.GetDB2PrimaryKey("T", "C"), "");
    EXPECT_EQ(ErrorOf(database_),
              Failure("断开", "select colname from sysibm.syskeycoluse where tbname='T' and tbcreator='C'"));
}

TEST_F(KeyLists, Db2IsAskedByAQuery) {
    Show(Columns({"ID", "LINE"}));
    EXPECT_STREQ(database_.GetDB2PrimaryKey("Orders", "Db2Admin"), "ID,LINE");
    const Lines lines = Calls();
    EXPECT_THAT(
        lines,
        ElementsAre("connection.get 0", "connection.get 18", "records.get 1054", "records.put 1051 (I4 3)",
                    "records.call 1022 (BSTR \"select colname from sysibm.syskeycoluse where "
                    "tbname='Orders' and tbcreator='Db2Admin'\", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)",
                    "records.put 1004 (I4 1000)", "records.get 1006", "records.get 0", "records.call 1018",
                    "records.get 1006", "records.get 0", "records.call 1018", "records.get 1006", "records.get 1054"));
    Show(Columns({}));
    EXPECT_STREQ(database_.GetDB2PrimaryKey(nullptr, nullptr), "");
    EXPECT_THAT(Calls().at(4),
                ::testing::HasSubstr("\"select colname from sysibm.syskeycoluse where tbname='' and tbcreator=''\""));
    Show(Columns({"ID"}));
    records_->On(Call(1022)).Fails("表不存在");
    EXPECT_STREQ(database_.GetDB2PrimaryKey("a'b", "c%s"), "");
    EXPECT_THAT(Calls().at(4), ::testing::HasSubstr("tbname='a'b' and tbcreator='c%s'"));
    EXPECT_EQ(ErrorOf(database_), Failure("表不存在", "Open"));
}

TEST_F(KeyLists, AForeignKeyIsListedOnce) {
    const auto named = [](const char* name) { return Row{{"FK_NAME", Text(name)}}; };
    names_.Add("FK_OLD");
    Show({named("FK_A"), named("FK_A"), named("FK_B"), named("fk_a"), named("FK_OLD"), named("")});
    EXPECT_EQ(database_.GetForeignKeyNames("ORDERS", names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("FK_OLD", "FK_A", "FK_B", "fk_a", ""));
    EXPECT_EQ(Calls().at(1),
              "connection.call 19 (I4 27, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, BSTR \"ORDERS\"})");
    Show({});
    EXPECT_EQ(database_.GetForeignKeyNames("ORDERS", names_), 1) << "a table without foreign keys";
}

}  // namespace
}  // namespace tk::test
