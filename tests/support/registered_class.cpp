#include "support/registered_class.h"

namespace tk::test {

class RegisteredClass::Factory final : public IClassFactory {
public:
    struct Announced {
        Held<IUnknown> object;
        HRESULT result;
    };

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        ++created_;
        if (announced_.empty()) return E_UNEXPECTED;
        const Announced next = announced_.front();
        announced_.pop_front();
        return next.object ? next.object->QueryInterface(iid, object) : next.result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    std::deque<Announced> announced_;
    int created_ = 0;

private:
    ULONG references_ = 1;
};

RegisteredClass::RegisteredClass(REFCLSID clsid) : factory_(new Factory) {
    CoRegisterClassObject(clsid, factory_.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_);
}

RegisteredClass::~RegisteredClass() {
    CoRevokeClassObject(cookie_);
}

void RegisteredClass::Give(IUnknown* object) {
    object->AddRef();
    factory_->announced_.push_back({Held<IUnknown>(object), S_OK});
}

void RegisteredClass::Refuse(HRESULT result) {
    factory_->announced_.push_back({Held<IUnknown>(), result});
}

int RegisteredClass::Created() const {
    return factory_->created_;
}

}  // namespace tk::test
