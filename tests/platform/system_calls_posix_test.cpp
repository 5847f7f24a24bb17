// What the small questions ask of the system, call by call, and what they make of every answer: this program answers in
// the system's place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <rpc.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/noted_calls.h"
#include "tkkernel/platform.h"

namespace {

using testing::ElementsAre;

/// What a registry value's name or text is answered with.
struct Told {
    std::string text;
    LSTATUS result = ERROR_SUCCESS;
};

/// The answers, and the questions in order.
struct System : tk::test::NotedCalls {
    bool hasNames = true;
    std::string name = "库存";
    std::string windowsFolder = "D:\\WIN 库";
    UINT started = 33;
    HFILE found = 1;
    std::vector<std::string> missingKeys;
    Told server;
    std::vector<Told> sources[2];  // the user's, the system's
    HRESULT guidResult = S_OK;
    RPC_STATUS uuidResult = RPC_S_OK;
    bool hasMemory = true;
};
System* asked = nullptr;

BOOL GiveName(char* buffer, DWORD* size) {
    if (!asked->hasNames) {
        buffer[0] = 'x';  // what a failure leaves behind does not count
        return FALSE;
    }
    std::strcpy(buffer, asked->name.c_str());
    *size = static_cast<DWORD>(asked->name.size());
    return TRUE;
}

constexpr GUID kMade = {0x5B3A2D61, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};

/// The handles of open keys: the number of the key that was opened.
int openKeys = 0;

HKEY KeyHandle(int number) {
    return reinterpret_cast<HKEY>(static_cast<LONG_PTR>(number));
}
long long KeyNumber(HKEY key) {
    if (key == HKEY_CLASSES_ROOT) return 1000;
    if (key == HKEY_CURRENT_USER) return 2000;
    if (key == HKEY_LOCAL_MACHINE) return 3000;
    return reinterpret_cast<LONG_PTR>(key);
}

}  // namespace

BOOL GetComputerNameA(LPSTR buffer, LPDWORD size) {
    asked->Note("computer %u", *size);
    return GiveName(buffer, size);
}
BOOL GetUserNameA(LPSTR buffer, LPDWORD size) {
    asked->Note("user %u", *size);
    return GiveName(buffer, size);
}
UINT GetWindowsDirectoryA(LPSTR buffer, UINT size) {
    asked->Note("folder %u", size);
    const auto length = static_cast<UINT>(asked->windowsFolder.size());
    if (length >= size) return length + 1;
    std::strcpy(buffer, asked->windowsFolder.c_str());
    return length;
}
UINT WinExec(LPCSTR command, UINT show) {
    asked->Note("run %u %s", show, command);
    return asked->started;
}
HFILE OpenFile(LPCSTR name, LPOFSTRUCT record, UINT style) {
    asked->Note("file %X %d %s", style, record->cBytes == sizeof(OFSTRUCT), name);
    return asked->found;
}
LSTATUS RegOpenKeyExA(HKEY parent, LPCSTR name, DWORD options, REGSAM rights, PHKEY key) {
    asked->Note("open %lld %s %u %X", KeyNumber(parent), name, options, rights);
    *key = KeyHandle(77);  // what a failure leaves behind does not count
    for (const std::string& missing : asked->missingKeys) {
        if (missing == name) return ERROR_FILE_NOT_FOUND;
    }
    *key = KeyHandle(++openKeys);
    return ERROR_SUCCESS;
}
LSTATUS RegCloseKey(HKEY key) {
    asked->Note("close %lld", KeyNumber(key));
    return ERROR_SUCCESS;
}
LSTATUS RegQueryValueA(HKEY key, LPCSTR name, LPSTR buffer, PLONG size) {
    asked->Note("query %lld %s %d", KeyNumber(key), name, *size);
    std::strcpy(buffer, asked->server.text.c_str());
    return asked->server.result;
}
LSTATUS RegEnumValueA(HKEY key, DWORD index, LPSTR name, LPDWORD size, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD) {
    asked->Note("value %lld %u %u", KeyNumber(key), index, *size);
    EXPECT_EQ(type, nullptr);
    EXPECT_EQ(data, nullptr);
    const auto& sources = asked->sources[KeyNumber(key) - 1];
    if (index >= sources.size()) return ERROR_NO_MORE_ITEMS;
    std::strcpy(name, sources[index].text.c_str());
    return sources[index].result;
}
BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    static const auto own = reinterpret_cast<decltype(&SysAllocStringLen)>(dlsym(RTLD_NEXT, "SysAllocStringLen"));
    return asked->hasMemory ? own(text, length) : nullptr;
}
HRESULT CLSIDFromString(LPCOLESTR, LPCLSID guid) {
    *guid = kMade;
    return asked->guidResult;
}
HRESULT CoCreateGuid(GUID* guid) {
    *guid = kMade;
    return asked->guidResult;
}
RPC_STATUS UuidCreate(UUID* uuid) {
    asked->calls.emplace_back("uuid");
    *uuid = kMade;
    return RPC_S_OK;
}
RPC_STATUS UuidToStringA(const UUID*, RPC_CSTR* text) {
    static unsigned char written[] = "as the system writes it";
    *text = written;
    return asked->uuidResult;
}
RPC_STATUS UuidFromStringA(RPC_CSTR, UUID* uuid) {
    *uuid = kMade;
    return asked->uuidResult;
}
RPC_STATUS RpcStringFreeA(RPC_CSTR* text) {
    asked->Note("free %s", reinterpret_cast<const char*>(*text));
    *text = nullptr;
    return RPC_S_OK;
}

namespace {

class SystemCalls : public testing::Test {
protected:
    SystemCalls() {
        asked = &system_;
        openKeys = 0;
    }
    ~SystemCalls() override { asked = nullptr; }

    std::vector<std::string> Asked() { return system_.Take(); }

    System system_;
};

TEST_F(SystemCalls, NamesAreReadIntoBuffersOfTheirSize) {
    EXPECT_STREQ(GetComputerNameA(), "库存");
    EXPECT_STREQ(GetCurrentUser(), "库存");
    EXPECT_THAT(Asked(), ElementsAre("computer 128", "user 256"));
    system_.hasNames = false;
    EXPECT_STREQ(GetComputerNameA(), "");
    EXPECT_STREQ(GetCurrentUser(), "");
}

TEST_F(SystemCalls, TheOdbcAdministratorIsRunFromTheWindowsFolder) {
    EXPECT_EQ(GetSystemODBC(), 1);
    EXPECT_THAT(Asked(), ElementsAre("folder 128", "run 5 D:\\WIN 库\\system32\\odbcad32.exe"));
    for (const UINT started : {0u, 2u, 31u}) {
        system_.started = started;
        EXPECT_EQ(GetSystemODBC(), 0) << started;
    }
    system_.started = 32;
    EXPECT_EQ(GetSystemODBC(), 1);
    Asked();
    system_.windowsFolder.assign(127, 'x');
    GetSystemODBC();
    EXPECT_EQ(system_.calls.back(), "run 5 " + system_.windowsFolder + "\\system32\\odbcad32.exe");
    system_.windowsFolder.assign(128, 'x');
    GetSystemODBC();
    EXPECT_EQ(system_.calls.back(), "run 5 \\system32\\odbcad32.exe") << "longer than its buffer";
}

TEST_F(SystemCalls, AFileIsAskedForAndNotOpened) {
    EXPECT_EQ(IsFileExist("库存.mdb"), 1);
    EXPECT_THAT(Asked(), ElementsAre("file 4000 1 库存.mdb"));
    system_.found = 0;
    EXPECT_EQ(IsFileExist("a"), 1) << "a handle as good as any";
    system_.found = HFILE_ERROR;
    EXPECT_EQ(IsFileExist("a"), 0);
    Asked();
    EXPECT_EQ(IsFileExist(""), 0);
    EXPECT_EQ(IsFileExist(nullptr), 0);
    EXPECT_THAT(Asked(), ElementsAre()) << "a file without a name is none";
}

constexpr char kServerKey[] = "{5B3A2D61-7C42-4E0A-9D10-428F551077A1}";

TEST_F(SystemCalls, AClassIsLookedUpKeyByKey) {
    GUID clsid = kMade;
    system_.server.text = "C:\\库存.dll";
    EXPECT_EQ(CLSIDExist(clsid), 1);
    EXPECT_THAT(Asked(), ElementsAre("open 1000 CLSID 0 20019", std::string("open 1 ") + kServerKey + " 0 20019",
                                     "query 2 InprocServer32 256", "file 4000 1 C:\\库存.dll", "close 2", "close 1"));
    system_.found = HFILE_ERROR;
    EXPECT_EQ(CLSIDExist(clsid), 0);
    system_.found = 1;
    Asked();
    openKeys = 0;
    for (const LSTATUS result : {ERROR_FILE_NOT_FOUND, ERROR_MORE_DATA, ERROR_ACCESS_DENIED}) {
        system_.server.result = result;
        EXPECT_EQ(CLSIDExist(clsid), 0) << "whatever the buffer holds";
        EXPECT_EQ(Asked().size(), 5u) << "no file is asked for, and both keys are closed";
    }
    system_.missingKeys = {kServerKey};
    openKeys = 0;
    EXPECT_EQ(CLSIDExist(clsid), 0);
    EXPECT_THAT(Asked(),
                ElementsAre("open 1000 CLSID 0 20019", std::string("open 1 ") + kServerKey + " 0 20019", "close 1"));
    system_.missingKeys = {"CLSID"};
    EXPECT_EQ(CLSIDExist(clsid), 0);
    EXPECT_THAT(Asked(), ElementsAre("open 1000 CLSID 0 20019"));
}

TEST_F(SystemCalls, DataSourcesAreTheUsersAndThenTheSystems) {
    system_.sources[0] = {{"stock"}, {""}, {"too long", ERROR_MORE_DATA}, {"库存"}};
    system_.sources[1] = {{"STOCK"}, {"ledger"}, {"denied", ERROR_ACCESS_DENIED}, {"behind it"}};
    CStringArray names;
    EXPECT_EQ(GetAllDataSource(names), 3);
    EXPECT_STREQ(names[0], "stock");
    EXPECT_STREQ(names[1], "库存") << "what has no name, or one that is too long, is passed over";
    EXPECT_STREQ(names[2], "ledger") << "each once, and nothing behind a failure";
    constexpr char kUser[] = "open 2000 Software\\ODBC\\ODBC.INI\\ODBC Data Sources 0 20019";
    constexpr char kSystem[] = "open 3000 Software\\ODBC\\ODBC.INI\\ODBC Data Sources 0 20019";
    EXPECT_THAT(Asked(),
                ElementsAre(kUser, "value 1 0 256", "value 1 1 256", "value 1 2 256", "value 1 3 256", "value 1 4 256",
                            "close 1", kSystem, "value 2 0 256", "value 2 1 256", "value 2 2 256", "close 2"));
    system_.missingKeys = {"Software\\ODBC\\ODBC.INI\\ODBC Data Sources"};
    EXPECT_EQ(GetAllDataSource(names), 0);
    EXPECT_THAT(Asked(), ElementsAre(kUser, kSystem));
}

TEST_F(SystemCalls, TextsWithoutMemoryAreNullAndHaveNoLength) {
    system_.hasMemory = false;
    long length = 999;
    EXPECT_EQ(StringToSysString("库存", -1, &length), nullptr);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(StringToSysString("库存", -1, nullptr), nullptr);
    EXPECT_EQ(StringCopy("库存"), nullptr);
}

TEST_F(SystemCalls, IdentifiersThatFailAreZeroAndTheirTextsEmpty) {
    EXPECT_TRUE(IsEqualGUID(CreateGuid(), kMade));
    EXPECT_TRUE(IsEqualGUID(StringToGuid("any"), kMade));
    system_.guidResult = E_FAIL;
    EXPECT_TRUE(IsEqualGUID(CreateGuid(), GUID{}));
    EXPECT_TRUE(IsEqualGUID(StringToGuid("any"), GUID{})) << "whatever a failure leaves behind";

    EXPECT_TRUE(IsEqualGUID(CreateUuid(), kMade));
    EXPECT_THAT(Asked(), ElementsAre("uuid"));
    EXPECT_STREQ(StringFromUuid(kMade), "as the system writes it");
    EXPECT_THAT(Asked(), ElementsAre("free as the system writes it"));
    EXPECT_TRUE(IsEqualGUID(StringToUuid("any"), kMade));
    system_.uuidResult = RPC_S_OUT_OF_MEMORY;
    EXPECT_STREQ(StringFromUuid(kMade), "");
    EXPECT_THAT(Asked(), ElementsAre());
    EXPECT_TRUE(IsEqualGUID(StringToUuid("any"), GUID{}));
}

}  // namespace
