#include <algorithm>
#include <span>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

constexpr VARTYPE kPlainTypes[] = {VT_EMPTY, VT_NULL,     VT_I2,    VT_I4,   VT_R4,      VT_R8,      VT_CY,    VT_DATE,
                                   VT_BSTR,  VT_DISPATCH, VT_ERROR, VT_BOOL, VT_UNKNOWN, VT_DECIMAL, VT_I1,    VT_UI1,
                                   VT_UI2,   VT_UI4,      VT_I8,    VT_UI8,  VT_INT,     VT_UINT,    VT_RECORD};

bool Contains(std::span<const VARTYPE> types, VARTYPE type) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

TEST(VariantClear, KnowsEveryTypeCode) {
    for (unsigned type = 0; type <= 0xFFFF; ++type) {
        VARIANT value;
        std::memset(&value, 0, sizeof(value));
        value.vt = static_cast<VARTYPE>(type);
        const VARTYPE base = static_cast<VARTYPE>(type & VT_TYPEMASK);
        const unsigned bits = type & ~static_cast<unsigned>(VT_TYPEMASK);
        bool legal = Contains(kPlainTypes, base);
        if (bits != 0) legal = (legal && base > VT_NULL) || base == VT_VARIANT;
        legal = legal && (bits & ~static_cast<unsigned>(VT_ARRAY | VT_BYREF)) == 0;
        ASSERT_EQ(VariantClear(&value), legal ? S_OK : DISP_E_BADVARTYPE) << std::hex << type;
        ASSERT_EQ(value.vt, legal ? 0u : type) << std::hex << type;
    }
    EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
}

TEST(VariantClear, ReleasesObjectsOnce) {
    CountedObject object;
    VARIANT value;
    value.vt = VT_DISPATCH;
    value.pdispVal = &object;
    object.AddRef();
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.references, 1);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.references, 1);
}

TEST(VariantClear, LeavesWhatAReferencePointsTo) {
    CountedObject object;
    IDispatch* held = &object;
    VARIANT value;
    value.vt = VT_DISPATCH | VT_BYREF;
    value.ppdispVal = &held;
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.references, 1);
    Value text = Text(u"still here");
    value.vt = VT_VARIANT | VT_BYREF;
    value.pvarVal = &text;
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(Describe(text.Get()), "BSTR still here");
}

TEST(VariantClear, RefusesALockedArrayAndKeepsIt) {
    VARIANT value;
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = SafeArrayCreateVector(VT_UI1, 0, 4);
    SafeArrayLock(value.parray);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(value.vt, VT_ARRAY | VT_UI1);
    SafeArrayUnlock(value.parray);
    EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(VariantCopy, MakesADeepCopy) {
    const Value source = Text(std::u16string_view(u"a\0b", 3));
    Value copy = Text(u"old");
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_NE(copy->bstrVal, source->bstrVal);
    EXPECT_EQ(SysStringLen(copy->bstrVal), 3u);
    EXPECT_EQ(copy->bstrVal[2], u'b');
}

TEST(VariantCopy, KeepsANullTextNull) {
    VARIANT source;
    source.vt = VT_BSTR;
    source.bstrVal = nullptr;
    Value copy = I4(5);
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.Type(), VT_BSTR);
    EXPECT_EQ(copy->bstrVal, nullptr);
}

TEST(VariantCopy, AddsAReferenceToObjects) {
    CountedObject object;
    {
        const Value source = Dispatch(object);
        Value copy;
        EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
        EXPECT_EQ(object.references, 3);
    }
    EXPECT_EQ(object.references, 1);
}

TEST(VariantCopy, CopiesAllBitsOfADecimal) {
    const Value source = Decimal("-79228162514264337593543950335");
    Value copy;
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(Describe(copy.Get()), "DEC -79228162514264337593543950335");
}

TEST(VariantCopy, OntoItselfIsNothing) {
    Value value = Text(u"same");
    EXPECT_EQ(VariantCopy(&value, &value), S_OK);
    EXPECT_EQ(Describe(value.Get()), "BSTR same");
}

TEST(VariantCopy, CopiesReferencesAsTheyAre) {
    LONG number = 7;
    VARIANT source;
    source.vt = VT_I4 | VT_BYREF;
    source.plVal = &number;
    Value copy;
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.Type(), VT_I4 | VT_BYREF);
    EXPECT_EQ(copy->plVal, &number);
}

TEST(VariantCopy, CopiesArraysWithTheirTexts) {
    VARIANT source;
    source.vt = VT_ARRAY | VT_BSTR;
    source.parray = SafeArrayCreateVector(VT_BSTR, 1, 2);
    LONG index = 2;
    BSTR element = SysAllocString(u"second");
    EXPECT_EQ(SafeArrayPutElement(source.parray, &index, element), S_OK);
    Value copy;
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    VariantClear(&source);
    BSTR read = nullptr;
    EXPECT_EQ(SafeArrayGetElement(copy->parray, &index, &read), S_OK);
    EXPECT_EQ(Narrow(read), "second");
    SysFreeString(read);
    SysFreeString(element);
}

TEST(VariantCopy, AnswersBadArguments) {
    Value value = I4(1);
    VARIANT bad;
    bad.vt = 131;
    EXPECT_EQ(VariantCopy(nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(VariantCopy(&value, nullptr), E_INVALIDARG);
    EXPECT_EQ(VariantCopy(&value, &bad), DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantCopy(&bad, &value), DISP_E_BADVARTYPE);
    EXPECT_EQ(Describe(value.Get()), "I4 1");
}

TEST(VariantCopy, LeavesTheDestinationEmptyWhenMemoryIsOut) {
    const Value text = Text(std::u16string(2000, u'x'));
    Value copy = I4(3);
    {
        const MemoryRunsOut nothingLeft(0);
        EXPECT_EQ(VariantCopy(&copy, &text), E_OUTOFMEMORY);
    }
    EXPECT_EQ(copy.Type(), VT_EMPTY);
}

TEST(VariantCopyInd, FollowsEveryKindOfReference) {
    LONG number = -9;
    BSTR text = SysAllocString(u"behind");
    DECIMAL decimal = Dec("1.25");
    Value inner = R8(2.5);
    VARIANT nested;
    nested.vt = VT_I4 | VT_BYREF;
    nested.plVal = &number;
    VARIANT source;
    Value copy = Text(u"old");
    source.vt = VT_I4 | VT_BYREF;
    source.plVal = &number;
    EXPECT_EQ(VariantCopyInd(&copy, &source), S_OK);
    EXPECT_EQ(Describe(copy.Get()), "I4 -9");
    source.vt = VT_BSTR | VT_BYREF;
    source.pbstrVal = &text;
    EXPECT_EQ(VariantCopyInd(&copy, &source), S_OK);
    EXPECT_EQ(Describe(copy.Get()), "BSTR behind");
    EXPECT_NE(copy->bstrVal, text);
    source.vt = VT_DECIMAL | VT_BYREF;
    source.pdecVal = &decimal;
    EXPECT_EQ(VariantCopyInd(&copy, &source), S_OK);
    EXPECT_EQ(Describe(copy.Get()), "DEC 1.25");
    source.vt = VT_VARIANT | VT_BYREF;
    source.pvarVal = &inner;
    EXPECT_EQ(VariantCopyInd(&copy, &source), S_OK);
    EXPECT_EQ(Describe(copy.Get()), "R8 2.5");
    source.pvarVal = &nested;
    EXPECT_EQ(VariantCopyInd(&copy, &source), S_OK);
    EXPECT_EQ(Describe(copy.Get()), "I4 -9");
    SysFreeString(text);
}

TEST(VariantCopyInd, RefusesChainsAndNullPointers) {
    Value inner = I4(1);
    VARIANT middle;
    middle.vt = VT_VARIANT | VT_BYREF;
    middle.pvarVal = &inner;
    VARIANT outer;
    outer.vt = VT_VARIANT | VT_BYREF;
    outer.pvarVal = &middle;
    Value copy = I4(42);
    EXPECT_EQ(VariantCopyInd(&copy, &outer), E_INVALIDARG);
    outer.pvarVal = &outer;  // a ring
    EXPECT_EQ(VariantCopyInd(&copy, &outer), E_INVALIDARG);
    outer.vt = VT_I4 | VT_BYREF;
    outer.plVal = nullptr;
    EXPECT_EQ(VariantCopyInd(&copy, &outer), E_INVALIDARG);
    VARIANT bad;
    bad.vt = 15;
    outer.vt = VT_VARIANT | VT_BYREF;
    outer.pvarVal = &bad;
    EXPECT_EQ(VariantCopyInd(&copy, &outer), DISP_E_BADVARTYPE);
    EXPECT_EQ(Describe(copy.Get()), "I4 42");
}

TEST(VariantCopyInd, WorksInPlace) {
    SHORT number = 12;
    VARIANT value;
    value.vt = VT_I2 | VT_BYREF;
    value.piVal = &number;
    EXPECT_EQ(VariantCopyInd(&value, &value), S_OK);
    EXPECT_EQ(Describe(value), "I2 12");
}

// ---- Records

class CountedRecords final : public IRecordInfo {
public:
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return static_cast<ULONG>(++references); }
    ULONG Release() override { return static_cast<ULONG>(--references); }
    HRESULT RecordInit(PVOID) override { return S_OK; }
    HRESULT RecordClear(PVOID record) override {
        *static_cast<int*>(record) = 0;
        ++cleared;
        return S_OK;
    }
    HRESULT RecordCopy(PVOID from, PVOID to) override {
        *static_cast<int*>(to) = *static_cast<int*>(from);
        return S_OK;
    }
    HRESULT GetGuid(GUID*) override { return E_NOTIMPL; }
    HRESULT GetName(BSTR*) override { return E_NOTIMPL; }
    HRESULT GetSize(ULONG* size) override {
        *size = sizeof(int);
        return S_OK;
    }
    HRESULT GetTypeInfo(ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT GetField(PVOID, LPCOLESTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT GetFieldNoCopy(PVOID, LPCOLESTR, VARIANT*, PVOID*) override { return E_NOTIMPL; }
    HRESULT PutField(ULONG, PVOID, LPCOLESTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT PutFieldNoCopy(ULONG, PVOID, LPCOLESTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT GetFieldNames(ULONG*, BSTR*) override { return E_NOTIMPL; }
    BOOL IsMatchingType(IRecordInfo*) override { return TRUE; }
    PVOID RecordCreate() override {
        ++alive;
        return new int(0);
    }
    HRESULT RecordCreateCopy(PVOID source, PVOID* copy) override {
        if (failCopies) return E_OUTOFMEMORY;
        ++alive;
        *copy = new int(*static_cast<int*>(source));
        return S_OK;
    }
    HRESULT RecordDestroy(PVOID record) override {
        --alive;
        delete static_cast<int*>(record);
        return S_OK;
    }

    int references = 1;
    int alive = 0;
    int cleared = 0;
    bool failCopies = false;
};

TEST(VariantCopy, CopiesAndDestroysRecords) {
    CountedRecords records;
    {
        Value record;
        record->pvRecord = records.RecordCreate();
        record->pRecInfo = &records;
        record->vt = VT_RECORD;
        records.AddRef();
        *static_cast<int*>(record->pvRecord) = 77;
        const Value copy = record;
        EXPECT_NE(copy->pvRecord, record->pvRecord);
        EXPECT_EQ(*static_cast<int*>(copy->pvRecord), 77);
        EXPECT_EQ(records.alive, 2);
        records.failCopies = true;
        Value failed = I4(1);
        EXPECT_EQ(VariantCopy(&failed, &record), E_OUTOFMEMORY);
        EXPECT_EQ(failed.Type(), VT_EMPTY);
    }
    EXPECT_EQ(records.alive, 0);
    EXPECT_EQ(records.references, 1);
}

TEST(SafeArrayCreateEx, HoldsRecords) {
    CountedRecords records;
    SAFEARRAYBOUND bound{3, 0};
    EXPECT_EQ(SafeArrayCreateEx(VT_RECORD, 1, &bound, nullptr), nullptr);
    SAFEARRAY* array = SafeArrayCreateEx(VT_RECORD, 1, &bound, &records);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(SafeArrayGetElemsize(array), sizeof(int));
    LONG index = 1;
    int number = 5;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &number), S_OK);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    int read = 0;
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &read), S_OK);
    EXPECT_EQ(read, 5);
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(copy, &type), S_OK);
    EXPECT_EQ(type, VT_RECORD);
    IRecordInfo* info = nullptr;
    EXPECT_EQ(SafeArrayGetRecordInfo(copy, &info), S_OK);
    EXPECT_EQ(info, &records);
    info->Release();
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_GE(records.cleared, 6);
    EXPECT_EQ(records.references, 1);
}

}  // namespace
}  // namespace tk::test
