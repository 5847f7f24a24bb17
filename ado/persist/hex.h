// ado/persist/hex.h - bytes as hexadecimal digits, and unique identifiers as bytes.
#pragma once

#include <string>
#include <string_view>

namespace tk::ado {

/// Lower case, two digits a byte. @param target  of twice the size
void PutHex(std::string_view bytes, char* target) noexcept;

/// False for anything but pairs of digits; blanks and line ends between them are passed over.
bool ReadHex(std::string_view digits, std::string& bytes);

/// `{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}` in upper case as the sixteen bytes it has in memory, little-endian; false
/// for any other spelling.
bool GuidBytes(std::string_view text, char* bytes) noexcept;

/// The opposite. @param text  of 38 bytes
void SpellGuid(const char* bytes, char* text) noexcept;

}  // namespace tk::ado
