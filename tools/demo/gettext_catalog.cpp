#include "tools/demo/gettext_catalog.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

namespace tk::tools {
namespace {

constexpr std::uint32_t kMagic = 0x950412DE;  // in the byte order of the machine that wrote the file

// A bounds-checked look at the file's bytes.
class Bytes {
public:
    explicit Bytes(std::string_view data) : data_(data) {}

    std::uint32_t Word(std::size_t offset) const {
        std::uint32_t value = 0;
        if (offset + sizeof value <= data_.size()) std::memcpy(&value, data_.data() + offset, sizeof value);
        return value;
    }

    // A length and an offset, both 32-bit, describe a text.
    std::string_view Text(std::size_t descriptor) const {
        const std::size_t length = Word(descriptor);
        const std::size_t offset = Word(descriptor + 4);
        return offset <= data_.size() && length <= data_.size() - offset ? data_.substr(offset, length)
                                                                         : std::string_view{};
    }

private:
    std::string_view data_;
};

}  // namespace

GettextCatalog::GettextCatalog(const std::string& file) {
    std::ifstream input(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(input), {}};
    const Bytes bytes(content);
    if (bytes.Word(0) != kMagic) return;
    const std::uint32_t count = bytes.Word(8);
    const std::size_t originals = bytes.Word(12);
    const std::size_t translations = bytes.Word(16);
    if (count > content.size() / 8) return;  // each entry takes two descriptors
    for (std::uint32_t i = 0; i < count; ++i) {
        messages_.emplace(bytes.Text(originals + i * 8), bytes.Text(translations + i * 8));
    }
}

std::string_view GettextCatalog::Find(const std::string& message) const {
    const auto found = messages_.find(message);
    return found == messages_.end() ? std::string_view{} : std::string_view{found->second};
}

}  // namespace tk::tools
