#include "driver/row_text.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace tk::driver {

namespace {

constexpr int kStackUnits = 256;

// Room for UTF-16 units: on the stack for what names and most values need.
class WideBuffer {
public:
    explicit WideBuffer(int units) {
        if (units > kStackUnits) heap_.resize(static_cast<std::size_t>(units));
    }
    OLECHAR* Get() noexcept { return heap_.empty() ? stack_ : heap_.data(); }

private:
    OLECHAR stack_[kStackUnits];
    std::vector<OLECHAR> heap_;
};

/// Whether every byte is a character of its own, and none of them ends a text.
bool IsPlain(const char* text, std::size_t length) noexcept {
    constexpr std::uint64_t kHigh = 0x8080808080808080u;
    constexpr std::uint64_t kOnes = 0x0101010101010101u;
    std::uint64_t suspects = 0;
    for (; length >= sizeof(std::uint64_t); length -= sizeof(std::uint64_t), text += sizeof(std::uint64_t)) {
        std::uint64_t bytes;
        std::memcpy(&bytes, text, sizeof(bytes));
        suspects |= (bytes | (bytes - kOnes)) & kHigh;  // a high bit, or a zero byte that borrowed one
    }
    bool plain = suspects == 0;
    for (; length > 0; --length, ++text)
        plain &= static_cast<signed char>(*text) > 0;
    return plain;
}

/// @return false for a text that holds a NUL, which has its own rule for where it ends: that is left to the conversion
///         of its VARIANT
bool ToGbk(const char* utf8, ULONG length, CString* text) {
    if (utf8 == nullptr || length == 0) {
        text->Empty();
        return true;
    }
    const int count = static_cast<int>(length);
    if (IsPlain(utf8, length)) {
        *text = CString(utf8, count);
        return true;
    }
    if (std::memchr(utf8, '\0', length) != nullptr) return false;
    WideBuffer wide(count);  // UTF-8 never has fewer bytes than UTF-16 has units
    const int units = MultiByteToWideChar(CP_UTF8, 0, utf8, count, wide.Get(), count);
    *text = CString(static_cast<LPCWSTR>(wide.Get()), units);
    return true;
}

}  // namespace

bool FindField(IRowAccess& rows, const char* name, LONG* index) {
    if (name == nullptr) return false;
    const std::size_t length = std::strlen(name);
    if (length > static_cast<std::size_t>(kStackUnits)) return false;
    OLECHAR wide[kStackUnits];
    UINT units = static_cast<UINT>(length);
    if (IsPlain(name, length)) {
        for (std::size_t i = 0; i < length; ++i)
            wide[i] = static_cast<OLECHAR>(name[i]);
    } else {
        units = static_cast<UINT>(MultiByteToWideChar(CP_ACP, 0, name, static_cast<int>(length), wide, kStackUnits));
    }
    return rows.FindField(wide, units, index) == S_OK;
}

bool ReadText(IRowAccess& rows, LONG index, CString* text) {
    const char* bytes = nullptr;
    ULONG length = 0;
    return rows.GetText(index, &bytes, &length) == S_OK && ToGbk(bytes, length, text);
}

bool ReadLiteral(IRowAccess& rows, LONG index, CString* text) {
    const char* bytes = nullptr;
    ULONG length = 0;
    if (rows.GetText(index, &bytes, &length) != S_OK) return false;
    if (bytes == nullptr) {
        text->Empty();
        return true;
    }
    CString value;
    if (!ToGbk(bytes, length, &value)) return false;
    value.Replace("'", "''");  // no second byte of a character equals a quote
    *text = '\'' + value + '\'';
    return true;
}

}  // namespace tk::driver
