#include <limits>
#include <thread>
#include <vector>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

constexpr VARTYPE kElementTypes[] = {VT_I2,       VT_I4,    VT_R4,   VT_R8,      VT_CY,      VT_DATE,    VT_BSTR,
                                     VT_DISPATCH, VT_ERROR, VT_BOOL, VT_VARIANT, VT_UNKNOWN, VT_DECIMAL, VT_I1,
                                     VT_UI1,      VT_UI2,   VT_UI4,  VT_I8,      VT_UI8,     VT_INT,     VT_UINT};

TEST(SafeArrayCreateVector, RemembersTheTypeOfItsElements) {
    for (const VARTYPE expected : kElementTypes) {
        SAFEARRAY* array = SafeArrayCreateVector(expected, -1, 3);
        ASSERT_NE(array, nullptr) << expected;
        VARTYPE type = 0;
        EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
        EXPECT_EQ(type, expected);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

TEST(SafeArrayCreateVector, KnowsTheSizesOfElements) {
    static constexpr struct {
        VARTYPE type;
        UINT size;
    } kRows[] = {{VT_UI1, 1},
                 {VT_I2, 2},
                 {VT_BOOL, 2},
                 {VT_I4, 4},
                 {VT_R4, 4},
                 {VT_R8, 8},
                 {VT_CY, 8},
                 {VT_DATE, 8},
                 {VT_BSTR, sizeof(void*)},
                 {VT_VARIANT, sizeof(VARIANT)},
                 {VT_DECIMAL, 16}};
    for (const auto& row : kRows) {
        SAFEARRAY* array = SafeArrayCreateVector(row.type, 0, 1);
        EXPECT_EQ(SafeArrayGetElemsize(array), row.size) << row.type;
        SafeArrayDestroy(array);
    }
}

TEST(SafeArrayCreate, RefusesTypesThatArraysCannotHold) {
    static constexpr VARTYPE kTypes[] = {
        VT_EMPTY, VT_NULL, 15, VT_VOID, VT_PTR, 131, VT_ARRAY | VT_I4, VT_BYREF | VT_I4, VT_VECTOR | VT_I4, 0xFFFF};
    SAFEARRAYBOUND bound{1, 0};
    for (const VARTYPE type : kTypes)
        EXPECT_EQ(SafeArrayCreate(type, 1, &bound), nullptr) << type;
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &bound), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_I4, 1, nullptr), nullptr);
}

TEST(SafeArrayCreate, RefusesBoundsThatAreTooLarge) {
    static constexpr struct {
        const char* label;
        SAFEARRAYBOUND bounds[3];
        UINT count;
    } kRows[] = {
        {"bytes beyond 32 bits", {{0x20000000, 0}}, 1},
        {"product beyond 32 bits", {{0x10000, 0}, {0x10000, 0}}, 2},
        {"product beyond 64 bits", {{0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}}, 3},
        {"last index beyond LONG", {{2, 0x7FFFFFFF}}, 1},
        {"all indexes and more", {{0xFFFFFFFF, 1}}, 1},
    };
    for (const auto& row : kRows) {
        SAFEARRAYBOUND bounds[3];
        std::copy(row.bounds, row.bounds + 3, bounds);
        EXPECT_EQ(SafeArrayCreate(VT_R8, row.count, bounds), nullptr) << row.label;
    }
}

TEST(SafeArrayCreate, AllowsNoElements) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 0);
    ASSERT_NE(array, nullptr);
    LONG upper = 7;
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
    EXPECT_EQ(upper, -1);
    LONG index = 0;
    BSTR text = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &text), DISP_E_BADINDEX);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArrayCreate, MakesZeroElements) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 5);
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(static_cast<VARIANT*>(data)[i].vt, VT_EMPTY);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    SafeArrayDestroy(array);
}

TEST(SafeArrayCreate, GivesNullWhenMemoryIsOut) {
    SAFEARRAYBOUND bound{10, 0};
    for (int allocations = 0; allocations < 2; ++allocations) {
        const MemoryRunsOut afterSome(allocations);
        EXPECT_EQ(SafeArrayCreate(VT_I4, 1, &bound), nullptr) << allocations;
    }
}

TEST(SafeArrayCreate, FirstDimensionVariesFastest) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 10}};  // first dimension first
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(SafeArrayGetDim(array), 2u);
    EXPECT_EQ(array->rgsabound[0].cElements, 3u);  // stored last dimension first
    EXPECT_EQ(array->rgsabound[1].cElements, 2u);
    for (LONG second = 10; second < 13; ++second) {
        for (LONG first = 0; first < 2; ++first) {
            LONG indices[] = {first, second};
            LONG number = second * 100 + first;
            EXPECT_EQ(SafeArrayPutElement(array, indices, &number), S_OK);
        }
    }
    static constexpr LONG kInMemory[] = {1000, 1001, 1100, 1101, 1200, 1201};
    EXPECT_EQ(std::memcmp(array->pvData, kInMemory, sizeof(kInMemory)), 0);
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 2, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &upper), S_OK);
    EXPECT_EQ(lower, 10);
    EXPECT_EQ(upper, 12);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
    EXPECT_EQ(upper, 1);
    EXPECT_EQ(SafeArrayGetUBound(array, 0, &upper), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetLBound(array, 3, &upper), DISP_E_BADINDEX);
    SafeArrayDestroy(array);
}

TEST(SafeArrayGetElement, RefusesIndexesOutside) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, -2, 4);
    static constexpr LONG kOutside[] = {-3, 2, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()};
    for (LONG index : kOutside) {
        LONG number = 1;
        void* place = nullptr;
        EXPECT_EQ(SafeArrayGetElement(array, &index, &number), DISP_E_BADINDEX) << index;
        EXPECT_EQ(SafeArrayPutElement(array, &index, &number), DISP_E_BADINDEX) << index;
        EXPECT_EQ(SafeArrayPtrOfIndex(array, &index, &place), DISP_E_BADINDEX) << index;
        EXPECT_EQ(array->cLocks, 0u);
    }
    LONG inside = 1;
    void* place = nullptr;
    EXPECT_EQ(SafeArrayPtrOfIndex(array, &inside, &place), S_OK);
    EXPECT_EQ(place, static_cast<LONG*>(array->pvData) + 3);
    SafeArrayDestroy(array);
}

TEST(SafeArrayPutElement, CopiesInAndFreesTheOld) {
    CountedObject object;
    SAFEARRAY* objects = SafeArrayCreateVector(VT_UNKNOWN, 0, 1);
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(objects, &index, &object), S_OK);
    EXPECT_EQ(object.references, 2);
    EXPECT_EQ(SafeArrayPutElement(objects, &index, &object), S_OK);
    EXPECT_EQ(object.references, 2);
    IUnknown* read = nullptr;
    EXPECT_EQ(SafeArrayGetElement(objects, &index, &read), S_OK);
    EXPECT_EQ(object.references, 3);
    read->Release();
    EXPECT_EQ(SafeArrayPutElement(objects, &index, nullptr), S_OK);
    EXPECT_EQ(object.references, 1);
    SafeArrayDestroy(objects);

    SAFEARRAY* values = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    Value text = Text(u"first");
    EXPECT_EQ(SafeArrayPutElement(values, &index, &text), S_OK);
    Value number = I4(3);
    EXPECT_EQ(SafeArrayPutElement(values, &index, &number), S_OK);  // frees the text
    Value back;
    EXPECT_EQ(SafeArrayGetElement(values, &index, &back), S_OK);
    EXPECT_EQ(Describe(back.Get()), "I4 3");
    EXPECT_EQ(SafeArrayPutElement(values, &index, nullptr), E_INVALIDARG);
    SafeArrayDestroy(values);
}

TEST(SafeArrayPutElement, KeepsTheOldElementWhenMemoryIsOut) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 1);
    LONG index = 0;
    BSTR first = SysAllocString(u"first");
    BSTR second = SysAllocString(std::u16string(2000, u'x').c_str());
    EXPECT_EQ(SafeArrayPutElement(array, &index, first), S_OK);
    {
        const MemoryRunsOut nothingLeft(0);
        EXPECT_EQ(SafeArrayPutElement(array, &index, second), E_OUTOFMEMORY);
    }
    EXPECT_EQ(Narrow(*static_cast<BSTR*>(array->pvData)), "first");
    EXPECT_EQ(array->cLocks, 0u);
    SysFreeString(first);
    SysFreeString(second);
    SafeArrayDestroy(array);
}

TEST(SafeArrayLock, CountsAndGuards) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 2);
    SAFEARRAYBOUND larger{5, 0};
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayRedim(array, &larger), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    array->cLocks = 0xFFFF;
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    array->cLocks = 0;
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArrayLock, CountsFromManyThreads) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 2);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([array] {
            for (int turn = 0; turn < 5000; ++turn) {
                EXPECT_EQ(SafeArrayLock(array), S_OK);
                EXPECT_EQ(SafeArrayUnlock(array), S_OK);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(array->cLocks, 0u);
    SafeArrayDestroy(array);
}

TEST(SafeArrayRedim, ChangesTheLastDimensionAndKeepsTheRest) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    SAFEARRAY* array = SafeArrayCreate(VT_BSTR, 2, bounds);
    BSTR text = SysAllocString(u"kept");
    for (LONG second = 0; second < 2; ++second) {
        LONG indices[] = {1, second};
        EXPECT_EQ(SafeArrayPutElement(array, indices, text), S_OK);
    }
    SAFEARRAYBOUND longer{4, 5};
    EXPECT_EQ(SafeArrayRedim(array, &longer), S_OK);
    LONG kept[] = {1, 6};
    BSTR read = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, kept, &read), S_OK);
    EXPECT_EQ(Narrow(read), "kept");
    SysFreeString(read);
    LONG added[] = {1, 8};
    EXPECT_EQ(SafeArrayGetElement(array, added, &read), S_OK);
    EXPECT_EQ(read, nullptr);
    SAFEARRAYBOUND shorter{1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &shorter), S_OK);  // frees the text of the lost half
    SAFEARRAYBOUND none{0, 0};
    EXPECT_EQ(SafeArrayRedim(array, &none), S_OK);
    EXPECT_EQ(SafeArrayRedim(array, &longer), S_OK);
    {
        SAFEARRAYBOUND more{100, 0};
        const MemoryRunsOut nothingLeft(0);
        EXPECT_EQ(SafeArrayRedim(array, &more), E_OUTOFMEMORY);
        EXPECT_EQ(array->rgsabound[0].cElements, 4u);
    }
    SAFEARRAYBOUND tooMany{0xFFFFFFFF, 0};
    EXPECT_EQ(SafeArrayRedim(array, &tooMany), E_INVALIDARG);
    SAFEARRAYBOUND tooLarge{0x40000000, 0};
    EXPECT_EQ(SafeArrayRedim(array, &tooLarge), E_OUTOFMEMORY);
    array->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_EQ(SafeArrayRedim(array, &shorter), DISP_E_ARRAYISLOCKED);
    SysFreeString(text);
    SafeArrayDestroy(array);
}

TEST(SafeArrayCopyData, NeedsTheSameShape) {
    SAFEARRAY* three = SafeArrayCreateVector(VT_I4, 0, 3);
    SAFEARRAY* shifted = SafeArrayCreateVector(VT_I4, 10, 3);
    SAFEARRAY* four = SafeArrayCreateVector(VT_I4, 0, 4);
    SAFEARRAY* texts = SafeArrayCreateVector(VT_BSTR, 0, 3);
    SAFEARRAY* numbers = SafeArrayCreateVector(VT_I8, 0, 3);
    static_cast<LONG*>(three->pvData)[2] = 9;
    EXPECT_EQ(SafeArrayCopyData(three, shifted), S_OK);
    EXPECT_EQ(static_cast<LONG*>(shifted->pvData)[2], 9);
    EXPECT_EQ(SafeArrayCopyData(three, four), E_INVALIDARG);
    EXPECT_EQ(SafeArrayCopyData(numbers, texts), E_INVALIDARG);  // same size, but no pointers
    EXPECT_EQ(SafeArrayCopyData(nullptr, four), E_INVALIDARG);
    for (SAFEARRAY* array : {three, shifted, four, texts, numbers})
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArrayCopy, LeavesNothingBehindWhenMemoryIsOut) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 2);
    BSTR text = SysAllocString(std::u16string(2000, u'x').c_str());
    for (LONG index = 0; index < 2; ++index)
        EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    for (int allocations = 0; allocations < 4; ++allocations) {
        const MemoryRunsOut afterSome(allocations);
        SAFEARRAY* copy = array;
        EXPECT_EQ(SafeArrayCopy(array, &copy), E_OUTOFMEMORY) << allocations;
        EXPECT_EQ(copy, nullptr);
    }
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    SysFreeString(text);
    SafeArrayDestroy(copy);
    SafeArrayDestroy(array);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(copy, nullptr);
}

TEST(SafeArrayDestroy, LeavesMemoryThatIsNotItsOwn) {
    LONG numbers[3] = {1, 2, 3};
    SAFEARRAY array{};
    array.cDims = 1;
    array.fFeatures = FADF_AUTO | FADF_FIXEDSIZE;
    array.cbElements = sizeof(LONG);
    array.pvData = numbers;
    array.rgsabound[0] = {3, 0};
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(&array, &copy), S_OK);
    EXPECT_EQ(copy->fFeatures & (FADF_AUTO | FADF_FIXEDSIZE), 0);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(&array), S_OK);
    EXPECT_EQ(numbers[1], 0);
}

TEST(SafeArrayDestroyData, MayBeFollowedByAllocData) {
    SAFEARRAY* array = nullptr;
    EXPECT_EQ(SafeArrayAllocDescriptor(0, &array), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(70000, &array), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptorEx(VT_VOID, 1, &array), DISP_E_BADVARTYPE);
    ASSERT_EQ(SafeArrayAllocDescriptor(1, &array), S_OK);
    array->cbElements = 4;
    array->rgsabound[0] = {6, 0};
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(array, &type), E_INVALIDARG);  // made without a type
    EXPECT_EQ(SafeArrayAllocData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(array->pvData, nullptr);
    EXPECT_EQ(SafeArrayAllocData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArraySetIID, BelongsToInterfaces) {
    SAFEARRAY* objects = SafeArrayCreateVector(VT_DISPATCH, 0, 1);
    GUID iid{};
    EXPECT_EQ(SafeArrayGetIID(objects, &iid), S_OK);
    EXPECT_TRUE(iid == IID_IDispatch);
    EXPECT_EQ(SafeArraySetIID(objects, IID_IEnumVARIANT), S_OK);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(objects, &copy), S_OK);
    EXPECT_EQ(SafeArrayGetIID(copy, &iid), S_OK);
    EXPECT_TRUE(iid == IID_IEnumVARIANT);
    SAFEARRAY* numbers = SafeArrayCreateVector(VT_I4, 0, 1);
    EXPECT_EQ(SafeArraySetIID(numbers, IID_IDispatch), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetIID(numbers, &iid), E_INVALIDARG);
    for (SAFEARRAY* array : {objects, copy, numbers})
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(VectorFromBstr, CopiesBytesThereAndBack) {
    BSTR text = SysAllocStringByteLen("abc", 3);
    SAFEARRAY* bytes = nullptr;
    ASSERT_EQ(VectorFromBstr(text, &bytes), S_OK);
    EXPECT_EQ(bytes->rgsabound[0].cElements, 3u);
    BSTR back = nullptr;
    EXPECT_EQ(BstrFromVector(bytes, &back), S_OK);
    EXPECT_EQ(SysStringByteLen(back), 3u);
    EXPECT_EQ(std::memcmp(text, back, 3), 0);
    SAFEARRAY* numbers = SafeArrayCreateVector(VT_I4, 0, 1);
    SysFreeString(back);
    EXPECT_EQ(BstrFromVector(numbers, &back), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(BstrFromVector(nullptr, &back), E_INVALIDARG);
    SafeArrayDestroy(numbers);
    SafeArrayDestroy(bytes);
    SysFreeString(text);
}

TEST(SafeArray, AnswersNullArrays) {
    LONG index = 0;
    LONG number = 0;
    void* data = nullptr;
    SAFEARRAYBOUND bound{1, 0};
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0u);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &index, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(nullptr, &index, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayRedim(nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocData(nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace tk::test
