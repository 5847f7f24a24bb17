// A server of a third party: installed into a class registry of its own, created by its name; and what is no server.
#include <elf.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <afxdisp.h>

#include <cstring>
#include <string>

#include "tests/win32/system/support.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace {

using namespace tk::test;

constexpr char kClassText[] = "{7E1D0A40-52F5-4F2A-9A11-0102030405AA}";

class ExampleServer : public testing::Test {
protected:
    void Install(const std::string& server) {
        WriteFile(folder_ / "classes.conf", std::string(kClassText) + " Stock.Report " + server + "\n");
    }
    /// What the creation of the class fails with; 0 when it does not.
    DWORD Failure() {
        SetLastError(0);
        IUnknown* object = CreateIDispatch(StringToGuid(kClassText), IID_IDispatch);
        if (object == nullptr) return GetLastError();
        object->Release();
        return 0;
    }

    TempFolder folder_;
    Variable classes_{"TKKERNEL_CLASSES", folder_ / "classes.conf"};
    Variable config_{"XDG_CONFIG_HOME", "/nonexistent"};
    Apartment apartment_;
};

TEST_F(ExampleServer, IsCreatedByItsNameAndCalled) {
    Install(STOCK_REPORT);
    COleDispatchDriver report;
    CString error;
    ASSERT_EQ(CreateIDispatch(&report, "Stock.Report", error), 1) << static_cast<const char*>(error);
    long count = 0;
    report.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &count, nullptr);
    EXPECT_EQ(count, 4711);
    IUnknown* second = CreateIDispatchEx("Stock.Report", IID_IDispatch, "localhost", nullptr, nullptr, nullptr);
    ASSERT_NE(second, nullptr);
    second->Release();
    IUnknown* third = QueryIDispatch(StringToGuid("Stock.Report"), IID_IDispatch);
    ASSERT_NE(third, nullptr);
    third->Release();
    GUID clsid = StringToGuid(kClassText);
    EXPECT_EQ(CLSIDExist(clsid), 1);
}

TEST_F(ExampleServer, MayHaveAChineseName) {
    WriteFile(folder_ / "classes.conf",
              std::string(kClassText) + " \xE5\xBA\x93\xE5\xAD\x98.\xE6\x8A\xA5\xE8\xA1\xA8 " + STOCK_REPORT + "\n");
    COleDispatchDriver report;
    CString error;
    EXPECT_EQ(CreateIDispatch(&report, "库存.报表", error), 1) << static_cast<const char*>(error);
    IUnknown* object = CreateIDispatch("库存.报表.1", IID_IDispatch);
    ASSERT_NE(object, nullptr);
    object->Release();
    EXPECT_EQ(CreateIDispatch("库存.报", IID_IDispatch), nullptr);
    EXPECT_EQ(GetLastError(), 0x800401F3u);
}

TEST_F(ExampleServer, IsUnknownWithoutARegistry) {
    EXPECT_EQ(Failure(), 0x80040154u) << "no file";
    EXPECT_EQ(CreateIDispatch("Stock.Report", IID_IDispatch), nullptr);
    EXPECT_EQ(GetLastError(), 0x800401F3u);
    mkdir((folder_ / "classes.conf").c_str(), 0700);
    EXPECT_EQ(Failure(), 0x80040154u) << "a folder";
    rmdir((folder_ / "classes.conf").c_str());
    std::string binary(70000, '\0');
    for (std::size_t i = 0; i < binary.size(); ++i)
        binary[i] = static_cast<char>(i * 7919 >> 3);
    WriteFile(folder_ / "classes.conf", binary);
    EXPECT_EQ(Failure(), 0x80040154u) << "no text";
    WriteFile(folder_ / "classes.conf", std::string(kClassText) + "\n" + kClassText + " Stock.Report\n{broken} X /y\n");
    EXPECT_EQ(Failure(), 0x80040154u) << "no server in any line";
    Install(STOCK_REPORT);
    EXPECT_EQ(Failure(), 0u) << "nothing of that is remembered";
}

TEST_F(ExampleServer, TellsWhyItCannotBeLoaded) {
    // The header of a library of this machine, changed in one place.
    const std::string whole = ReadFile(STOCK_REPORT);
    ASSERT_GT(whole.size(), sizeof(Elf64_Ehdr));
    const auto changed = [&](auto change) {
        std::string copy = whole;
        Elf64_Ehdr header;
        std::memcpy(&header, copy.data(), sizeof(header));
        change(header);
        std::memcpy(copy.data(), &header, sizeof(header));
        return copy;
    };
    const struct {
        const char* label;
        std::string content;
        DWORD code;
    } kRows[] = {
        {"a text", "this is no library", 0x800700C1},
        {"nothing", "", 0x800700C1},
        {"cut in its header", whole.substr(0, 20), 0x800700C1},
        {"of another machine", changed([](Elf64_Ehdr& header) { header.e_machine = EM_S390; }), 0x800700C1},
        {"of 32 bits", changed([](Elf64_Ehdr& header) { header.e_ident[EI_CLASS] = ELFCLASS32; }), 0x800700C1},
        {"of the other byte order", changed([](Elf64_Ehdr& header) { header.e_ident[EI_DATA] = ELFDATA2MSB; }),
         0x800700C1},
        {"no library but a program's part", changed([](Elf64_Ehdr& header) { header.e_type = ET_REL; }), 0x800700C1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        WriteFile(folder_ / "server.so", row.content);
        Install(folder_ / "server.so");
        EXPECT_EQ(Failure(), row.code);
        CString error;
        COleDispatchDriver report;
        EXPECT_EQ(CreateIDispatch(&report, "Stock.Report", error), 0);
        EXPECT_STREQ(error, LookupErrorText(row.code));
        EXPECT_NE(error.GetLength(), 0);
        unlink((folder_ / "server.so").c_str());
    }
    EXPECT_EQ(Failure(), 0x8007007Eu) << "gone";
    Install(folder_.Path());
    EXPECT_EQ(Failure(), 0x800700C1u) << "a folder";
    Install(NOT_A_SERVER);
    EXPECT_EQ(Failure(), 0x800401F9u) << "no way in";
    Install(STOCK_REPORT);
    EXPECT_EQ(Failure(), 0u);
}

}  // namespace
