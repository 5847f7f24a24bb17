// The members that open a schema rowset: which one, with which restrictions, and what becomes of it.
#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

using Member = IDispatch* (*)(CTDatabase&);

struct Rowset {
    const char* label;
    Member open;
    const char* call;
};

constexpr Rowset kRowsets[] = {
    {"objects", [](CTDatabase& d) { return d.GetObjectSet("TABLE", "dbo"); },
     "I4 20, VARIANT[] {EMPTY, BSTR \"dbo\", EMPTY, BSTR \"TABLE\"}"},
    {"objects of all schemata", [](CTDatabase& d) { return d.GetObjectSet("VIEW", nullptr); },
     "I4 20, VARIANT[] {EMPTY, EMPTY, EMPTY, BSTR \"VIEW\"}"},
    {"objects of every type", [](CTDatabase& d) { return d.GetObjectSet(nullptr, nullptr); },
     "I4 20, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY}"},
    {"objects of no schema", [](CTDatabase& d) { return d.GetObjectSet("", ""); },
     "I4 20, VARIANT[] {EMPTY, BSTR \"\", EMPTY, BSTR \"\"}"},
    {"primary key", [](CTDatabase& d) { return d.GetPrimaryKeySet("ORDERS", "dbo"); },
     "I4 28, VARIANT[] {EMPTY, BSTR \"dbo\", BSTR \"ORDERS\"}"},
    {"primary key in every schema", [](CTDatabase& d) { return d.GetPrimaryKeySet("订单", nullptr); },
     "I4 28, VARIANT[] {EMPTY, EMPTY, BSTR \"订单\"}"},
    {"primary key of no table", [](CTDatabase& d) { return d.GetPrimaryKeySet(nullptr, nullptr); },
     "I4 28, VARIANT[] {EMPTY, EMPTY, EMPTY}"},
    {"foreign keys", [](CTDatabase& d) { return d.GetForeignKeySet("ORDERS"); },
     "I4 27, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, BSTR \"ORDERS\"}"},
    {"foreign keys of every table", [](CTDatabase& d) { return d.GetForeignKeySet(nullptr); },
     "I4 27, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY}"},
    {"procedures", [](CTDatabase& d) { return d.GetProcedureSet("dbo"); }, "I4 16, VARIANT[] {EMPTY, BSTR \"dbo\"}"},
    {"procedures of all schemata", [](CTDatabase& d) { return d.GetProcedureSet(nullptr); },
     "I4 16, VARIANT[] {EMPTY, EMPTY}"},
    {"columns", [](CTDatabase& d) { return d.GetFieldSet("a\"b'%s", "dbo"); },
     "I4 4, VARIANT[] {EMPTY, BSTR \"dbo\", BSTR \"a\"b'%s\"}"},
    {"columns in every schema", [](CTDatabase& d) { return d.GetFieldSet("ORDERS", nullptr); },
     "I4 4, VARIANT[] {EMPTY, EMPTY, BSTR \"ORDERS\"}"},
    {"indexes", [](CTDatabase& d) { return d.GetIndexSet("ORDERS", "IX", "dbo"); },
     "I4 12, VARIANT[] {EMPTY, BSTR \"dbo\", BSTR \"IX\", EMPTY, BSTR \"ORDERS\"}"},
    {"all indexes", [](CTDatabase& d) { return d.GetIndexSet("ORDERS", nullptr, nullptr); },
     "I4 12, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, BSTR \"ORDERS\"}"},
    {"types", [](CTDatabase& d) { return d.GetTypeSet(); }, "I4 22"},
    {"catalogs", [](CTDatabase& d) { return d.GetDbNameSet(); }, "I4 1"},
    {"schemata", [](CTDatabase& d) { return d.GetSchemaSet(); }, "I4 17"},
};

bool IsWhole(const Rowset& rowset) {
    return std::string(rowset.call).find("VARIANT[]") == std::string::npos;
}

class SchemaRowsets : public CatalogTest {};

TEST_F(SchemaRowsets, SendTheirRestrictions) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    connection_->On(Call(19)).Returns(Object(rowset_.Get()));
    for (const Rowset& row : kRowsets) {
        SCOPED_TRACE(row.label);
        {
            const Held<IDispatch> rowset(row.open(database));
            EXPECT_EQ(rowset.Get(), rowset_.Get());
            EXPECT_EQ(rowset_->References(), 3u) << "the caller's own";
        }
        // the state, the rowset, the state once more for the tag
        EXPECT_THAT(journal_.Take(),
                    ElementsAre("connection.get 18", std::string("connection.call 19 (") + row.call + ")",
                                "connection.get 18"));
        EXPECT_EQ(ErrorOf(database), "返回编码:[0x00000000]操作完全成功。");
    }
}

TEST_F(SchemaRowsets, AreNullWithoutAConnection) {
    for (const Rowset& row : kRowsets) {
        SCOPED_TRACE(row.label);
        CTDatabase database;
        EXPECT_EQ(row.open(database), nullptr);
        EXPECT_EQ(ErrorOf(database), "");
    }
    EXPECT_EQ(connections_->Created(), 0);
}

TEST_F(SchemaRowsets, AreNullUnlessTheStateIsOpen) {
    CTDatabase database;
    Open(database, "DB2");
    for (const long state : {0L, 2L, 3L, 8L, 9L}) {
        connection_->On(Get(18)) = Script();
        connection_->On(Get(18)).Returns(Long(state));
        for (const Rowset& row : kRowsets) {
            SCOPED_TRACE(::testing::Message() << row.label << ", state " << state);
            EXPECT_EQ(row.open(database), nullptr);
            EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18"));
        }
    }
    EXPECT_EQ(ErrorOf(database), "返回编码:[0x00000000]操作完全成功。");
}

TEST_F(SchemaRowsets, ReportAFailureOfTheSchema) {
    CTDatabase database;
    Open(database, "DB2");
    connection_->On(Call(19)).Fails("不支持");
    for (const Rowset& row : kRowsets) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(row.open(database), nullptr);
        EXPECT_EQ(ErrorOf(database), Failure("不支持", IsWhole(row) ? "OpenSchema 时出错" : "OpenSchema 出错!"));
    }
}

TEST_F(SchemaRowsets, ReportAStateThatCannotBeRead) {
    CTDatabase database;
    Open(database, "DB2");
    connection_->On(Get(18)).Fails("断开");
    for (const Rowset& row : kRowsets) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(row.open(database), nullptr);
        EXPECT_EQ(ErrorOf(database), Failure("断开", IsWhole(row) ? "OpenSchema 时出错" : "OpenSchema 出错!"));
    }
}

}  // namespace
}  // namespace tk::test
