// CString to and from wide text, always through code page 936.
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

}  // namespace

CString::CString(LPCWSTR lpsz) : CString(lpsz, WideLength(lpsz)) {}

CString::CString(LPCWSTR lpch, int nLength) {
    BecomeEmpty();
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
    // A wide unit becomes one byte or two. Short texts take the worst case at once; longer ones are counted when they
    // do not fit one byte a unit, as plain texts do.
    int room = nLength <= kLocalCapacity / 2 ? kLocalCapacity : nLength;
    Reserve(room);
    int written = tk::afx::NarrowText(lpch, nLength, data_, GetAllocLength());
    if (written == 0) {
        room = tk::afx::NarrowText(lpch, nLength, nullptr, 0);
        Reserve(room);
        written = tk::afx::NarrowText(lpch, nLength, data_, GetAllocLength());
    }
    SetLength(written);
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
