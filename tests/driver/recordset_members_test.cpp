#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class RecordsetMembers : public DriverTest {};

TEST_F(RecordsetMembers, AreOneCallEach) {
    static const struct {
        const char* label;
        void (*call)(CTRecordset&);
        const char* line;
    } kRows[] = {
        {"GetProperties", [](CTRecordset& r) { r.GetProperties(); }, "records.get 500"},
        {"GetProperty", [](CTRecordset& r) { Held<IDispatch> p(r.GetProperty()); }, "records.get 500"},
        {"GetAbsolutePosition", [](CTRecordset& r) { r.GetAbsolutePosition(); }, "records.get 1000"},
        {"SetAbsolutePosition", [](CTRecordset& r) { r.SetAbsolutePosition(5); }, "records.put 1000 (I4 5)"},
        {"SetRefActiveConnection", [](CTRecordset& r) { r.SetRefActiveConnection(r.GetDispatch()); },
         "records.putref 1001 (DISPATCH records)"},
        {"SetActiveConnection", [](CTRecordset& r) { r.SetActiveConnection(Text("DSN=库")); },
         "records.put 1001 (BSTR \"DSN=库\")"},
        {"SetActiveConnection of nothing", [](CTRecordset& r) { r.SetActiveConnection(Nothing()); },
         "records.put 1001 (EMPTY)"},
        {"GetActiveConnection", [](CTRecordset& r) { r.GetActiveConnection(); }, "records.get 1001"},
        {"GetBof", [](CTRecordset& r) { r.GetBof(); }, "records.get 1002"},
        {"GetBookmark", [](CTRecordset& r) { r.GetBookmark(); }, "records.get 1003"},
        {"SetBookmark", [](CTRecordset& r) { r.SetBookmark(Real(3.0)); }, "records.put 1003 (R8 3)"},
        {"GetCacheSize", [](CTRecordset& r) { r.GetCacheSize(); }, "records.get 1004"},
        {"SetCacheSize", [](CTRecordset& r) { r.SetCacheSize(1); }, "records.put 1004 (I4 1)"},
        {"GetCursorType", [](CTRecordset& r) { r.GetCursorType(); }, "records.get 1005"},
        {"SetCursorType", [](CTRecordset& r) { r.SetCursorType(3); }, "records.put 1005 (I4 3)"},
        {"GetEof", [](CTRecordset& r) { r.GetEof(); }, "records.get 1006"},
        {"GetFields", [](CTRecordset& r) { r.GetFields(); }, "records.get 0"},
        {"GetLockType", [](CTRecordset& r) { r.GetLockType(); }, "records.get 1008"},
        {"SetLockType", [](CTRecordset& r) { r.SetLockType(4); }, "records.put 1008 (I4 4)"},
        {"GetMaxRecords", [](CTRecordset& r) { r.GetMaxRecords(); }, "records.get 1009"},
        {"SetMaxRecords", [](CTRecordset& r) { r.SetMaxRecords(10); }, "records.put 1009 (I4 10)"},
        {"GetRecordCount", [](CTRecordset& r) { r.GetRecordCount(); }, "records.get 1010"},
        {"SetRefSource", [](CTRecordset& r) { r.SetRefSource(nullptr); }, "records.putref 1011 (DISPATCH null)"},
        {"SetSource", [](CTRecordset& r) { r.SetSource("T"); }, "records.put 1011 (BSTR \"T\")"},
        {"GetSource", [](CTRecordset& r) { r.GetSource(); }, "records.get 1011"},
        {"CancelUpdate", [](CTRecordset& r) { r.CancelUpdate(); }, "records.call 1013"},
        {"Delete", [](CTRecordset& r) { r.Delete(); }, "records.call 1015"},
        {"Delete with a range", [](CTRecordset& r) { r.Delete(2L); }, "records.call 1015 (I4 2)"},
        {"GetRows", [](CTRecordset& r) { r.GetRows(-1, Nothing(), Text("ID")); },
         "records.call 1016 (I4 -1, EMPTY, BSTR \"ID\")"},
        {"Move with a bookmark", [](CTRecordset& r) { r.Move(3L, Real(1.0)); }, "records.call 1017 (I4 3, R8 1)"},
        {"MoveNext", [](CTRecordset& r) { r.MoveNext(); }, "records.call 1018"},
        {"MovePrevious", [](CTRecordset& r) { r.MovePrevious(); }, "records.call 1019"},
        {"MoveFirst", [](CTRecordset& r) { r.MoveFirst(); }, "records.call 1020"},
        {"MoveLast", [](CTRecordset& r) { r.MoveLast(); }, "records.call 1021"},
        {"Requery", [](CTRecordset& r) { r.Requery(-1L); }, "records.call 1023 (I4 -1)"},
        {"Resync", [](CTRecordset& r) { r.Resync(3, 2); }, "records.call 1024 (I4 3, I4 2)"},
        {"Update", [](CTRecordset& r) { r.Update(); }, "records.call 1025"},
        {"Update of a field", [](CTRecordset& r) { r.Update(Text("A"), Long(1)); },
         "records.call 1025 (BSTR \"A\", I4 1)"},
        {"GetEditMode", [](CTRecordset& r) { r.GetEditMode(); }, "records.get 1026"},
        {"GetStatus", [](CTRecordset& r) { r.GetStatus(); }, "records.get 1029"},
        {"GetSort", [](CTRecordset& r) { r.GetSort(); }, "records.get 1031"},
        {"SetSort", [](CTRecordset& r) { r.SetSort("A DESC"); }, "records.put 1031 (BSTR \"A DESC\")"},
        {"SetSort of null", [](CTRecordset& r) { r.SetSort(nullptr); }, "records.put 1031 (BSTR null)"},
        {"UpdateBatch", [](CTRecordset& r) { r.UpdateBatch(); }, "records.call 1035"},
        {"UpdateBatch with a range", [](CTRecordset& r) { r.UpdateBatch(3L); }, "records.call 1035 (I4 3)"},
        {"Supports", [](CTRecordset& r) { r.Supports(8192); }, "records.call 1036 (I4 8192)"},
        {"GetAbsolutePage", [](CTRecordset& r) { r.GetAbsolutePage(); }, "records.get 1047"},
        {"SetAbsolutePage", [](CTRecordset& r) { r.SetAbsolutePage(2); }, "records.put 1047 (I4 2)"},
        {"GetPageSize", [](CTRecordset& r) { r.GetPageSize(); }, "records.get 1048"},
        {"SetPageSize", [](CTRecordset& r) { r.SetPageSize(20); }, "records.put 1048 (I4 20)"},
        {"CancelBatch", [](CTRecordset& r) { r.CancelBatch(3); }, "records.call 1049 (I4 3)"},
        {"GetPageCount", [](CTRecordset& r) { r.GetPageCount(); }, "records.get 1050"},
        {"GetCursorLocation", [](CTRecordset& r) { r.GetCursorLocation(); }, "records.get 1051"},
        {"SetCursorLocation", [](CTRecordset& r) { r.SetCursorLocation(3); }, "records.put 1051 (I4 3)"},
        {"GetMarshalOptions", [](CTRecordset& r) { r.GetMarshalOptions(); }, "records.get 1053"},
        {"SetMarshalOptions", [](CTRecordset& r) { r.SetMarshalOptions(1); }, "records.put 1053 (I4 1)"},
        {"GetState", [](CTRecordset& r) { r.GetState(); }, "records.get 1054"},
        {"Cancel", [](CTRecordset& r) { r.Cancel(); }, "records.call 1055"},
        {"GetDataSource", [](CTRecordset& r) { Held<IUnknown> s(r.GetDataSource()); }, "records.get 1056"},
        {"Save", [](CTRecordset& r) { r.Save(Text("a.xml"), 1); }, "records.call 1057 (BSTR \"a.xml\", I4 1)"},
        {"Find with four arguments", [](CTRecordset& r) { r.Find("A = 1", 2, -1, Nothing()); },
         "records.call 1058 (BSTR \"A = 1\", I4 2, I4 -1, EMPTY)"},
        {"GetActiveCommand", [](CTRecordset& r) { Held<IDispatch> c(r.GetActiveCommand()); }, "records.get 1061"},
        {"GetString", [](CTRecordset& r) { r.GetString(2, -1, "\t", nullptr, "空"); },
         "records.call 1062 (I4 2, I4 -1, BSTR \"\t\", BSTR null, BSTR \"空\")"},
        {"SetStayInSync", [](CTRecordset& r) { r.SetStayInSync(1); }, "records.put 1063 (BOOL true)"},
        {"SetStayInSync to no", [](CTRecordset& r) { r.SetStayInSync(0); }, "records.put 1063 (BOOL false)"},
        {"GetStayInSync", [](CTRecordset& r) { r.GetStayInSync(); }, "records.get 1063"},
        {"GetDataMember", [](CTRecordset& r) { r.GetDataMember(); }, "records.get 1064"},
        {"SetDataMember", [](CTRecordset& r) { r.SetDataMember("m"); }, "records.put 1064 (BSTR \"m\")"},
        {"CompareBookmarks", [](CTRecordset& r) { r.CompareBookmarks(Real(1), Real(2)); },
         "records.call 1065 (R8 1, R8 2)"},
        {"Seek", [](CTRecordset& r) { r.Seek(Long(9), 1); }, "records.call 1066 (I4 9, I4 1)"},
        {"SetIndex", [](CTRecordset& r) { r.SetIndex("IX"); }, "records.put 1067 (BSTR \"IX\")"},
        {"GetIndex", [](CTRecordset& r) { r.GetIndex(); }, "records.get 1067"},
    };
    auto child = Make("child");
    CTRecordset recordset;
    Bind(recordset);
    for (const long id : {0L, 500L, 1061L})
        records_->On(Get(id)).Returns(Object(child.Get()));
    records_->On(Get(1056)).Returns(Unknown(child.Get()));
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        row.call(recordset);
        EXPECT_THAT(journal_.Take(), ElementsAre(row.line));
    }
    EXPECT_EQ(child->References(), 5u) << "the four scripts and this test";
}

TEST_F(RecordsetMembers, HandBackWhatTheRecordsetAnswers) {
    CTRecordset recordset;
    Bind(recordset);
    records_->On(Get(1000)).Returns(Long(-3));
    records_->On(Get(1002)).Returns(Flag(true));
    records_->On(Get(1006)).Returns(Flag(false));
    records_->On(Get(1003)).Returns(Real(7));
    records_->On(Get(1031)).Returns(Text("名称 DESC"));
    records_->On(Get(1011)).Returns(Text("select 1"));
    records_->On(Call(1036)).Returns(Flag(true));
    records_->On(Call(1062)).Returns(Text("a\tb\r"));
    records_->On(Call(1065)).Returns(Long(2));
    records_->On(Call(1016)).Returns(Text("rows"));
    EXPECT_EQ(recordset.GetAbsolutePosition(), -3);
    EXPECT_NE(recordset.GetBof(), 0);
    EXPECT_EQ(recordset.GetEof(), 0);
    EXPECT_EQ(Describe(recordset.GetBookmark()), "R8 7");
    EXPECT_STREQ(recordset.GetSort(), "名称 DESC");
    COleVariant source;
    VARIANT value = recordset.GetSource();
    source.Attach(value);
    EXPECT_EQ(Describe(source), "BSTR \"select 1\"");
    EXPECT_NE(recordset.Supports(8192), 0);
    EXPECT_STREQ(recordset.GetString(2, -1, nullptr, nullptr, nullptr), "a\tb\r");
    EXPECT_EQ(recordset.CompareBookmarks(Real(2), Real(1)), 2);
    value = recordset.GetRows(-1, Nothing(), Nothing());
    source.Attach(value);
    EXPECT_EQ(Describe(source), "BSTR \"rows\"");
}

TEST_F(RecordsetMembers, HandBackTheNumberOfEachProperty) {
    static const struct {
        const char* label;
        long id;
        long (*get)(CTRecordset&);
        long number;
    } kRows[] = {
        {"GetCacheSize", 1004, [](CTRecordset& r) { return r.GetCacheSize(); }, 1000},
        {"GetCursorType", 1005, [](CTRecordset& r) { return r.GetCursorType(); }, -1},
        {"GetLockType", 1008, [](CTRecordset& r) { return r.GetLockType(); }, 4},
        {"GetMaxRecords", 1009, [](CTRecordset& r) { return r.GetMaxRecords(); }, 50},
        {"GetEditMode", 1026, [](CTRecordset& r) { return r.GetEditMode(); }, 2},
        {"GetStatus", 1029, [](CTRecordset& r) { return r.GetStatus(); }, 262144},
        {"GetAbsolutePage", 1047, [](CTRecordset& r) { return r.GetAbsolutePage(); }, -2},
        {"GetPageSize", 1048, [](CTRecordset& r) { return r.GetPageSize(); }, 20},
        {"GetPageCount", 1050, [](CTRecordset& r) { return r.GetPageCount(); }, 7},
        {"GetCursorLocation", 1051, [](CTRecordset& r) { return r.GetCursorLocation(); }, 3},
        {"GetMarshalOptions", 1053, [](CTRecordset& r) { return r.GetMarshalOptions(); }, 1},
        {"GetState", 1054, [](CTRecordset& r) { return r.GetState(); }, 9},
    };
    CTRecordset recordset;
    Bind(recordset);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        records_->On(Get(row.id)).Returns(Long(row.number));
        EXPECT_EQ(row.get(recordset), row.number);
    }
}

TEST_F(RecordsetMembers, HandBackTheTextOfEachProperty) {
    CTRecordset recordset;
    Bind(recordset);
    records_->On(Get(1064)).Returns(Text("成员"));
    records_->On(Get(1067)).Returns(Text("索引"));
    records_->On(Get(1001)).Returns(Text("DSN=库"));
    EXPECT_STREQ(recordset.GetDataMember(), "成员");
    EXPECT_STREQ(recordset.GetIndex(), "索引");
    COleVariant connection;
    VARIANT value = recordset.GetActiveConnection();
    connection.Attach(value);
    EXPECT_EQ(Describe(connection), "BSTR \"DSN=库\"");
}

TEST_F(RecordsetMembers, AFlagIsTrueInWhateverNumberItComes) {
    static const struct {
        const char* label;
        Member member;
        int (*get)(CTRecordset&);
    } kFlags[] = {
        {"GetBof", Get(1002), [](CTRecordset& r) { return r.GetBof(); }},
        {"GetEof", Get(1006), [](CTRecordset& r) { return r.GetEof(); }},
        {"GetStayInSync", Get(1063), [](CTRecordset& r) { return r.GetStayInSync(); }},
        {"Supports", Call(1036), [](CTRecordset& r) { return r.Supports(8192); }},
    };
    static const struct {
        COleVariant answer;
        bool isTrue;
    } kRows[] = {{Flag(true), true}, {Flag(false), false}, {Short(-1), true},
                 {Short(0), false},  {Long(-1), true},     {Long(0), false}};
    CTRecordset recordset;
    Bind(recordset);
    for (const auto& flag : kFlags) {
        for (const auto& row : kRows) {
            SCOPED_TRACE(flag.label + (" " + Describe(row.answer)));
            records_->On(flag.member).Returns(row.answer);
            EXPECT_EQ(flag.get(recordset) != 0, row.isTrue);
        }
    }
}

TEST_F(RecordsetMembers, ObjectsAreHandedOverToTheCaller) {
    auto child = Make("child");
    CTRecordset recordset;
    Bind(recordset);
    for (const long id : {0L, 500L, 1061L})
        records_->On(Get(id)).Returns(Object(child.Get()));
    records_->On(Get(1056)).Returns(Unknown(child.Get()));
    {
        const Held<IUnknown> source(recordset.GetDataSource());
        EXPECT_EQ(source.Get(), child.Get());
        const Held<IDispatch> command(recordset.GetActiveCommand());
        EXPECT_EQ(command.Get(), child.Get());
        const CTProperties properties = recordset.GetProperties();
        EXPECT_EQ(properties.m_lpDispatch, child.Get());
        const CTFields fields = recordset.GetFields();
        EXPECT_EQ(fields.m_lpDispatch, child.Get());
        EXPECT_EQ(child->References(), 9u) << "four scripts, this test and the four callers above";
    }
    EXPECT_EQ(child->References(), 5u);
}

TEST_F(RecordsetMembers, ObjectsAreSentWithoutKeepingAReference) {
    auto child = Make("child");
    CTRecordset recordset;
    Bind(recordset);
    recordset.SetRefSource(child.Get());
    recordset.SetActiveConnection(Object(child.Get()));
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.putref 1011 (DISPATCH child)", "records.put 1001 (DISPATCH child)"));
    EXPECT_EQ(child->References(), 1u);
}

TEST_F(RecordsetMembers, NextRecordsetAndCloneHandOutWhatTheRecordsetGives) {
    auto next = Make("next");
    CTRecordset recordset;
    Bind(recordset);
    records_->On(Call(1052)).Stores(0, Long(4)).Returns(Object(next.Get()));
    records_->On(Call(1034)).Returns(Object(next.Get()));
    {
        COleVariant affected;
        CTRecordset result = recordset.NextRecordset(&affected);
        EXPECT_EQ(result.GetDispatch(), next.Get());
        EXPECT_EQ(Describe(affected), "I4 4");
        EXPECT_STREQ(result.GetDBMS(), "Mic");
        EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1052 (VARIANT& EMPTY)"));
    }
    EXPECT_THAT(journal_.Take(), ElementsAre("next.get 1054"));
    {
        CTRecordset clone = recordset.Clone(1);
        EXPECT_EQ(clone.GetDispatch(), next.Get());
        EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1034 (I4 1)"));
    }
    { CTRecordset unasked = recordset.NextRecordset(nullptr); }
    EXPECT_EQ(next->References(), 3u);
    EXPECT_EQ(recordsets_->Created(), 1) << "no object of their own";
}

TEST_F(RecordsetMembers, AfterTheLastResultComesARecordsetThatIsNotOpen) {
    CTRecordset recordset;
    Bind(recordset);
    auto fresh = Make("fresh");
    recordsets_->Give(fresh.Get());
    records_->On(Call(1052)).Returns(Object(nullptr));
    CTRecordset last = recordset.NextRecordset(nullptr);
    EXPECT_EQ(last.GetDispatch(), fresh.Get());
    EXPECT_EQ(last.GetState(), 0);
}

TEST_F(RecordsetMembers, LetFailuresPass) {
    CTRecordset recordset;
    Bind(recordset);
    records_->On(Call(1018)).Fails("已到末尾");
    records_->On(Get(1006)).Fails("已到末尾");
    records_->On(Call(1052)).Fails("已到末尾");
    records_->On(Call(1025)).Fails("已到末尾");
    static constexpr void (*kCalls[])(CTRecordset&) = {
        [](CTRecordset& r) { r.MoveNext(); },
        [](CTRecordset& r) { r.GetEof(); },
        [](CTRecordset& r) { r.NextRecordset(nullptr); },
        [](CTRecordset& r) { r.Update(); },
    };
    const std::string before = ErrorOf(recordset);
    for (const auto& call : kCalls) {
        try {
            call(recordset);
            ADD_FAILURE() << "no exception";
        } catch (COleDispatchException* e) {
            EXPECT_STREQ(e->m_strDescription, "已到末尾");
            e->Delete();
        }
    }
    EXPECT_EQ(ErrorOf(recordset), before);
}

TEST_F(RecordsetMembers, RaiseBeforeTheRecordsetExists) {
    CTRecordset recordset;
    static constexpr void (*kCalls[])(CTRecordset&) = {
        [](CTRecordset& r) { r.MoveNext(); },      [](CTRecordset& r) { r.GetEof(); },
        [](CTRecordset& r) { r.GetFieldCount(); }, [](CTRecordset& r) { r.GetFieldIndex("A"); },
        [](CTRecordset& r) { r.Clone(-1); },       [](CTRecordset& r) { r.Requery(1L); },
    };
    for (const auto& call : kCalls) {
        try {
            call(recordset);
            ADD_FAILURE() << "no exception";
        } catch (CException* e) {
            e->Delete();
        }
    }
}

}  // namespace
}  // namespace tk::test
