// tests/support/tds/text_codes.h - texts between UTF-8, in which the server keeps them, and what travels: UTF-16, least
// byte first, for national characters, and code page 936 for the others.
#pragma once

#include <string>
#include <string_view>

namespace tk::test::tds {

/// Bytes of UTF-16. What is no UTF-8, or UTF-16, becomes a question mark.
std::string Utf8ToUtf16(std::string_view text);
std::string Utf16ToUtf8(std::string_view bytes);

/// A character that the code page does not have becomes a question mark.
std::string Utf8ToCp936(std::string_view text);
std::string Cp936ToUtf8(std::string_view bytes);

}  // namespace tk::test::tds
