// CString's block: where the bytes live and how they grow. The other string_*.cpp build on Append and GetBuffer.
#include "afxstr.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>

#include "afx_exception.h"

void CString::ThrowLength() {
    AfxThrowMemoryException();
}

void CString::ThrowPosition() {
    AfxThrowInvalidArgException();
}

void CString::FreeBlock() noexcept {
    std::free(data_);
}

void CString::Reserve(int capacity) {
    const int held = GetAllocLength();
    if (capacity <= held) return;
    // Growing by half keeps a text built piece by piece linear; a first block is made to measure.
    const int grown = IsLocal() ? capacity : std::max(capacity, held > kMaxLength / 3 * 2 ? kMaxLength : held / 2 * 3);
    auto* const block =
        static_cast<char*>(std::realloc(IsLocal() ? nullptr : data_, static_cast<std::size_t>(grown) + 1));
    if (block == nullptr) AfxThrowMemoryException();
    if (IsLocal()) std::memcpy(block, local_, static_cast<std::size_t>(length_) + 1);
    data_ = block;
    capacity_ = grown;
}

void CString::Assign(LPCSTR lpch, int nLength) {
    // A source inside this text is never longer than it, so the block stays and memmove does the rest.
    if (nLength > GetAllocLength()) {
        length_ = 0;  // nothing to carry over
        data_[0] = '\0';
        Reserve(nLength);
    }
    std::memmove(data_, lpch, static_cast<std::size_t>(nLength));
    SetLength(nLength);
}

void CString::Append(LPCSTR lpch, int nLength) {
    if (lpch == nullptr || nLength <= 0) return;
    if (nLength > kMaxLength - length_) AfxThrowMemoryException();
    if (length_ + nLength > GetAllocLength()) {
        const bool inside = lpch >= data_ && lpch <= data_ + length_;
        const std::ptrdiff_t offset = lpch - data_;
        Reserve(length_ + nLength);
        if (inside) lpch = data_ + offset;
    }
    std::memmove(data_ + length_, lpch, static_cast<std::size_t>(nLength));
    SetLength(length_ + nLength);
}

CString::CString(char ch, int nRepeat) {
    BecomeEmpty();
    if (nRepeat <= 0) return;
    if (nRepeat > kMaxLength) AfxThrowMemoryException();
    Reserve(nRepeat);
    std::memset(data_, ch, static_cast<std::size_t>(nRepeat));
    SetLength(nRepeat);
}

CString& CString::operator=(LPCSTR lpsz) {
    if (lpsz == nullptr) {
        Empty();
    } else {
        Assign(lpsz, CheckedLength(std::strlen(lpsz)));
    }
    return *this;
}

CString& CString::operator=(char ch) {
    Assign(&ch, 1);
    return *this;
}

LPSTR CString::GetBuffer(int nMinBufferLength) {
    if (nMinBufferLength > kMaxLength) AfxThrowMemoryException();
    Reserve(nMinBufferLength);
    return data_;
}

void CString::ReleaseBuffer(int nNewLength) {
    const auto room = static_cast<std::size_t>(GetAllocLength());
    if (nNewLength < 0) {
        // The caller may have filled the buffer to the brim: look no further than it reaches.
        const void* const end = std::memchr(data_, '\0', room);
        nNewLength =
            static_cast<int>(end == nullptr ? room : static_cast<std::size_t>(static_cast<const char*>(end) - data_));
    }
    if (static_cast<std::size_t>(nNewLength) > room) ThrowPosition();
    SetLength(nNewLength);
}

LPSTR CString::GetBufferSetLength(int nNewLength) {
    if (nNewLength < 0) ThrowPosition();
    GetBuffer(nNewLength);
    if (nNewLength > length_) std::memset(data_ + length_, '\0', static_cast<std::size_t>(nNewLength - length_));
    SetLength(nNewLength);
    return data_;
}

void CString::FreeExtra() {
    if (IsLocal() || capacity_ == length_) return;
    if (length_ <= kLocalCapacity) {
        char* const block = data_;
        const int length = length_;
        BecomeEmpty();
        std::memcpy(local_, block, static_cast<std::size_t>(length));
        SetLength(length);
        std::free(block);
        return;
    }
    auto* const block = static_cast<char*>(std::realloc(data_, static_cast<std::size_t>(length_) + 1));
    if (block == nullptr) return;  // the larger block is still there and as good
    data_ = block;
    capacity_ = length_;
}

namespace {

CString Joined(LPCSTR first, int firstLength, LPCSTR second, int secondLength) {
    CString text;
    if (firstLength <= CString::kMaxLength - secondLength) text.GetBuffer(firstLength + secondLength);
    text.Append(first, firstLength);
    text.Append(second, secondLength);
    return text;
}

int Length(LPCSTR lpsz) {
    if (lpsz == nullptr) return 0;
    const std::size_t length = std::strlen(lpsz);
    if (length > CString::kMaxLength) AfxThrowMemoryException();
    return static_cast<int>(length);
}

}  // namespace

CString operator+(const CString& first, const CString& second) {
    return Joined(first, first.GetLength(), second, second.GetLength());
}
CString operator+(const CString& first, LPCSTR second) {
    return Joined(first, first.GetLength(), second, Length(second));
}
CString operator+(LPCSTR first, const CString& second) {
    return Joined(first, Length(first), second, second.GetLength());
}
CString operator+(const CString& first, char second) {
    return Joined(first, first.GetLength(), &second, 1);
}
CString operator+(char first, const CString& second) {
    return Joined(&first, 1, second, second.GetLength());
}

std::ostream& operator<<(std::ostream& stream, const CString& text) {
    return stream << static_cast<LPCSTR>(text);
}
