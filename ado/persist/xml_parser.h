// ado/persist/xml_parser.h - XML in a stream, as elements that begin and end; a thin owner around the parsing library.
//
// A document type declaration is refused where it begins, so that no entity is ever defined.
#pragma once

#include <expat.h>

#include <exception>
#include <memory>
#include <string_view>

#include "ado/persist/byte_source.h"

namespace tk::ado::xml {

/// Between the name space and the local name of what the parser gives; in no name and no name space.
inline constexpr char kSeparator = '\x01';

struct Name {
    std::string_view space;
    std::string_view local;
};

inline Name NameOf(const char* given) noexcept {
    const std::string_view whole(given);
    const std::size_t at = whole.find(kSeparator);
    if (at == std::string_view::npos) return {{}, whole};
    return {whole.substr(0, at), whole.substr(at + 1)};
}

class ElementHandler {
public:
    virtual ~ElementHandler() = default;
    /// @param attributes  names and values in turn, ended by a null pointer
    virtual void Begin(const char* name, const char** attributes) = 0;
    virtual void End() = 0;
};

/// @throws AdoError ReadingFile for what is no well-formed XML, and whatever the handler throws
void ParseXml(ByteSource& source, ElementHandler& handler);

}  // namespace tk::ado::xml
