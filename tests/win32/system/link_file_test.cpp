// Shortcuts: the bytes of the shell's format, and files that are none.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "shlobj.h"
#include "tests/win32/system/support.h"
#include "win32/shell/link_file.h"

using namespace tk::test;
using tk::shell::Link;
using tk::shell::ReadLinkFile;
using tk::shell::WriteLinkFile;

namespace {

std::string Bytes(std::initializer_list<int> values) {
    std::string bytes;
    for (const int value : values)
        bytes += static_cast<char>(value);
    return bytes;
}

Link Sample() {
    Link link;
    link.target = u"/no/库";
    link.description = u"d";
    link.directory = u"/w";
    link.arguments = u"-x";
    link.iconPath = u"/i";
    link.icon = -2;
    link.show = 7;
    link.hotkey = 0x0641;
    return link;
}

}  // namespace

TEST(LinkFile, IsWrittenInTheShellsFormat) {
    const std::string expected =
        Bytes({0x4C, 0, 0, 0, 0x01, 0x14, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46}) +
        Bytes({0xF6, 0, 0, 0}) +           // target, description, directory, arguments, icon, UTF-16
        std::string(4 + 24 + 4, '\0') +    // attributes, times and size of a target that is not there
        Bytes({0xFE, 0xFF, 0xFF, 0xFF}) +  // icon
        Bytes({7, 0, 0, 0, 0x41, 0x06}) +  // window, key
        std::string(10, '\0') +
        // Where the target is: sizes and places, a volume, the path in GBK and in UTF-16.
        Bytes({0x4B, 0, 0, 0, 0x24, 0, 0, 0, 1, 0, 0, 0, 0x24, 0, 0, 0, 0x35, 0, 0, 0, 0, 0, 0, 0}) +
        Bytes({0x3C, 0, 0, 0, 0x3D, 0, 0, 0, 0x49, 0, 0, 0}) +
        Bytes({0x11, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0x10, 0, 0, 0, 0}) + "/no/\xBF\xE2" + Bytes({0, 0}) +
        Bytes({'/', 0, 'n', 0, 'o', 0, '/', 0, 0x93, 0x5E, 0, 0, 0, 0}) +
        Bytes({1, 0, 'd', 0, 2, 0, '/', 0, 'w', 0, 2, 0, '-', 0, 'x', 0, 2, 0, '/', 0, 'i', 0, 0, 0, 0, 0});
    std::string written = WriteLinkFile(Sample());
    EXPECT_EQ(written.size(), expected.size());
    EXPECT_EQ(written, expected);
}

TEST(LinkFile, IsReadAsItWasWritten) {
    for (const bool bare : {false, true}) {
        const Link link = bare ? Link{} : Sample();
        const auto read = ReadLinkFile(WriteLinkFile(link));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->target, link.target);
        EXPECT_EQ(read->description, link.description);
        EXPECT_EQ(read->directory, link.directory);
        EXPECT_EQ(read->arguments, link.arguments);
        EXPECT_EQ(read->iconPath, link.iconPath);
        EXPECT_EQ(read->icon, link.icon);
        EXPECT_EQ(read->show, link.show);
        EXPECT_EQ(read->hotkey, link.hotkey);
    }
}

TEST(LinkFile, IsNoneWhenItIsCutAnywhere) {
    const std::string whole = WriteLinkFile(Sample());
    // The zero at the end is no loss.
    for (std::size_t length = 0; length + 4 < whole.size(); ++length)
        EXPECT_FALSE(ReadLinkFile(whole.substr(0, length)).has_value()) << length;
}

TEST(LinkFile, SurvivesEveryChangedByte) {
    const std::string whole = WriteLinkFile(Sample());
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const int value : {0x00, 0x01, 0x7F, 0xFF}) {
            std::string changed = whole;
            changed[i] = static_cast<char>(value);
            const auto read = ReadLinkFile(changed);
            if (read) {
                EXPECT_LE(read->target.size(), whole.size());
            }
        }
    }
}

TEST(LinkFile, SaysWhatItsTargetIs) {
    const TempFolder folder;
    WriteFile(folder / "stock", "12345");
    Link link;
    link.target.assign(folder.Path().begin(), folder.Path().end());
    EXPECT_EQ(WriteLinkFile(link)[24], 0x10) << "a folder";
    link.target += u"/stock";
    const std::string file = WriteLinkFile(link);
    EXPECT_EQ(file[24], 0x20);
    EXPECT_EQ(file[52], 5) << "its size";
}

namespace {

class ShellLinkObject : public ::testing::Test {
protected:
    ShellLinkObject() {
        EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                   reinterpret_cast<void**>(&link_)),
                  S_OK);
        EXPECT_EQ(link_->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file_)), S_OK);
    }
    ~ShellLinkObject() override {
        file_->Release();
        EXPECT_EQ(link_->Release(), 0u);
    }

    static std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

    Apartment apartment_;
    TempFolder folder_;
    IShellLinkA* link_ = nullptr;
    IPersistFile* file_ = nullptr;
};

}  // namespace

TEST_F(ShellLinkObject, RemembersItsFile) {
    const std::u16string name = Wide(folder_ / "a.lnk");
    LPOLESTR current = nullptr;
    EXPECT_EQ(file_->GetCurFile(&current), S_FALSE);
    EXPECT_EQ(file_->IsDirty(), S_FALSE);
    EXPECT_EQ(link_->SetPath("/bin/sh"), S_OK);
    EXPECT_EQ(file_->IsDirty(), S_OK);
    EXPECT_EQ(file_->Save(nullptr, TRUE), E_INVALIDARG);
    EXPECT_EQ(file_->Save(name.c_str(), FALSE), S_OK);
    EXPECT_EQ(file_->IsDirty(), S_OK) << "a copy";
    EXPECT_EQ(file_->Save(name.c_str(), TRUE), S_OK);
    EXPECT_EQ(file_->IsDirty(), S_FALSE);
    ASSERT_EQ(file_->GetCurFile(&current), S_OK);
    EXPECT_EQ(std::u16string(current), name);
    CoTaskMemFree(current);
    EXPECT_EQ(link_->SetArguments("-x"), S_OK);
    EXPECT_EQ(file_->Save(nullptr, TRUE), S_OK);
    CLSID clsid{};
    EXPECT_EQ(file_->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, CLSID_ShellLink);
}

TEST_F(ShellLinkObject, TellsWhyAFileIsNoShortcut) {
    EXPECT_EQ(file_->Load(Wide(folder_ / "missing.lnk").c_str(), 0), static_cast<HRESULT>(0x80070002));
    EXPECT_EQ(file_->Load(Wide(folder_.Path()).c_str(), 0), E_ACCESSDENIED);
    WriteFile(folder_ / "text.lnk", "this is text");
    EXPECT_EQ(file_->Load(Wide(folder_ / "text.lnk").c_str(), 0), E_FAIL);
    EXPECT_EQ(file_->Load(Wide(folder_ / "x.desktop").c_str(), 0), E_NOTIMPL);
    EXPECT_EQ(file_->Load(nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(file_->Save(Wide(folder_ / "no/folder.lnk").c_str(), TRUE), static_cast<HRESULT>(0x80070002));
    EXPECT_EQ(file_->Save(Wide(folder_.Path()).c_str(), TRUE), static_cast<HRESULT>(0x80070005));
}

TEST_F(ShellLinkObject, KeepsTextsUpToTheRoomThereIs) {
    char text[5] = {};
    EXPECT_EQ(link_->GetPath(text, sizeof text, nullptr, 0), S_FALSE);
    link_->SetPath("/库存/x");
    EXPECT_EQ(link_->GetPath(text, 4, nullptr, 0), S_OK);
    EXPECT_STREQ(text, "/库");
    EXPECT_EQ(link_->GetPath(text, 5, nullptr, 0), S_OK);
    EXPECT_STREQ(text, "/库") << "cut behind a whole character";
    EXPECT_EQ(link_->GetPath(text, 0, nullptr, 0), E_INVALIDARG);
    link_->SetDescription(nullptr);
    EXPECT_EQ(link_->GetDescription(text, sizeof text), S_OK);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(link_->SetIconLocation("/i", 3), S_OK);
    int icon = 0;
    EXPECT_EQ(link_->GetIconLocation(text, sizeof text, &icon), S_OK);
    EXPECT_EQ(icon, 3);
    EXPECT_EQ(link_->GetIDList(nullptr), E_NOTIMPL);
}
