// The rules of a call: ids of both generations, kinds, counts and types of arguments, error records, lifetimes.
#include <gtest/gtest.h>

#include <thread>

#include "database_test.h"

namespace tk::ado::test {
namespace {

DISPID IdOf(const Object& object, const char16_t* name) {
    std::u16string copy(name);
    LPOLESTR text = copy.data();
    DISPID id = 12345;
    const HRESULT result = object.Dispatch()->GetIDsOfNames(IID_NULL, &text, 1, 0, &id);
    return result == S_OK ? id : result == DISP_E_UNKNOWNNAME && id == DISPID_UNKNOWN ? -1 : -999;
}

TEST(ClassObjects, MakeConnectionsAndRecordsets) {
    const Object connection = Object::Create(kConnectionClass);
    const Object rows = Object::Create(kRecordsetClass);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(rows);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    const CLSID unknown = {0x00000599, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}};
    void* factory = &factory;
    EXPECT_EQ(DllGetClassObject(unknown, IID_IClassFactory, &factory), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(factory, nullptr);
}

TEST(ClassObjects, RefuseAggregationAndForeignInterfaces) {
    const CLSID clsid = {kConnectionClass, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}};
    IClassFactory* factory = nullptr;
    ASSERT_EQ(DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
    void* made = nullptr;
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &made), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IEnumVARIANT, &made), E_NOINTERFACE);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory->Release();
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST(Dispatch, FindsNamesWithoutCase) {
    const Object connection = Object::Create(kConnectionClass);
    const Object rows = Object::Create(kRecordsetClass);
    const struct {
        const Object& object;
        const char16_t* name;
        DISPID id;
    } kRows[] = {
        {connection, u"ConnectionString", 0},
        {connection, u"COMMANDTIMEOUT", 2},
        {connection, u"close", 5},
        {connection, u"Execute", 6},
        {connection, u"OpenSchema", 19},
        {connection, u"Properties", 500},
        {connection, u"Recordset", -1},
        {rows, u"fields", 0},
        {rows, u"AbsolutePosition", 1000},
        {rows, u"EOF", 1006},
        {rows, u"movenext", 1018},
        {rows, u"Collect", -8},
        {rows, u"CompareBookmarks", 1065},
        {rows, u"", -1},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(IdOf(row.object, row.name), row.id) << ToUtf8(row.name);
}

TEST(Dispatch, KnowsNoNamesOfArguments) {
    const Object rows = Object::Create(kRecordsetClass);
    std::u16string member = u"Move";
    std::u16string argument = u"NumRecords";
    LPOLESTR names[] = {member.data(), argument.data()};
    DISPID ids[2] = {};
    EXPECT_EQ(rows.Dispatch()->GetIDsOfNames(IID_NULL, names, 2, 0, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], 1017);
    EXPECT_EQ(ids[1], DISPID_UNKNOWN);
    UINT count = 9;
    EXPECT_EQ(rows.Dispatch()->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0u);
}

TEST(Dispatch, AnswersArgumentFaultsWithoutAnErrorRecord) {
    const Object connection = Object::Create(kConnectionClass);
    const Object rows = Object::Create(kRecordsetClass);
    const struct {
        const char* label;
        const Object& object;
        DISPID id;
        WORD flags;
        std::vector<Value> arguments;
        HRESULT result;
        UINT argument;
    } kRows[] = {
        {"unknown id", connection, 1, DISPATCH_METHOD, {}, DISP_E_MEMBERNOTFOUND, 99},
        {"put by reference of a command's member",
         connection,
         1,
         DISPATCH_PROPERTYPUTREF,
         {connection.AsValue()},
         DISP_E_MEMBERNOTFOUND,
         99},
        {"text for a number", connection, 2, DISPATCH_PROPERTYPUT, {Text(u"select 1")}, DISP_E_TYPEMISMATCH, 0},
        {"close with an argument", connection, 5, DISPATCH_METHOD, {Number(129)}, DISP_E_BADPARAMCOUNT, 99},
        {"too many arguments", connection, 10, DISPATCH_METHOD, std::vector<Value>(9), DISP_E_BADPARAMCOUNT, 99},
        {"one too many", connection, 10, DISPATCH_METHOD, std::vector<Value>(5), DISP_E_BADPARAMCOUNT, 99},
        {"none at all", connection, 6, DISPATCH_METHOD, {}, DISP_E_BADPARAMCOUNT, 99},
        {"left out but needed", connection, 6, DISPATCH_METHOD, {Omitted()}, DISP_E_PARAMNOTOPTIONAL, 0},
        {"put of a read-only property", connection, 18, DISPATCH_PROPERTYPUT, {Number(1)}, DISP_E_MEMBERNOTFOUND, 99},
        {"method read", rows, 1018, DISPATCH_PROPERTYGET, {}, DISP_E_MEMBERNOTFOUND, 99},
        {"property put with two values",
         rows,
         1009,
         DISPATCH_PROPERTYPUT,
         {Number(1), Number(2)},
         DISP_E_BADPARAMCOUNT,
         99},
        {"number out of range", rows, 1009, DISPATCH_PROPERTYPUT, {Value::Real(1e10)}, DISP_E_OVERFLOW, 0},
        {"second argument wrong", rows, 1062, DISPATCH_METHOD, {Number(2), Text(u"x")}, DISP_E_TYPEMISMATCH, 0},
        {"first argument wrong", rows, 1062, DISPATCH_METHOD, {Text(u"x"), Number(2)}, DISP_E_TYPEMISMATCH, 1},
        {"no flags", rows, 1018, 0, {}, DISP_E_MEMBERNOTFOUND, 99},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome outcome = row.object.Invoke(row.id, row.flags, row.arguments);
        EXPECT_EQ(outcome.result, row.result);
        EXPECT_EQ(outcome.argument, row.argument);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_TRUE(outcome.description.empty());
        EXPECT_TRUE(outcome.value.IsEmpty());
    }
}

TEST(Dispatch, ReadsAPropertyCalledAsAMethod) {
    const Object connection = Object::Create(kConnectionClass);
    EXPECT_EQ(connection.Invoke(2, DISPATCH_METHOD, {}).Long(), 30);
    EXPECT_EQ(connection.Invoke(2, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {}).Long(), 30);
}

TEST(Dispatch, TakesAPutWithAndWithoutItsName) {
    const Object connection = Object::Create(kConnectionClass);
    EXPECT_TRUE(connection.Put(2, Number(60)).Ok());
    EXPECT_EQ(connection.Get(2).Long(), 60);
    EXPECT_TRUE(connection.Invoke(2, DISPATCH_PROPERTYPUT, {Text(u"90")}).Ok());
    EXPECT_EQ(connection.Get(2).Long(), 90);
    EXPECT_TRUE(connection.Invoke(2, DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, {Short(5)}, true).Ok());
    EXPECT_EQ(connection.Get(2).Long(), 5);
}

TEST(Dispatch, FollowsReferences) {
    const Object connection = Object::Create(kConnectionClass);
    LONG seconds = 77;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_I4 | VT_BYREF;
    reference.plVal = &seconds;
    DISPPARAMS parameters{&reference, nullptr, 1, 0};
    EXPECT_EQ(
        connection.Dispatch()->Invoke(2, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr),
        S_OK);
    EXPECT_EQ(connection.Get(2).Long(), 77);
    VARIANT outer;
    VariantInit(&outer);
    VARIANT inner = Number(88).Get();
    outer.vt = VT_VARIANT | VT_BYREF;
    outer.pvarVal = &inner;
    parameters.rgvarg = &outer;
    EXPECT_EQ(
        connection.Dispatch()->Invoke(2, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr),
        S_OK);
    EXPECT_EQ(connection.Get(2).Long(), 88);
}

TEST(Dispatch, TakesArgumentsByPlaceNumber) {
    const Object rows = Object::Create(kRecordsetClass);
    // GetString(Format: 3, NumRows: 1) in the wrong order: the format is refused by the closed recordset, not the call.
    VARIANT arguments[] = {Number(2).Get(), Number(1).Get()};
    DISPID names[] = {0, 1};
    DISPPARAMS parameters{arguments, names, 2, 2};
    EXCEPINFO exception{};
    EXPECT_EQ(rows.Dispatch()->Invoke(1062, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, &exception, nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<unsigned>(exception.scode), 0x800A0E78u);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    names[1] = 0;
    UINT argument = 99;
    EXPECT_EQ(rows.Dispatch()->Invoke(1062, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, &argument),
              DISP_E_PARAMNOTFOUND);
}

TEST(Dispatch, ReportsAnErrorOfItsOwnWithTheClassAsSource) {
    const Object connection = Object::Create(kConnectionClass);
    const Outcome closed = connection.Call(connection::kClose);
    EXPECT_EQ(closed.result, DISP_E_EXCEPTION);
    EXPECT_EQ(closed.Error(), 3704u);
    EXPECT_EQ(ToUtf8(closed.source), "ADODB.Connection");
    EXPECT_FALSE(closed.description.empty());
    EXPECT_EQ(closed.helpContext, 1240653u);
    const Object rows = Object::Create(kRecordsetClass);
    const Outcome eof = rows.Get(recordset::kEof);
    EXPECT_EQ(eof.Error(), 3704u);
    EXPECT_EQ(ToUtf8(eof.source), "ADODB.Recordset");
    // Nobody has to take the record.
    DISPPARAMS none{};
    EXPECT_EQ(rows.Dispatch()->Invoke(1006, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(rows.Dispatch()->Invoke(1006, IID_IUnknown, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST(Dispatch, CountsReferencesFromManyThreads) {
    Object connection = Object::Create(kConnectionClass);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 10000; ++n) {
                connection.Dispatch()->AddRef();
                connection.Dispatch()->Release();
                const Object state = connection;
                EXPECT_EQ(state.Get(connection::kState).Long(), 0);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    connection.Dispatch()->AddRef();
    EXPECT_EQ(connection.Dispatch()->Release(), 1u);
}

class Generations : public DatabaseTest {};

TEST_F(Generations, AnswerToBothIds) {
    const Object opened = Connect();
    CreateGoods(opened);
    opened.Call(connection::kExecute, {Text(u"not a statement at all"), Omitted(), Number(1)});
    const Object rows = OpenRows(opened, u"select * from goods");
    const Object fields = rows.Get(recordset::kFields).Result();
    const Object name = fields.Get(collection::kItem, {Text(u"name")}).Result();
    const Object properties = rows.Get(recordset::kProperties).Result();
    const Object errors = opened.Get(connection::kErrors).Result();
    ASSERT_GE(errors.Get(collection::kCount).Long(), 1);
    const Object error = errors.Get(collection::kItem, {Number(0)}).Result();
    const struct {
        const char* label;
        const Object& object;
        DISPID later;
        DISPID first;
    } kRows[] = {
        {"Fields.Count", fields, 1, 0x60020000},        {"Properties.Count", properties, 1, 0x60020000},
        {"Errors.Count", errors, 1, 0x60020000},        {"Field.Precision", name, 1112, 0x60030007},
        {"Field.NumericScale", name, 1113, 0x60030008}, {"Field.Attributes", name, 1114, 1036},
        {"Field.DataFormat", name, 1115, 0x6003000D},   {"Error.Number", error, 1, 0x60020000},
        {"Error.Source", error, 2, 0x60020001},         {"Error.HelpFile", error, 3, 0x60020003},
        {"Error.HelpContext", error, 4, 0x60020004},    {"Error.SQLState", error, 5, 0x60020005},
        {"Error.NativeError", error, 6, 0x60020006},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome later = row.object.Get(row.later);
        const Outcome first = row.object.Get(row.first);
        EXPECT_TRUE(later.Ok()) << later;
        EXPECT_TRUE(first.Ok()) << first;
        EXPECT_EQ(later.value.Type(), first.value.Type());
        EXPECT_EQ(later.Utf8(), first.Utf8());
    }
    EXPECT_TRUE(fields.Call(2).Ok());
    EXPECT_TRUE(fields.Call(0x60020002).Ok());
    const Object property = properties.Get(collection::kItem, {Text(u"update criteria")}).Result();
    EXPECT_EQ(property.Get(0x60020002).Utf8(), "Update Criteria");
    EXPECT_EQ(property.Get(0x60020003).Long(), 3);
    EXPECT_EQ(property.Get(0x60020004).Long(), 0x601);
    EXPECT_EQ(property.Get(4).result, DISP_E_MEMBERNOTFOUND);
    const Object clone = rows.Call(0x60030030).Result();
    ASSERT_TRUE(clone);
    EXPECT_EQ(clone.Get(recordset::kRecordCount).Long(), 3);
    EXPECT_TRUE(errors.Call(0x60030001).Ok());
    EXPECT_EQ(errors.Get(collection::kCount).Long(), 0);
}

TEST_F(Generations, EnumerateACollection) {
    const Object opened = Connect();
    CreateGoods(opened);
    const Object rows = OpenRows(opened, u"select * from goods");
    const Object fields = rows.Get(recordset::kFields).Result();
    const Outcome outcome = fields.Get(collection::kNewEnum);
    ASSERT_EQ(outcome.value.Type(), VT_UNKNOWN);
    IEnumVARIANT* items = nullptr;
    ASSERT_EQ(outcome.value.Get().punkVal->QueryInterface(IID_IEnumVARIANT, &items), S_OK);
    VARIANT found[3];
    ULONG count = 0;
    EXPECT_EQ(items->Next(3, found, &count), S_OK);
    EXPECT_EQ(count, 3u);
    std::string names;
    for (VARIANT& item : found) {
        const Value held = Value::Adopt(item);
        const Object one(held.Get().pdispVal);
        held.Get().pdispVal->AddRef();
        names += one.Get(field::kName).Utf8() + " ";
    }
    EXPECT_EQ(names, "id name price ");
    IEnumVARIANT* copy = nullptr;
    ASSERT_EQ(items->Clone(&copy), S_OK);
    EXPECT_EQ(items->Skip(1), S_OK);
    EXPECT_EQ(items->Skip(1), S_FALSE);
    EXPECT_EQ(copy->Next(5, found, &count), S_FALSE);
    EXPECT_EQ(count, 1u);
    VariantClear(&found[0]);
    EXPECT_EQ(items->Reset(), S_OK);
    EXPECT_EQ(items->Skip(4), S_OK);
    copy->Release();
    items->Release();
}

/// VARIANTs that no honest program makes, and references to references, which some do.
class OddArgumentTest : public DatabaseTest {
protected:
    HRESULT Invoke(const Object& rows, DISPID id, WORD flags, VARIANT argument, UINT& place) const {
        const bool isPut = flags == DISPATCH_PROPERTYPUT;
        DISPID name = DISPID_PROPERTYPUT;
        DISPPARAMS parameters{&argument, isPut ? &name : nullptr, 1, isPut ? 1u : 0u};
        VARIANT result;
        VariantInit(&result);
        EXCEPINFO exception{};
        const HRESULT outcome =
            rows.Dispatch()->Invoke(id, IID_NULL, 0, flags, &parameters, &result, &exception, &place);
        VariantClear(&result);
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        return outcome == DISP_E_EXCEPTION ? exception.scode : outcome;
    }
    static VARIANT Of(VARTYPE type) {
        VARIANT variant{};
        variant.vt = type;
        return variant;
    }
};

TEST_F(OddArgumentTest, NamesTheArgumentWhoseTypeIsWrong) {
    const Object opened = Connect();
    CreateGoods(opened);
    const Object rows = OpenRows(opened, u"select * from goods");
    VARIANT itself = Of(VT_VARIANT | VT_BYREF);
    itself.pvarVal = &itself;
    const struct {
        const char* label;
        VARIANT argument;
        HRESULT result;
    } kRows[] = {
        {"no text behind the reference", Of(VT_BSTR | VT_BYREF), DISP_E_TYPEMISMATCH},
        {"no number behind the reference", Of(VT_I4 | VT_BYREF), DISP_E_TYPEMISMATCH},
        {"no VARIANT behind the reference", Of(VT_VARIANT | VT_BYREF), DISP_E_TYPEMISMATCH},
        {"a reference to itself", itself, DISP_E_TYPEMISMATCH},
        {"a type of property sets", Of(VT_FILETIME), DISP_E_BADVARTYPE},
        {"a type that does not exist", Of(0x0777), DISP_E_BADVARTYPE},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        for (const DISPID put : {recordset::kFilter, recordset::kBookmark, recordset::kSource}) {
            SCOPED_TRACE(put);
            UINT place = 99;
            const HRESULT result = Invoke(rows, put, DISPATCH_PROPERTYPUT, row.argument, place);
            EXPECT_TRUE(result == row.result || (put == recordset::kSource && result != E_OUTOFMEMORY))
                << std::hex << result;
            if (result == row.result) {
                EXPECT_EQ(place, 0u);
            }
        }
        UINT place = 99;
        EXPECT_EQ(Invoke(rows, recordset::kCollect, DISPATCH_PROPERTYGET, row.argument, place), row.result);
        EXPECT_EQ(place, 0u);
    }
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 3);
}

TEST_F(OddArgumentTest, FollowsReferencesToReferences) {
    const Object opened = Connect();
    CreateGoods(opened);
    const Object rows = OpenRows(opened, u"select * from goods");
    const Value name = Text(u"id");
    VARIANT inner = name.Get();
    VARIANT middle = Of(VT_VARIANT | VT_BYREF);
    middle.pvarVal = &inner;
    VARIANT outer = Of(VT_VARIANT | VT_BYREF);
    outer.pvarVal = &middle;
    UINT place = 99;
    EXPECT_EQ(Invoke(rows, recordset::kCollect, DISPATCH_PROPERTYGET, outer, place), S_OK);
    const Value filter = Text(u"id = 2");
    inner = filter.Get();
    EXPECT_EQ(Invoke(rows, recordset::kFilter, DISPATCH_PROPERTYPUT, outer, place), S_OK);
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 1);
}

}  // namespace
}  // namespace tk::ado::test
