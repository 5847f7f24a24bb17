#include "tests/win32/system/counted_factory.h"
#include "tests/win32/system/support.h"
#include "tests/win32/system/tiny_server.h"

using namespace tk::test;

namespace {

constexpr DWORD kSingle = COINIT_APARTMENTTHREADED;
constexpr DWORD kMulti = COINIT_MULTITHREADED;

/// What a creation says about the calling thread: a class nobody has is looked for only where that is allowed.
HRESULT TryToCreate() {
    constexpr CLSID kNobodys = {0x5C0E1AFF, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}};
    void* object = nullptr;
    return CoCreateInstance(kNobodys, nullptr, CLSCTX_SERVER, IID_IUnknown, &object);
}

constexpr HRESULT kMayNot = static_cast<HRESULT>(0x800401F0);
constexpr HRESULT kMay = static_cast<HRESULT>(0x80040154);  // not registered: it was looked for

}  // namespace

TEST(Apartment, IsEnteredOnceNestedAndNotChanged) {
    static const struct {
        const char* label;
        DWORD first;
        DWORD second;
        HRESULT result;
    } kRows[] = {
        {"multi in multi", kMulti, kMulti, S_FALSE},
        {"single in single", kSingle, kSingle, S_FALSE},
        {"multi in single", kSingle, kMulti, static_cast<HRESULT>(0x80010106)},
        {"single in multi", kMulti, kSingle, static_cast<HRESULT>(0x80010106)},
        {"the hint for speed makes no difference", 8, kMulti, S_FALSE},
        {"the hint for old data exchange makes none", kSingle | 4, kSingle, S_FALSE},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(CoInitializeEx(nullptr, row.first), S_OK);
        EXPECT_EQ(CoInitializeEx(nullptr, row.second), row.result);
        EXPECT_EQ(TryToCreate(), kMay);
        if (row.result == S_FALSE) {
            CoUninitialize();
            EXPECT_EQ(TryToCreate(), kMay) << "the outer one holds";
        }
        CoUninitialize();
        EXPECT_EQ(TryToCreate(), kMayNot);
    }
}

TEST(Apartment, RefusesReservedAndUnknownArguments) {
    int anything = 0;
    EXPECT_EQ(CoInitializeEx(&anything, kMulti), E_INVALIDARG);
    EXPECT_EQ(CoInitializeEx(nullptr, 0x10), E_INVALIDARG);
    EXPECT_EQ(CoInitializeEx(nullptr, 0x1), E_INVALIDARG);
    EXPECT_EQ(CoInitialize(&anything), E_INVALIDARG);
    EXPECT_EQ(TryToCreate(), kMayNot);
}

TEST(Apartment, OfOneThreadServesTheOthersOnlyWhenMultithreaded) {
    static const struct {
        const char* label;
        DWORD others;
        HRESULT here;
    } kRows[] = {
        {"another thread is multithreaded", kMulti, kMay},
        {"another thread is single-threaded", kSingle, kMayNot},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(CoInitializeEx(nullptr, row.others), S_OK);
        EXPECT_EQ(OnThread([] { return TryToCreate(); }), row.here);
        EXPECT_EQ(OnThread([] {
                      const HRESULT entered = CoInitializeEx(nullptr, kSingle);
                      CoUninitialize();
                      return entered;
                  }),
                  S_OK)
            << "each thread chooses for itself";
        CoUninitialize();
    }
}

TEST(Apartment, OfAThreadThatEndsWithoutLeavingIsGivenBack) {
    EXPECT_EQ(OnThread([] {
                  CoInitializeEx(nullptr, kMulti);
                  return CoInitializeEx(nullptr, kMulti);
              }),
              S_FALSE);
    EXPECT_EQ(TryToCreate(), kMayNot);
}

TEST(Apartment, LeavingWithoutHavingEnteredDoesNothing) {
    CoUninitialize();
    const Apartment outer;
    OnThread([] {
        CoUninitialize();
        return 0;
    });
    EXPECT_EQ(TryToCreate(), kMay);
}

TEST(Apartment, OleStartsASingleThreadedOne) {
    EXPECT_EQ(OleInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, kMulti), RPC_E_CHANGED_MODE);
    CoUninitialize();
    OleUninitialize();
    EXPECT_EQ(TryToCreate(), kMayNot);
    const Apartment multi;
    EXPECT_EQ(OleInitialize(nullptr), static_cast<HRESULT>(0x80010106));
}

TEST(Apartment, TakesTheProgramsClassObjectsAlongWhenTheLastThreadLeaves) {
    CountedFactory factory;
    DWORD number = 0;
    {
        const Apartment outer;
        OnThread([&] {
            const Apartment inner;
            EXPECT_EQ(CoRegisterClassObject(kTinyClass, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &number),
                      S_OK);
            return 0;
        });
        EXPECT_EQ(factory.references, 1u) << "the outer apartment holds the process";
    }
    EXPECT_EQ(factory.references, 0u);
    EXPECT_EQ(CoRevokeClassObject(number), CO_E_OBJNOTREG);
}

TEST(Apartment, IsEnteredAndLeftByManyThreadsAtOnce) {
    std::thread threads[8];
    for (auto& thread : threads) {
        thread = std::thread([&thread, &threads] {
            const DWORD mode = (&thread - threads) % 2 == 0 ? kMulti : kSingle;
            for (int i = 0; i < 500; ++i) {
                EXPECT_EQ(CoInitializeEx(nullptr, mode), S_OK);
                EXPECT_EQ(TryToCreate(), kMay);
                CoUninitialize();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(TryToCreate(), kMayNot);
}
