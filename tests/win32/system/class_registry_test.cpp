#include "tests/win32/system/support.h"
#include "tests/win32/system/tiny_server.h"

using namespace tk::test;

namespace {

CLSID ClassOf(const char16_t* progId, HRESULT expected = S_OK) {
    CLSID clsid{};
    EXPECT_EQ(CLSIDFromProgID(progId, &clsid), expected);
    return clsid;
}

std::u16string NameOf(REFCLSID clsid) {
    LPOLESTR text = nullptr;
    if (FAILED(ProgIDFromCLSID(clsid, &text))) return u"?";
    const std::u16string name = text;
    CoTaskMemFree(text);
    return name;
}

constexpr auto kNoSuchName = static_cast<HRESULT>(0x800401F3);

CLSID Ado(ULONG first) {
    return {first, 0, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
}

/// No file of the machine or the user takes part.
class RegistryOf {
public:
    explicit RegistryOf(const std::string& files)
        : files_("TKKERNEL_CLASSES", files), config_("XDG_CONFIG_HOME", "/nonexistent") {}

private:
    Variable files_;
    Variable config_;
};

}  // namespace

TEST(ClassRegistry, KnowsChineseNames) {
    const TempFolder folder;
    WriteFile(folder / "classes.conf",
              "{5B3A2D44-7C42-4E0A-9D10-428F551077A1} \xE5\xBA\x93\xE5\xAD\x98.Report /opt/stock/report.so\n");
    const RegistryOf registry(folder / "classes.conf");
    const CLSID wanted = {0x5B3A2D44, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
    EXPECT_EQ(ClassOf(u"库存.Report"), wanted);
    EXPECT_EQ(ClassOf(u"库存.rePORT.2.8"), wanted);
    EXPECT_EQ(NameOf(wanted), u"库存.Report");
    ClassOf(u"库.Report", kNoSuchName);
    ClassOf(u"\xD800", kNoSuchName);
}

TEST(ClassRegistry, HasTheDataObjectsBuiltIn) {
    const RegistryOf registry("");
    static const struct {
        const char16_t* progId;
        ULONG first;
    } kRows[] = {
        {u"ADODB.Connection", 0x00000514},    {u"ADODB.Command", 0x00000507},
        {u"ADODB.Recordset", 0x00000535},     {u"ADODB.Parameter", 0x0000050B},
        {u"adodb.RECORDSET", 0x00000535},     {u"ADODB.Recordset.2", 0x00000535},
        {u"ADODB.Recordset.2.8", 0x00000535}, {u"ADODB.Connection.6.0", 0x00000514},
        {u"ADODB.Connection.15", 0x00000514},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(ClassOf(row.progId), Ado(row.first));
    EXPECT_EQ(NameOf(Ado(0x00000535)), u"ADODB.Recordset");
}

TEST(ClassRegistry, KnowsNoNameThatIsOnlyAlike) {
    const RegistryOf registry("");
    for (const char16_t* name : {u"", u"ADODB", u"ADODB.", u"ADODB.Record", u"ADODB.Recordsets", u"ADODB.Recordset.",
                                 u"ADODB.Recordset.x", u"ADODB.Recordset.2.8.1", u"ADODB.Recordset.2x",
                                 u" ADODB.Recordset", u".2", u"2.8", u"ADODB\u3002Recordset"}) {
        EXPECT_EQ(ClassOf(name, kNoSuchName), CLSID_NULL);
    }
    CLSID clsid = kTinyClass;
    EXPECT_EQ(CLSIDFromProgID(nullptr, &clsid), E_INVALIDARG);
    EXPECT_EQ(clsid, CLSID_NULL);
    EXPECT_EQ(CLSIDFromProgID(u"ADODB.Recordset", nullptr), E_INVALIDARG);
}

TEST(ClassRegistry, ReadsItsFilesAndSkipsWhatIsNoClass) {
    const TempFolder folder;
    WriteFile(folder / "classes.conf",
              "# a comment\n"
              "\n"
              "   {5c0e1a01-52f5-4f2a-9a11-010203040506}\tTiny.Class   /opt/with blank/server.so  \r\n"
              "{5C0E1A02-52F5-4F2A-9A11-010203040506} - nameless.so\n"
              "{5C0E1A03-52F5-4F2A-9A11-010203040506} No.Server\n"
              "{5C0E1A0-52F5-4F2A-9A11-010203040506} Bad.Identifier server.so\n"
              "5C0E1A03-52F5-4F2A-9A11-010203040506 No.Braces server.so\n"
              "{5C0E1A04-52F5-4F2A-9A11-010203040506} Last.Line.3 server.so");
    const RegistryOf registry(folder / "classes.conf");
    EXPECT_EQ(ClassOf(u"tiny.class"), kTinyClass);
    EXPECT_EQ(ClassOf(u"Tiny.Class.1"), kTinyClass);
    EXPECT_EQ(NameOf(kTinyClass), u"Tiny.Class");
    EXPECT_EQ(NameOf(kRefusedClass), u"?") << "it has none";
    EXPECT_EQ(ClassOf(u"-", kNoSuchName), CLSID_NULL);
    EXPECT_EQ(ClassOf(u"No.Server", kNoSuchName), CLSID_NULL);
    EXPECT_EQ(ClassOf(u"Bad.Identifier", kNoSuchName), CLSID_NULL);
    EXPECT_EQ(ClassOf(u"No.Braces", kNoSuchName), CLSID_NULL);
    EXPECT_EQ(ClassOf(u"Last.Line.3").Data1, 0x5C0E1A04u) << "a version that is registered is found as it is";
    EXPECT_EQ(ClassOf(u"Last.Line", kNoSuchName), CLSID_NULL);
}

TEST(ClassRegistry, AsksTheEnvironmentThenTheUserThenWhatIsBuiltIn) {
    const TempFolder folder;
    mkdir((folder / "tkkernel").c_str(), 0700);
    WriteFile(folder / "first.conf", "{5C0E1A01-52F5-4F2A-9A11-010203040506} Layer.Name a.so\n");
    WriteFile(folder / "second.conf",
              "{5C0E1A02-52F5-4F2A-9A11-010203040506} Layer.Name a.so\n"
              "{5C0E1A02-52F5-4F2A-9A11-010203040506} Second.Name a.so\n");
    WriteFile(folder / "tkkernel/classes.conf",
              "{5C0E1A03-52F5-4F2A-9A11-010203040506} Layer.Name a.so\n"
              "{5C0E1A03-52F5-4F2A-9A11-010203040506} Second.Name a.so\n"
              "{5C0E1A03-52F5-4F2A-9A11-010203040506} ADODB.Recordset a.so\n");
    const Variable config("XDG_CONFIG_HOME", folder.Path());
    {
        const Variable files("TKKERNEL_CLASSES",
                             folder / "first.conf" + "::" + (folder / "second.conf") + ":/no/such/file");
        EXPECT_EQ(ClassOf(u"Layer.Name").Data1, 0x5C0E1A01u);
        EXPECT_EQ(ClassOf(u"Second.Name").Data1, 0x5C0E1A02u);
        EXPECT_EQ(ClassOf(u"ADODB.Recordset").Data1, 0x5C0E1A03u);
        EXPECT_EQ(ClassOf(u"ADODB.Connection").Data1, 0x00000514u);
    }
    const Variable none("TKKERNEL_CLASSES", nullptr);
    EXPECT_EQ(ClassOf(u"Layer.Name").Data1, 0x5C0E1A03u);
    const Variable home("HOME", folder / "home");
    mkdir((folder / "home").c_str(), 0700);
    mkdir((folder / "home/.config").c_str(), 0700);
    mkdir((folder / "home/.config/tkkernel").c_str(), 0700);
    WriteFile(folder / "home/.config/tkkernel/classes.conf",
              "{5C0E1A04-52F5-4F2A-9A11-010203040506} Layer.Name a.so\n");
    const Variable noConfig("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(ClassOf(u"Layer.Name").Data1, 0x5C0E1A04u);
}

TEST(ClassRegistry, SeesAFileChange) {
    const TempFolder folder;
    const RegistryOf registry(folder / "classes.conf");
    EXPECT_EQ(ClassOf(u"Some.Name", kNoSuchName), CLSID_NULL);
    WriteFile(folder / "classes.conf", "{5C0E1A01-52F5-4F2A-9A11-010203040506} Some.Name a.so\n");
    EXPECT_EQ(ClassOf(u"Some.Name"), kTinyClass);
    WriteFile(folder / "other.conf", "{5C0E1A02-52F5-4F2A-9A11-010203040506} Some.Name a.so\n");
    std::rename((folder / "other.conf").c_str(), (folder / "classes.conf").c_str());
    EXPECT_EQ(ClassOf(u"Some.Name"), kRefusedClass);
    unlink((folder / "classes.conf").c_str());
    EXPECT_EQ(ClassOf(u"Some.Name", kNoSuchName), CLSID_NULL);
}
