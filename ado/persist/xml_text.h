// ado/persist/xml_text.h - texts as attribute values of XML, and names that may be attribute names.
#pragma once

#include <string>
#include <string_view>

#include "ado/persist/file_writer.h"

namespace tk::ado {

/// Whether a text can be said in XML at all, perhaps after escapes.
enum class XmlFit : unsigned char {
    Plain,      // as it stands
    Escaped,    // with escapes
    IllFormed,  // it is no UTF-8
    Never,      // it holds a character that XML excludes
};
XmlFit FitOf(std::string_view text) noexcept;

/// Writes the text between the quotes of an attribute. The text has to be one that fits.
void PutXmlText(FileWriter& file, std::string_view text, XmlFit fit);

/// A text as attribute value, whatever it holds; what XML excludes becomes U+FFFD. For names and the like.
std::string XmlAttribute(std::string_view text);

/// Whether a column's name is a name in XML, for every reader there is: letters of ASCII, Latin, Greek, Cyrillic, kana
/// and Chinese, digits, '_', '-' and '.'; and does not begin like "xml".
bool IsXmlName(std::u16string_view name) noexcept;

}  // namespace tk::ado
