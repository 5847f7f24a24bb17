// Searching in CString: positions are bytes, matches begin at characters.
#include <mbstring.h>

#include <string_view>

#include "afx/letter_case.h"
#include "afx/multibyte.h"
#include "afxstr.h"

using tk::afx::CharacterLength;
using tk::afx::IsAlwaysAlone;
using tk::afx::SetHolds;

namespace {

// The first place from `from` on where whole characters of the text begin with `wanted`; null when there is none.
const char* FindCharacters(const char* from, const char* end, std::string_view wanted) noexcept {
    if (wanted.empty()) return from;
    if (IsAlwaysAlone(wanted.front())) {
        const std::string_view text(from, static_cast<std::size_t>(end - from));
        const std::size_t at = text.find(wanted);
        return at == std::string_view::npos ? nullptr : from + at;
    }
    for (const char* at = from; static_cast<std::size_t>(end - at) >= wanted.size();) {
        const int length = CharacterLength(at, end);
        // A lone byte never matches the first half of a character, nor the other way round.
        if (*at == wanted.front() && length == CharacterLength(wanted.data(), wanted.data() + wanted.size()) &&
            std::memcmp(at, wanted.data(), wanted.size()) == 0) {
            return at;
        }
        at += length;
        if (at >= end) break;
    }
    return nullptr;
}

// The first place whose character is in the set, or is not, as told; the end when there is none.
const char* FindBySet(const char* text, const char* end, LPCSTR set, bool inSet) noexcept {
    if (set == nullptr) set = "";
    const char* const setEnd = set + std::strlen(set);
    const char* at = text;
    while (at < end) {
        const int length = CharacterLength(at, end);
        if (SetHolds(set, setEnd, at, length) == inSet) break;
        at += length;
    }
    return at;
}

}  // namespace

int CString::Find(char ch, int nStart) const {
    if (ch == '\0') return -1;
    const char wanted[] = {ch, '\0'};
    return Find(wanted, nStart);
}

int CString::Find(LPCSTR lpszSub, int nStart) const {
    if (nStart < 0 || nStart > length_ || lpszSub == nullptr) return -1;
    const char* const found = FindCharacters(data_ + nStart, data_ + length_, lpszSub);
    return found == nullptr ? -1 : static_cast<int>(found - data_);
}

int CString::ReverseFind(char ch) const {
    const char* const end = data_ + length_;
    int last = -1;
    for (const char* at = data_; at < end;) {
        const int length = CharacterLength(at, end);
        if (length == 1 && *at == ch) last = static_cast<int>(at - data_);
        at += length;
    }
    return last;
}

int CString::FindOneOf(LPCSTR lpszCharSet) const {
    const char* const end = data_ + length_;
    const char* const found = FindBySet(data_, end, lpszCharSet, true);
    return found == end ? -1 : static_cast<int>(found - data_);
}

CString CString::SpanIncluding(LPCSTR lpszCharSet) const {
    return Left(static_cast<int>(FindBySet(data_, data_ + length_, lpszCharSet, false) - data_));
}

CString CString::SpanExcluding(LPCSTR lpszCharSet) const {
    return Left(static_cast<int>(FindBySet(data_, data_ + length_, lpszCharSet, true) - data_));
}

// ---- comparing

namespace {

const unsigned char* Bytes(LPCSTR text) {
    return reinterpret_cast<const unsigned char*>(text == nullptr ? "" : text);
}

}  // namespace

int CString::CompareNoCase(LPCSTR lpsz) const {
    return tk::afx::CompareIgnoringCase(data_, lpsz == nullptr ? "" : lpsz);
}

int CString::Collate(LPCSTR lpsz) const {
    return _mbscoll(Bytes(data_), Bytes(lpsz));
}

int CString::CollateNoCase(LPCSTR lpsz) const {
    return _mbsicoll(Bytes(data_), Bytes(lpsz));
}
