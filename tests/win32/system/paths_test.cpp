#include <cerrno>
#include <cstring>

#include "tests/win32/system/support.h"

namespace {

struct Parts {
    char drive[_MAX_DRIVE] = "?";
    char folder[_MAX_DIR] = "?";
    char name[_MAX_FNAME] = "?";
    char extension[_MAX_EXT] = "?";

    std::string Text() const { return std::string(drive) + "|" + folder + "|" + name + "|" + extension; }
};

}  // namespace

TEST(SplitPath, TakesPathsApart) {
    static const struct {
        const char* path;
        const char* parts;
    } kRows[] = {
        {"/opt/stock/bin/stock.exe", "|/opt/stock/bin/|stock|.exe"},
        {"stock.exe", "||stock|.exe"},
        {"/stock", "|/|stock|"},
        {"/opt/stock/", "|/opt/stock/||"},
        {"/opt/v1.2/stock", "|/opt/v1.2/|stock|"},
        {"stock.tar.gz", "||stock.tar|.gz"},
        {"stock.", "||stock|."},
        {".profile", "|||.profile"},
        {"/a/..", "|/a/|.|."},
        {"", "|||"},
        {"C:\\stock\\app.exe", "||C:\\stock\\app|.exe"},
        {"/仓库/订单\\账目.txt", "|/仓库/|订单\\账目|.txt"},
    };
    for (const auto& row : kRows) {
        Parts parts;
        _splitpath(row.path, parts.drive, parts.folder, parts.name, parts.extension);
        EXPECT_EQ(parts.Text(), row.parts) << row.path;
        Parts sized;
        EXPECT_EQ(_splitpath_s(row.path, sized.drive, sizeof sized.drive, sized.folder, sizeof sized.folder, sized.name,
                               sizeof sized.name, sized.extension, sizeof sized.extension),
                  0);
        EXPECT_EQ(sized.Text(), row.parts) << row.path;
    }
}

TEST(SplitPath, SkipsWhatIsNotWanted) {
    char name[_MAX_FNAME] = "?";
    _splitpath("/opt/stock.exe", nullptr, nullptr, name, nullptr);
    EXPECT_STREQ(name, "stock");
    Parts parts;
    _splitpath(nullptr, parts.drive, parts.folder, parts.name, parts.extension);
    EXPECT_EQ(parts.Text(), "|||");
}

TEST(SplitPath, CutsLongPartsBehindAWholeCharacter) {
    std::string path = "/" + std::string(253, 'd');
    path += "库/" + std::string(254, 'n') + "库.e";
    Parts parts;
    _splitpath(path.c_str(), parts.drive, parts.folder, parts.name, parts.extension);
    EXPECT_EQ(std::string(parts.folder), "/" + std::string(253, 'd'));
    EXPECT_EQ(std::string(parts.name), std::string(254, 'n'));
    EXPECT_STREQ(parts.extension, ".e");
}

TEST(SplitPath, WithSizesRefusesWhatDoesNotFit) {
    char name[6] = "?";
    char extension[4] = "?";
    EXPECT_EQ(_splitpath_s("/a/stock.ex", nullptr, 0, nullptr, 0, name, 6, extension, 4), 0);
    EXPECT_STREQ(name, "stock");
    EXPECT_STREQ(extension, ".ex");
    EXPECT_EQ(_splitpath_s("/a/stock.exe", nullptr, 0, nullptr, 0, name, 6, extension, 4), ERANGE);
    EXPECT_STREQ(name, "");
    EXPECT_STREQ(extension, "");
    EXPECT_EQ(_splitpath_s("/a/stocks.ex", nullptr, 0, nullptr, 0, name, 6, extension, 4), ERANGE);
    EXPECT_EQ(_splitpath_s(nullptr, nullptr, 0, nullptr, 0, name, 6, extension, 4), EINVAL);
    EXPECT_EQ(_splitpath_s("x", nullptr, 0, nullptr, 0, name, 0, nullptr, 0), EINVAL);
    EXPECT_EQ(_splitpath_s("x", nullptr, 3, nullptr, 0, name, 6, nullptr, 0), EINVAL);
}

TEST(MakePath, AddsWhatIsMissing) {
    static const struct {
        const char* label;
        const char* drive;
        const char* folder;
        const char* name;
        const char* extension;
        const char* path;
    } kRows[] = {
        {"all there", "", "/opt/", "stock", ".exe", "/opt/stock.exe"},
        {"separator and point", nullptr, "/opt", "stock", "exe", "/opt/stock.exe"},
        {"name alone", nullptr, nullptr, "stock", nullptr, "stock"},
        {"a drive", "C", nullptr, "stock", "", "C:stock"},
        {"folder alone", nullptr, "/opt", nullptr, nullptr, "/opt/"},
        {"nothing", nullptr, nullptr, nullptr, nullptr, ""},
        {"Chinese", nullptr, "/仓库", "订单", "txt", "/仓库/订单.txt"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        char path[_MAX_PATH] = "?";
        _makepath(path, row.drive, row.folder, row.name, row.extension);
        EXPECT_STREQ(path, row.path);
    }
    char path[_MAX_PATH];
    _makepath(path, nullptr, std::string(300, 'a').c_str(), nullptr, nullptr);
    EXPECT_EQ(std::strlen(path), 259u);
}
