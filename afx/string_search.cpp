// Searching in CString: positions are bytes, matches begin at characters.
#include <mbstring.h>

#include <cstring>
#include <string_view>
#include <vector>

#include "afx/letter_case.h"
#include "afx/multibyte.h"
#include "afxstr.h"

using tk::afx::CharacterLength;
using tk::afx::IsLead;
using tk::afx::IsTrail;
using tk::afx::SetHolds;

namespace {

/// Whether a character begins at a place that holds no lead byte, given that one begins at `from`. What is no lead byte
/// ends a character, so it is the lead bytes right before the place that count: they pair up.
bool BeginsCharacter(const char* from, const char* at) noexcept {
    const char* run = at;
    while (run > from && IsLead(run[-1]))
        --run;
    return (at - run) % 2 == 0 || !IsTrail(*at);
}

const char* FindFromLeadByte(const char* from, const char* end, std::string_view wanted) noexcept {
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

const char* FindShort(const char* from, const char* end, std::string_view wanted) noexcept {
    const std::string_view text(from, static_cast<std::size_t>(end - from));
    for (std::size_t at = 0; (at = text.find(wanted, at)) != std::string_view::npos; ++at) {
        if (BeginsCharacter(from, from + at)) return from + at;
    }
    return nullptr;
}

/// A long text may begin anew many times in what is searched, and each beginning may be almost all of it. This way
/// (Knuth, Morris and Pratt) no byte is looked at twice.
const char* FindLong(const char* from, const char* end, std::string_view wanted) {
    if (static_cast<std::size_t>(end - from) < wanted.size()) return nullptr;
    // For the first n + 1 bytes of wanted: how many of them, not all, are also their end.
    std::vector<std::size_t> borders(wanted.size());
    const auto extend = [&](std::size_t matched, char next) {
        while (matched > 0 && wanted[matched] != next)
            matched = borders[matched - 1];
        return wanted[matched] == next ? matched + 1 : 0;
    };
    for (std::size_t i = 1; i < wanted.size(); ++i)
        borders[i] = extend(borders[i - 1], wanted[i]);
    std::size_t matched = 0;
    for (const char* at = from; at < end; ++at) {
        matched = extend(matched, *at);
        if (matched < wanted.size()) continue;
        const char* const found = at + 1 - wanted.size();
        if (BeginsCharacter(from, found)) return found;
        matched = borders[matched - 1];
    }
    return nullptr;
}

// The first place from `from` on where whole characters of the text begin with `wanted`; null when there is none.
const char* FindCharacters(const char* from, const char* end, std::string_view wanted) {
    constexpr std::size_t kLong = 256;
    if (wanted.empty()) return from;
    if (IsLead(wanted.front())) return FindFromLeadByte(from, end, wanted);
    return wanted.size() < kLong ? FindShort(from, end, wanted) : FindLong(from, end, wanted);
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
