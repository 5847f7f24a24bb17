// An in-process server for the tests: one class that works, one its class object does not know.
#include "tests/win32/system/tiny_server.h"
#include "tests/win32/system/counted_factory.h"

namespace {

tk::test::CountedFactory factory;
std::atomic<int> asked = 0;

}  // namespace

HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) {
    ++asked;
    *ppv = nullptr;
    if (rclsid != tk::test::kTinyClass) return CLASS_E_CLASSNOTAVAILABLE;
    return factory.QueryInterface(riid, ppv);
}

int TinyAsked() {
    return asked.load();
}
int TinyReferences() {
    return static_cast<int>(factory.references.load());
}
int TinyAlive() {
    return factory.alive.load();
}
DWORD TinyTickCount() {
    return GetTickCount();
}
