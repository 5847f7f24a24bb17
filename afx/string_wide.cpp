// CString to and from wide text, always through code page 936.
#include <algorithm>

#include "afx/text_codes.h"
#include "afx_exception.h"
#include "afxstr.h"

namespace {

int WideLength(LPCWSTR lpsz) {
    if (lpsz == nullptr) return 0;
    std::size_t length = 0;
    while (lpsz[length] != 0)
        ++length;
    if (length > CString::kMaxLength / 2) AfxThrowMemoryException();
    return static_cast<int>(length);
}

constexpr int kShortUnits = 512;

// The beginning of a text that is converted at once: at most that many units, never half of a character of two.
int PieceLength(LPCWSTR text, int length, int limit) noexcept {
    if (length <= limit) return length;
    return (text[limit - 1] & 0xFC00) == 0xD800 ? limit - 1 : limit;
}

}  // namespace

CString::CString(LPCWSTR lpsz) : CString(lpsz, WideLength(lpsz)) {}

CString::CString(LPCWSTR lpch, int nLength) : CString() {
    AssignWide(lpch, nLength);
}

CString& CString::operator=(LPCWSTR lpsz) {
    AssignWide(lpsz, WideLength(lpsz));
    return *this;
}

void CString::AssignWide(LPCWSTR lpch, int nLength) {
    length_ = 0;
    data_[0] = '\0';
    if (lpch == nullptr || nLength <= 0) return;
    if (nLength > kMaxLength / 2) AfxThrowMemoryException();
    // A wide unit becomes one byte or two, and every buffer here has room for two: that a text does not fit would be
    // written into the thread's last error.
    if (nLength <= kLocalCapacity / 2) return SetLength(tk::afx::NarrowText(lpch, nLength, data_, kLocalCapacity));
    if (nLength <= kShortUnits) {
        char bytes[2 * kShortUnits];
        return Assign(bytes, tk::afx::NarrowText(lpch, nLength, bytes, sizeof(bytes)));
    }
    // A byte for each unit is all that most long texts need; the others grow. The pieces get as small as a short text.
    for (Reserve(nLength + kShortUnits); nLength > 0;) {
        Reserve(length_ + 2 * std::min(nLength, kShortUnits));
        const int units = PieceLength(lpch, nLength, (GetAllocLength() - length_) / 2);
        SetLength(length_ + tk::afx::NarrowText(lpch, units, data_ + length_, 2 * units));
        lpch += units;
        nLength -= units;
    }
}

BSTR CString::AllocSysString() const {
    return tk::afx::NewBstr(data_, length_);
}

BSTR CString::SetSysString(BSTR* pbstr) const {
    if (pbstr == nullptr) AfxThrowInvalidArgException();
    const BSTR fresh = AllocSysString();
    SysFreeString(*pbstr);
    return *pbstr = fresh;
}
