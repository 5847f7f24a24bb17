// What an application does before every piece of work: making an object of a class, and asking whether a host is here.
//
// Input: a class object of this program whose objects do nothing, so that what is timed is the way to it; the fixed
// names of this machine. Each answer is checked before it is timed. The bar is 1 us for an object.
#include <benchmark/benchmark.h>

#include <ole2.h>

#include <cstdio>
#include <cstdlib>

#include "tkkernel/platform.h"

namespace {

constexpr CLSID kClass = {0x6E1D0A50, 0x52F5, 0x4F2A, {0x9A, 0x11, 0x01, 0x02, 0x03, 0x04, 0x05, 0xBB}};

/// Object and class object in one: it lives as long as the program.
class Object final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override {
        return QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "platform_bench: %s\n", what);
    std::exit(1);
}

/// The class, offered for as long as it lives.
class Offered {
public:
    Offered() {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        const HRESULT result =
            CoRegisterClassObject(kClass, &object_, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &number_);
        Require(SUCCEEDED(result), "the class cannot be offered");
    }
    Offered(const Offered&) = delete;
    Offered& operator=(const Offered&) = delete;
    ~Offered() {
        CoRevokeClassObject(number_);
        CoUninitialize();
    }

    IUnknown* Get() { return &object_; }

private:
    Object object_;
    DWORD number_ = 0;
};

void CreateByClass(benchmark::State& state) {
    Offered offered;
    Require(CreateIDispatch(kClass, IID_IUnknown) == offered.Get(), "not the object that was offered");
    for (auto _ : state) {
        IUnknown* object = CreateIDispatch(kClass, IID_IUnknown);
        benchmark::DoNotOptimize(object);
        object->Release();
    }
}
BENCHMARK(CreateByClass);

/// On this machine by name: the host test, then the creation.
void CreateHere(benchmark::State& state) {
    Offered offered;
    for (auto _ : state) {
        IUnknown* object = CreateIDispatchEx(kClass, IID_IUnknown, "localhost", nullptr, nullptr, nullptr);
        benchmark::DoNotOptimize(object);
        object->Release();
    }
}
BENCHMARK(CreateHere);

/// A class of the platform's own server, found in the class registry and kept.
void CreateFromRegistry(benchmark::State& state) {
    const Offered started;
    const CLSID link = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    IUnknown* first = CreateIDispatch(link, IID_IUnknown);
    Require(first != nullptr, "no shortcut");
    first->Release();
    for (auto _ : state) {
        IUnknown* object = CreateIDispatch(link, IID_IUnknown);
        benchmark::DoNotOptimize(object);
        object->Release();
    }
}
BENCHMARK(CreateFromRegistry);

void AskLocalHost(benchmark::State& state, const char* host) {
    Require(LocalHost(host) == 1, "this machine is not this machine");
    for (auto _ : state)
        benchmark::DoNotOptimize(LocalHost(host));
}
BENCHMARK_CAPTURE(AskLocalHost, Address, "127.0.0.1");
BENCHMARK_CAPTURE(AskLocalHost, Name, "LOCALHOST");

void AskHostAddress(benchmark::State& state) {
    Require(GetHostAddr("10.1.2.3") == "10.1.2.3", "an address is itself");
    for (auto _ : state)
        benchmark::DoNotOptimize(GetHostAddr("10.1.2.3"));
}
BENCHMARK(AskHostAddress);

}  // namespace

BENCHMARK_MAIN();
