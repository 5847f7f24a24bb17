// What is asked of the platform's own classes to compose a connection, call by call.
#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <msdasc.h>
#include <oledb.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/registered_class.h"
#include "tkkernel/platform.h"

namespace {

using namespace tk::test;

using Calls = std::vector<std::string>;

constexpr CLSID kDataLinksClass = {0x2206CDB2, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr CLSID kDataInitializeClass = {0x2206CDB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr IID kPromptInitializeId = {0x2206CCB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr IID kDataInitializeId = {0x2206CCB1, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr IID kPropertiesId = {0x0C733A8A, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
constexpr IID kInitializeId = {0x0C733A8B, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

/// What the classes answer, and what they were asked.
struct Script {
    HRESULT prompted = S_OK;
    bool givesSource = true;
    HRESULT queried = S_OK;  // for IDBInitialize
    HRESULT connected = S_OK;
    HRESULT told = S_OK;
    const OLECHAR* text = OLESTR("DSN=库存;PWD=p");
    Calls calls;
};

/// One interface of an object that lives on the stack of its test, which holds the first reference.
template <typename Interface>
class Scripted : public Interface {
public:
    Scripted(Script& script, REFIID id) : script_(script), id_(id) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (IsEqualIID(iid, kInitializeId) && FAILED(script_.queried)) return script_.queried;
        if (!IsEqualIID(iid, id_) && !IsEqualIID(iid, IID_IUnknown)) return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        ++references;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 1;

protected:
    Script& script_;

private:
    const IID id_;
};

class Source final : public Scripted<IDBInitialize> {
public:
    explicit Source(Script& script) : Scripted(script, kInitializeId) {}
    HRESULT STDMETHODCALLTYPE Initialize() override {
        script_.calls.push_back("connect");
        return script_.connected;
    }
    HRESULT STDMETHODCALLTYPE Uninitialize() override {
        script_.calls.push_back("disconnect");
        return S_OK;
    }
};

class Prompt final : public Scripted<IDBPromptInitialize> {
public:
    Prompt(Script& script, Source& source) : Scripted(script, kPromptInitializeId), source_(source) {}
    HRESULT STDMETHODCALLTYPE PromptDataSource(IUnknown* outer, HWND parent, DBPROMPTOPTIONS options, ULONG filters,
                                               DBSOURCETYPE* filter, LPCOLESTR providers, REFIID wanted,
                                               IUnknown** given) override {
        EXPECT_EQ(outer, nullptr);
        EXPECT_EQ(parent, GetActiveWindow());
        EXPECT_EQ(filters, 0u);
        EXPECT_EQ(filter, nullptr);
        EXPECT_EQ(providers, nullptr);
        EXPECT_TRUE(IsEqualIID(wanted, kPropertiesId));
        script_.calls.push_back("prompt " + std::to_string(options));
        if (script_.givesSource) {
            source_.AddRef();
            *given = &source_;
        }
        return script_.prompted;
    }
    HRESULT STDMETHODCALLTYPE PromptFileName(HWND, DBPROMPTOPTIONS, LPCOLESTR, LPCOLESTR, LPOLESTR*) override {
        return E_NOTIMPL;
    }

private:
    Source& source_;
};

class Initializer final : public Scripted<IDataInitialize> {
public:
    Initializer(Script& script, IUnknown& source) : Scripted(script, kDataInitializeId), source_(source) {}
    HRESULT STDMETHODCALLTYPE GetInitializationString(IUnknown* source, unsigned char password,
                                                      LPOLESTR* text) override {
        EXPECT_EQ(source, &source_);
        script_.calls.push_back("string " + std::to_string(password));
        *text = nullptr;
        if (FAILED(script_.told)) return script_.told;
        const std::basic_string<OLECHAR> given(script_.text);
        const std::size_t bytes = (given.size() + 1) * sizeof(OLECHAR);
        *text = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes));
        std::memcpy(*text, given.c_str(), bytes);
        return script_.told;
    }
    HRESULT STDMETHODCALLTYPE GetDataSource(IUnknown*, DWORD, LPCOLESTR, REFIID, IUnknown**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateDBInstance(REFCLSID, IUnknown*, DWORD, LPOLESTR, REFIID, IUnknown**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateDBInstanceEx(REFCLSID, IUnknown*, DWORD, LPOLESTR, COSERVERINFO*, ULONG,
                                                 MULTI_QI*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE LoadStringFromStorage(LPCOLESTR, LPOLESTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE WriteStringToStorage(LPCOLESTR, LPCOLESTR, DWORD) override { return E_NOTIMPL; }

private:
    IUnknown& source_;
};

/// What the user is said to have composed, with the two classes played by the script.
std::string Compose(Script& script) {
    const Apartment apartment;
    RegisteredClass links(kDataLinksClass);
    RegisteredClass initializers(kDataInitializeClass);
    Source source(script);
    Prompt prompt(script, source);
    Initializer initializer(script, source);
    links.Give(&prompt);
    initializers.Give(&initializer);
    const CString text = GetSystemDataSource();
    EXPECT_EQ(source.references, 1u);
    EXPECT_EQ(prompt.references, 1u);
    EXPECT_EQ(links.Created(), 1);
    if (initializers.Created() == 0) {
        // Announced, and still held for that.
        EXPECT_EQ(initializer.references, 2u);
    } else {
        EXPECT_EQ(initializer.references, 1u);
    }
    return std::string(text);
}

TEST(DataLinkCalls, AskConnectAndReadTheText) {
    Script script;
    EXPECT_EQ(Compose(script), "DSN=库存;PWD=p");
    EXPECT_EQ(script.calls, (Calls{"prompt 1", "connect", "string 1"}));
}

TEST(DataLinkCalls, TakeATextWhoseResultIsNoFailure) {
    Script script;
    script.told = S_FALSE;
    EXPECT_EQ(Compose(script), "DSN=库存;PWD=p");
}

TEST(DataLinkCalls, StopAtTheFirstThatIsNotDone) {
    const struct {
        const char* label;
        void (*change)(Script&);
        Calls calls;
    } kRows[] = {
        {"cancelled", [](Script& s) { s.prompted = S_FALSE, s.givesSource = false; }, {"prompt 1"}},
        {"cancelled with a source", [](Script& s) { s.prompted = S_FALSE; }, {"prompt 1"}},
        {"no dialog", [](Script& s) { s.prompted = E_FAIL, s.givesSource = false; }, {"prompt 1"}},
        {"no source", [](Script& s) { s.givesSource = false; }, {"prompt 1"}},
        {"cannot be connected", [](Script& s) { s.queried = E_NOINTERFACE; }, {"prompt 1"}},
        {"is not connected", [](Script& s) { s.connected = E_ACCESSDENIED; }, {"prompt 1", "connect"}},
        {"is half connected", [](Script& s) { s.connected = S_FALSE; }, {"prompt 1", "connect"}},
        {"has no text", [](Script& s) { s.told = E_OUTOFMEMORY; }, {"prompt 1", "connect", "string 1"}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Script script;
        row.change(script);
        EXPECT_EQ(Compose(script), "");
        EXPECT_EQ(script.calls, row.calls);
    }
}

TEST(DataLinkCalls, EndWhereAClassIsRefused) {
    const Apartment apartment;
    RegisteredClass links(kDataLinksClass);
    RegisteredClass initializers(kDataInitializeClass);
    links.Refuse(E_ACCESSDENIED);
    EXPECT_STREQ(GetSystemDataSource(), "");
    EXPECT_EQ(initializers.Created(), 0);

    Script script;
    Source source(script);
    Prompt prompt(script, source);
    links.Give(&prompt);
    initializers.Refuse(E_ACCESSDENIED);
    EXPECT_STREQ(GetSystemDataSource(), "");
    EXPECT_EQ(initializers.Created(), 1);
    EXPECT_EQ(script.calls, (Calls{"prompt 1", "connect"}));
    EXPECT_EQ(source.references, 1u);
}

}  // namespace
