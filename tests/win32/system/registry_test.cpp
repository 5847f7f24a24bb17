// The registry's view of the class registry and of the ODBC data sources.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "tests/win32/system/support.h"
#include "winbase.h"
#include "winreg.h"

using namespace tk::test;

namespace {

constexpr char kClassText[] = "{5B3A2D41-7C42-4E0A-9D10-428F551077A1}";
constexpr char kChineseClassText[] = "{5B3A2D43-7C42-4E0A-9D10-428F551077A1}";

std::optional<std::string> TextOf(HKEY key, const char* subKey) {
    char text[512] = {};
    LONG size = sizeof text;
    if (RegQueryValueA(key, subKey, text, &size) != static_cast<LSTATUS>(ERROR_SUCCESS)) return std::nullopt;
    EXPECT_EQ(static_cast<std::size_t>(size), std::strlen(text) + 1);
    return text;
}

class Registry : public ::testing::Test {
protected:
    Registry() {
        WriteFile(folder_ / "classes.conf", std::string(kClassText) + " Stock.Report /opt/stock/report.so\n" +
                                                kChineseClassText +
                                                " \xE5\xBA\x93\xE5\xAD\x98.\xE8\xAA\xA0 /opt/stock/credit.so\n");
        WriteFile(folder_ / "user.ini",
                  "\xEF\xBB\xBF; the user's\r\n[ODBC Data Sources]\r\nstock = PostgreSQL\r\n\r\n[stock]\r\nDriver = "
                  "PostgreSQL Unicode\r\nServer=db\r\n[ \xE5\xBA\x93\xE5\xAD\x98 ]\n# nothing\n[STOCK]\ndriver=second\n"
                  "[ODBC]\nTrace=no\n[]\n[broken\nDriver=lost\n");
        WriteFile(folder_ / "odbc.ini", "[ledger]\nDRIVER=SQLite3\n");
    }

    static std::map<std::string, std::string> Sources(HKEY root) {
        std::map<std::string, std::string> sources;
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExA(root, "Software\\ODBC\\ODBC.INI\\ODBC Data Sources", 0, KEY_READ, &key), 0);
        for (DWORD i = 0;; ++i) {
            char name[64];
            DWORD length = sizeof name;
            char driver[64] = {};
            DWORD bytes = sizeof driver;
            DWORD type = REG_NONE;
            const LSTATUS result =
                RegEnumValueA(key, i, name, &length, nullptr, &type, reinterpret_cast<LPBYTE>(driver), &bytes);
            if (result != 0) {
                EXPECT_EQ(result, 259);
                break;
            }
            EXPECT_EQ(type, REG_SZ);
            sources[std::string(name, length)] = driver;
        }
        EXPECT_EQ(RegCloseKey(key), 0);
        return sources;
    }

    TempFolder folder_;
    Variable classes_{"TKKERNEL_CLASSES", folder_ / "classes.conf"};
    Variable config_{"XDG_CONFIG_HOME", "/nonexistent"};
    Variable user_{"ODBCINI", folder_ / "user.ini"};
    Variable system_{"ODBCSYSINI", folder_.Path()};
};

}  // namespace

TEST_F(Registry, ShowsAClassUnderItsIdentifierAndItsName) {
    HKEY classes = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CLASSES_ROOT, "clsid", 0, KEY_READ, &classes), 0);
    const std::string name = kClassText;
    EXPECT_EQ(TextOf(classes, (name + "\\InprocServer32").c_str()), "/opt/stock/report.so");
    EXPECT_EQ(TextOf(classes, (name + "\\INPROCSERVER32\\").c_str()), "/opt/stock/report.so");
    EXPECT_EQ(TextOf(classes, (name + "\\ProgID").c_str()), "Stock.Report");
    EXPECT_EQ(TextOf(classes, name.c_str()), std::nullopt) << "the class itself has no value";
    EXPECT_EQ(TextOf(classes, (name + "\\LocalServer32").c_str()), std::nullopt);
    EXPECT_EQ(TextOf(classes, (name + "\\ProgID\\more").c_str()), std::nullopt);
    EXPECT_EQ(TextOf(classes, "{5B3A2D42-7C42-4E0A-9D10-428F551077A1}\\InprocServer32"), std::nullopt);
    EXPECT_EQ(TextOf(classes, "not an identifier"), std::nullopt);
    EXPECT_EQ(RegCloseKey(classes), 0);
    EXPECT_EQ(RegCloseKey(classes), 6) << "a handle is closed once";

    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, "Stock.Report\\CLSID"), kClassText);
    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, "stock.report.2\\CLSID"), kClassText) << "as objects are created by it";
    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, "Stock.Other\\CLSID"), std::nullopt);
}

// The second byte of its last character is that of a backslash.
TEST_F(Registry, ShowsAClassUnderAChineseName) {
    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, "库存.誠\\CLSID"), kChineseClassText);
    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, "库存.誠.2\\CLSID"), kChineseClassText);
    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, "库存\\CLSID"), std::nullopt);
    EXPECT_EQ(TextOf(HKEY_CLASSES_ROOT, (std::string("CLSID\\") + kChineseClassText + "\\ProgID").c_str()), "库存.誠");
}

TEST_F(Registry, ListsClassesAndNames) {
    const auto listed = [](const char* subKey, const std::string& wanted) {
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyA(HKEY_CLASSES_ROOT, subKey, &key), 0);
        int found = 0;
        char name[64];
        DWORD length = sizeof name;
        DWORD i = 0;
        for (; RegEnumKeyExA(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == 0;
             ++i, length = sizeof name) {
            if (name == wanted) ++found;
        }
        EXPECT_GT(i, 4u) << "the built-in classes are there too";
        length = sizeof name;
        EXPECT_EQ(RegEnumKeyExA(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 0);
        const DWORD whole = length;
        std::memset(name, 'x', sizeof name);
        EXPECT_EQ(RegEnumKeyExA(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 234) << "no terminator";
        EXPECT_EQ(name[0], 'x') << "a name that does not fit is not cut";
        length = whole + 1;
        EXPECT_EQ(RegEnumKeyExA(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(length, whole);
        RegCloseKey(key);
        return found;
    };
    EXPECT_EQ(listed("CLSID", kClassText), 1);
    EXPECT_EQ(listed("", "Stock.Report"), 1);
    EXPECT_EQ(listed("", "库存.誠"), 1);
    EXPECT_EQ(listed(nullptr, "ADODB.Recordset"), 1);
}

TEST_F(Registry, CannotBeWrittenAndKnowsNothingElse) {
    HKEY key = reinterpret_cast<HKEY>(1);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CLASSES_ROOT, "CLSID", 0, KEY_SET_VALUE, &key), 5);
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\Stock", 0, KEY_READ, &key), 2);
    EXPECT_EQ(RegOpenKeyExA(nullptr, "CLSID", 0, KEY_READ, &key), 6);
    EXPECT_EQ(RegOpenKeyExA(reinterpret_cast<HKEY>(12345), "CLSID", 0, KEY_READ, &key), 6);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CLASSES_ROOT, "CLSID", 0, KEY_READ, nullptr), 87);
    EXPECT_EQ(RegCloseKey(HKEY_CLASSES_ROOT), 0) << "a root stays open";
    EXPECT_EQ(RegOpenKeyExA(HKEY_CLASSES_ROOT, "CLSID", 0, KEY_READ, &key), 0);
    RegCloseKey(key);
}

TEST_F(Registry, TellsHowMuchRoomAValueNeeds) {
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyA(HKEY_CLASSES_ROOT, "Stock.Report\\CLSID", &key), 0);
    DWORD bytes = 0;
    DWORD type = REG_NONE;
    EXPECT_EQ(RegQueryValueExA(key, nullptr, nullptr, &type, nullptr, &bytes), 0);
    EXPECT_EQ(bytes, 39u);
    EXPECT_EQ(type, REG_SZ);
    char text[39] = {};
    bytes = 38;
    EXPECT_EQ(RegQueryValueExA(key, "", nullptr, nullptr, reinterpret_cast<LPBYTE>(text), &bytes), 234);
    EXPECT_EQ(bytes, 39u);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(RegQueryValueExA(key, "", nullptr, nullptr, reinterpret_cast<LPBYTE>(text), &bytes), 0);
    EXPECT_STREQ(text, kClassText);
    EXPECT_EQ(RegQueryValueExA(key, "other", nullptr, nullptr, nullptr, nullptr), 2);
    RegCloseKey(key);
}

TEST_F(Registry, ShowsTheDataSourcesOfTheUserAndOfTheSystem) {
    const std::map<std::string, std::string> user = {{"stock", "PostgreSQL Unicode"}, {"库存", ""}};
    EXPECT_EQ(Sources(HKEY_CURRENT_USER), user);
    const std::map<std::string, std::string> system = {{"ledger", "SQLite3"}};
    EXPECT_EQ(Sources(HKEY_LOCAL_MACHINE), system);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "SOFTWARE\\odbc", &key), 0);
    RegCloseKey(key);
}

TEST_F(Registry, FindsNoDataSourcesInWhatIsNoFileOfThem) {
    {
        const Variable none("ODBCINI", folder_ / "missing.ini");
        EXPECT_TRUE(Sources(HKEY_CURRENT_USER).empty());
    }
    {
        const Variable aFolder("ODBCINI", folder_.Path());
        EXPECT_TRUE(Sources(HKEY_CURRENT_USER).empty());
    }
    WriteFile(folder_ / "user.ini", std::string("\x7F"
                                                "ELF\0\0[\xFF\xFE\0",
                                                10));
    EXPECT_TRUE(Sources(HKEY_CURRENT_USER).empty());
}

TEST_F(Registry, LooksForTheUsersFileInTheHomeFolder) {
    const Variable unnamed("ODBCINI", static_cast<const char*>(nullptr));
    const Variable home("HOME", folder_.Path());
    EXPECT_TRUE(Sources(HKEY_CURRENT_USER).empty());
    WriteFile(folder_ / ".odbc.ini", "[home]\nDriver=x\n");
    const std::map<std::string, std::string> sources = {{"home", "x"}};
    EXPECT_EQ(Sources(HKEY_CURRENT_USER), sources);
}
