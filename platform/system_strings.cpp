#include <cstdlib>
#include <cstring>
#include <string>

#include "tkkernel/platform.h"

namespace {

/// @return the length that is meant: a negative one is counted up to the terminator
template <class Char>
int MeantLength(const Char* text, long length) {
    if (text == nullptr) return 0;
    return static_cast<int>(length < 0 ? static_cast<long long>(std::char_traits<Char>::length(text)) : length);
}

void StoreLength(long* target, int length) {
    if (target != nullptr) *target = length;
}

// Runs work that makes a text; a failed allocation inside it is a null result.
template <typename Work>
auto NullWithoutMemory(Work work) -> decltype(work()) {
    try {
        return work();
    } catch (CMemoryException* e) {
        e->Delete();
        return nullptr;
    }
}

}  // namespace

BSTR StringCopy(const char* szText) {
    return NullWithoutMemory([&] { return CString(szText).AllocSysString(); });
}

CString BstrCopy(BSTR text) {
    CString copy;
    try {
        copy = CString(text, static_cast<int>(SysStringLen(text)));
    } catch (CMemoryException* e) {
        e->Delete();
    }
    SysFreeString(text);
    return copy;
}

BSTR StringToSysString(const char* szText, long nLength, long* pOutLength) {
    StoreLength(pOutLength, 0);
    return NullWithoutMemory([&] {
        BSTR text = CString(szText, MeantLength(szText, nLength)).AllocSysString();
        StoreLength(pOutLength, static_cast<int>(SysStringLen(text)));
        return text;
    });
}

char* SysStringToString(BSTR text, long nLength, long* pOutLength) {
    StoreLength(pOutLength, 0);
    return NullWithoutMemory([&] {
        const CString converted(text, MeantLength(text, nLength));
        const int length = converted.GetLength();
        char* buffer = static_cast<char*>(std::malloc(static_cast<std::size_t>(length) + 1));
        if (buffer == nullptr) return buffer;
        std::memcpy(buffer, static_cast<LPCTSTR>(converted), static_cast<std::size_t>(length) + 1);
        StoreLength(pOutLength, length);
        return buffer;
    });
}
