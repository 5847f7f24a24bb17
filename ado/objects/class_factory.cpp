// The two entry points of the server, and the class objects they give out.
#include <windows.h>

#include <objbase.h>

#include <new>

#include "ado/objects/command_object.h"
#include "ado/objects/connection.h"
#include "ado/objects/module.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

constexpr CLSID ClassId(ULONG number) {
    return {number, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
}

template <class T>
IDispatch* Create() {
    return new T();
}

struct ClassRow {
    CLSID id;
    IDispatch* (*create)();
};

constexpr ClassRow kClasses[] = {
    {ClassId(0x00000507), &Create<CommandObject>},
    {ClassId(0x0000050B), &Create<ParameterObject>},
    {ClassId(0x00000514), &Create<Connection>},
    {ClassId(0x00000535), &Create<Recordset>},
};

/// Lives as long as the server, so it counts nothing but what it makes.
class ClassFactory final : public IClassFactory {
public:
    explicit constexpr ClassFactory(const ClassRow& row) noexcept : row_(row) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!(iid == IID_IUnknown) && !(iid == IID_IClassFactory)) return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        try {
            const Ref<IDispatch> made = Ref<IDispatch>::Adopt(row_.create());
            return made->QueryInterface(iid, object);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        moduleUses.fetch_add(lock ? 1 : -1);
        return S_OK;
    }
    using IUnknown::QueryInterface;

private:
    const ClassRow& row_;
};

}  // namespace
}  // namespace tk::ado

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    using tk::ado::kClasses;
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    using Factory = tk::ado::ClassFactory;
    static Factory factories[] = {Factory(kClasses[0]), Factory(kClasses[1]), Factory(kClasses[2]),
                                  Factory(kClasses[3])};
    static_assert(std::size(factories) == std::size(kClasses));
    for (std::size_t i = 0; i < std::size(kClasses); ++i) {
        if (kClasses[i].id == clsid) return factories[i].QueryInterface(iid, object);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    return tk::ado::moduleUses.load() == 0 ? S_OK : S_FALSE;
}
