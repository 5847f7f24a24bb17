// tests/ado/support/utf8.h - UTF-8 literals in test sources, whose narrow literals are GBK.
#pragma once

#include <string>
#include <string_view>

namespace tk::test {

inline std::string Utf8(std::u8string_view text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size());
}

}  // namespace tk::test
