#include "tests/win32/system/counted_factory.h"
#include "tests/win32/system/support.h"
#include "tests/win32/system/tiny_server.h"

using namespace tk::test;

namespace {

constexpr DWORD kInProcess = CLSCTX_INPROC_SERVER;
constexpr DWORD kLocal = CLSCTX_LOCAL_SERVER;
constexpr auto kNotRegistered = static_cast<HRESULT>(0x80040154);

class Registration {
public:
    Registration(CountedFactory& factory, DWORD context, DWORD flags)
        : result(CoRegisterClassObject(kTinyClass, &factory, context, flags, &number)) {}
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration() {
        if (number != 0) CoRevokeClassObject(number);
    }

    DWORD number = 77;
    HRESULT result;
};

HRESULT GetClassObject(DWORD context, IUnknown** object = nullptr) {
    IUnknown* found = nullptr;
    const HRESULT result =
        CoGetClassObject(kTinyClass, context, nullptr, IID_IUnknown, reinterpret_cast<void**>(&found));
    if (object != nullptr) *object = found;
    if (object == nullptr && found != nullptr) found->Release();
    return result;
}

}  // namespace

TEST(ClassObjects, AreFoundInTheContextsTheyWereRegisteredFor) {
    static const struct {
        const char* label;
        DWORD context;
        DWORD flags;
        HRESULT registered;
        HRESULT inProcess;
        HRESULT local;
    } kRows[] = {
        {"in-process, multiple", kInProcess, 1, S_OK, S_OK, kNotRegistered},
        {"in-process, separate", kInProcess, 2, S_OK, S_OK, kNotRegistered},
        {"in-process, single", kInProcess, 0, E_INVALIDARG, kNotRegistered, kNotRegistered},
        {"local, multiple is in-process too", kLocal, 1, S_OK, S_OK, S_OK},
        {"local, separate is not", kLocal, 2, S_OK, kNotRegistered, S_OK},
        {"local, single", kLocal, 0, S_OK, kNotRegistered, S_OK},
        {"both, multiple", kInProcess | kLocal, 1, S_OK, S_OK, S_OK},
        {"both, separate", kInProcess | kLocal, 2, S_OK, S_OK, S_OK},
        {"both, single", kInProcess | kLocal, 0, E_INVALIDARG, kNotRegistered, kNotRegistered},
        {"no server", CLSCTX_INPROC_HANDLER, 1, E_INVALIDARG, kNotRegistered, kNotRegistered},
        {"two uses at once", kLocal, 3, E_INVALIDARG, kNotRegistered, kNotRegistered},
        {"suspended", kLocal, 1 | 4, S_OK, kNotRegistered, kNotRegistered},
    };
    const Apartment apartment;
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CountedFactory factory;
        {
            const Registration registration(factory, row.context, row.flags);
            EXPECT_EQ(registration.result, row.registered);
            EXPECT_EQ(registration.number != 0, SUCCEEDED(row.registered));
            EXPECT_EQ(GetClassObject(kInProcess), row.inProcess);
            EXPECT_EQ(GetClassObject(kLocal), row.local);
        }
        EXPECT_EQ(factory.references, 0u);
    }
}

TEST(ClassObjects, ForSingleUseAreGivenOutOnce) {
    const Apartment apartment;
    CountedFactory factory;
    const Registration registration(factory, kLocal, REGCLS_SINGLEUSE);
    EXPECT_EQ(GetClassObject(kLocal), S_OK);
    EXPECT_EQ(GetClassObject(kLocal), kNotRegistered);
    EXPECT_EQ(CoRevokeClassObject(registration.number), S_OK);
    EXPECT_EQ(CoRevokeClassObject(registration.number), static_cast<HRESULT>(0x800401FB));
}

TEST(ClassObjects, AppearWhenResumed) {
    const Apartment apartment;
    CountedFactory factory;
    const Registration registration(factory, kInProcess, REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED);
    EXPECT_EQ(GetClassObject(kInProcess), kNotRegistered);
    EXPECT_EQ(CoResumeClassObjects(), S_OK);
    EXPECT_EQ(GetClassObject(kInProcess), S_OK);
}

TEST(ClassObjects, AreFoundNewestFirstAndTheOlderOneAfterRevoking) {
    const Apartment apartment;
    CountedFactory older;
    CountedFactory newer;
    const Registration first(older, kInProcess, REGCLS_MULTIPLEUSE);
    IUnknown* found = nullptr;
    {
        const Registration second(newer, kInProcess, REGCLS_MULTIPLEUSE);
        EXPECT_NE(first.number, second.number);
        ASSERT_EQ(GetClassObject(kInProcess, &found), S_OK);
        EXPECT_EQ(found, &newer);
        found->Release();
    }
    ASSERT_EQ(GetClassObject(kInProcess, &found), S_OK);
    EXPECT_EQ(found, &older);
    found->Release();
}

TEST(ClassObjects, ComeBeforeTheClassRegistry) {
    const TempFolder folder;
    WriteFile(folder / "classes.conf", std::string(kTinyClassText) + " Tiny.Class " + TINY_SERVER + "\n");
    const Variable classes("TKKERNEL_CLASSES", folder / "classes.conf");
    const Apartment apartment;
    CountedFactory factory;
    IUnknown* object = nullptr;
    {
        const Registration registration(factory, kInProcess, REGCLS_MULTIPLEUSE);
        ASSERT_EQ(CoCreateInstance(kTinyClass, nullptr, CLSCTX_SERVER, IID_IUnknown, reinterpret_cast<void**>(&object)),
                  S_OK);
        object->Release();
        EXPECT_EQ(factory.created, 1);
    }
    ASSERT_EQ(CoCreateInstance(kTinyClass, nullptr, CLSCTX_SERVER, IID_IUnknown, reinterpret_cast<void**>(&object)),
              S_OK);
    object->Release();
    EXPECT_EQ(factory.created, 1);
}

TEST(ClassObjects, NeedAStartedProcessAndAnObject) {
    CountedFactory factory;
    DWORD number = 77;
    EXPECT_EQ(CoRegisterClassObject(kTinyClass, &factory, kInProcess, 1, &number), static_cast<HRESULT>(0x800401F0));
    EXPECT_EQ(number, 0u);
    const Apartment apartment;
    EXPECT_EQ(CoRegisterClassObject(kTinyClass, nullptr, kInProcess, 1, &number), E_INVALIDARG);
    EXPECT_EQ(CoRegisterClassObject(kTinyClass, &factory, kInProcess, 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(CoRevokeClassObject(0), static_cast<HRESULT>(0x800401FB));
    EXPECT_EQ(factory.references, 0u);
}

TEST(ClassObjects, MayBeRevokedWhileOthersCreate) {
    const Apartment apartment;
    CountedFactory factory;
    std::atomic<bool> ended = false;
    std::thread creators[4];
    std::atomic<int> created = 0;
    for (auto& creator : creators) {
        creator = std::thread([&] {
            while (!ended) {
                IUnknown* object = nullptr;
                const HRESULT result =
                    CoCreateInstance(kTinyClass, nullptr, kInProcess, IID_IUnknown, reinterpret_cast<void**>(&object));
                if (SUCCEEDED(result)) {
                    object->Release();
                    ++created;
                } else {
                    EXPECT_EQ(result, kNotRegistered);
                }
            }
        });
    }
    for (int i = 0; i < 2000 || created < 100; ++i) {
        const Registration registration(factory, kInProcess, REGCLS_MULTIPLEUSE);
        if (i % 16 == 0) Sleep(0);
    }
    ended = true;
    for (auto& creator : creators)
        creator.join();
    EXPECT_EQ(factory.references, 0u);
    EXPECT_EQ(factory.alive, 0);
}
