// Ports, data sources, dialogs and resources where they come from files, devices and other programs.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <afxwin.h>
#include <atlbase.h>
#include <dlfcn.h>

#include <string>
#include <vector>

#include "tests/win32/system/support.h"
#include "tkkernel/platform.h"

namespace {

std::vector<std::string>* opened = nullptr;

}  // namespace

/// In front of the platform's: tells a test what is opened, and how.
__attribute__((visibility("default"))) HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD sharing,
                                                          LPSECURITY_ATTRIBUTES security, DWORD disposition,
                                                          DWORD attributes, HANDLE pattern) {
    static const auto own = reinterpret_cast<decltype(&CreateFileA)>(dlsym(RTLD_NEXT, "CreateFileA"));
    if (opened != nullptr) {
        opened->push_back(std::string(name) + " " + std::to_string(access) + " " + std::to_string(sharing) + " " +
                          std::to_string(disposition));
    }
    return own(name, access, sharing, security, disposition, attributes, pattern);
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tk::test::TempFolder;
using tk::test::Variable;
using tk::test::WriteFile;

std::vector<std::string> Copied(const CStringArray& names) {
    std::vector<std::string> copy;
    for (int i = 0; i < names.GetSize(); ++i)
        copy.emplace_back(names[i]);
    return copy;
}

/// A terminal of the system's, one end of which a test holds.
class PseudoTerminal {
public:
    PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(master_);
        unlockpt(master_);
        char name[128] = {};
        ptsname_r(master_, name, sizeof(name));
        name_ = name;
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() { Unplug(); }

    const std::string& Name() const { return name_; }
    void Unplug() {
        if (master_ >= 0) close(master_);
        master_ = -1;
    }

private:
    int master_;
    std::string name_;
};

/// A folder of programs in front of all others, and no display or settings of the user's.
class Helpers : public testing::Test {
protected:
    void Install(const std::string& program, const std::string& script) {
        WriteFile(folder_ / program, "#!/bin/sh\n" + script + "\n");
        chmod((folder_ / program).c_str(), 0755);
    }

    TempFolder folder_;
    Variable path_{"PATH", folder_.Path() + ":/usr/bin:/bin"};
    Variable display_{"DISPLAY", ":77"};
    Variable wayland_{"WAYLAND_DISPLAY", static_cast<const char*>(nullptr)};
    Variable config_{"XDG_CONFIG_HOME", folder_.Path()};
    Variable ports_{"TKKERNEL_PORTS", folder_ / "ports.conf"};
};

/// A map that takes all ports of the machine away.
std::string NoPorts() {
    std::string map;
    for (int i = 1; i <= 30; ++i)
        map += "COM" + std::to_string(i) + " -\n";
    return map;
}

TEST_F(Helpers, PortsAreWhatTheMapNames) {
    PseudoTerminal first;
    PseudoTerminal second;
    symlink(second.Name().c_str(), (folder_ / "adapter").c_str());
    WriteFile(folder_ / "ports.conf", "# adapters\nCOM3 " + first.Name() + "\ncom12 " + (folder_ / "adapter") +
                                          "\nCOM26 " + first.Name() + "\nCOM4 /dev/tk-no-such-device\nCOM5 " +
                                          (folder_ / "ports.conf") + "\nCOM6 relative/name\nCOM7\n" + NoPorts());
    CStringArray names;
    EXPECT_EQ(GetCommCount(&names), 2);
    EXPECT_THAT(Copied(names), ElementsAre("COM3", "COM12")) << "none beyond COM25, no files";
    second.Unplug();
    EXPECT_EQ(GetCommCount(&names), 1);
    EXPECT_THAT(Copied(names), ElementsAre("COM3"));
}

TEST_F(Helpers, PortsAreOpenedInTurnWithoutRightsOrSharing) {
    std::vector<std::string> calls;
    std::vector<std::string> expected;
    for (int i = 1; i <= 25; ++i)
        expected.push_back("COM" + std::to_string(i) + " 0 0 3");
    WriteFile(folder_ / "ports.conf", NoPorts());
    CStringArray names;
    opened = &calls;
    EXPECT_EQ(GetCommCount(&names), 0);
    opened = nullptr;
    EXPECT_EQ(calls, expected);
}

TEST_F(Helpers, PortsFillAControl) {
    PseudoTerminal port;
    WriteFile(folder_ / "ports.conf", "COM2 " + port.Name() + "\n" + NoPorts());
    CWnd owner;
    ASSERT_TRUE(owner.CreateEx(0, "STATIC", "", 0, 0, 0, 10, 10, nullptr, nullptr));
    CComboBox combo;
    ASSERT_TRUE(combo.Create(WS_CHILD | CBS_DROPDOWNLIST, CRect(0, 0, 10, 10), &owner, 1));
    combo.AddString("left over");
    EXPECT_EQ(GetCommCount(nullptr, &combo), 1);
    EXPECT_EQ(combo.GetCount(), 1);
    EXPECT_EQ(combo.GetCurSel(), 0);
    CString text;
    combo.GetWindowText(text);
    EXPECT_STREQ(text, "COM2");
}

TEST_F(Helpers, DataSourcesAreThoseOfTheUserAndOfTheSystem) {
    WriteFile(folder_ / "user.ini", "[stock]\nDriver=x\n[\xE5\xBA\x93\xE5\xAD\x98]\n");
    WriteFile(folder_ / "odbc.ini", "[STOCK]\nDriver=y\n[ledger]\nDriver=z\n[ODBC Data Sources]\nledger=z\n");
    const Variable user("ODBCINI", folder_ / "user.ini");
    const Variable system("ODBCSYSINI", folder_.Path());
    CStringArray names;
    names.Add("left over");
    EXPECT_EQ(GetAllDataSource(names), 3);
    EXPECT_THAT(Copied(names), ElementsAre("stock", "库存", "ledger"));
    unlink((folder_ / "user.ini").c_str());
    unlink((folder_ / "odbc.ini").c_str());
    EXPECT_EQ(GetAllDataSource(names), 0);
    EXPECT_THAT(Copied(names), IsEmpty());
}

TEST_F(Helpers, TheAdministratorOfDataSourcesIsStarted) {
    EXPECT_EQ(GetSystemODBC(), 0) << "none is installed";
    Install("ODBCConfig", "echo \"$0 $#\" > " + (folder_ / "started"));
    EXPECT_EQ(GetSystemODBC(), 1);
    struct stat state {};
    for (int i = 0; i < 1000 && (stat((folder_ / "started").c_str(), &state) != 0 || state.st_size == 0); ++i)
        usleep(10000);
    EXPECT_GT(state.st_size, 0);
    const Variable none("DISPLAY", static_cast<const char*>(nullptr));
    EXPECT_EQ(GetSystemODBC(), 0) << "it could not show itself";
}

TEST_F(Helpers, AFolderIsPickedInAWindow) {
    mkdir((folder_ / "\xE5\xBA\x93\xE5\xAD\x98").c_str(), 0700);
    Install("zenity", "echo \"$@\" > " + (folder_ / "asked") + "\necho " + (folder_ / "\xE5\xBA\x93\xE5\xAD\x98/"));
    EXPECT_STREQ(GetSystemPath(nullptr), (folder_ / "库存").c_str());
    char asked[256] = {};
    if (std::FILE* file = std::fopen((folder_ / "asked").c_str(), "r")) {
        EXPECT_NE(std::fgets(asked, sizeof(asked), file), nullptr);
        std::fclose(file);
    }
    EXPECT_STREQ(asked,
                 "--file-selection --directory --title=\xE8\xAF\xB7\xE9\x80\x89\xE6\x8B\xA9\xE6\x96\x87\xE4\xBB\xB6"
                 "\xE5\xA4\xB9\xEF\xBC\x9A\n");
}

TEST_F(Helpers, AFolderIsNoneWhenNobodyPicksOne) {
    Install("zenity", "echo " + folder_.Path() + "\nexit 1");
    EXPECT_STREQ(GetSystemPath(nullptr), "") << "cancelled";
    Install("zenity", "echo " + (folder_ / "missing"));
    EXPECT_STREQ(GetSystemPath(nullptr), "") << "no folder";
    Install("zenity", "echo " + (folder_ / "zenity"));
    EXPECT_STREQ(GetSystemPath(nullptr), "") << "a file";
    Install("zenity", "true");
    EXPECT_STREQ(GetSystemPath(nullptr), "") << "nothing";
    const Variable none("DISPLAY", static_cast<const char*>(nullptr));
    EXPECT_STREQ(GetSystemPath(nullptr), "") << "nobody is there";
}

WPARAM command = 0;

LRESULT CALLBACK NoteCommand(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND) command = wParam;
    return DefWindowProcA(window, message, wParam, lParam);
}

TEST_F(Helpers, AMenuSendsTheChosenCommandToItsOwner) {
    Install("zenity", "echo \"$@\" > " + (folder_ / "asked") + "\necho 2");
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = &NoteCommand;
    windowClass.lpszClassName = "TkMenuOwner";
    ASSERT_NE(RegisterClassA(&windowClass), 0);
    {
        CWnd owner;
        ASSERT_TRUE(owner.CreateEx(0, "TkMenuOwner", "", 0, 0, 0, 1, 1, nullptr, nullptr));
        CComModule module;
        module.Init(nullptr, GetModuleHandleA(nullptr));
        CPoint at(10, 20);
        command = 0;
        EXPECT_EQ(OnContextMenu(module, owner.GetSafeHwnd(), 7, 0, 40001, &at), 1);
        EXPECT_EQ(command, 40003u) << "separators and grey items are not offered";
        char asked[512] = {};
        if (std::FILE* file = std::fopen((folder_ / "asked").c_str(), "r")) {
            EXPECT_NE(std::fgets(asked, sizeof(asked), file), nullptr);
            std::fclose(file);
        }
        EXPECT_THAT(asked, testing::HasSubstr("[Open]")) << "the usual one";
        EXPECT_THAT(asked, testing::HasSubstr(" -- 1 Open 2 * More > Deep\n")) << "a label may begin with a dash";

        command = 0;
        Install("zenity", "exit 1");
        EXPECT_EQ(OnContextMenu(module, owner.GetSafeHwnd(), 7, 1, 0, nullptr), 1);
        EXPECT_EQ(command, 0u) << "nothing was chosen";
        EXPECT_EQ(OnContextMenu(module, owner.GetSafeHwnd(), 7, 2, 0, nullptr), 1) << "no such sub-menu: nothing shown";
        EXPECT_EQ(OnContextMenu(module, nullptr, 7, 0, 0, nullptr), 1) << "no owner: nothing shown";
    }
    EXPECT_TRUE(UnregisterClassA("TkMenuOwner", nullptr));
}

/// What a piece of work shows and ends with in a process whose terminal the test plays.
struct Dialog {
    int exitCode = -1;
    std::string shown;
};

template <typename Work>
Dialog OnTerminal(const std::string& typed, Work work) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) _exit(work());
    EXPECT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    Dialog dialog;
    char piece[512];
    for (ssize_t count = 0; (count = read(terminal, piece, sizeof(piece))) > 0;)
        dialog.shown.append(piece, static_cast<std::size_t>(count));
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    dialog.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    close(terminal);
    return dialog;
}

constexpr const char* kEnd = "\x04";  // the terminal's end of input

TEST_F(Helpers, AFolderIsAskedForOnTheTerminal) {
    const Variable none("DISPLAY", static_cast<const char*>(nullptr));
    const CString folder(folder_.Path().c_str());
    const auto pick = [&] { return GetSystemPath(nullptr) == folder ? 1 : 0; };
    const Dialog dialog = OnTerminal(folder_.Path() + "\n", pick);
    EXPECT_EQ(dialog.exitCode, 1);
    EXPECT_THAT(dialog.shown, testing::HasSubstr("\xE8\xAF\xB7\xE9\x80\x89\xE6\x8B\xA9"));
    const auto nothing = [] { return GetSystemPath(nullptr).IsEmpty() ? 1 : 0; };
    EXPECT_EQ(OnTerminal("\n", nothing).exitCode, 1);
    EXPECT_EQ(OnTerminal(kEnd, nothing).exitCode, 1);
    EXPECT_EQ(OnTerminal("/tk/no/such/folder\n", nothing).exitCode, 1);
}

TEST_F(Helpers, AMenuIsAChoiceOnTheTerminal) {
    const Variable none("DISPLAY", static_cast<const char*>(nullptr));
    const auto choose = [] {
        CWnd owner;
        owner.CreateEx(0, "STATIC", "", 0, 0, 0, 1, 1, nullptr, nullptr);
        HMENU menu = CreatePopupMenu();
        AppendMenuA(menu, MF_STRING, 101, "\xB4\xF2\xBF\xAA(&O)\tCtrl+O");
        AppendMenuA(menu, MF_STRING, 102, "Close");
        const BOOL chosen = TrackPopupMenu(menu, TPM_RETURNCMD, 0, 0, 0, owner.GetSafeHwnd(), nullptr);
        DestroyMenu(menu);
        return static_cast<int>(chosen);
    };
    const Dialog dialog = OnTerminal("2\n", choose);
    EXPECT_EQ(dialog.exitCode, 102);
    EXPECT_THAT(dialog.shown, testing::HasSubstr("1  \xE6\x89\x93\xE5\xBC\x80(O)\r\n  2  Close"));
    EXPECT_EQ(OnTerminal("9\nx\n1\n", choose).exitCode, 101) << "asked again until understood";
    EXPECT_EQ(OnTerminal("\n", choose).exitCode, 0);
    EXPECT_EQ(OnTerminal(kEnd, choose).exitCode, 0);
}

TEST_F(Helpers, ADesktopEntryIsWrittenWhereItsNameSaysSo) {
    const tk::test::Apartment apartment;
    const std::string file = folder_ / "stock.desktop";
    EXPECT_EQ(CreateLink("/opt/stock/bin/stock", "-open \"库存 100%.mdb\" $HOME", (folder_ / "stock.desktop").c_str(),
                         "/opt/stock", "库存\\管理"),
              S_OK);
    std::string content;
    if (std::FILE* written = std::fopen(file.c_str(), "r")) {
        char piece[1024];
        content.assign(piece, std::fread(piece, 1, sizeof(piece), written));
        std::fclose(written);
    }
    EXPECT_EQ(content,
              "[Desktop Entry]\nType=Application\nVersion=1.0\nName=stock\nComment=\xE5\xBA\x93\xE5\xAD\x98\\\\"
              "\xE7\xAE\xA1\xE7\x90\x86\nExec=/opt/stock/bin/stock -open \"\xE5\xBA\x93\xE5\xAD\x98 100%%.mdb\" "
              "\"\\\\$HOME\"\nPath=/opt/stock\nTerminal=false\n");
    struct stat state {};
    EXPECT_EQ(stat(file.c_str(), &state), 0);
    EXPECT_NE(state.st_mode & S_IXUSR, 0u) << "desktops start only what may be run";
}

TEST_F(Helpers, AClassExistsWhenItsServerIsThere) {
    GUID clsid = {0x5B3A2D51, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
    const std::string server = folder_ / "server.so";
    WriteFile(folder_ / "classes.conf", std::string(StringFromGuid(clsid)) + " Stock.Report " + server + "\n");
    const Variable classes("TKKERNEL_CLASSES", folder_ / "classes.conf");
    EXPECT_EQ(CLSIDExist(clsid), 0) << "registered, but the server is not there";
    WriteFile(server, "");
    EXPECT_EQ(CLSIDExist(clsid), 1);
    WriteFile(folder_ / "classes.conf",
              std::string(StringFromGuid(clsid)) + " Stock.Report /" + std::string(300, 'x') + "\n");
    EXPECT_EQ(CLSIDExist(clsid), 0) << "longer than 255 characters";
    GUID shortcut = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    EXPECT_EQ(CLSIDExist(shortcut), 1) << "built in: its server lies beside this library";
}

}  // namespace
