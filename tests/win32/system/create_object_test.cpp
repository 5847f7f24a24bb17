#include <dlfcn.h>
#include <time.h>

#include "tests/win32/system/counted_factory.h"
#include "tests/win32/system/support.h"
#include "tests/win32/system/tiny_server.h"

using namespace tk::test;

namespace {

constexpr auto kUnavailable = static_cast<HRESULT>(0x800706BA);

HRESULT Create(REFCLSID clsid, DWORD context = CLSCTX_SERVER, REFIID iid = IID_IUnknown, IUnknown* outer = nullptr) {
    IUnknown* object = nullptr;
    const HRESULT result = CoCreateInstance(clsid, outer, context, iid, reinterpret_cast<void**>(&object));
    EXPECT_EQ(object != nullptr, SUCCEEDED(result));
    if (object != nullptr) object->Release();
    return result;
}

template <class Function>
Function* OfServer(const char* name) {
    void* module = dlopen(TINY_SERVER, RTLD_NOW);
    auto* function = reinterpret_cast<Function*>(dlsym(module, name));
    dlclose(module);  // the test's own classes keep it
    return function;
}

/// A registry with the test's server under its two classes, and an apartment.
class CreateObject : public ::testing::Test {
protected:
    void Register(const std::string& server) {
        WriteFile(folder_ / "classes.conf", std::string(kTinyClassText) + " Tiny.Class " + server + "\n" +
                                                kRefusedClassText + " - " + server + "\n");
    }

    TempFolder folder_;
    Variable classes_{"TKKERNEL_CLASSES", folder_ / "classes.conf"};
    Variable config_{"XDG_CONFIG_HOME", "/nonexistent"};
    Apartment apartment_;
};

}  // namespace

TEST_F(CreateObject, LoadsTheServerThatTheRegistryNames) {
    Register(TINY_SERVER);
    EXPECT_EQ(Create(kTinyClass), S_OK);
    EXPECT_EQ(OfServer<int()>("TinyAlive")(), 0);
    EXPECT_EQ(Create(kTinyClass, CLSCTX_INPROC_SERVER), S_OK);
    EXPECT_EQ(Create(kTinyClass, CLSCTX_LOCAL_SERVER), static_cast<HRESULT>(0x80040154));
    EXPECT_EQ(Create(kTinyClass, CLSCTX_INPROC_HANDLER), static_cast<HRESULT>(0x80040154));
    EXPECT_EQ(Create(kTinyClass, 0), E_INVALIDARG);
}

TEST_F(CreateObject, LoadsAServerNamedRelativeToTheRegistryFile) {
    symlink(TINY_SERVER, (folder_ / "near.so").c_str());
    Register("./near.so");
    EXPECT_EQ(Create(kTinyClass), S_OK);
}

TEST_F(CreateObject, PassesOnWhatTheClassObjectSays) {
    Register(TINY_SERVER);
    CountedFactory outer;
    EXPECT_EQ(Create(kTinyClass, CLSCTX_SERVER, IID_IDispatch), E_NOINTERFACE);
    EXPECT_EQ(Create(kTinyClass, CLSCTX_SERVER, IID_IUnknown, &outer), static_cast<HRESULT>(0x80040110));
    EXPECT_EQ(Create(kRefusedClass), static_cast<HRESULT>(0x80040111));
}

TEST_F(CreateObject, TellsWhyAServerCannotBeUsed) {
    EXPECT_EQ(Create(kTinyClass), static_cast<HRESULT>(0x80040154)) << "not registered";
    Register(folder_ / "missing.so");
    EXPECT_EQ(Create(kTinyClass), static_cast<HRESULT>(0x8007007E)) << "no such file";
    Register("tk-no-such-library.so");
    EXPECT_EQ(Create(kTinyClass), static_cast<HRESULT>(0x8007007E)) << "unknown to the loader";
    WriteFile(folder_ / "broken.so", "this is text");
    Register(folder_ / "broken.so");
    EXPECT_EQ(Create(kTinyClass), static_cast<HRESULT>(0x800700C1)) << "no shared object";
    Register(NOT_A_SERVER);
    EXPECT_EQ(Create(kTinyClass), static_cast<HRESULT>(0x800401F9)) << "no server";
    Register(TINY_SERVER);
    EXPECT_EQ(Create(kTinyClass), S_OK) << "a failure is not remembered";
}

TEST_F(CreateObject, AsksTheServerOnceAndLetsItsClassObjectGoAtTheEnd) {
    Register(TINY_SERVER);
    ASSERT_EQ(Create(kTinyClass), S_OK);
    const auto asked = OfServer<int()>("TinyAsked");
    const auto references = OfServer<int()>("TinyReferences");
    const int before = asked();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(Create(kTinyClass), S_OK);
    EXPECT_EQ(asked(), before);
    EXPECT_GT(references(), 0);
    CoUninitialize();
    EXPECT_EQ(references(), 0);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(Create(kTinyClass), S_OK);
    EXPECT_EQ(asked(), before + 1);
}

TEST_F(CreateObject, FromManyThreadsAtOnce) {
    Register(TINY_SERVER);
    std::thread threads[8];
    for (auto& thread : threads) {
        thread = std::thread([] {
            for (int i = 0; i < 300; ++i)
                EXPECT_EQ(Create(i % 10 == 0 ? kRefusedClass : kTinyClass),
                          i % 10 == 0 ? CLASS_E_CLASSNOTAVAILABLE : S_OK);
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(OfServer<int()>("TinyAlive")(), 0);
}

TEST_F(CreateObject, GivesClassObjectsOutAsWell) {
    Register(TINY_SERVER);
    IClassFactory* factory = nullptr;
    ASSERT_EQ(
        CoGetClassObject(kTinyClass, CLSCTX_SERVER, nullptr, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
        S_OK);
    IUnknown* object = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)), S_OK);
    object->Release();
    factory->Release();
    EXPECT_EQ(CoGetClassObject(kTinyClass, CLSCTX_SERVER, nullptr, IID_IUnknown, nullptr), E_INVALIDARG);
    EXPECT_EQ(CoCreateInstance(kTinyClass, nullptr, CLSCTX_SERVER, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(CreateObject, HandsOutSeveralInterfacesAtOnce) {
    Register(TINY_SERVER);
    static const struct {
        const char* label;
        const IID* first;
        const IID* second;
        HRESULT result;
        HRESULT firstResult;
        HRESULT secondResult;
    } kRows[] = {
        {"both", &IID_IUnknown, &IID_IUnknown, S_OK, S_OK, S_OK},
        {"one", &IID_IUnknown, &IID_IDispatch, 0x00080012, S_OK, E_NOINTERFACE},
        {"none", &IID_IDispatch, &IID_IDispatch, E_NOINTERFACE, E_NOINTERFACE, E_NOINTERFACE},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        MULTI_QI results[2] = {{row.first, nullptr, 1}, {row.second, nullptr, 1}};
        EXPECT_EQ(CoCreateInstanceEx(kTinyClass, nullptr, CLSCTX_SERVER, nullptr, 2, results), row.result);
        EXPECT_EQ(results[0].hr, row.firstResult);
        EXPECT_EQ(results[1].hr, row.secondResult);
        for (MULTI_QI& entry : results) {
            EXPECT_EQ(entry.pItf != nullptr, SUCCEEDED(entry.hr));
            if (entry.pItf != nullptr) entry.pItf->Release();
        }
    }
    EXPECT_EQ(OfServer<int()>("TinyAlive")(), 0);
    MULTI_QI failed[1] = {{&IID_IUnknown, nullptr, 1}};
    EXPECT_EQ(CoCreateInstanceEx(kRefusedClass, nullptr, CLSCTX_SERVER, nullptr, 1, failed), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(failed[0].hr, CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(CoCreateInstanceEx(kTinyClass, nullptr, CLSCTX_SERVER, nullptr, 0, failed), E_INVALIDARG);
    EXPECT_EQ(CoCreateInstanceEx(kTinyClass, nullptr, CLSCTX_SERVER, nullptr, 1, nullptr), E_INVALIDARG);
    MULTI_QI used[1] = {{&IID_IUnknown, reinterpret_cast<IUnknown*>(8), 0}};
    EXPECT_EQ(CoCreateInstanceEx(kTinyClass, nullptr, CLSCTX_SERVER, nullptr, 1, used), E_INVALIDARG);
}

TEST_F(CreateObject, HereForThisMachineAndNotForAnother) {
    Register(TINY_SERVER);
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    const std::string own = name;
    const std::u16string wideOwn(own.begin(), own.end());
    const struct {
        const char* label;
        std::u16string machine;
        HRESULT result;
    } kRows[] = {
        {"no name", u"", S_OK},
        {"localhost", u"LocalHost", S_OK},
        {"loopback", u"\\\\127.0.0.1", S_OK},
        {"own name", wideOwn, S_OK},
        {"own name, as a server", u"\\\\" + wideOwn, S_OK},
        {"another", u"warehouse", kUnavailable},
        {"another, as a server", u"\\\\10.1.2.3", kUnavailable},
    };
    for (auto row : kRows) {
        SCOPED_TRACE(row.label);
        COSERVERINFO server{0, row.machine.data(), nullptr, 0};
        MULTI_QI results[1] = {{&IID_IUnknown, nullptr, 1}};
        EXPECT_EQ(CoCreateInstanceEx(kTinyClass, nullptr, CLSCTX_SERVER, &server, 1, results), row.result);
        EXPECT_EQ(results[0].hr, row.result);
        if (results[0].pItf != nullptr) results[0].pItf->Release();
    }
}

TEST(CreateObjectOutside, NeedsAStartedProcess) {
    constexpr auto kNotStarted = static_cast<HRESULT>(0x800401F0);
    EXPECT_EQ(Create(kTinyClass), kNotStarted);
    void* object = nullptr;
    EXPECT_EQ(CoGetClassObject(kTinyClass, CLSCTX_SERVER, nullptr, IID_IUnknown, &object), kNotStarted);
    OLECHAR machine[] = u"warehouse";
    COSERVERINFO server{0, machine, nullptr, 0};
    MULTI_QI results[1] = {{&IID_IUnknown, nullptr, 1}};
    EXPECT_EQ(CoCreateInstanceEx(kTinyClass, nullptr, CLSCTX_SERVER, &server, 1, results), kNotStarted);
    EXPECT_EQ(results[0].hr, kNotStarted);
}

TEST_F(CreateObject, IsCheapOnceTheServerIsThere) {
    Register(TINY_SERVER);
    constexpr int kCount = 20'000;
    ASSERT_EQ(Create(kTinyClass), S_OK);
    timespec from{};
    timespec to{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &from);
    for (int i = 0; i < kCount; ++i) {
        IUnknown* object = nullptr;
        CoCreateInstance(kTinyClass, nullptr, CLSCTX_SERVER, IID_IUnknown, reinterpret_cast<void**>(&object));
        object->Release();
    }
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &to);
    const double each =
        (static_cast<double>(to.tv_sec - from.tv_sec) * 1e9 + static_cast<double>(to.tv_nsec - from.tv_nsec)) / kCount;
    RecordProperty("nanoseconds_each", static_cast<int>(each));
    EXPECT_LT(each, 50'000) << "no file is read for each object";
}

TEST(CoDisconnectObject, FindsNothingToEnd) {
    CountedFactory object;
    EXPECT_EQ(CoDisconnectObject(&object, 0), S_OK);
    EXPECT_EQ(CoDisconnectObject(nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(CoDisconnectObject(&object, 1), E_INVALIDARG);
    EXPECT_EQ(object.references, 0u);
}

namespace {

class RunnableObject : public IRunnableObject {
public:
    virtual ~RunnableObject() = default;
    HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
        const bool known = riid == IID_IUnknown || riid == IID_IRunnableObject;
        *ppvObject = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    HRESULT GetRunningClass(LPCLSID) override { return E_NOTIMPL; }
    HRESULT Run(IBindCtx*) override { return ++runs == 1 ? S_OK : E_FAIL; }
    BOOL IsRunning() override { return runs > 0; }
    HRESULT LockRunning(BOOL, BOOL) override { return S_OK; }
    HRESULT SetContainedObject(BOOL) override { return S_OK; }

    int runs = 0;
};

}  // namespace

TEST(OleRun, RunsWhatCanRunAndAcceptsTheRest) {
    RunnableObject runnable;
    EXPECT_EQ(OleRun(&runnable), S_OK);
    EXPECT_EQ(runnable.runs, 1);
    EXPECT_EQ(OleRun(&runnable), E_FAIL);
    CountedFactory plain;
    EXPECT_EQ(OleRun(&plain), S_OK);
    EXPECT_EQ(plain.references, 0u);
    EXPECT_EQ(OleRun(nullptr), E_INVALIDARG);
}
