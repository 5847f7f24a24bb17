// tools/demo/gettext_catalog.h - reads a compiled message catalogue (.mo).
//
// Format: GNU gettext manual, "The Format of GNU MO Files".
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace tk::tools {

class GettextCatalog {
public:
    /// An empty catalogue when the file is missing or is no catalogue.
    explicit GettextCatalog(const std::string& file);

    /// The translation, or an empty text.
    std::string_view Find(const std::string& message) const;

    std::size_t Size() const { return messages_.size(); }

private:
    std::unordered_map<std::string, std::string> messages_;
};

}  // namespace tk::tools
