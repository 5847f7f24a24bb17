#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

#include <cstdio>
#include <string>

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

TEST(ShellLinkWithoutCom, IsNotMade) {
    EXPECT_EQ(CreateLink("/bin/sh", "", "stock.lnk", "", ""), static_cast<long>(CO_E_NOTINITIALIZED));
}

}  // namespace
