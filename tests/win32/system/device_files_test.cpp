// Devices by name: serial ports and files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include "tests/win32/system/support.h"
#include "windows.h"

using namespace tk::test;

namespace {

DWORD Try(const std::string& name, DWORD access = 0, DWORD share = 0) {
    SetLastError(0);
    const HANDLE file = CreateFileA(name.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_FALSE(CloseHandle(file));
    return 0;
}

class Devices : public ::testing::Test {
protected:
    Devices() {
        grantpt(master_);
        unlockpt(master_);
        char name[128] = {};
        ptsname_r(master_, name, sizeof name);
        terminal_ = name;
        WriteFile(folder_ / "ports.conf",
                  "COM1 -\nCOM3 " + terminal_ + "\nCOM256 " + terminal_ + "\nCOM257 " + terminal_ + "\n");
    }
    ~Devices() override { close(master_); }

    TempFolder folder_;
    int master_ = posix_openpt(O_RDWR | O_NOCTTY);
    std::string terminal_;
    Variable ports_{"TKKERNEL_PORTS", folder_ / "ports.conf"};
};

}  // namespace

TEST_F(Devices, AreFoundByThePortsName) {
    EXPECT_EQ(Try("COM3"), 0u);
    EXPECT_EQ(Try("com3"), 0u);
    EXPECT_EQ(Try("\\\\.\\COM3"), 0u);
    EXPECT_EQ(Try("COM256"), 0u);
    EXPECT_EQ(Try("COM1"), 2u) << "taken away by the map";
    for (const char* name : {"COM257", "COM0", "COM03", "COM", "COMX", "COM3:", "COM3 ", ""}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Try(name), 2u) << "no port, and no such file";
    }
}

TEST_F(Devices, AreOpenedForWhatIsAsked) {
    EXPECT_EQ(Try("COM3", GENERIC_READ), 0u);
    EXPECT_EQ(Try("COM3", GENERIC_WRITE, FILE_SHARE_READ), 0u);
    const HANDLE port = CreateFileA("COM3", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(port, INVALID_HANDLE_VALUE);
    int exclusive = 0;
    const int other = open(terminal_.c_str(), O_RDWR | O_NOCTTY);
    if (other >= 0) {  // the superuser may open it all the same
        EXPECT_EQ(ioctl(other, TIOCGEXCL, &exclusive), 0);
        EXPECT_NE(exclusive, 0);
        close(other);
    }
    EXPECT_TRUE(CloseHandle(port));
}

TEST_F(Devices, AreNotTouchedByALook) {
    const HANDLE port = CreateFileA("COM3", 0, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(port, INVALID_HANDLE_VALUE);
    int exclusive = 1;
    const int other = open(terminal_.c_str(), O_RDWR | O_NOCTTY);
    ASSERT_GE(other, 0);
    EXPECT_EQ(ioctl(other, TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0);
    close(other);
    EXPECT_TRUE(CloseHandle(port));
}

TEST_F(Devices, MayBeFiles) {
    WriteFile(folder_ / "\xE5\xBA\x93", "x");
    EXPECT_EQ(Try(folder_ / "库"), 0u);
    EXPECT_EQ(Try(folder_ / "库", GENERIC_READ), 0u);
    EXPECT_EQ(Try(folder_ / "missing"), 2u);
    EXPECT_EQ(Try(folder_.Path()), 5u);
    EXPECT_EQ(Try(folder_.Path(), GENERIC_READ), 5u);
    EXPECT_EQ(CreateFileA(nullptr, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(CreateFileA((folder_ / "new").c_str(), GENERIC_WRITE, 0, nullptr, 2, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 50u);
}

TEST_F(Devices, HaveNoMapFromAProgramsFile) {
    WriteFile(folder_ / "ports.conf", std::string("\x7F"
                                                  "ELF\0COM3\n\xFF",
                                                  11));
    EXPECT_EQ(Try("COM200"), 2u);
    const Variable folder("TKKERNEL_PORTS", folder_.Path());
    EXPECT_EQ(Try("COM200"), 2u);
}
