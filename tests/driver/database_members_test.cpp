#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class DatabaseMembers : public DriverTest {};

TEST_F(DatabaseMembers, AreOneCallEach) {
    static const struct {
        const char* label;
        void (*call)(CTDatabase&);
        const char* line;
    } kRows[] = {
        {"GetConnectionString", [](CTDatabase& d) { d.GetConnectionString(); }, "connection.get 0"},
        {"SetConnectionString", [](CTDatabase& d) { d.SetConnectionString("DSN=库"); },
         "connection.put 0 (BSTR \"DSN=库\")"},
        {"SetConnectionString of null", [](CTDatabase& d) { d.SetConnectionString(nullptr); },
         "connection.put 0 (BSTR null)"},
        {"GetCommandTimeout", [](CTDatabase& d) { d.GetCommandTimeout(); }, "connection.get 2"},
        {"SetCommandTimeout", [](CTDatabase& d) { d.SetCommandTimeout(60); }, "connection.put 2 (I4 60)"},
        {"SetCommandText", [](CTDatabase& d) { d.SetCommandText("x"); }, "connection.put 2 (BSTR \"x\")"},
        {"GetConnectionTimeout", [](CTDatabase& d) { d.GetConnectionTimeout(); }, "connection.get 3"},
        {"SetConnectionTimeout", [](CTDatabase& d) { d.SetConnectionTimeout(0); }, "connection.put 3 (I4 0)"},
        {"GetVersion", [](CTDatabase& d) { d.GetVersion(); }, "connection.get 4"},
        {"BeginTrans", [](CTDatabase& d) { d.BeginTrans(); }, "connection.call 7"},
        {"CommitTrans", [](CTDatabase& d) { d.CommitTrans(); }, "connection.call 8"},
        {"RollbackTrans", [](CTDatabase& d) { d.RollbackTrans(); }, "connection.call 9"},
        {"GetErrors", [](CTDatabase& d) { Held<IDispatch> errors(d.GetErrors()); }, "connection.get 11"},
        {"GetDefaultDatabase", [](CTDatabase& d) { d.GetDefaultDatabase(); }, "connection.get 12"},
        {"SetDefaultDatabase", [](CTDatabase& d) { d.SetDefaultDatabase("pubs"); },
         "connection.put 12 (BSTR \"pubs\")"},
        {"GetIsolationLevel", [](CTDatabase& d) { d.GetIsolationLevel(); }, "connection.get 13"},
        {"SetIsolationLevel", [](CTDatabase& d) { d.SetIsolationLevel(4096); }, "connection.put 13 (I4 4096)"},
        {"GetAttributes", [](CTDatabase& d) { d.GetAttributes(); }, "connection.get 14"},
        {"SetAttributes", [](CTDatabase& d) { d.SetAttributes(-1); }, "connection.put 14 (I4 -1)"},
        {"GetCursorLocation", [](CTDatabase& d) { d.GetCursorLocation(); }, "connection.get 15"},
        {"SetCursorLocation", [](CTDatabase& d) { d.SetCursorLocation(2); }, "connection.put 15 (I4 2)"},
        {"GetMode", [](CTDatabase& d) { d.GetMode(); }, "connection.get 16"},
        {"SetMode", [](CTDatabase& d) { d.SetMode(1); }, "connection.put 16 (I4 1)"},
        {"GetProvider", [](CTDatabase& d) { d.GetProvider(); }, "connection.get 17"},
        {"SetProvider", [](CTDatabase& d) { d.SetProvider("MSDASQL"); }, "connection.put 17 (BSTR \"MSDASQL\")"},
        {"GetState", [](CTDatabase& d) { d.GetState(); }, "connection.get 18"},
        {"Cancel", [](CTDatabase& d) { d.Cancel(); }, "connection.call 21"},
        {"SetRefActiveConnection", [](CTDatabase& d) { d.SetRefActiveConnection(d.GetDispatch()); },
         "connection.putref 1 (DISPATCH connection)"},
        {"SetRefActiveConnection of null", [](CTDatabase& d) { d.SetRefActiveConnection(nullptr); },
         "connection.putref 1 (DISPATCH null)"},
    };
    auto errors = Make("errors");
    connection_->On(Get(11)).Returns(Object(errors.Get()));
    CTDatabase database;
    Open(database);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        row.call(database);
        EXPECT_THAT(journal_.Take(), ElementsAre(row.line));
    }
    EXPECT_EQ(errors->References(), 2u) << "the caller gave his reference back";
}

TEST_F(DatabaseMembers, HandBackWhatTheConnectionAnswers) {
    CTDatabase database;
    Open(database);
    connection_->On(Get(0)).Returns(Text("DSN=库"));
    connection_->On(Get(4)).Returns(Text("2.8"));
    connection_->On(Get(13)).Returns(Long(-1));
    connection_->On(Get(16)).Returns(Short(3));
    connection_->On(Call(7)).Returns(Long(2));
    connection_->On(Get(17)).Returns(Text("MSDASQL"));
    connection_->On(Get(12)).Returns(Text(nullptr));
    connection_->On(Get(11)).Returns(Object(nullptr));
    EXPECT_STREQ(database.GetConnectionString(), "DSN=库");
    EXPECT_STREQ(database.GetVersion(), "2.8");
    EXPECT_EQ(database.GetIsolationLevel(), -1);
    EXPECT_EQ(database.GetMode(), 3) << "a 16-bit answer becomes a long";
    EXPECT_EQ(database.BeginTrans(), 2);
    EXPECT_STREQ(database.GetProvider(), "MSDASQL");
    EXPECT_STREQ(database.GetDefaultDatabase(), "");
    EXPECT_EQ(database.GetErrors(), nullptr) << "a null object is an answer";
}

TEST_F(DatabaseMembers, HandBackTheNumberOfEachProperty) {
    static const struct {
        const char* label;
        long id;
        long (*get)(CTDatabase&);
        long number;
    } kRows[] = {
        {"GetCommandTimeout", 2, [](CTDatabase& d) { return d.GetCommandTimeout(); }, 60},
        {"GetConnectionTimeout", 3, [](CTDatabase& d) { return d.GetConnectionTimeout(); }, 5},
        {"GetAttributes", 14, [](CTDatabase& d) { return d.GetAttributes(); }, 131072},
        {"GetCursorLocation", 15, [](CTDatabase& d) { return d.GetCursorLocation(); }, 2},
        {"GetState", 18, [](CTDatabase& d) { return d.GetState(); }, 9},
    };
    CTDatabase database;
    Open(database);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        connection_->On(Get(row.id)).Returns(Long(row.number));
        EXPECT_EQ(row.get(database), row.number);
    }
}

TEST_F(DatabaseMembers, GetErrorsHandsTheCollectionOver) {
    auto errors = Make("errors");
    CTDatabase database;
    Open(database);
    connection_->On(Get(11)).Returns(Object(errors.Get()));
    const Held<IDispatch> result(database.GetErrors());
    EXPECT_EQ(result.Get(), errors.Get());
    EXPECT_EQ(errors->References(), 3u);
}

TEST_F(DatabaseMembers, LetFailuresPass) {
    CTDatabase database;
    Open(database);
    for (const Member member : {Call(7), Call(8), Call(9), Call(21), Get(0), Get(11), Get(18), Put(16), PutRef(1)})
        connection_->On(member).Fails("没有事务");
    static constexpr void (*kCalls[])(CTDatabase&) = {
        [](CTDatabase& d) { d.BeginTrans(); },
        [](CTDatabase& d) { d.CommitTrans(); },
        [](CTDatabase& d) { d.RollbackTrans(); },
        [](CTDatabase& d) { d.Cancel(); },
        [](CTDatabase& d) { d.GetConnectionString(); },
        [](CTDatabase& d) { d.GetErrors(); },
        [](CTDatabase& d) { d.GetState(); },
        [](CTDatabase& d) { d.SetMode(1); },
        [](CTDatabase& d) { d.SetRefActiveConnection(d.GetDispatch()); },
    };
    const std::string before = ErrorOf(database);
    for (const auto& call : kCalls) {
        try {
            call(database);
            ADD_FAILURE() << "no exception";
        } catch (COleDispatchException* e) {
            EXPECT_STREQ(e->m_strDescription, "没有事务");
            e->Delete();
        }
    }
    EXPECT_EQ(ErrorOf(database), before);
}

TEST_F(DatabaseMembers, RaiseBeforeTheConnectionExists) {
    CTDatabase database;
    static constexpr void (*kCalls[])(CTDatabase&) = {
        [](CTDatabase& d) { d.GetConnectionString(); },
        [](CTDatabase& d) { d.SetMode(1); },
        [](CTDatabase& d) { d.BeginTrans(); },
        [](CTDatabase& d) { d.Cancel(); },
    };
    for (const auto& call : kCalls) {
        try {
            call(database);
            ADD_FAILURE() << "no exception";
        } catch (CException* e) {
            e->Delete();
        }
    }
}

}  // namespace
}  // namespace tk::test
