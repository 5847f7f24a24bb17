#include "support/temporary_folder.h"

#include <ftw.h>
#include <stdlib.h>

#include <cstdio>
#include <stdexcept>

namespace tk::test {

TemporaryFolder::TemporaryFolder() {
    char pattern[] = "/tmp/tkkernel-test-XXXXXX";
    if (mkdtemp(pattern) == nullptr) throw std::runtime_error("no folder can be made under /tmp");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    constexpr int kOpenFolders = 16;
    const auto remove = [](const char* path, const struct stat*, int, struct FTW*) { return std::remove(path); };
    nftw(path_.c_str(), remove, kOpenFolders, FTW_DEPTH | FTW_PHYS);
}

}  // namespace tk::test
