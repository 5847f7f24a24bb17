// Views, constraints, parameters and results of procedures, and rights to columns, on every database system.
#include <gtest/gtest.h>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

enum : LONG { kConstraints = 10, kRights = 13, kViews = 23, kParameters = 26, kResults = 29 };

class SchemaKindsTest : public SystemTest {
protected:
    /// The named columns of all rows: "a,b;c,d;".
    std::string List(LONG schema, const std::vector<Value>& restrictions,
                     std::initializer_list<const char16_t*> names) const {
        const Outcome outcome = connection_.Call(connection::kOpenSchema, {Number(schema), Array(restrictions)});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        if (!outcome.Ok()) return "nothing";
        return SessionTest::List(outcome.Result(), names);
    }
    bool IsFile() const { return GetParam() == SystemKind::Sqlite; }
};

TEST_P(SchemaKindsTest, ViewsAreTablesOfThatType) {
    Drop(u"货物");
    Do(u"create table \"货物\" (id integer)");
    Do(u"create view \"视 图%\" as select id from \"货物\"");
    const auto views = [&](const char16_t* name) {
        return List(kViews, {Value(), Value(), Text(name)}, {u"TABLE_NAME", u"VIEW_DEFINITION", u"IS_UPDATABLE"});
    };
    EXPECT_EQ(views(u"视 图%"), ToUtf8(u"视 图%,NULL,NULL;"));
    EXPECT_EQ(views(u"视%"), "");
    EXPECT_EQ(views(u"货物"), "");
    Do(u"drop view \"视 图%\"");
    Drop(u"货物");
}

TEST_P(SchemaKindsTest, ConstraintsAreTheKeysOfATable) {
    Drop(u"line");
    Drop(u"order.s");
    Do(u"create table \"order.s\" (id integer not null, no integer not null, constraint \"PK_订单\" primary key (no, "
       u"id))");
    Do(u"create table line (id integer not null primary key, a integer, b integer, c integer, d integer, constraint "
       u"fk_one foreign key (a, b) references \"order.s\" (no, id), constraint fk_two foreign key (c, d) references "
       u"\"order.s\" (no, id))");
    const auto constraints = [&](const char16_t* table) {
        return List(kConstraints, {Value(), Value(), Value(), Value(), Value(), Text(table)},
                    {u"TABLE_NAME", u"CONSTRAINT_NAME", u"CONSTRAINT_TYPE", u"IS_DEFERRABLE", u"INITIALLY_DEFERRED"});
    };
    EXPECT_EQ(constraints(u"order.s"), IsFile() ? "order.s,NULL,PRIMARY KEY,0,0;"
                                       : GetParam() == SystemKind::Postgres
                                           ? ToUtf8(u"order.s,PK_订单,PRIMARY KEY,0,0;")
                                           : "order.s,PRIMARY,PRIMARY KEY,0,0;");
    EXPECT_EQ(constraints(u"line"),
              IsFile() ? "line,NULL,PRIMARY KEY,0,0;line,FK_line_0,FOREIGN KEY,0,0;line,FK_line_1,FOREIGN KEY,0,0;"
              : GetParam() == SystemKind::Postgres
                  ? "line,fk_one,FOREIGN KEY,0,0;line,fk_two,FOREIGN KEY,0,0;line,line_pkey,PRIMARY KEY,0,0;"
                  : "line,PRIMARY,PRIMARY KEY,0,0;line,fk_one,FOREIGN KEY,0,0;line,fk_two,FOREIGN KEY,0,0;");
    EXPECT_EQ(List(kConstraints, {Value(), Value(), Value(), Value(), Value(), Text(u"line"), Text(u"PRIMARY KEY")},
                   {u"TABLE_NAME", u"CONSTRAINT_TYPE"}),
              "line,PRIMARY KEY;");
    EXPECT_EQ(constraints(u"order_s"), "");
    EXPECT_EQ(List(kConstraints, {}, {u"TABLE_NAME"}), "") << "of no table";
    Drop(u"line");
    Drop(u"order.s");
}

TEST_P(SchemaKindsTest, ParametersOfAProcedure) {
    const auto parameters = [&](const char16_t* name) {
        return List(kParameters, {Value(), Value(), Text(name)},
                    {u"PARAMETER_NAME", u"ORDINAL_POSITION", u"PARAMETER_TYPE", u"DATA_TYPE"});
    };
    if (IsFile()) {
        EXPECT_EQ(parameters(u"any"), "");
        EXPECT_EQ(List(kResults, {}, {u"COLUMN_NAME"}), "");
        return;
    }
    if (GetParam() == SystemKind::Postgres) {
        Do(u"create or replace function \"取 价%\"(\"编号\" integer, inout total numeric, out name varchar) language "
           u"sql "
           u"as 'select $2, ''x''::varchar'");
        Do(u"create or replace function \"取 价x\"(other integer) returns integer language sql as 'select 1'");
        Do(u"create or replace function listed(n integer) returns table (id integer, made timestamp) language sql as "
           u"'select 1, localtimestamp'");
        EXPECT_EQ(List(kResults, {Value(), Value(), Text(u"listed")}, {u"COLUMN_NAME", u"DATA_TYPE"}),
                  "id,3;made,135;");
        EXPECT_EQ(parameters(u"listed"), "n,1,1,3;");
        EXPECT_EQ(parameters(u"取 价x"), ",0,4,3;other,1,1,3;");
    } else {
        Do(u"drop procedure if exists \"取 价%\"");
        Do(u"drop procedure if exists \"取 价x\"");
        Do(u"create procedure \"取 价%\"(\"编号\" integer, inout total decimal(10,2), out name varchar(20)) select 1");
        Do(u"create procedure \"取 价x\"(other integer) select 1");
        Do(u"drop function if exists doubled");
        Do(u"create function doubled(n integer) returns integer deterministic return n * 2");
        EXPECT_EQ(parameters(u"doubled"), ",0,4,3;n,1,1,3;");
        EXPECT_EQ(List(kResults, {Value(), Value(), Text(u"doubled")}, {u"COLUMN_NAME"}), "");
    }
    const char* const text = GetParam() == SystemKind::Postgres ? "129" : "130";
    EXPECT_EQ(parameters(u"取 价%"), ToUtf8(u"编号,1,1,3;total,2,2,131;name,3,3,") + text + ";");
    EXPECT_EQ(List(kParameters, {Value(), Value(), Text(u"取 价%"), Text(u"total")}, {u"PARAMETER_NAME"}), "total;");
    EXPECT_EQ(parameters(u"取%"), "");
}

TEST_P(SchemaKindsTest, RightsToColumnsWhereTheDriverTellsThem) {
    Drop(u"货物");
    Do(u"create table \"货物\" (id integer, \"单 价\" integer)");
    const std::vector<Value> about = {Value(), Value(), Text(u"货物")};
    EXPECT_EQ(List(kRights, {}, {u"COLUMN_NAME"}), "") << "of no table";
    if (GetParam() != SystemKind::MariaDb) {
        EXPECT_EQ(connection_.Call(connection::kOpenSchema, {Number(kRights), Array(about)}).Error(), 3251u);
    } else {
        Do(u"create user reader@localhost");
        Do(u"grant select (\"单 价\"), update (\"单 价\") on \"货物\" to reader@localhost with grant option");
        EXPECT_EQ(List(kRights, about, {u"GRANTEE", u"TABLE_NAME", u"COLUMN_NAME", u"PRIVILEGE_TYPE", u"IS_GRANTABLE"}),
                  ToUtf8(u"'reader'@'localhost',货物,单 价,SELECT,-1;'reader'@'localhost',货物,单 价,UPDATE,-1;"));
        EXPECT_EQ(List(kRights, {Value(), Value(), Text(u"货_")}, {u"COLUMN_NAME"}), "");
        Do(u"drop user reader@localhost");
    }
    Drop(u"货物");
}

INSTANTIATE_TEST_SUITE_P(All, SchemaKindsTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

class SchemaDeferredTest : public SchemaKindsTest {};

TEST_P(SchemaDeferredTest, ADeferredConstraintIsToldAsSuch) {
    Do(u"create table parent (id integer primary key); create table child (a integer constraint fk_late references "
       u"parent deferrable initially deferred, b integer constraint fk_able references parent deferrable)");
    EXPECT_EQ(List(kConstraints, {Value(), Value(), Value(), Value(), Value(), Text(u"child")},
                   {u"CONSTRAINT_NAME", u"IS_DEFERRABLE", u"INITIALLY_DEFERRED"}),
              "fk_able,-1,0;fk_late,-1,-1;");
    Do(u"drop table child; drop table parent");
}

INSTANTIATE_TEST_SUITE_P(Servers, SchemaDeferredTest, ::testing::Values(SystemKind::Postgres), SystemName);

}  // namespace
}  // namespace tk::ado::test
