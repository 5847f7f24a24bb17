#include "support/tds/text_codes.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>

namespace tk::test::tds {
namespace {

class Converter {
public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
        if (handle_ == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv does not know a code");
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() { iconv_close(handle_); }

    /// @param mark  what stands for input that cannot be converted, in the code of the result
    /// @param size  gives the bytes of the input that the mark stands for
    template <class Size>
    std::string Convert(std::string_view text, std::string_view mark, Size&& size) {
        std::string result;
        std::string copy(text);
        char* in = copy.data();
        std::size_t left = copy.size();
        std::array<char, 4096> room;
        while (left != 0) {
            char* out = room.data();
            std::size_t space = room.size();
            const std::size_t converted = iconv(handle_, &in, &left, &out, &space);
            result.append(room.data(), out);
            if (converted != static_cast<std::size_t>(-1) || errno == E2BIG) continue;
            const std::size_t skipped = std::min<std::size_t>(left, size(in));
            in += skipped;
            left -= skipped;
            result += mark;
            iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        }
        return result;
    }

private:
    iconv_t handle_;
};

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::size_t SizeOfUtf8(const char* text) {
    const auto first = static_cast<unsigned char>(*text);
    return first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
}

}  // namespace

std::string Utf8ToUtf16(std::string_view text) {
    if (IsAscii(text)) {
        std::string wide(text.size() * 2, '\0');
        for (std::size_t i = 0; i < text.size(); ++i)
            wide[2 * i] = text[i];
        return wide;
    }
    return Converter("UTF-16LE", "UTF-8").Convert(text, {"?\0", 2}, [](const char*) { return 1; });
}

std::string Utf16ToUtf8(std::string_view bytes) {
    return Converter("UTF-8", "UTF-16LE").Convert(bytes, "?", [](const char*) { return 2; });
}

std::string Utf8ToCp936(std::string_view text) {
    if (IsAscii(text)) return std::string(text);
    return Converter("CP936", "UTF-8").Convert(text, "?", &SizeOfUtf8);
}

std::string Cp936ToUtf8(std::string_view bytes) {
    if (IsAscii(bytes)) return std::string(bytes);
    return Converter("UTF-8", "CP936").Convert(bytes, "?", [](const char*) { return 1; });
}

}  // namespace tk::test::tds
