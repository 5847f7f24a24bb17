#include "tests/win32/system/counted_factory.h"
#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

HRESULT Settle(DWORD level = RPC_C_AUTHN_LEVEL_CONNECT, DWORD impersonation = RPC_C_IMP_LEVEL_IMPERSONATE) {
    return CoInitializeSecurity(nullptr, -1, nullptr, nullptr, level, impersonation, nullptr, EOAC_NONE, nullptr);
}

/// An object with security of its own, in both roles.
class GuardedObject : public IClientSecurity, public IServerSecurity {
public:
    virtual ~GuardedObject() = default;
    HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
        *ppvObject = nullptr;
        if (riid == IID_IClientSecurity || riid == IID_IUnknown) *ppvObject = static_cast<IClientSecurity*>(this);
        if (riid == IID_IServerSecurity) *ppvObject = static_cast<IServerSecurity*>(this);
        if (*ppvObject == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }

    HRESULT QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT SetBlanket(IUnknown* pProxy, DWORD dwAuthnSvc, DWORD dwAuthzSvc, OLECHAR*, DWORD dwAuthnLevel,
                       DWORD dwImpLevel, void* pAuthInfo, DWORD dwCapabilities) override {
        proxy = pProxy;
        service = dwAuthnSvc;
        authorisation = dwAuthzSvc;
        level = dwAuthnLevel;
        impersonation = dwImpLevel;
        identity = pAuthInfo;
        capabilities = dwCapabilities;
        return S_OK;
    }
    HRESULT CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }

    HRESULT QueryBlanket(DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void** pPrivs, DWORD*) override {
        static OLECHAR caller[] = u"STOCK\\liu";
        *pPrivs = caller;
        return S_OK;
    }
    HRESULT ImpersonateClient() override {
        impersonating = true;
        return S_OK;
    }
    HRESULT RevertToSelf() override {
        impersonating = false;
        return S_OK;
    }
    BOOL IsImpersonating() override { return impersonating; }

    ULONG references = 0;
    IUnknown* proxy = nullptr;
    DWORD service = 0, authorisation = 99, level = 0, impersonation = 0, capabilities = 99;
    void* identity = nullptr;
    bool impersonating = false;
};

}  // namespace

TEST(CallSecurity, IsSettledOnceWhileTheProcessIsStarted) {
    EXPECT_EQ(Settle(), static_cast<HRESULT>(0x800401F0));
    {
        const Apartment apartment;
        EXPECT_EQ(Settle(), S_OK);
        EXPECT_EQ(Settle(), static_cast<HRESULT>(0x80010119));
        EXPECT_EQ(OnThread([] { return Settle(); }), static_cast<HRESULT>(0x80010119));
    }
    const Apartment again;
    EXPECT_EQ(Settle(), S_OK) << "a new start of the process settles anew";
}

TEST(CallSecurity, RefusesLevelsAndListsThatDoNotExist) {
    const Apartment apartment;
    int reserved = 0;
    EXPECT_EQ(Settle(7), E_INVALIDARG);
    EXPECT_EQ(Settle(2, 5), E_INVALIDARG);
    EXPECT_EQ(CoInitializeSecurity(nullptr, 1, nullptr, nullptr, 2, 3, nullptr, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(CoInitializeSecurity(nullptr, -2, nullptr, nullptr, 2, 3, nullptr, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(CoInitializeSecurity(nullptr, -1, nullptr, &reserved, 2, 3, nullptr, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(CoInitializeSecurity(nullptr, -1, nullptr, nullptr, 2, 3, nullptr, 0, &reserved), E_INVALIDARG);
    EXPECT_EQ(Settle(), S_OK) << "what was refused settled nothing";
}

TEST(CallSecurity, OfAProxyIsAskedOfTheProxy) {
    COAUTHIDENTITY identity{};
    GuardedObject proxy;
    auto* object = static_cast<IClientSecurity*>(&proxy);
    EXPECT_EQ(CoSetProxyBlanket(object, 10, 0, nullptr, 2, 3, &identity, 0), S_OK);
    EXPECT_EQ(proxy.proxy, object);
    EXPECT_EQ(proxy.service, 10u);
    EXPECT_EQ(proxy.authorisation, 0u);
    EXPECT_EQ(proxy.level, 2u);
    EXPECT_EQ(proxy.impersonation, 3u);
    EXPECT_EQ(proxy.identity, &identity);
    EXPECT_EQ(proxy.capabilities, 0u);
    EXPECT_EQ(proxy.references, 0u);
}

TEST(CallSecurity, OfAnObjectOfThisProcessDoesNotExist) {
    CountedFactory plain;
    EXPECT_EQ(CoSetProxyBlanket(&plain, 10, 0, nullptr, 2, 3, nullptr, 0), static_cast<HRESULT>(0x80004002));
    EXPECT_EQ(CoSetProxyBlanket(nullptr, 10, 0, nullptr, 2, 3, nullptr, 0), E_INVALIDARG);
}

TEST(CallSecurity, OfACallIsThereOnlyWhileItIsServedAndOnItsThread) {
    constexpr auto kNoCall = static_cast<HRESULT>(0x80010117);
    void* caller = nullptr;
    EXPECT_EQ(CoImpersonateClient(), kNoCall);
    EXPECT_EQ(CoQueryClientBlanket(nullptr, nullptr, nullptr, nullptr, nullptr, &caller, nullptr), kNoCall);

    GuardedObject call;
    IUnknown* before = static_cast<IClientSecurity*>(&call);
    EXPECT_EQ(CoSwitchCallContext(static_cast<IClientSecurity*>(&call), &before), S_OK);
    EXPECT_EQ(before, nullptr);
    EXPECT_EQ(CoImpersonateClient(), S_OK);
    EXPECT_TRUE(call.impersonating);
    EXPECT_EQ(CoQueryClientBlanket(nullptr, nullptr, nullptr, nullptr, nullptr, &caller, nullptr), S_OK);
    EXPECT_EQ(static_cast<const OLECHAR*>(caller), std::u16string(u"STOCK\\liu"));
    EXPECT_EQ(OnThread([] { return CoRevertToSelf(); }), kNoCall);
    EXPECT_EQ(CoRevertToSelf(), S_OK);
    EXPECT_FALSE(call.impersonating);

    EXPECT_EQ(CoSwitchCallContext(nullptr, &before), S_OK);
    EXPECT_EQ(before, static_cast<IClientSecurity*>(&call));
    EXPECT_EQ(CoImpersonateClient(), kNoCall);
    EXPECT_EQ(CoSwitchCallContext(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(call.references, 0u);
}
