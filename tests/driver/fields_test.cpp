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

template <typename Wrapper>
struct Failing {
    const char* label;
    Member member;
    void (*call)(Wrapper&);
};

/// A holder with a reference of its own.
template <typename Wrapper>
Wrapper Share(ScriptedObject& object) {
    object.AddRef();
    return Wrapper(&object);
}

COleVariant Owned(VARIANT value) {
    COleVariant owner;
    owner.Attach(value);
    return owner;
}

class Wrappers : public DriverTest {
protected:
    /// Lets each row's member fail on a new object, and expects the object's own exception.
    template <typename Wrapper, std::size_t count>
    void ExpectFailuresPass(const Failing<Wrapper> (&rows)[count]) {
        for (const auto& row : rows) {
            SCOPED_TRACE(row.label);
            auto object = Make("o");
            object->On(row.member).Fails("没有权限");
            Wrapper wrapper(object.Share());
            try {
                row.call(wrapper);
                ADD_FAILURE() << "no exception";
            } catch (COleDispatchException* e) {
                EXPECT_STREQ(e->m_strDescription, "没有权限");
                e->Delete();
            }
        }
    }

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

TEST_F(Wrappers, HandBackTheNumberOfEachProperty) {
    static const struct {
        const char* label;
        long id;
        long (*get)(ScriptedObject&);
        long number;
    } kRows[] = {
        {"field, actual size", 1109, [](ScriptedObject& o) { return Share<CTField>(o).GetActualSize(); }, 70000},
        {"field, attributes", 1114, [](ScriptedObject& o) { return Share<CTField>(o).GetAttributes(); }, 0x66},
        {"field, status", 1116, [](ScriptedObject& o) { return Share<CTField>(o).GetStatus(); }, 131072},
        {"field, scale", 1113, [](ScriptedObject& o) { return Share<CTField>(o).GetNumericScale(); }, 4},
        {"fields, count", 1, [](ScriptedObject& o) { return Share<CTFields>(o).GetCount(); }, 12},
        {"properties, count", 1, [](ScriptedObject& o) { return Share<CTProperties>(o).GetCount(); }, 89},
        {"property, type", 0x60020003, [](ScriptedObject& o) { return Share<CTProperty>(o).GetType(); }, 8},
        {"property, attributes", 0x60020004, [](ScriptedObject& o) { return Share<CTProperty>(o).GetAttributes(); },
         1537},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        auto object = Make("o");
        object->On(Get(row.id)).Returns(Long(row.number));
        EXPECT_EQ(row.get(*object.Get()), row.number);
    }
}

TEST_F(Wrappers, HandBackTheValueOfEachProperty) {
    auto object = Make("o");
    object->On(Get(0)).Returns(Text("值"));
    object->On(Call(1108)).Returns(Text("块"));
    object->On(Get(1104)).Returns(Long(1));
    object->On(Get(1105)).Returns(Null());
    object->On(Get(0x60020002)).Returns(Text("名称"));
    CTField field(object.Share());
    EXPECT_EQ(Describe(Owned(field.GetValue())), "BSTR \"值\"");
    EXPECT_EQ(Describe(Owned(field.GetChunk(2))), "BSTR \"块\"");
    EXPECT_EQ(Describe(Owned(field.GetOriginalValue())), "I4 1");
    EXPECT_EQ(Describe(Owned(field.GetUnderlyingValue())), "NULL");
    CTProperty property(object.Share());
    EXPECT_EQ(Describe(Owned(property.GetValue())), "BSTR \"值\"");
    EXPECT_STREQ(property.GetName(), "名称");
}

TEST_F(Wrappers, GetDataFormatHandsTheObjectOver) {
    auto object = Make("o");
    auto format = Make("format");
    object->On(Get(1115)).Returns(Unknown(format.Get()));
    CTField field(object.Share());
    {
        const Held<IUnknown> result(field.GetDataFormat());
        EXPECT_EQ(result.Get(), format.Get());
        EXPECT_EQ(format->References(), 3u);
    }
    EXPECT_EQ(format->References(), 2u);
}

TEST_F(Wrappers, PropertiesTakeAnIndexOfEitherWidth) {
    auto properties = MakeProperties({{"A", Text("1")}, {"B", Text("2")}});
    CTProperties holder(properties.Share());
    EXPECT_STREQ(holder.GetItem(Long(1)).GetName(), "B");
    EXPECT_STREQ(holder.GetItem(Short(0)).GetName(), "A");
    EXPECT_THAT(journal_.Take(), ElementsAre("properties.get 0 (I4 1)", "property.get 1610743810",
                                             "properties.get 0 (I2 0)", "property.get 1610743810"));
}

TEST_F(Wrappers, SetRefDataFormatSendsTheObject) {
    auto object = Make("o");
    auto format = Make("format");
    CTField field(object.Share());
    field.SetRefDataFormat(format.Get());
    EXPECT_THAT(journal_.Take(), ElementsAre("o.putref 1115 (UNKNOWN format)"));
    EXPECT_EQ(format->References(), 1u);
}

TEST_F(Wrappers, HandedOutObjectsAreHeldAndReleased) {
    static const struct {
        const char* label;
        long id;
        void (*expect)(ScriptedObject&, ScriptedObject&);
    } kRows[] = {
        {"field, properties", 500,
         [](ScriptedObject& o, ScriptedObject& child) {
             const CTProperties held = Share<CTField>(o).GetProperties();
             EXPECT_EQ(held.m_lpDispatch, &child);
             EXPECT_EQ(child.References(), 3u);
         }},
        {"fields, item", 0,
         [](ScriptedObject& o, ScriptedObject& child) {
             const CTField held = Share<CTFields>(o).GetItem(Long(0));
             EXPECT_EQ(held.m_lpDispatch, &child);
             EXPECT_EQ(child.References(), 3u);
         }},
        {"properties, item", 0,
         [](ScriptedObject& o, ScriptedObject& child) {
             const CTProperty held = Share<CTProperties>(o).GetItem(Long(0));
             EXPECT_EQ(held.m_lpDispatch, &child);
             EXPECT_EQ(child.References(), 3u);
         }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        auto object = Make("o");
        auto child = Make("child");
        object->On(Get(row.id)).Returns(Object(child.Get()));
        row.expect(*object.Get(), *child.Get());
        EXPECT_EQ(child->References(), 2u) << "the script and this test";
        EXPECT_EQ(object->References(), 1u);
    }
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

TEST_F(Wrappers, FailuresOfEveryKindOfCallReachTheCaller) {
    static const Failing<CTField> kField[] = {
        {"SetValue", Put(0), [](CTField& f) { f.SetValue(Long(1)); }},
        {"SetType", Put(1102), [](CTField& f) { f.SetType(3); }},
        {"SetRefDataFormat", PutRef(1115), [](CTField& f) { f.SetRefDataFormat(nullptr); }},
        {"AppendChunk", Call(1107), [](CTField& f) { f.AppendChunk(Long(1)); }},
        {"GetChunk", Call(1108), [](CTField& f) { f.GetChunk(1); }},
        {"GetProperties", Get(500), [](CTField& f) { f.GetProperties(); }},
    };
    static const Failing<CTFields> kFields[] = {
        {"GetCount", Get(1), [](CTFields& f) { f.GetCount(); }},
        {"GetItem", Get(0), [](CTFields& f) { f.GetItem(Long(0)); }},
        {"Refresh", Call(2), [](CTFields& f) { f.Refresh(); }},
        {"Append", Call(3), [](CTFields& f) { f.Append("A", 3, 0, 0); }},
        {"Append with a value", Call(3), [](CTFields& f) { f.Append("A", 3, 0, 0, Long(1)); }},
        {"Delete", Call(4), [](CTFields& f) { f.Delete(Long(0)); }},
        {"Update", Call(5), [](CTFields& f) { f.Update(); }},
        {"Resync", Call(6), [](CTFields& f) { f.Resync(2); }},
        {"CancelUpdate", Call(7), [](CTFields& f) { f.CancelUpdate(); }},
    };
    static const Failing<CTProperty> kProperty[] = {
        {"GetValue", Get(0), [](CTProperty& p) { p.GetValue(); }},
        {"SetValue", Put(0), [](CTProperty& p) { p.SetValue(Long(1)); }},
        {"GetName", Get(0x60020002), [](CTProperty& p) { p.GetName(); }},
        {"GetType", Get(0x60020003), [](CTProperty& p) { p.GetType(); }},
        {"GetAttributes", Get(0x60020004), [](CTProperty& p) { p.GetAttributes(); }},
        {"SetAttributes", Put(0x60020004), [](CTProperty& p) { p.SetAttributes(1); }},
    };
    static const Failing<CTProperties> kProperties[] = {
        {"GetCount", Get(1), [](CTProperties& p) { p.GetCount(); }},
        {"GetItem", Get(0), [](CTProperties& p) { p.GetItem(Long(0)); }},
    };
    ExpectFailuresPass(kField);
    ExpectFailuresPass(kFields);
    ExpectFailuresPass(kProperty);
    ExpectFailuresPass(kProperties);
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

TEST_F(Wrappers, GetNamesKeepsWhatCameBeforeAFailure) {
    auto field = Make("field");
    field->On(Get(1100)).Returns(Text("ID"));
    auto fields = Make("fields");
    fields->On(Get(1)).Returns(Long(2));
    fields->On(Get(0)).Returns(Object(field.Get())).Then().Fails("断开");
    CTFields holder(fields.Share());
    CStringArray names;
    try {
        holder.GetNames(names);
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "断开");
        e->Delete();
    }
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_STREQ(names.GetAt(0), "ID");
}

TEST_F(Wrappers, GetNamesOfNoFieldsLeavesTheArray) {
    CTFields holder(MakeFields({}).Detach());
    CStringArray names;
    names.Add("before");
    holder.GetNames(names);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("fields.get 1"));
}

// ---- the reference of each holder ------------------------------------------------------------------------------

template <typename Wrapper>
class WrapperReference : public DriverTest {};

using EveryWrapper = ::testing::Types<CTField, CTFields, CTProperty, CTProperties>;
TYPED_TEST_SUITE(WrapperReference, EveryWrapper);

TYPED_TEST(WrapperReference, IsTakenOverSharedByCopiesAndReleased) {
    auto object = this->Make("o");
    auto other = this->Make("other");
    {
        TypeParam holder(object.Share());
        EXPECT_EQ(holder.m_lpDispatch, object.Get());
        EXPECT_EQ(object->References(), 2u) << "the constructor takes the reference over";
        TypeParam copy(holder);
        EXPECT_EQ(copy.m_lpDispatch, object.Get());
        EXPECT_EQ(object->References(), 3u);
        TypeParam assigned(other.Share());
        assigned = copy;
        EXPECT_EQ(assigned.m_lpDispatch, object.Get());
        EXPECT_EQ(object->References(), 4u);
        EXPECT_EQ(other->References(), 1u) << "what it held before is released";
        assigned = *&assigned;  // to itself, without a warning
        EXPECT_EQ(object->References(), 4u);
        assigned = TypeParam();
        EXPECT_EQ(assigned.m_lpDispatch, nullptr);
        EXPECT_EQ(object->References(), 3u);
    }
    EXPECT_EQ(object->References(), 1u);
    EXPECT_THAT(this->journal_.Lines(), IsEmpty());
}

}  // namespace
}  // namespace tk::test
