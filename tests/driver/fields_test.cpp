// The four bare holders: what each member sends, and what it hands back.
#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

template <typename Wrapper>
struct Row {
    const char* label;
    void (*call)(Wrapper&);
    const char* line;
};

void Clear(VARIANT value) {
    VariantClear(&value);
}

class Wrappers : public DriverTest {
protected:
    /// Calls each row's member on a new object, and compares the one line it writes.
    template <typename Wrapper, std::size_t count>
    void ExpectLines(const Row<Wrapper> (&rows)[count]) {
        for (const auto& row : rows) {
            SCOPED_TRACE(row.label);
            auto object = Make("o");
            auto child = Make("child");
            for (const long id : {0L, 500L})
                object->On(Get(id)).Returns(Object(child.Get()));
            object->On(Get(1115)).Returns(Unknown(child.Get()));
            Wrapper wrapper(object.Share());
            row.call(wrapper);
            EXPECT_THAT(journal_.Take(), ElementsAre(row.line));
        }
    }
};

TEST_F(Wrappers, FieldMembersAreOneCallEach) {
    static const Row<CTField> kRows[] = {
        {"GetProperties", [](CTField& f) { f.GetProperties(); }, "o.get 500"},
        {"GetActualSize", [](CTField& f) { f.GetActualSize(); }, "o.get 1109"},
        {"GetAttributes", [](CTField& f) { f.GetAttributes(); }, "o.get 1114"},
        {"SetAttributes", [](CTField& f) { f.SetAttributes(4); }, "o.put 1114 (I4 4)"},
        {"GetDefinedSize", [](CTField& f) { f.GetDefinedSize(); }, "o.get 1103"},
        {"SetDefinedSize", [](CTField& f) { f.SetDefinedSize(20); }, "o.put 1103 (I4 20)"},
        {"GetName", [](CTField& f) { f.GetName(); }, "o.get 1100"},
        {"GetType", [](CTField& f) { f.GetType(); }, "o.get 1102"},
        {"SetType", [](CTField& f) { f.SetType(200); }, "o.put 1102 (I4 200)"},
        {"GetValue", [](CTField& f) { Clear(f.GetValue()); }, "o.get 0"},
        {"SetValue", [](CTField& f) { f.SetValue(Text("值")); }, "o.put 0 (BSTR \"值\")"},
        {"SetValue of an integer", [](CTField& f) { f.SetValue(Short(5)); }, "o.put 0 (I2 5)"},
        {"AppendChunk", [](CTField& f) { f.AppendChunk(Text("x")); }, "o.call 1107 (BSTR \"x\")"},
        {"GetChunk", [](CTField& f) { f.GetChunk(100); }, "o.call 1108 (I4 100)"},
        {"GetOriginalValue", [](CTField& f) { f.GetOriginalValue(); }, "o.get 1104"},
        {"GetUnderlyingValue", [](CTField& f) { f.GetUnderlyingValue(); }, "o.get 1105"},
        {"GetDataFormat", [](CTField& f) { Held<IUnknown> format(f.GetDataFormat()); }, "o.get 1115"},
        {"SetRefDataFormat", [](CTField& f) { f.SetRefDataFormat(nullptr); }, "o.putref 1115 (UNKNOWN null)"},
        {"GetStatus", [](CTField& f) { f.GetStatus(); }, "o.get 1116"},
        {"GetPrecision", [](CTField& f) { f.GetPrecision(); }, "o.get 1112"},
        {"SetPrecision", [](CTField& f) { f.SetPrecision(18); }, "o.put 1112 (I4 18)"},
        {"GetNumericScale", [](CTField& f) { f.GetNumericScale(); }, "o.get 1113"},
        {"SetNumericScale", [](CTField& f) { f.SetNumericScale(2); }, "o.put 1113 (I4 2)"},
    };
    ExpectLines(kRows);
}

TEST_F(Wrappers, FieldsMembersAreOneCallEach) {
    static const Row<CTFields> kRows[] = {
        {"GetCount", [](CTFields& f) { f.GetCount(); }, "o.get 1"},
        {"Refresh", [](CTFields& f) { f.Refresh(); }, "o.call 2"},
        {"GetItem by number", [](CTFields& f) { f.GetItem(Long(2)); }, "o.get 0 (I4 2)"},
        {"GetItem by name", [](CTFields& f) { f.GetItem(Text("编号")); }, "o.get 0 (BSTR \"编号\")"},
        {"Append", [](CTFields& f) { f.Append("NAME", 200, 20, -1); },
         "o.call 3 (BSTR \"NAME\", I4 200, I4 20, I4 -1)"},
        {"Append with a value", [](CTFields& f) { f.Append("NAME", 200, 20, 32, Text("x")); },
         "o.call 3 (BSTR \"NAME\", I4 200, I4 20, I4 32, BSTR \"x\")"},
        {"Append without a name", [](CTFields& f) { f.Append(nullptr, 3, 0, 0); },
         "o.call 3 (BSTR null, I4 3, I4 0, I4 0)"},
        {"Delete", [](CTFields& f) { f.Delete(Short(1)); }, "o.call 4 (I2 1)"},
        {"Update", [](CTFields& f) { f.Update(); }, "o.call 5"},
        {"Resync", [](CTFields& f) { f.Resync(2); }, "o.call 6 (I4 2)"},
        {"CancelUpdate", [](CTFields& f) { f.CancelUpdate(); }, "o.call 7"},
    };
    ExpectLines(kRows);
}

TEST_F(Wrappers, PropertyMembersAreOneCallEach) {
    static const Row<CTProperty> kRows[] = {
        {"GetValue", [](CTProperty& p) { Clear(p.GetValue()); }, "o.get 0"},
        {"SetValue", [](CTProperty& p) { p.SetValue(Flag(true)); }, "o.put 0 (BOOL true)"},
        {"GetName", [](CTProperty& p) { p.GetName(); }, "o.get 1610743810"},
        {"GetType", [](CTProperty& p) { p.GetType(); }, "o.get 1610743811"},
        {"GetAttributes", [](CTProperty& p) { p.GetAttributes(); }, "o.get 1610743812"},
        {"SetAttributes", [](CTProperty& p) { p.SetAttributes(1); }, "o.put 1610743812 (I4 1)"},
    };
    ExpectLines(kRows);
}

TEST_F(Wrappers, PropertiesMembersAreOneCallEach) {
    static const Row<CTProperties> kRows[] = {
        {"GetCount", [](CTProperties& p) { p.GetCount(); }, "o.get 1"},
        {"GetItem", [](CTProperties& p) { p.GetItem(Text("User ID")); }, "o.get 0 (BSTR \"User ID\")"},
    };
    ExpectLines(kRows);
}

TEST_F(Wrappers, HandBackWhatTheObjectAnswers) {
    auto object = Make("o");
    object->On(Get(1100)).Returns(Text("名称"));
    object->On(Get(1102)).Returns(Long(202));
    object->On(Get(1112)).Returns(Integer(VT_UI1, 18));
    object->On(Get(0)).Returns(Real(1.5));
    object->On(Get(1103)).Returns(Long(-1));
    CTField field(object.Share());
    EXPECT_STREQ(field.GetName(), "名称");
    EXPECT_EQ(field.GetType(), 202);
    EXPECT_EQ(field.GetPrecision(), 18) << "an unsigned byte comes as a long";
    EXPECT_EQ(field.GetDefinedSize(), -1);
    EXPECT_EQ(Describe(field.GetValue()), "R8 1.5");
}

TEST_F(Wrappers, SetRefDataFormatSendsTheObject) {
    auto object = Make("o");
    auto format = Make("format");
    CTField field(object.Share());
    field.SetRefDataFormat(format.Get());
    EXPECT_THAT(journal_.Take(), ElementsAre("o.putref 1115 (UNKNOWN format)"));
    EXPECT_EQ(format->References(), 1u);
}

TEST_F(Wrappers, CopiesShareAndBalanceTheReference) {
    auto object = Make("o");
    {
        CTField field(object.Share());
        CTField copy(field);
        EXPECT_EQ(object->References(), 3u);
        CTField assigned;
        assigned = copy;
        EXPECT_EQ(object->References(), 4u);
        assigned = assigned;
        EXPECT_EQ(object->References(), 4u);
        assigned = CTField();
        EXPECT_EQ(object->References(), 3u);
    }
    EXPECT_EQ(object->References(), 1u);
}

TEST_F(Wrappers, HandedOutItemsAreOwnedByTheirHolder) {
    auto fields = MakeFields({{"ID", Long(1)}});
    {
        CTFields holder(fields.Share());
        CTField field = holder.GetItem(Long(0));
        EXPECT_STREQ(field.GetName(), "ID");
        fields->On(Get(0)).Does(nullptr);
    }
    EXPECT_EQ(fields->References(), 1u);
}

TEST_F(Wrappers, FailuresReachTheCaller) {
    auto object = Make("o");
    object->On(Get(0)).Fails("没有当前记录");
    object->On(Get(1100)).FailsWith(DISP_E_MEMBERNOTFOUND);
    CTField field(object.Share());
    try {
        field.GetValue();
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "没有当前记录");
        e->Delete();
    }
    try {
        field.GetName();
        ADD_FAILURE() << "no exception";
    } catch (COleException* e) {
        EXPECT_EQ(e->m_sc, DISP_E_MEMBERNOTFOUND);
        e->Delete();
    }
}

TEST_F(Wrappers, AnEmptyHolderRaises) {
    CTField field;
    CTProperties properties;
    for (int i = 0; i < 2; ++i) {
        try {
            i == 0 ? static_cast<void>(field.GetType()) : static_cast<void>(properties.GetCount());
            ADD_FAILURE() << "no exception";
        } catch (CException* e) {
            e->Delete();
        }
    }
}

TEST_F(Wrappers, GetNamesAppendsAndCountsAgainAfterEveryItem) {
    auto fields = MakeFields({{"ID", Long(1)}, {"名称", Text("x")}});
    CTFields holder(fields.Share());
    CStringArray names;
    names.Add("before");
    holder.GetNames(names);
    ASSERT_EQ(names.GetSize(), 3);
    EXPECT_STREQ(names.GetAt(0), "before");
    EXPECT_STREQ(names.GetAt(1), "ID");
    EXPECT_STREQ(names.GetAt(2), "名称");
    EXPECT_THAT(journal_.Take(), ElementsAre("fields.get 1", "fields.get 0 (I2 0)", "field.get 1100", "fields.get 1",
                                             "fields.get 0 (I2 1)", "field.get 1100", "fields.get 1"));
}

TEST_F(Wrappers, GetNamesOfNoFieldsLeavesTheArray) {
    CTFields holder(MakeFields({}).Detach());
    CStringArray names;
    names.Add("before");
    holder.GetNames(names);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("fields.get 1"));
}

}  // namespace
}  // namespace tk::test
