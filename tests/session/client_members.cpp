#include "session/client_members.h"

#include "support/values.h"

namespace tk::test {
namespace {

std::string Number(long value) {
    return std::to_string(value);
}
std::string Of(const CString& text) {
    return std::string(text);
}

VARIANT Key() {
    VARIANT key;
    VariantInit(&key);
    V_VT(&key) = VT_I4;
    V_I4(&key) = 0;
    return key;
}

std::string Variant(VARIANT value) {
    const std::string text = Describe(value);
    VariantClear(&value);
    return text;
}

_tagFIELDINFO info;

}  // namespace

const std::vector<ClientMember>& ClientMembers() {
    using C = CTDataClient;
    constexpr auto kC = Needs::Connection;
    constexpr auto kR = Needs::Recordset;
    static const std::vector<ClientMember> members = {
        {"ExecuteSQL", [](C& c) { return Number(c.ExecuteSQL("update T")); }, kC, "0"},
        {"ExecSQL", [](C& c) { return Number(c.ExecSQL("update T")); }, kC, "0"},
        {"GetTableScript", [](C& c) { return Of(c.GetTableScript("T")); }, kC, ""},
        {"GetViewScript", [](C& c) { return Of(c.GetViewScript("V")); }, kC, ""},
        {"SaveFile", [](C& c) { return Number(c.SaveFile("")); }, kR, "0"},
        {"GetRecordEof", [](C& c) { return Number(c.GetRecordEof()); }, kR, "0", true},
        {"GetRecordCount", [](C& c) { return Number(c.GetRecordCount()); }, kR, "0"},
        {"GetPageCount", [](C& c) { return Number(c.GetPageCount()); }, kR, "0", true},
        {"GetPageSize", [](C& c) { return Number(c.GetPageSize()); }, kR, "0", true},
        {"GetPageCode", [](C& c) { return Number(c.GetPageCode()); }, kR, "0", true},
        {"SetPageCode", [](C& c) { return Number(c.SetPageCode(2)); }, kR, "0", true},
        {"GetValueString", [](C& c) { return Of(c.GetValueString(Key())); }, kR, ""},
        {"GetValueLong", [](C& c) { return Number(c.GetValueLong(Key())); }, kR, "0"},
        {"GetValueVariant", [](C& c) { return Variant(c.GetValueVariant(Key())); }, kR, "EMPTY"},
        {"GetValueDouble", [](C& c) { return std::to_string(c.GetValueDouble(Key())); }, kR, "0.000000"},
        {"SetValueString", [](C& c) { return c.SetValueString(Key(), "x"), std::string("-"); }, kR, "-"},
        {"SetValueLong", [](C& c) { return c.SetValueLong(Key(), 7), std::string("-"); }, kR, "-"},
        {"SetValueVariant", [](C& c) { return c.SetValueVariant(Key(), Long(7)), std::string("-"); }, kR, "-"},
        {"SetValueDouble", [](C& c) { return c.SetValueDouble(Key(), 1.5), std::string("-"); }, kR, "-"},
        {"MoveNext", [](C& c) { return c.MoveNext(), std::string("-"); }, kR, "-", true},
        {"MoveLast", [](C& c) { return c.MoveLast(), std::string("-"); }, kR, "-", true},
        {"MoveFirst", [](C& c) { return c.MoveFirst(), std::string("-"); }, kR, "-", true},
        {"MovePrev", [](C& c) { return c.MovePrev(), std::string("-"); }, kR, "-", true},
        {"GetFieldName", [](C& c) { return Of(c.GetFieldName(0)); }, kR, "", true},
        {"GetFieldIndex", [](C& c) { return Number(c.GetFieldIndex("A")); }, kR, "-1", true},
        {"GetFieldCount", [](C& c) { return Number(c.GetFieldCount()); }, kR, "0", true},
        {"GetAllFieldNames", [](C& c) { return Of(c.GetAllFieldNames(",")); }, kR, ""},
        {"GetFieldInfor", [](C& c) { return Number(c.GetFieldInfor("A", &info)); }, kR, "0"},
        {"GetRecordString", [](C& c) { return Of(c.GetRecordString("|")); }, kR, ""},
    };
    return members;
}

const std::vector<ClientMember>& OpeningMembers() {
    using C = CTDataClient;
    static const std::vector<ClientMember> members = {
        {"OpenSQL", [](C& c) { return Number(c.OpenSQL("select 1", 10, 1)); }, Needs::Recordset, "0"},
        {"OpenTable", [](C& c) { return Number(c.OpenTable("T", 10, 1)); }, Needs::Recordset, "0"},
        {"OpenProc", [](C& c) { return Number(c.OpenProc("P", 10, 1)); }, Needs::Recordset, "0"},
    };
    return members;
}

}  // namespace tk::test
