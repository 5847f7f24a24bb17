// afxstr.h - CString, a growable text of 8-bit characters in code page 936 (GBK).
//
//   CString name("stock");
//   name.Format("%s_%d", "stock", 7);
//   if (name.Find('_') >= 0) name.MakeUpper();
//
// Lengths and positions count bytes. A byte from 0x81 to 0xFE opens a double-byte character; its second byte may equal
// '\\', '|' or a letter, and no search, trim, replacement or case mapping takes it for one. Mid, Left, Right, Insert
// and Delete cut where they are told to, between the bytes of a character too. Embedded NULs are kept by copies and
// joins; comparisons and the text given out by LPCTSTR end at the first one. A null pointer is an empty text. A
// position that does not exist raises CInvalidArgException, a text above 2^31 - 17 bytes or a failed allocation
// CMemoryException. A CString cannot be passed for "%s": write (LPCTSTR)text. The compiler refuses it otherwise.
//
// Texts of up to 19 bytes live inside the object; longer ones own one block. Copies never share.
// Threads: as for any value; one object is changed by one thread at a time.
#pragma once

#include <windows.h>

#include <wtypes.h>

#include <concepts>
#include <cstdarg>
#include <cstring>
#include <iosfwd>

#include "afx_export.h"

class AFX_API CString {
public:
    CString() noexcept { BecomeEmpty(); }
    CString(std::nullptr_t) noexcept { BecomeEmpty(); }
    CString(LPCSTR lpsz) : CString(lpsz, lpsz == nullptr ? 0 : CheckedLength(std::strlen(lpsz))) {}
    CString(const unsigned char* lpsz) : CString(reinterpret_cast<LPCSTR>(lpsz)) {}
    CString(LPCSTR lpch, int nLength) {
        BecomeEmpty();
        if (nLength > 0 && lpch != nullptr) Assign(lpch, nLength);
    }
    /// The text of a wide one in code page 936; what it cannot say becomes the default character.
    CString(LPCWSTR lpsz);
    CString(LPCWSTR lpch, int nLength);
    explicit CString(char ch, int nRepeat = 1);
    CString(const CString& other) {
        if (other.IsLocal()) {
            TakeLocal(other);
        } else {
            BecomeEmpty();
            Assign(other.data_, other.length_);
        }
    }
    CString(CString&& other) noexcept { Take(other); }
    ~CString() {
        if (!IsLocal()) FreeBlock();
    }

    CString& operator=(const CString& other) {
        if (this == &other) return *this;
        if (IsLocal() && other.IsLocal()) {
            TakeLocal(other);
        } else {
            Assign(other.data_, other.length_);
        }
        return *this;
    }
    CString& operator=(CString&& other) noexcept {
        if (this == &other) return *this;
        if (!IsLocal()) FreeBlock();
        Take(other);
        return *this;
    }
    CString& operator=(LPCSTR lpsz);
    CString& operator=(const unsigned char* lpsz) { return *this = reinterpret_cast<LPCSTR>(lpsz); }
    CString& operator=(LPCWSTR lpsz);
    CString& operator=(char ch);
    CString& operator=(std::nullptr_t) noexcept { return Empty(), *this; }

    // ---- reading
    int GetLength() const noexcept { return length_; }
    BOOL IsEmpty() const noexcept { return length_ == 0; }
    /// Empties the text and gives its memory back.
    void Empty() noexcept {
        if (!IsLocal()) FreeBlock();
        BecomeEmpty();
    }
    /// The byte at a position; '\0' at the position that equals the length.
    char GetAt(int nIndex) const {
        if (nIndex < 0 || nIndex > length_) ThrowPosition();
        return data_[nIndex];
    }
    char operator[](std::integral auto nIndex) const { return GetAt(static_cast<int>(nIndex)); }
    void SetAt(int nIndex, char ch) {
        if (nIndex < 0 || nIndex >= length_) ThrowPosition();
        data_[nIndex] = ch;
    }
    operator LPCSTR() const noexcept { return data_; }

    // ---- joining
    CString& operator+=(const CString& text) { return Append(text.data_, text.length_), *this; }
    CString& operator+=(LPCSTR lpsz) {
        if (lpsz != nullptr) Append(lpsz, CheckedLength(std::strlen(lpsz)));
        return *this;
    }
    CString& operator+=(char ch) {
        if (length_ < GetAllocLength()) {
            data_[length_] = ch;
            SetLength(length_ + 1);
        } else {
            Append(&ch, 1);
        }
        return *this;
    }

    // ---- comparing, by unsigned bytes up to the first NUL
    int Compare(LPCSTR lpsz) const noexcept { return std::strcmp(data_, lpsz == nullptr ? "" : lpsz); }
    /// Ignores the case of letters as the code page knows it; trail bytes are no letters.
    int CompareNoCase(LPCSTR lpsz) const;
    /// In the order of the user's language; case matters.
    int Collate(LPCSTR lpsz) const;
    int CollateNoCase(LPCSTR lpsz) const;

    // ---- cutting; positions outside are moved to the nearest one inside
    CString Mid(int nFirst) const;
    CString Mid(int nFirst, int nCount) const;
    CString Left(int nCount) const;
    CString Right(int nCount) const;
    /// The longest beginning that consists of characters of the set, or of others.
    CString SpanIncluding(LPCSTR lpszCharSet) const;
    CString SpanExcluding(LPCSTR lpszCharSet) const;

    // ---- changing in place
    void MakeUpper();
    void MakeLower();
    void MakeReverse();
    void TrimLeft();
    void TrimLeft(char chTarget);
    void TrimLeft(LPCSTR lpszTargets);
    void TrimRight();
    void TrimRight(char chTarget);
    void TrimRight(LPCSTR lpszTargets);
    /// @return the number of replaced or removed places
    int Replace(char chOld, char chNew);
    int Replace(LPCSTR lpszOld, LPCSTR lpszNew);
    int Remove(char chRemove);
    /// @return the new length
    int Insert(int nIndex, char ch);
    int Insert(int nIndex, LPCSTR lpsz);
    int Delete(int nIndex, int nCount = 1);

    // ---- searching, by whole characters from the start position
    /// @return the position, or -1; an empty text is found at the start position
    int Find(char ch, int nStart = 0) const;
    int Find(LPCSTR lpszSub, int nStart = 0) const;
    int ReverseFind(char ch) const;
    /// The first position of any character of the set.
    int FindOneOf(LPCSTR lpszCharSet) const;

    // ---- formatting: printf's rules in the "C" locale, never cut
    /// Besides the usual letters: %S and %ls wide text, %I64d and %I32d. %n is ignored, a null text is "(null)".
    void Format(LPCSTR lpszFormat, ...) AFX_PRINTF_LIKE(2, 3);
    void FormatV(LPCSTR lpszFormat, va_list argList);
    void AppendFormat(LPCSTR lpszFormat, ...) AFX_PRINTF_LIKE(2, 3);
    void AppendFormatV(LPCSTR lpszFormat, va_list argList);

    // ---- direct access
    /// Room for at least that many bytes and a NUL; the text is kept. ReleaseBuffer afterwards.
    LPSTR GetBuffer(int nMinBufferLength);
    /// @param nNewLength  -1: up to the first NUL
    void ReleaseBuffer(int nNewLength = -1);
    /// Room for exactly that text; the length is set at once, new bytes are NUL.
    LPSTR GetBufferSetLength(int nNewLength);
    int GetAllocLength() const noexcept { return IsLocal() ? kLocalCapacity : capacity_; }
    void FreeExtra();
    /// Nothing is shared, so locking only gives out the buffer.
    LPSTR LockBuffer() { return data_; }
    void UnlockBuffer() {}

    // ---- automation
    /// A new BSTR, the caller's; CMemoryException when there is no memory.
    BSTR AllocSysString() const;
    /// Replaces a BSTR, null allowed, by this text; the caller's.
    BSTR SetSysString(BSTR* pbstr) const;

    /// The text of the program's string table.
    /// @return FALSE when there is none; the text is empty then
    BOOL LoadString(UINT nID);

    // ---- appending of counted bytes; the source may lie in this text
    void Append(LPCSTR lpch, int nLength);

    static constexpr int kLocalCapacity = 19;
    static constexpr int kMaxLength = 0x7FFFFFEF;

private:
    static int CheckedLength(std::size_t length) {
        if (length > kMaxLength) ThrowLength();
        return static_cast<int>(length);
    }
    [[noreturn]] static void ThrowLength();
    [[noreturn]] static void ThrowPosition();

    bool IsLocal() const noexcept { return data_ == local_; }
    void BecomeEmpty() noexcept {
        data_ = local_;
        length_ = 0;
        local_[0] = '\0';
    }
    void TakeLocal(const CString& other) noexcept {
        data_ = local_;
        length_ = other.length_;
        std::memcpy(local_, other.local_, sizeof(local_));
    }
    void Take(CString& other) noexcept {
        if (other.IsLocal()) {
            TakeLocal(other);
        } else {
            data_ = other.data_;
            length_ = other.length_;
            capacity_ = other.capacity_;
            other.BecomeEmpty();
        }
    }
    void FreeBlock() noexcept;
    void Assign(LPCSTR lpch, int nLength);
    void AssignWide(LPCWSTR lpch, int nLength);
    void Reserve(int capacity);
    void SetLength(int length) noexcept {
        length_ = length;
        data_[length] = '\0';
    }

    char* data_;
    int length_;
    union {
        int capacity_;                    // of the block, without the NUL
        char local_[kLocalCapacity + 1];  // fills the object up to 32 bytes
    };
};

AFX_API CString operator+(const CString& first, const CString& second);
AFX_API CString operator+(const CString& first, LPCSTR second);
AFX_API CString operator+(LPCSTR first, const CString& second);
AFX_API CString operator+(const CString& first, char second);
AFX_API CString operator+(char first, const CString& second);
inline CString operator+(CString&& first, const CString& second) {
    return first += second, static_cast<CString&&>(first);
}
inline CString operator+(CString&& first, LPCSTR second) {
    return first += second, static_cast<CString&&>(first);
}
inline CString operator+(CString&& first, char second) {
    return first += second, static_cast<CString&&>(first);
}

inline bool operator==(const CString& first, const CString& second) noexcept {
    return first.Compare(second) == 0;
}
inline bool operator==(const CString& first, LPCSTR second) noexcept {
    return first.Compare(second) == 0;
}
inline bool operator==(LPCSTR first, const CString& second) noexcept {
    return second.Compare(first) == 0;
}
inline bool operator!=(const CString& first, const CString& second) noexcept {
    return first.Compare(second) != 0;
}
inline bool operator!=(const CString& first, LPCSTR second) noexcept {
    return first.Compare(second) != 0;
}
inline bool operator!=(LPCSTR first, const CString& second) noexcept {
    return second.Compare(first) != 0;
}
inline bool operator<(const CString& first, const CString& second) noexcept {
    return first.Compare(second) < 0;
}
inline bool operator<(const CString& first, LPCSTR second) noexcept {
    return first.Compare(second) < 0;
}
inline bool operator<(LPCSTR first, const CString& second) noexcept {
    return second.Compare(first) > 0;
}
inline bool operator>(const CString& first, const CString& second) noexcept {
    return first.Compare(second) > 0;
}
inline bool operator>(const CString& first, LPCSTR second) noexcept {
    return first.Compare(second) > 0;
}
inline bool operator>(LPCSTR first, const CString& second) noexcept {
    return second.Compare(first) < 0;
}
inline bool operator<=(const CString& first, const CString& second) noexcept {
    return first.Compare(second) <= 0;
}
inline bool operator<=(const CString& first, LPCSTR second) noexcept {
    return first.Compare(second) <= 0;
}
inline bool operator<=(LPCSTR first, const CString& second) noexcept {
    return second.Compare(first) >= 0;
}
inline bool operator>=(const CString& first, const CString& second) noexcept {
    return first.Compare(second) >= 0;
}
inline bool operator>=(const CString& first, LPCSTR second) noexcept {
    return first.Compare(second) >= 0;
}
inline bool operator>=(LPCSTR first, const CString& second) noexcept {
    return second.Compare(first) <= 0;
}

AFX_API std::ostream& operator<<(std::ostream& stream, const CString& text);
