#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/held.h"
#include "support/registered_class.h"
#include "tkkernel/platform.h"

namespace {

using namespace tk::test;

constexpr CLSID kLinkClass = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kLinkId = {0x000214EE, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kPersistFileId = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

std::string TemporaryFile(const char* name) {
    char folder[512] = {};
    GetTempPathA(sizeof(folder), folder);
    return std::string(folder) + "tkkernel_" + std::to_string(GetCurrentProcessId()) + "_" + name;
}

/// A shortcut as the platform's class reads it.
struct ReadLink {
    explicit ReadLink(const std::string& file) {
        Held<IShellLinkA> link;
        IShellLinkA* created = nullptr;
        EXPECT_EQ(
            CoCreateInstance(kLinkClass, nullptr, CLSCTX_INPROC_SERVER, kLinkId, reinterpret_cast<void**>(&created)),
            S_OK);
        link = Held<IShellLinkA>(created);
        IPersistFile* persist = nullptr;
        EXPECT_EQ(link->QueryInterface(kPersistFileId, reinterpret_cast<void**>(&persist)), S_OK);
        const Held<IPersistFile> held(persist);
        BSTR wide = CString(file.c_str()).AllocSysString();
        loaded = held->Load(wide, 0);
        SysFreeString(wide);
        if (loaded != S_OK) return;
        char text[1024] = {};
        link->GetPath(text, MAX_PATH, nullptr, 0);
        target = text;
        link->GetArguments(text, sizeof(text));
        arguments = text;
        link->GetWorkingDirectory(text, MAX_PATH);
        directory = text;
        link->GetDescription(text, sizeof(text));
        description = text;
    }

    HRESULT loaded = E_FAIL;
    std::string target, arguments, directory, description;
};

/// A shortcut that writes down what it is told.
class LinkRecorder final : public IShellLinkA, public IPersistFile {
public:
    explicit LinkRecorder(bool canSave) : canSave_(canSave) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (IsEqualIID(iid, kPersistFileId)) {
            calls.push_back("query for saving");
            if (!canSave_) return E_NOINTERFACE;
            *object = static_cast<IPersistFile*>(this);
        } else if (IsEqualIID(iid, kLinkId) || IsEqualIID(iid, IID_IUnknown)) {
            *object = static_cast<IShellLinkA*>(this);
        } else {
            return E_NOINTERFACE;
        }
        ++references;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE SetPath(LPCSTR text) override { return Note("path", text); }
    HRESULT STDMETHODCALLTYPE SetDescription(LPCSTR text) override { return Note("description", text); }
    HRESULT STDMETHODCALLTYPE SetWorkingDirectory(LPCSTR text) override { return Note("directory", text); }
    HRESULT STDMETHODCALLTYPE SetArguments(LPCSTR text) override { return Note("arguments", text); }
    HRESULT STDMETHODCALLTYPE Save(LPCOLESTR file, BOOL remember) override {
        CString name(file);
        calls.push_back("save " + std::string(name) + (remember == TRUE ? " and remember" : ""));
        return saved;
    }

    HRESULT STDMETHODCALLTYPE GetPath(LPSTR, int, WIN32_FIND_DATAA*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDList(LPITEMIDLIST*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetIDList(LPCITEMIDLIST) override { return Note("list", ""); }
    HRESULT STDMETHODCALLTYPE GetDescription(LPSTR, int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWorkingDirectory(LPSTR, int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetArguments(LPSTR, int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHotkey(WORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetHotkey(WORD) override { return Note("hot key", ""); }
    HRESULT STDMETHODCALLTYPE GetShowCmd(int*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetShowCmd(int) override { return Note("show", ""); }
    HRESULT STDMETHODCALLTYPE GetIconLocation(LPSTR, int, int*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetIconLocation(LPCSTR, int) override { return Note("icon", ""); }
    HRESULT STDMETHODCALLTYPE SetRelativePath(LPCSTR, DWORD) override { return Note("relative path", ""); }
    HRESULT STDMETHODCALLTYPE Resolve(HWND, DWORD) override { return Note("resolve", ""); }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Load(LPCOLESTR, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR*) override { return E_NOTIMPL; }

    std::vector<std::string> calls;
    ULONG references = 1;  // the test's
    HRESULT saved = S_OK;

private:
    /// Fails: what the setters answer does not count.
    HRESULT Note(const char* member, const char* text) {
        calls.push_back(std::string(member) + " " + text);
        return E_FAIL;
    }

    const bool canSave_;
};

class ShellLinkTest : public testing::Test {
protected:
    Apartment apartment_;
};

TEST_F(ShellLinkTest, WritesAShortcutThatThePlatformReads) {
    const std::string file = TemporaryFile("stock.lnk");
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof(program));
    EXPECT_EQ(CreateLink(program, "/open \"库存 2003.mdb\"", file.c_str(), TemporaryFile("").c_str(), "库存管理"),
              S_OK);
    const ReadLink link(file);
    ASSERT_EQ(link.loaded, S_OK);
    EXPECT_EQ(link.target, program);
    EXPECT_EQ(link.arguments, "/open \"库存 2003.mdb\"");
    EXPECT_EQ(link.directory, TemporaryFile(""));
    EXPECT_EQ(link.description, "库存管理");
    std::remove(file.c_str());
}

TEST_F(ShellLinkTest, ReplacesAShortcutThatIsThere) {
    const std::string file = TemporaryFile("again.lnk");
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof(program));
    EXPECT_EQ(CreateLink(program, "first and long", file.c_str(), "", "first"), S_OK);
    EXPECT_EQ(CreateLink(program, nullptr, file.c_str(), nullptr, nullptr), S_OK);
    const ReadLink link(file);
    ASSERT_EQ(link.loaded, S_OK);
    EXPECT_EQ(link.target, program);
    EXPECT_EQ(link.arguments, "");
    EXPECT_EQ(link.description, "");
    std::remove(file.c_str());
}

TEST_F(ShellLinkTest, TellsWhyAShortcutCannotBeWritten) {
    const std::string nowhere = TemporaryFile("no such folder") + "/stock.lnk";
    EXPECT_LT(CreateLink("/bin/sh", "", nowhere.c_str(), "", ""), 0);
    EXPECT_LT(CreateLink("/bin/sh", "", "", "", ""), 0);
    EXPECT_LT(CreateLink("/bin/sh", "", nullptr, "", ""), 0);
    EXPECT_LT(CreateLink("/bin/sh", "", std::string(400, 'x').c_str(), "", ""), 0) << "longer than a path can be";
}

TEST_F(ShellLinkTest, SetsEachTextOnceAndSaves) {
    RegisteredClass links(kLinkClass);
    LinkRecorder link(true);
    link.saved = S_FALSE;
    links.Give(static_cast<IShellLinkA*>(&link));
    EXPECT_EQ(CreateLink("/opt/stock", "/open", "库存.lnk", "/tmp", "库存管理"), static_cast<long>(S_FALSE))
        << "what Save answers";
    EXPECT_EQ(link.calls,
              (std::vector<std::string>{"path /opt/stock", "description 库存管理", "directory /tmp", "arguments /open",
                                        "query for saving", "save 库存.lnk and remember"}));
    EXPECT_EQ(link.references, 1u);
}

TEST_F(ShellLinkTest, TellsOfAShortcutThatCannotBeSaved) {
    RegisteredClass links(kLinkClass);
    LinkRecorder link(false);
    links.Give(static_cast<IShellLinkA*>(&link));
    EXPECT_EQ(CreateLink("/opt/stock", "", "stock.lnk", "", ""), static_cast<long>(E_NOINTERFACE));
    EXPECT_EQ(link.calls.back(), "query for saving");
    EXPECT_EQ(link.references, 1u);
    links.Refuse(E_ACCESSDENIED);
    EXPECT_EQ(CreateLink("/opt/stock", "", "stock.lnk", "", ""), static_cast<long>(E_ACCESSDENIED));
    EXPECT_EQ(links.Created(), 2);
}

TEST_F(ShellLinkTest, TakesAFileNameAsLongAsAPathCanBe) {
    RegisteredClass links(kLinkClass);
    LinkRecorder link(true);
    const std::string longest(MAX_PATH - 1, 'x');
    links.Give(static_cast<IShellLinkA*>(&link));
    EXPECT_EQ(CreateLink("", "", longest.c_str(), "", ""), static_cast<long>(S_OK));
    EXPECT_EQ(link.calls.back(), "save " + longest + " and remember");
    links.Give(static_cast<IShellLinkA*>(&link));
    EXPECT_EQ(CreateLink("", "", (longest + "x").c_str(), "", ""),
              static_cast<long>(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER)));
    EXPECT_EQ(link.calls.back(), "query for saving");
    EXPECT_EQ(link.references, 1u);
}

TEST(ShellLinkWithoutCom, IsNotMade) {
    EXPECT_EQ(CreateLink("/bin/sh", "", "stock.lnk", "", ""), static_cast<long>(CO_E_NOTINITIALIZED));
}

}  // namespace
