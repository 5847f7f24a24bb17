#include "tools/demo/gettext_catalog.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>

namespace tk::tools {
namespace {

class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content) {
        const int file = mkstemp(path_);
        if (file >= 0) close(file);
        std::ofstream(path_, std::ios::binary) << content;
    }
    ~TemporaryFile() { unlink(path_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const char* Path() const { return path_; }

private:
    char path_[32] = "/tmp/catalog-test-XXXXXX";
};

std::string Words(std::initializer_list<std::uint32_t> words) {
    std::string bytes;
    for (const std::uint32_t word : words)
        bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
    return bytes;
}

// One message, "tea" -> "cha": header of 28 bytes, two descriptors of 8, then the texts.
std::string OneMessage() {
    return Words({0x950412DE, 0, 1, 28, 36, 0, 0, 3, 44, 3, 48}) + std::string("tea\0cha\0", 8);
}

TEST(GettextCatalog, FindsATranslation) {
    const TemporaryFile file(OneMessage());
    const GettextCatalog catalog(file.Path());
    EXPECT_EQ(catalog.Size(), 1u);
    EXPECT_EQ(catalog.Find("tea"), "cha");
    EXPECT_EQ(catalog.Find("silk"), "");
}

TEST(GettextCatalog, IsEmptyWhenTheFileIsMissingOrIsNoCatalogue) {
    EXPECT_EQ(GettextCatalog("/nowhere/at/all.mo").Size(), 0u);
    const TemporaryFile other("this is a text file");
    EXPECT_EQ(GettextCatalog(other.Path()).Size(), 0u);
}

TEST(GettextCatalog, SurvivesFilesThatEndEarlyOrLie) {
    const std::string whole = OneMessage();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const TemporaryFile file(whole.substr(0, length));
        EXPECT_LE(GettextCatalog(file.Path()).Size(), 1u) << length;
    }
    const TemporaryFile huge(Words({0x950412DE, 0, 0xFFFFFFFF, 28, 36, 0, 0}));
    EXPECT_EQ(GettextCatalog(huge.Path()).Size(), 0u);
    const TemporaryFile wild(Words({0x950412DE, 0, 1, 28, 36, 0, 0, 0xFFFFFFFF, 44, 3, 0xFFFFFFF0}));
    EXPECT_EQ(GettextCatalog(wild.Path()).Find("tea"), "");
}

}  // namespace
}  // namespace tk::tools
