// Cutting and changing CString. What looks for characters steps by character; positions given by the caller are bytes.
#include <algorithm>
#include <string_view>
#include <utility>

#include "afx/letter_case.h"
#include "afx/multibyte.h"
#include "afx_exception.h"
#include "afxstr.h"

using tk::afx::CharacterLength;
using tk::afx::IsAlwaysAlone;
using tk::afx::SetHolds;

namespace {

constexpr char kBlanks[] = " \t\n\v\f\r";

}  // namespace

CString CString::Mid(int nFirst) const {
    return Mid(nFirst, length_);
}

CString CString::Mid(int nFirst, int nCount) const {
    const int first = std::clamp(nFirst, 0, length_);
    return CString(data_ + first, std::clamp(nCount, 0, length_ - first));
}

CString CString::Left(int nCount) const {
    return Mid(0, nCount);
}

CString CString::Right(int nCount) const {
    const int count = std::clamp(nCount, 0, length_);
    return Mid(length_ - count, count);
}

void CString::MakeUpper() {
    tk::afx::MakeCapitals(data_, length_);
}

void CString::MakeLower() {
    tk::afx::MakeSmall(data_, length_);
}

void CString::MakeReverse() {
    // Double-byte characters are turned beforehand, so that turning the whole puts them right.
    char* const end = data_ + length_;
    for (char* at = data_; at < end;) {
        const int length = CharacterLength(at, end);
        if (length == 2) std::swap(at[0], at[1]);
        at += length;
    }
    std::reverse(data_, end);
}

void CString::TrimLeft() {
    TrimLeft(kBlanks);
}

void CString::TrimLeft(char chTarget) {
    const char targets[] = {chTarget, '\0'};
    TrimLeft(targets);
}

void CString::TrimLeft(LPCSTR lpszTargets) {
    if (lpszTargets == nullptr) return;
    const char* const setEnd = lpszTargets + std::strlen(lpszTargets);
    const char* const end = data_ + length_;
    const char* at = data_;
    while (at < end) {
        const int length = CharacterLength(at, end);
        if (!SetHolds(lpszTargets, setEnd, at, length)) break;
        at += length;
    }
    Delete(0, static_cast<int>(at - data_));
}

void CString::TrimRight() {
    TrimRight(kBlanks);
}

void CString::TrimRight(char chTarget) {
    const char targets[] = {chTarget, '\0'};
    TrimRight(targets);
}

void CString::TrimRight(LPCSTR lpszTargets) {
    if (lpszTargets == nullptr) return;
    const std::string_view set(lpszTargets);
    const char* const setEnd = set.data() + set.size();
    const char* const end = data_ + length_;
    const char* kept = data_;
    if (std::all_of(set.begin(), set.end(), IsAlwaysAlone)) {
        kept = end;
        while (kept > data_ && set.find(kept[-1]) != std::string_view::npos)
            --kept;
    } else {
        // Only from the beginning is it certain which bytes are characters.
        for (const char* at = data_; at < end;) {
            const int length = CharacterLength(at, end);
            const bool stays = !SetHolds(set.data(), setEnd, at, length);
            at += length;
            if (stays) kept = at;
        }
    }
    SetLength(static_cast<int>(kept - data_));
}

int CString::Replace(char chOld, char chNew) {
    if (chOld == chNew || chOld == '\0') return 0;
    char* const end = data_ + length_;
    int count = 0;
    for (char* at = data_; at < end;) {
        const int length = CharacterLength(at, end);
        if (length == 1 && *at == chOld) {
            *at = chNew;
            ++count;
        }
        at += length;
    }
    return count;
}

int CString::Replace(LPCSTR lpszOld, LPCSTR lpszNew) {
    if (lpszOld == nullptr || *lpszOld == '\0') return 0;
    const CString old(lpszOld);  // both may lie in this text
    const CString fresh(lpszNew);
    int count = 0;
    int from = 0;
    CString result;
    for (int at = Find(old, 0); at >= 0; at = Find(old, from)) {
        result.Append(data_ + from, at - from);
        result += fresh;
        from = at + old.length_;
        ++count;
    }
    if (count == 0) return 0;
    result.Append(data_ + from, length_ - from);
    *this = std::move(result);
    return count;
}

int CString::Remove(char chRemove) {
    if (chRemove == '\0') return 0;
    const char* const end = data_ + length_;
    char* kept = data_;
    for (const char* at = data_; at < end;) {
        const int length = CharacterLength(at, end);
        if (length != 1 || *at != chRemove) {
            std::memmove(kept, at, static_cast<std::size_t>(length));
            kept += length;
        }
        at += length;
    }
    const int count = static_cast<int>(end - kept);
    SetLength(static_cast<int>(kept - data_));
    return count;
}

int CString::Insert(int nIndex, char ch) {
    const char text[] = {ch, '\0'};
    return Insert(nIndex, text);
}

int CString::Insert(int nIndex, LPCSTR lpsz) {
    const CString added(lpsz);  // may lie in this text
    if (added.length_ == 0) return length_;
    if (added.length_ > kMaxLength - length_) AfxThrowMemoryException();
    const int index = std::clamp(nIndex, 0, length_);
    Reserve(length_ + added.length_);
    std::memmove(data_ + index + added.length_, data_ + index, static_cast<std::size_t>(length_ - index));
    std::memcpy(data_ + index, added.data_, static_cast<std::size_t>(added.length_));
    SetLength(length_ + added.length_);
    return length_;
}

int CString::Delete(int nIndex, int nCount) {
    const int index = std::clamp(nIndex, 0, length_);
    const int count = std::clamp(nCount, 0, length_ - index);
    if (count > 0) {
        std::memmove(data_ + index, data_ + index + count, static_cast<std::size_t>(length_ - index - count));
        SetLength(length_ - count);
    }
    return length_;
}
