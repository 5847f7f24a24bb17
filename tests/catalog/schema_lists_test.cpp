// Columns, provider types, catalogs and schemata.
#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

constexpr char kListFailed[] = "筛选数据对象出错";
constexpr char kCreated[] = "返回编码:[0x00000000]操作完全成功。";

class SchemaLists : public CatalogTest {
protected:
    void SetUp() override { Open(database_, "Microsoft SQL Server"); }
    void TearDown() override {
        held_.reset();
        CatalogTest::TearDown();
    }

    static std::vector<Row> Named(const char* column, std::vector<const char*> names) {
        std::vector<Row> rows;
        for (const char* name : names)
            rows.push_back({{column, Text(name)}});
        return rows;
    }

    std::unique_ptr<CTDatabase> held_ = std::make_unique<CTDatabase>();
    CTDatabase& database_ = *held_;
    CStringArray names_;
};

TEST_F(SchemaLists, EachReadsOneColumnOfItsRowset) {
    static const struct {
        const char* label;
        int (*list)(CTDatabase&, CStringArray&);
        const char* call;
        const char* column;
        int result;
        Lines names;
    } kRows[] = {
        {"columns",
         [](CTDatabase& d, CStringArray& a) { return d.GetAllFields("ORDERS", a); },
         "I4 4, VARIANT[] {EMPTY, EMPTY, BSTR \"ORDERS\"}",
         "COLUMN_NAME",
         3,
         {"before", "A", "A", "库"}},
        {"types",
         [](CTDatabase& d, CStringArray& a) { return d.GetTypeNames(a); },
         "I4 22",
         "TYPE_NAME",
         1,
         {"before", "A", "A", "库"}},
        {"catalogs",
         [](CTDatabase& d, CStringArray& a) { return d.GetAllDatabases(a); },
         "I4 1",
         "CATALOG_NAME",
         1,
         {"A", "A", "库"}},
        {"schemata",
         [](CTDatabase& d, CStringArray& a) { return d.GetSchemas(a); },
         "I4 17",
         "SCHEMA_NAME",
         1,
         {"before", "A", "库"}},
        {"schemata and the user",
         [](CTDatabase& d, CStringArray& a) { return d.GetAllSchemas(a); },
         "I4 17",
         "SCHEMA_NAME",
         1,
         {"before", "A", "库", "sa"}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CTDatabase database;
        Open(database, "Microsoft SQL Server");
        names_.RemoveAll();
        names_.Add("before");
        Show(Named(row.column, {"A", "A", "库"}));
        EXPECT_EQ(row.list(database, names_), row.result);
        EXPECT_EQ(TextsOf(names_), row.names);
        EXPECT_EQ(Calls().at(1), std::string("connection.call 19 (") + row.call + ")");
        EXPECT_EQ(ErrorOf(database), kCreated);

        Show({});
        names_.RemoveAll();
        EXPECT_EQ(row.list(database, names_), row.result == 3 ? 0 : 1) << "nothing to list";
        EXPECT_EQ(ErrorOf(database), kCreated);

        Show(Named(row.column, {"A"}));
        records_->On(Call(1018)) = Script();
        records_->On(Call(1018)).Fails("断开");
        EXPECT_EQ(row.list(database, names_), 0);
        EXPECT_EQ(ErrorOf(database), Failure("断开", kListFailed));
        records_->On(Call(1018)) = Script();

        connection_->On(Call(19)).Fails("不支持");
        EXPECT_EQ(row.list(database, names_), 0);
        EXPECT_THAT(ErrorOf(database), ::testing::StartsWith("不支持\r\nOpenSchema "));

        CTDatabase closed;
        EXPECT_EQ(row.list(closed, names_), 0);
        EXPECT_EQ(ErrorOf(closed), "");
    }
}

TEST_F(SchemaLists, DatabasesReplaceTheArrayEvenWhenTheyCannotBeListed) {
    CTDatabase closed;
    names_.Add("before");
    EXPECT_EQ(closed.GetAllDatabases(names_), 0);
    EXPECT_EQ(names_.GetSize(), 0);
}

TEST_F(SchemaLists, TheUserStandsBehindTheSchemataTwiceWhenThereIsOneOfTheName) {
    Show(Named("SCHEMA_NAME", {"dbo", "sa", "guest"}));
    EXPECT_EQ(database_.GetAllSchemas(names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("dbo", "sa", "guest", "sa"));
    Show(Named("SCHEMA_NAME", {"dbo", "sa", "DBO"}));
    EXPECT_EQ(database_.GetSchemas(names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("dbo", "sa", "guest", "sa", "DBO")) << "as they are spelled";
}

TEST_F(SchemaLists, TheFirstColumnAnswersForEveryField) {
    static const struct {
        const char* label;
        COleVariant nullable;
        int result;
    } kRows[] = {
        {"takes nulls", Flag(true), 0},
        {"takes none", Flag(false), 1},
        {"a number", Short(1), 0},
        {"zero", Short(0), 1},
        {"a long zero", Long(0), 1},
        {"a text", Text("NO"), 1},
        {"an unsigned number", Integer(VT_UI2, 1), 0},
        {"a long number", Long(2), 0},
        {"the low bits of one", Long(0x10000), 1},
        {"an unsigned long number", Integer(VT_UI4, 1), 0},
        {"no value", Null(), 1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({{{"COLUMN_NAME", Text("ID")}, {"IS_NULLABLE", row.nullable}},
              {{"COLUMN_NAME", Text("NAME")}, {"IS_NULLABLE", Flag(row.result != 0)}}});
        EXPECT_EQ(database_.IsFieldNull("ORDERS", "NAME"), row.result);
        EXPECT_EQ(Calls().at(1), "connection.call 19 (I4 4, VARIANT[] {EMPTY, EMPTY, BSTR \"ORDERS\"})");
    }
    Show({{{"IS_NULLABLE", Flag(false)}}});
    EXPECT_EQ(database_.IsFieldNull("ORDERS", nullptr), 1);
    Show({});
    EXPECT_EQ(database_.IsFieldNull("NOSUCH", "ID"), 0);
    Show({{{"IS_NULLABLE", Flag(false)}}});
    records_->On(Get(1006)) = Script();
    records_->On(Get(1006)).Fails("断开");
    EXPECT_EQ(database_.IsFieldNull("ORDERS", "ID"), 0);
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_EQ(database_.IsFieldNull("ORDERS", "ID"), 0);
    CTDatabase closed;
    EXPECT_EQ(closed.IsFieldNull("ORDERS", "ID"), 0);
    EXPECT_EQ(ErrorOf(closed), "");
}

}  // namespace
}  // namespace tk::test
