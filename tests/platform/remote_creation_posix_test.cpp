// Creation on a named machine: what the platform is asked, byte for byte. This program stands in front of the host
// functions and of creation, and brings the objects of other machines itself.
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ole2.h>
#include <tkwin32/remote_activation.h>
#include <winsock2.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/registered_class.h"
#include "support/scripted_object.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"
#include "util/platform_calls.h"

namespace {

using namespace tk::test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr CLSID kClass = {0x5B3A2D21, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
constexpr IID kOffered = {0x5B3A2D22, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};

/// The machine as the tests want it, and what was asked of it.
struct Machine {
    std::string name = "Stock1";
    int nameError = 0;
    std::vector<std::string> addresses = {"10.20.30.40", "10.20.30.41"};
    bool known = true;
    short family = AF_INET;
    std::vector<std::string> calls;
};
Machine* machine = nullptr;

}  // namespace

__attribute__((visibility("default"))) int gethostname(char* name, std::size_t length) noexcept {
    if (machine == nullptr) {
        static const auto own = reinterpret_cast<int (*)(char*, std::size_t)>(dlsym(RTLD_NEXT, "gethostname"));
        return own(name, length);
    }
    machine->calls.push_back("gethostname " + std::to_string(length));
    if (machine->nameError != 0) {
        errno = machine->nameError;
        return -1;
    }
    std::strcpy(name, machine->name.c_str());
    return 0;
}

hostent* TkGetHostByName(const char* name) {
    static in_addr numbers[4];
    static char* pointers[5];
    static char* noAliases[1] = {nullptr};
    static hostent entry;
    machine->calls.push_back(std::string("gethostbyname ") + name);
    if (!machine->known) return nullptr;
    std::size_t count = 0;
    for (const std::string& address : machine->addresses) {
        inet_aton(address.c_str(), &numbers[count]);
        pointers[count] = reinterpret_cast<char*>(&numbers[count]);
        ++count;
    }
    pointers[count] = nullptr;
    entry = {machine->name.data(), noAliases, machine->family, 4, pointers};
    return &entry;
}

HRESULT CoCreateInstance(REFCLSID clsid, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object) {
    static const auto own = reinterpret_cast<HRESULT (*)(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*)>(
        dlsym(RTLD_NEXT, "CoCreateInstance"));
    if (machine != nullptr) machine->calls.push_back("create " + std::to_string(context));
    return own(clsid, outer, context, iid, object);
}

HRESULT CoCreateInstanceEx(REFCLSID clsid, IUnknown* outer, DWORD context, COSERVERINFO* server, DWORD count,
                           MULTI_QI* results) {
    static const auto own = reinterpret_cast<HRESULT (*)(REFCLSID, IUnknown*, DWORD, COSERVERINFO*, DWORD, MULTI_QI*)>(
        dlsym(RTLD_NEXT, "CoCreateInstanceEx"));
    if (machine != nullptr) machine->calls.push_back("create elsewhere " + std::to_string(context));
    return own(clsid, outer, context, server, count, results);
}

namespace {

std::string Narrow(const OLECHAR* text) {
    if (text == nullptr) return "(null)";
    return std::string(CString(text));
}

std::string Narrow(const USHORT* text, ULONG length) {
    if (text == nullptr) return "(null) " + std::to_string(length);
    return std::string(CString(reinterpret_cast<const OLECHAR*>(text), static_cast<int>(length)));
}

std::string Described(const COAUTHIDENTITY* identity) {
    if (identity == nullptr) return "nobody";
    return "user=" + Narrow(identity->User, identity->UserLength) +
           " domain=" + Narrow(identity->Domain, identity->DomainLength) +
           " password=" + Narrow(identity->Password, identity->PasswordLength) +
           " flags=" + std::to_string(identity->Flags);
}

std::string Described(const COAUTHINFO& info) {
    return "service=" + std::to_string(info.dwAuthnSvc) + " authorisation=" + std::to_string(info.dwAuthzSvc) +
           " principal=" + Narrow(info.pwszServerPrincName) + " level=" + std::to_string(info.dwAuthnLevel) +
           " impersonation=" + std::to_string(info.dwImpersonationLevel) +
           " capabilities=" + std::to_string(info.dwCapabilities) + " " + Described(info.pAuthIdentityData);
}

/// The security of one proxy, which it notes down.
class ProxySecurity final : public IClientSecurity {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown* proxy, DWORD service, DWORD authorisation, OLECHAR* principal,
                                         DWORD level, DWORD impersonation, void* identity,
                                         DWORD capabilities) override {
        const COAUTHINFO info = {service,     authorisation, principal,
                                 level,       impersonation, static_cast<COAUTHIDENTITY*>(identity),
                                 capabilities};
        blankets.push_back(Described(info));
        lastProxy = proxy;
        return result;
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }

    HRESULT result = S_OK;
    IUnknown* lastProxy = nullptr;
    std::vector<std::string> blankets;
};

/// The other machine: hands out one object, or refuses.
struct OtherMachine {
    IUnknown* object = nullptr;
    HRESULT refuses = S_OK;
    std::string server;
    std::string authentication;
    bool reservedAreZero = false;
    std::vector<IID> asked;
};
OtherMachine* other = nullptr;

HRESULT Activate(REFCLSID clsid, DWORD context, const COSERVERINFO* server, DWORD count, MULTI_QI* results) {
    EXPECT_TRUE(IsEqualGUID(clsid, kClass));
    EXPECT_EQ(context, 0x14u);
    other->server = Narrow(server->pwszName);
    other->authentication = Described(*server->pAuthInfo);
    other->reservedAreZero = server->dwReserved1 == 0 && server->dwReserved2 == 0;
    for (DWORD i = 0; i < count; ++i)
        other->asked.push_back(*results[i].pIID);
    if (FAILED(other->refuses)) return other->refuses;
    HRESULT all = S_OK;
    for (DWORD i = 0; i < count; ++i) {
        results[i].hr = other->object->QueryInterface(*results[i].pIID, reinterpret_cast<void**>(&results[i].pItf));
        if (FAILED(results[i].hr)) all = CO_S_NOTALLINTERFACES;
    }
    return all;
}

constexpr char kWithAccount[] =
    "service=10 authorisation=0 principal=(null) level=2 impersonation=3 capabilities=0 "
    "user=李 domain=STOCK password=pw flags=2";
constexpr char kWithoutAccount[] =
    "service=10 authorisation=0 principal=(null) level=2 impersonation=3 capabilities=0 nobody";
constexpr char kLiteral[] = "10.9.8.7";

class RemoteCreation : public testing::Test {
protected:
    RemoteCreation() {
        machine = &machine_;
        other = &other_;
        other_.object = &object_;
        before_ = SetRemoteActivator(&Activate);
    }
    ~RemoteCreation() override {
        SetRemoteActivator(before_);
        other = nullptr;
        machine = nullptr;
        EXPECT_EQ(object_.References(), 1U) << "a reference was not given back";
    }

    void OfferSecurity() { object_.Offer(IID_IClientSecurity, &security_); }

    Apartment apartment_;
    RegisteredClass classes_{kClass};
    Held<ScriptedObject> held_ = ScriptedObject::Make("object", nullptr);
    ScriptedObject& object_ = *held_.Get();
    ProxySecurity security_;
    Machine machine_;
    OtherMachine other_;
    RemoteActivator before_ = nullptr;
};

using LocalHostOfAName = RemoteCreation;

TEST_F(LocalHostOfAName, NeedsNoLookUpForTheTwoFixedNames) {
    for (const char* host : {"127.0.0.1", "localhost", "LOCALHOST", "LocalHost"}) {
        SCOPED_TRACE(host);
        EXPECT_EQ(LocalHost(host), 1);
    }
    EXPECT_THAT(machine_.calls, IsEmpty());
}

TEST_F(LocalHostOfAName, ComparesWithTheOwnNameBeforeAskingForAddresses) {
    EXPECT_EQ(LocalHost("stock1"), 1);
    EXPECT_EQ(LocalHost("STOCK1"), 1);
    EXPECT_THAT(machine_.calls, ElementsAre("gethostname 32", "gethostname 32"));
}

TEST_F(LocalHostOfAName, ComparesWithEveryAddressOfTheOwnName) {
    EXPECT_EQ(LocalHost("10.20.30.40"), 1);
    EXPECT_EQ(LocalHost("10.20.30.41"), 1);
    EXPECT_EQ(LocalHost("10.20.30.4"), 0);
    EXPECT_EQ(LocalHost("10.20.30.411"), 0);
    EXPECT_EQ(LocalHost("127.0.0.2"), 0);
    EXPECT_EQ(LocalHost("stock2"), 0);
    EXPECT_EQ(LocalHost("stock"), 0);
    EXPECT_EQ(LocalHost(""), 0);
    EXPECT_EQ(LocalHost(nullptr), 0);
    machine_.family = AF_INET6;
    EXPECT_EQ(LocalHost("10.20.30.40"), 0) << "no addresses of this kind";
    machine_.family = AF_INET;
    machine_.addresses.clear();
    EXPECT_EQ(LocalHost("10.20.30.40"), 0);
    machine_.name = "AZ-az";
    EXPECT_EQ(LocalHost("az-AZ"), 1);
    machine_.name = "@[`{";
    EXPECT_EQ(LocalHost("`{@["), 0) << "no letters";
}

TEST_F(LocalHostOfAName, IsUnknownWhenTheMachineDoesNotKnowItself) {
    machine_.known = false;
    EXPECT_EQ(LocalHost("stock2"), -1);
    EXPECT_EQ(LocalHost("stock1"), 1) << "the name is known before the addresses are asked for";
    machine_.nameError = ENAMETOOLONG;
    EXPECT_EQ(LocalHost("stock1"), -1);
    EXPECT_EQ(LocalHost("localhost"), 1);
}

using AddressesOfAName = RemoteCreation;

TEST_F(AddressesOfAName, StandInTheirOrderWithSemicolonsBetween) {
    EXPECT_STREQ(GetHostAddr("stock1"), "10.20.30.40;10.20.30.41");
    EXPECT_THAT(machine_.calls, ElementsAre("gethostbyname stock1"));
    machine_.addresses.pop_back();
    EXPECT_STREQ(GetHostAddr("stock1"), "10.20.30.40");
    machine_.addresses.clear();
    EXPECT_STREQ(GetHostAddr("stock1"), "");
    machine_.family = AF_INET6;
    machine_.addresses = {"10.20.30.40"};
    EXPECT_STREQ(GetHostAddr("stock1"), "") << "none of this kind";
    machine_.known = false;
    EXPECT_STREQ(GetHostAddr("stock1"), "");
}

TEST_F(AddressesOfAName, AreThoseOfTheComputerWithoutAName) {
    const std::string own = "gethostbyname " + std::string(GetComputerNameA());
    EXPECT_STREQ(GetHostAddr(nullptr), "10.20.30.40;10.20.30.41");
    EXPECT_STREQ(GetHostAddr(""), "10.20.30.40;10.20.30.41");
    EXPECT_THAT(machine_.calls, ElementsAre(own, own));
    EXPECT_STREQ(GetHostInfor(), GetComputerNameA() + ":10.20.30.40;10.20.30.41");
    machine_.known = false;
    EXPECT_STREQ(GetHostInfor(), GetComputerNameA()) << "no colon without addresses";
}

TEST_F(AddressesOfAName, AreAskedForByItsFirst79Bytes) {
    const std::string longest(79, 'x');
    GetHostAddr(longest.c_str());
    GetHostAddr((longest + "y").c_str());
    EXPECT_THAT(machine_.calls, ElementsAre("gethostbyname " + longest, "gethostbyname " + longest));
    machine_.calls.clear();
    const std::string before(78, 'x');
    GetHostAddr((before + "库").c_str());
    GetHostAddr(("x" + before.substr(1, 76) + "库存").c_str());
    EXPECT_THAT(machine_.calls, ElementsAre("gethostbyname " + before, "gethostbyname x" + before.substr(1, 76) + "库"))
        << "whole characters";
}

TEST_F(RemoteCreation, IsLocalForTheOwnMachine) {
    for (const char* host :
         {static_cast<const char*>(nullptr), "", "127.0.0.1", "LocalHost", "stock1", "10.20.30.41"}) {
        SCOPED_TRACE(host != nullptr ? host : "null");
        classes_.Give(&object_);
        machine_.calls.clear();
        const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, host, "li", "STOCK", "pw"));
        EXPECT_EQ(created.Get(), static_cast<IUnknown*>(&object_));
        EXPECT_EQ(machine_.calls.back(), "create 21") << "in-process, local or remote";
    }
    EXPECT_EQ(other_.server, "") << "no other machine was asked";
    EXPECT_EQ(object_.Asked(IID_IClientSecurity), 0) << "the account does not count here";
}

TEST_F(RemoteCreation, LeavesTheCodeOfALocalFailure) {
    classes_.Refuse(E_ACCESSDENIED);
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
}

TEST_F(RemoteCreation, TellsTheMachineTheAccountAndTheLevels) {
    OfferSecurity();
    {
        const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, kLiteral, "李", "STOCK", "pw"));
        EXPECT_EQ(created.Get(), static_cast<IUnknown*>(&object_));
    }
    EXPECT_EQ(other_.server, kLiteral) << "the name as it was given";
    EXPECT_EQ(other_.authentication, kWithAccount);
    EXPECT_TRUE(other_.reservedAreZero);
    ASSERT_EQ(other_.asked.size(), 1u);
    EXPECT_TRUE(IsEqualGUID(other_.asked[0], IID_IDispatch));
    EXPECT_THAT(security_.blankets, ElementsAre(kWithAccount)) << "calls through the object run under it too";
    EXPECT_EQ(security_.lastProxy, static_cast<IUnknown*>(&object_));
    EXPECT_EQ(machine_.calls.back(), "create elsewhere 20");
}

TEST_F(RemoteCreation, IsNotLocalWhereTheMachineDoesNotKnowItself) {
    machine_.known = false;
    const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", nullptr, nullptr, nullptr));
    EXPECT_EQ(other_.server, "Stock2");
    machine_.nameError = ENAMETOOLONG;
    const Held<IUnknown> second(CreateIDispatchEx(kClass, IID_IDispatch, "Stock3", nullptr, nullptr, nullptr));
    EXPECT_EQ(other_.server, "Stock3");
}

TEST_F(RemoteCreation, WithoutAUserSaysAndSetsNothing) {
    OfferSecurity();
    for (const char* user : {static_cast<const char*>(nullptr), ""}) {
        const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", user, "STOCK", "pw"));
        EXPECT_NE(created.Get(), nullptr);
        EXPECT_EQ(other_.server, "Stock2");
        EXPECT_EQ(other_.authentication, kWithoutAccount);
    }
    EXPECT_THAT(security_.blankets, IsEmpty());
}

TEST_F(RemoteCreation, LeavesOutEmptyPartsOfTheAccount) {
    const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", "li", nullptr, ""));
    EXPECT_EQ(other_.authentication,
              "service=10 authorisation=0 principal=(null) level=2 impersonation=3 capabilities=0 "
              "user=li domain=(null) 0 password=(null) 0 flags=2");
}

TEST_F(RemoteCreation, ByNameFindsTheClassFirst) {
    EXPECT_EQ(CreateIDispatchEx("No.Such.Class", IID_IDispatch, "Stock2", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(CO_E_CLASSSTRING));
    EXPECT_EQ(CreateIDispatchEx(static_cast<const char*>(nullptr), IID_IDispatch, "Stock2", nullptr, nullptr, nullptr),
              nullptr);
    EXPECT_EQ(other_.server, "");
}

TEST_F(RemoteCreation, LeavesTheCodeOfTheOtherMachine) {
    other_.refuses = E_ACCESSDENIED;
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
    other_.refuses = S_OK;
    EXPECT_EQ(CreateIDispatchEx(kClass, kOffered, "Stock2", "li", nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_NOINTERFACE));
}

TEST_F(RemoteCreation, LooksAtTheEntryOfASuccess) {
    SetRemoteActivator([](REFCLSID, DWORD, const COSERVERINFO*, DWORD, MULTI_QI* results) {
        results[0].hr = E_ACCESSDENIED;
        return S_OK;
    });
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED)) << "the entry's own code";
    SetRemoteActivator([](REFCLSID, DWORD, const COSERVERINFO*, DWORD, MULTI_QI* results) {
        results[0].hr = S_OK;
        return S_OK;
    });
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_NOINTERFACE)) << "a success without an object";
    SetRemoteActivator([](REFCLSID, DWORD, const COSERVERINFO*, DWORD, MULTI_QI* results) {
        results[0] = {results[0].pIID, other->object, E_ACCESSDENIED};
        other->object->AddRef();
        return S_OK;
    });
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(object_.References(), 1U) << "an object of a failure goes back";
}

TEST_F(RemoteCreation, IsUnavailableWithoutAWayToTheMachine) {
    SetRemoteActivator(nullptr);
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 0x800706BAu);
}

TEST_F(RemoteCreation, GivesNoObjectWhoseAccountCannotBeSet) {
    OfferSecurity();
    security_.result = E_ACCESSDENIED;
    EXPECT_EQ(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_EQ(object_.References(), 1U);
}

TEST_F(RemoteCreation, OfAnObjectThatIsNoProxyNeedsNoAccount) {
    const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr));
    EXPECT_EQ(created.Get(), static_cast<IUnknown*>(&object_));
    EXPECT_EQ(object_.Asked(IID_IClientSecurity), 1);
}

TEST_F(RemoteCreation, OfManyEntriesIsOneRequestBehindTwoBackslashes) {
    OfferSecurity();
    MULTI_QI results[3];
    std::memset(results, 0xCC, sizeof(results));
    EXPECT_EQ(CreateIDispatchEx(results, 3, kClass, IID_IDispatch, "Stock2", "李", "STOCK", "pw"), 1);
    EXPECT_EQ(other_.server, "\\\\Stock2");
    EXPECT_EQ(other_.authentication, kWithAccount);
    EXPECT_EQ(other_.asked.size(), 3u);
    EXPECT_THAT(security_.blankets, ElementsAre(kWithAccount, kWithAccount, kWithAccount));
    for (MULTI_QI& result : results) {
        EXPECT_EQ(result.hr, S_OK);
        ASSERT_EQ(result.pItf, static_cast<IUnknown*>(&object_));
        result.pItf->Release();
    }
    EXPECT_EQ(std::count(machine_.calls.begin(), machine_.calls.end(), "create elsewhere 20"), 1);
}

TEST_F(RemoteCreation, OfManyEntriesPassesOverThoseWithoutAnObject) {
    OfferSecurity();
    MULTI_QI results[2];
    EXPECT_EQ(CreateIDispatchEx(results, 2, kClass, kOffered, "Stock2", "li", nullptr, nullptr), 1);
    EXPECT_EQ(results[0].hr, E_NOINTERFACE);
    EXPECT_EQ(results[0].pItf, nullptr);
    EXPECT_THAT(security_.blankets, IsEmpty());
}

TEST_F(RemoteCreation, OfManyEntriesPassesOverThoseThatAreOfNoUse) {
    OfferSecurity();
    SetRemoteActivator([](REFCLSID, DWORD, const COSERVERINFO*, DWORD, MULTI_QI* results) {
        results[0] = {results[0].pIID, other->object, E_FAIL};
        results[1] = {results[1].pIID, nullptr, S_OK};
        results[2] = {results[2].pIID, reinterpret_cast<IUnknown*>(16), S_OK};
        return static_cast<HRESULT>(CO_S_NOTALLINTERFACES);
    });
    MULTI_QI results[3];
    EXPECT_EQ(CreateIDispatchEx(results, 3, kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), 1);
    EXPECT_THAT(security_.blankets, IsEmpty());
    EXPECT_EQ(results[0].pItf, static_cast<IUnknown*>(&object_)) << "the entries stay as they came";
}

TEST_F(RemoteCreation, OfManyEntriesFailsWithAnAccountThatCannotBeSet) {
    OfferSecurity();
    security_.result = E_ACCESSDENIED;
    MULTI_QI results[2];
    EXPECT_EQ(CreateIDispatchEx(results, 2, kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_EQ(security_.blankets.size(), 1u);
    for (MULTI_QI& result : results)
        result.pItf->Release();
    security_.result = E_NOINTERFACE;
    EXPECT_EQ(CreateIDispatchEx(results, 2, kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), 1);
    for (MULTI_QI& result : results)
        result.pItf->Release();
}

TEST_F(RemoteCreation, OfManyEntriesLogsTheRefusalOfTheMachine) {
    PlatformCalls log;
    other_.refuses = static_cast<HRESULT>(0x800706BA);
    MULTI_QI results[2];
    EXPECT_EQ(CreateIDispatchEx(results, 2, kClass, IID_IDispatch, "Stock2", "li", nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), 0x800706BAu);
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_STREQ(LookupErrorText(0x800706BA), records[0].strings.at(0).c_str());
    EXPECT_EQ(records[0].strings.at(2), "") << "the last error is left out";
    EXPECT_EQ(records[0].type, EVENTLOG_ERROR_TYPE);
    EXPECT_EQ(results[0].pItf, nullptr);
    EXPECT_EQ(results[1].hr, static_cast<HRESULT>(0x800706BA));
}

TEST_F(RemoteCreation, OfManyEntriesHereMakesAnObjectForEach) {
    const auto second = ScriptedObject::Make("second", nullptr);
    classes_.Give(&object_);
    classes_.Refuse(E_OUTOFMEMORY);
    classes_.Give(second.Get());
    machine_.calls.clear();
    MULTI_QI results[3];
    EXPECT_EQ(CreateIDispatchEx(results, 3, kClass, IID_IDispatch, nullptr, "li", nullptr, nullptr), 1);
    EXPECT_THAT(machine_.calls, ElementsAre("create 21", "create 21", "create 21"));
    EXPECT_EQ(results[0].pItf, static_cast<IUnknown*>(&object_));
    EXPECT_EQ(results[1].pItf, nullptr);
    EXPECT_EQ(results[1].hr, E_OUTOFMEMORY);
    EXPECT_EQ(results[2].pItf, static_cast<IUnknown*>(second.Get()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_OUTOFMEMORY));
    results[0].pItf->Release();
    results[2].pItf->Release();

    classes_.Refuse(E_ACCESSDENIED);
    EXPECT_EQ(CreateIDispatchEx(results, 1, kClass, IID_IDispatch, "", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
}

TEST_F(RemoteCreation, OfNoEntriesIsAnInvalidArgument) {
    MULTI_QI result = {nullptr, nullptr, S_OK};
    EXPECT_EQ(CreateIDispatchEx(&result, 0L, kClass, IID_IDispatch, "Stock2", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_INVALIDARG));
    EXPECT_EQ(CreateIDispatchEx(&result, -1L, kClass, IID_IDispatch, "", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(CreateIDispatchEx(nullptr, 2L, kClass, IID_IDispatch, "", nullptr, nullptr, nullptr), 0);
}

TEST_F(RemoteCreation, SetsTheAccountOfAProxyLater) {
    OfferSecurity();
    EXPECT_EQ(AfxSetSecurity(&object_, "李", "STOCK", "pw"), 0);
    COAUTHIDENTITY identity = {};
    EXPECT_EQ(AfxSetSecurityEx(&object_, identity), 0);
    EXPECT_THAT(security_.blankets,
                ElementsAre(kWithAccount,
                            "service=10 authorisation=0 principal=(null) level=2 impersonation=3 capabilities=0 "
                            "user=(null) 0 domain=(null) 0 password=(null) 0 flags=0"));
    security_.result = E_ACCESSDENIED;
    EXPECT_EQ(AfxSetSecurity(&object_, nullptr, nullptr, nullptr), static_cast<long>(E_ACCESSDENIED));
}

}  // namespace
