// Any bytes through every conversion between GBK, UTF-8 and UTF-16: sizes agree, buffers hold, round trips of clean
// text are exact.
#include <tkwin32/text.h>
#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

void TryCodePage(UINT page, std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    const int needed = MultiByteToWideChar(page, 0, bytes.data(), size, nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(needed), u'\0');
    Require(MultiByteToWideChar(page, 0, bytes.data(), size, wide.data(), needed) == needed);
    const int back = WideCharToMultiByte(page, 0, wide.data(), needed, nullptr, 0, nullptr, nullptr);
    std::string again(static_cast<std::size_t>(back), '\0');
    Require(WideCharToMultiByte(page, 0, wide.data(), needed, again.data(), back, nullptr, nullptr) == back);
    const bool clean =
        MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), size, wide.data(), needed) == needed;
    if (clean) Require(again == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    TryCodePage(936, bytes);
    TryCodePage(CP_UTF8, bytes);
    Require(tk::text::GbkToUtf8(bytes).size() == tk::text::GbkToUtf8Length(bytes));
    Require(tk::text::Utf8ToGbk(bytes).size() == tk::text::Utf8ToGbkLength(bytes));
    const std::size_t cut = tk::text::WholeGbkPrefix(bytes, size / 2);
    Require(cut <= size / 2);
    return 0;
}
