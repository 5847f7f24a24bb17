#include <algorithm>

#include "tkwin32/text.h"

namespace tk::text {
namespace {

template <class Out, class In>
using Conversion = Converted (*)(std::basic_string_view<In>, Out*, std::size_t) noexcept;

template <class Out, class In>
std::basic_string<Out> Own(std::basic_string_view<In> source, std::size_t bound, Conversion<Out, In> convert) {
    // What a short text becomes is copied once instead of being zeroed first and shortened afterwards.
    constexpr std::size_t kShort = 1024;
    if (bound <= kShort) {
        Out text[kShort];
        return std::basic_string<Out>(text, convert(source, text, bound).written);
    }
    std::basic_string<Out> result(bound, Out());
    result.resize(convert(source, result.data(), bound).written);
    return result;
}

// Converts piece by piece into a small buffer that is thrown away.
template <class Out, class In>
std::size_t Length(std::basic_string_view<In> source, Conversion<Out, In> convert) noexcept {
    Out piece[1024];
    std::size_t length = 0;
    while (!source.empty()) {
        const Converted done = convert(source, piece, std::size(piece));
        length += done.written;
        source.remove_prefix(done.read);
    }
    return length;
}

}  // namespace

std::u16string Utf8ToUtf16(std::string_view source) {
    return Own<char16_t, char>(source, Utf8ToUtf16Bound(source.size()), Utf8ToUtf16);
}
std::string Utf16ToUtf8(std::u16string_view source) {
    return Own<char, char16_t>(source, Utf16ToUtf8Bound(source.size()), Utf16ToUtf8);
}
std::u16string GbkToUtf16(std::string_view source) {
    return Own<char16_t, char>(source, GbkToUtf16Bound(source.size()), GbkToUtf16);
}
std::string Utf16ToGbk(std::u16string_view source) {
    return Own<char, char16_t>(source, Utf16ToGbkBound(source.size()), Utf16ToGbk);
}
std::string GbkToUtf8(std::string_view source) {
    return Own<char, char>(source, GbkToUtf8Bound(source.size()), GbkToUtf8);
}
std::string Utf8ToGbk(std::string_view source) {
    return Own<char, char>(source, Utf8ToGbkBound(source.size()), Utf8ToGbk);
}

std::size_t Utf8ToUtf16Length(std::string_view source) noexcept {
    return Length<char16_t, char>(source, Utf8ToUtf16);
}
std::size_t Utf16ToUtf8Length(std::u16string_view source) noexcept {
    return Length<char, char16_t>(source, Utf16ToUtf8);
}
std::size_t GbkToUtf16Length(std::string_view source) noexcept {
    return Length<char16_t, char>(source, GbkToUtf16);
}
std::size_t Utf16ToGbkLength(std::u16string_view source) noexcept {
    return Length<char, char16_t>(source, Utf16ToGbk);
}
std::size_t GbkToUtf8Length(std::string_view source) noexcept {
    return Length<char, char>(source, GbkToUtf8);
}
std::size_t Utf8ToGbkLength(std::string_view source) noexcept {
    return Length<char, char>(source, Utf8ToGbk);
}

std::size_t WholeGbkPrefix(std::string_view text, std::size_t limit) noexcept {
    limit = std::min(limit, text.size());
    std::size_t end = 0;
    while (end < limit) {
        const bool pair = IsGbkLead(text[end]) && end + 1 < text.size() && IsGbkTrail(text[end + 1]);
        if (pair && end + 2 > limit) break;
        end += pair ? 2 : 1;
    }
    return end;
}

}  // namespace tk::text
