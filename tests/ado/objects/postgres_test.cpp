// What only a server shows: exact stamps and decimals, sequences, schemas, several results, a failed transaction.
#include <gtest/gtest.h>

#include "session_test.h"
#include "support/postgres_server.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class PostgresTest : public SessionTest {
protected:
    static tk::test::PostgresServer& Server() {
        static tk::test::PostgresServer server;
        return server;
    }
    static Object Connect() {
        const Object opened = Object::Create(kConnectionClass);
        const Outcome outcome = opened.Call(connection::kOpen, {Text(ToUtf16(Server().ConnectionString()))});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        opened.Put(connection::kCursorLocation, Number(3));
        return opened;
    }
    void SetUp() override {
        connection_ = Connect();
        Execute(connection_, u"drop schema public cascade");
        Execute(connection_, u"create schema public");
        Execute(
            connection_,
            u"create table goods (id serial primary key, name varchar(20) not null default 'x', price numeric(12,2), "
            u"total bigint, made timestamp, day date, sold boolean, note text, data bytea)");
        Execute(
            connection_,
            u"insert into goods values (1, '苹果', 1.50, 9000000000, '2003-07-04 13:05:09.123456', '2003-07-04', true, "
            u"'long', '\\x0102')");
        Execute(connection_, u"insert into goods (id) values (2)");
        Execute(connection_, u"select setval('goods_id_seq', 2)");
    }

    Object connection_;
};

TEST_F(PostgresTest, GivesValuesInTypesThatCallersKnow) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id", 1);
    const struct {
        const char16_t* name;
        VARTYPE type;
        std::u16string text;
    } kRows[] = {
        {u"id", VT_I4, u"1"},           {u"name", VT_BSTR, u"苹果"},
        {u"price", VT_DECIMAL, u"1.5"}, {u"total", VT_DECIMAL, u"9000000000"},
        {u"sold", VT_BOOL, u"-1"},      {u"note", VT_BSTR, u"long"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(ToUtf8(row.name));
        const Outcome value = rows.Get(kCollect, {Text(row.name)});
        EXPECT_EQ(value.value.Type(), row.type);
        EXPECT_EQ(value.Utf8(), ToUtf8(row.text));
    }
    EXPECT_EQ(rows.Get(kCollect, {Text(u"made")}).value.Type(), VT_DATE);
    EXPECT_EQ(rows.Get(kCollect, {Text(u"data")}).value.Type(), VT_ARRAY | VT_UI1);
    EXPECT_EQ(connection_.Call(connection::kExecute, {Text(u"select count(*) from goods")})
                  .Result()
                  .Get(kCollect, {Number(0)})
                  .value.Type(),
              VT_I4);
}

TEST_F(PostgresTest, WritesARowWhoseStampIsFinerThanADate) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    rows.Get(kProperties).Result().Get(collection::kItem, {Text(u"Update Criteria")}).Result().Put(0, Number(1));
    PutValue(rows, u"price", Text(u"2.75"));
    PutValue(rows, u"sold", Value::Boolean(false));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Ask(connection_, u"select price::text || sold::text from goods where id = 1"), "2.75false");
    PutValue(rows, u"price", Value::Null());
    PutValue(rows, u"day", Text(u"2010-01-02"));
    PutValue(rows, u"note", Text(u"中文"));
    const Outcome again = rows.Call(kUpdate);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Ask(connection_, u"select coalesce(price::text, 'none') || day::text || note from goods where id = 1"),
              ToUtf8(u"none2010-01-02中文"));
    EXPECT_EQ(Ask(connection_, u"select made::text from goods where id = 1"), "2003-07-04 13:05:09.123456");
}

TEST_F(PostgresTest, NoticesAnotherWriter) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    Execute(Connect(), u"update goods set price = 7 where id = 1");
    PutValue(rows, u"price", Text(u"2.75"));
    const Outcome written = rows.Call(kUpdate);
    EXPECT_EQ(written.Error(), 0x80040E38u) << written;
    rows.Call(kCancelUpdate);
    ASSERT_TRUE(rows.Call(kResync, {Number(1), Number(2)}).Ok());
    EXPECT_EQ(ValueOf(rows, u"price"), "7");
    const Outcome deleted = rows.Call(kDelete);
    EXPECT_TRUE(deleted.Ok()) << deleted;
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "1");
}

TEST_F(PostgresTest, ReadsTheNumberOfASequenceBack) {
    const Object rows = OpenRows(connection_, u"select id, name, price from goods order by id");
    rows.Call(kAddNew);
    PutValue(rows, u"price", Text(u"3.50"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(ValueOf(rows, u"id"), "3");
    // The default is the table's; only a row that is read again shows it.
    EXPECT_EQ(ValueOf(rows, u"name"), "NULL");
    ASSERT_TRUE(rows.Call(kResync, {Number(1), Number(2)}).Ok());
    EXPECT_EQ(ValueOf(rows, u"name"), "x");
    rows.Get(kProperties).Result().Get(collection::kItem, {Text(u"Update Resync")}).Result().Put(0, Number(9));
    rows.Call(kAddNew);
    PutValue(rows, u"price", Text(u"4"));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"id") + ValueOf(rows, u"name"), "4x");
}

TEST_F(PostgresTest, ReportsWhatTheServerRefuses) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    const Outcome twice = rows.Call(kAddNew, {Array({Text(u"id")}), Array({Number(1)})});
    EXPECT_EQ(twice.Error(), 0x80040E2Fu) << twice;
    EXPECT_NE(ToUtf8(twice.description).find("duplicate key"), std::string::npos) << twice;
    rows.Call(kCancelUpdate);
    PutValue(rows, u"name", Text(u"a name of more than twenty characters"));
    const Outcome tooLong = rows.Call(kUpdate);
    EXPECT_EQ(tooLong.Error(), 0x80040E57u) << tooLong;
    rows.Call(kCancelUpdate);
    PutValue(rows, u"name", Value::Null());
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E2Fu);
    EXPECT_EQ(rows.Get(kStatus).Long() & 0x1000, 0x1000);
    rows.Call(kCancelUpdate);
    const Object errors = connection_.Get(connection::kErrors).Result();
    EXPECT_EQ(errors.Get(collection::kItem, {Number(0)}).Result().Get(5).Utf8(), "23502");
}

TEST_F(PostgresTest, GoesThroughSeveralResults) {
    const Object first =
        connection_.Call(connection::kExecute, {Text(u"select 1 as one; update goods set price = 1; select 2 as two")})
            .Result();
    ASSERT_TRUE(first);
    EXPECT_EQ(ValueOf(first, u"one"), "1");
    VARIANT affected;
    VariantInit(&affected);
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_VARIANT | VT_BYREF;
    reference.pvarVal = &affected;
    DISPPARAMS parameters{&reference, nullptr, 1, 0};
    VARIANT result;
    ASSERT_EQ(
        first.Dispatch()->Invoke(kNextRecordset, IID_NULL, 0, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr),
        S_OK);
    const Object second(result.pdispVal);
    ASSERT_TRUE(second);
    EXPECT_EQ(second.Get(kState).Long(), 0);
    EXPECT_EQ(affected.vt, VT_I4);
    EXPECT_EQ(affected.lVal, 2);
    const Object third = second.Call(kNextRecordset).Result();
    ASSERT_TRUE(third);
    EXPECT_EQ(ValueOf(third, u"two"), "2");
    EXPECT_FALSE(third.Call(kNextRecordset).Result());
}

TEST_F(PostgresTest, ListsTheCatalogOfTheDatabase) {
    Execute(connection_,
            u"create table part (good integer references goods (id) on delete set null, n integer, "
            u"primary key (n, good))");
    const auto open = [&](LONG schema, const std::vector<Value>& restrictions) {
        const Outcome outcome = connection_.Call(connection::kOpenSchema, {Number(schema), Array(restrictions)});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        return outcome.Result();
    };
    const auto list = [&](const Object& rows, std::initializer_list<const char16_t*> names) {
        std::string text;
        for (; !rows.Get(kEof).True(); rows.Call(kMoveNext)) {
            for (const char16_t* name : names)
                text += ValueOf(rows, name) + (name == *(names.end() - 1) ? ";" : ",");
        }
        return text;
    };
    EXPECT_EQ(list(open(20, {Value(), Text(u"public"), Value(), Text(u"TABLE")}), {u"TABLE_SCHEMA", u"TABLE_NAME"}),
              "public,goods;public,part;");
    EXPECT_EQ(list(open(28, {Value(), Value(), Text(u"part")}), {u"COLUMN_NAME", u"ORDINAL", u"PK_NAME"}),
              "n,1,part_pkey;good,2,part_pkey;");
    EXPECT_EQ(list(open(27, {Value(), Value(), Value(), Value(), Value(), Text(u"part")}),
                   {u"PK_TABLE_NAME", u"FK_COLUMN_NAME", u"DELETE_RULE"}),
              "goods,good,SET NULL;");
    EXPECT_EQ(list(open(12, {Value(), Value(), Value(), Value(), Text(u"goods")}),
                   {u"INDEX_NAME", u"PRIMARY_KEY", u"UNIQUE", u"COLUMN_NAME"}),
              "goods_pkey,-1,-1,id;");
    EXPECT_EQ(list(open(4, {Value(), Value(), Text(u"goods")}), {u"COLUMN_NAME", u"DATA_TYPE"}),
              "id,3;name,129;price,131;total,20;made,135;day,133;sold,11;note,129;data,128;");
    EXPECT_NE(list(open(17, {}), {u"SCHEMA_NAME"}).find("public;"), std::string::npos);
    EXPECT_NE(list(open(1, {}), {u"CATALOG_NAME"}).find("postgres;"), std::string::npos);
}

TEST_F(PostgresTest, OpensRecordsetsByTheStringThatHidesThePassword) {
    const std::string shown = connection_.Get(connection::kConnectionString).Utf8();
    EXPECT_EQ(shown.find("pw"), std::string::npos) << shown;
    const Object rows = Object::Create(kRecordsetClass);
    const Outcome opened = rows.Call(kOpen, {Text(u"select count(*) from goods"), Text(ToUtf16(shown))});
    ASSERT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(rows.Get(kCollect, {Number(0)}).Long(), 2);
}

TEST_F(PostgresTest, SendsABatch) {
    const Object rows = OpenRows(connection_, u"select id, name, price from goods order by id", 4);
    PutValue(rows, u"price", Text(u"5"));
    rows.Call(kMoveNext);
    rows.Call(kDelete);
    rows.Call(kAddNew);
    PutValue(rows, u"name", Text(u"lime"));
    rows.Call(kUpdate);
    const Outcome sent = rows.Call(kUpdateBatch);
    ASSERT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(Ask(connection_, u"select string_agg(id || name, ',' order by id) from goods"), ToUtf8(u"1苹果,3lime"));
    EXPECT_EQ(ValueOf(rows, u"id"), "3");
}

TEST_F(PostgresTest, KeepsTheWarningsOfOneStatementOnly) {
    const Object errors = connection_.Get(connection::kErrors).Result();
    errors.Call(0x60030001);
    for (int i = 0; i < 20; ++i)
        Execute(connection_, u"drop table if exists no_such_table");
    ASSERT_EQ(errors.Get(collection::kCount).Long(), 1);
    EXPECT_NE(errors.Get(collection::kItem, {Number(0)}).Result().Get(0).Utf8().find("no_such_table"),
              std::string::npos);
    // A failure takes the place of everything; warnings come behind it.
    EXPECT_FALSE(connection_.Call(connection::kExecute, {Text(u"select * from missing")}).Ok());
    const LONG failures = errors.Get(collection::kCount).Long();
    EXPECT_EQ(errors.Get(collection::kItem, {Number(0)}).Result().Get(0).Utf8().find("no_such_table"),
              std::string::npos);
    for (int i = 0; i < 3; ++i) {
        Execute(connection_, u"drop table if exists no_such_table");
        EXPECT_EQ(errors.Get(collection::kCount).Long(), failures + 1);
    }
    EXPECT_EQ(errors.Get(collection::kItem, {Number(0)}).Result().Get(0).Utf8().find("no_such_table"),
              std::string::npos);
    // Success says nothing.
    EXPECT_EQ(Ask(connection_, u"select 1"), "1");
    EXPECT_EQ(errors.Get(collection::kCount).Long(), failures + 1);
}

TEST_F(PostgresTest, RefusesChangesOnAConnectionForReading) {
    const std::u16string text = ToUtf16(Server().ConnectionString());
    for (const bool inString : {false, true}) {
        SCOPED_TRACE(inString);
        const Object opened = Object::Create(kConnectionClass);
        if (!inString) opened.Put(connection::kMode, Number(1));
        const Outcome outcome = opened.Call(connection::kOpen, {Text(inString ? text + u";Mode=Read" : text)});
        ASSERT_TRUE(outcome.Ok()) << outcome;
        const std::vector<Value> insert = {Text(u"insert into goods (name) values ('pear')"), Omitted(), Number(129)};
        EXPECT_FALSE(opened.Call(connection::kExecute, insert).Ok());
        EXPECT_TRUE(opened.Call(connection::kBeginTrans).Ok());
        EXPECT_FALSE(opened.Call(connection::kExecute, insert).Ok());
        EXPECT_TRUE(opened.Call(connection::kRollbackTrans).Ok());
        EXPECT_EQ(Ask(opened, u"select count(*) from goods"), "2");
    }
}

TEST_F(PostgresTest, SaysInWhichIsolationStatementsRun) {
    const Object opened = Connect();
    const auto level = [&] {
        const Object properties = opened.Get(connection::kProperties).Result();
        return properties.Get(collection::kItem, {Text(u"Autocommit Isolation Levels")}).Result().Get(0).Long();
    };
    EXPECT_EQ(level(), 0x1000);
    opened.Put(connection::kIsolationLevel, Number(0x100000));
    EXPECT_TRUE(opened.Call(connection::kBeginTrans).Ok());
    EXPECT_EQ(Ask(opened, u"show transaction_isolation"), "serializable");
    EXPECT_EQ(level(), 0x100000);
    EXPECT_TRUE(opened.Call(connection::kRollbackTrans).Ok());
}

}  // namespace
}  // namespace tk::ado::test
