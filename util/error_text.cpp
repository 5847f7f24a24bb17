#include "afx/kept_last_error.h"
#include "tkkernel/util.h"
#include "util/message_buffer.h"
#include "util/messages.h"

namespace {

/// Frees the buffer that the system allocated for a message.
class SystemText {
public:
    explicit SystemText(DWORD code) {
        constexpr DWORD kFlags =
            FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
        if (FormatMessageA(kFlags, nullptr, code, 0, reinterpret_cast<LPSTR>(&text_), 0, nullptr) == 0) text_ = nullptr;
    }
    SystemText(const SystemText&) = delete;
    SystemText& operator=(const SystemText&) = delete;
    ~SystemText() { LocalFree(text_); }

    const char* Get() const { return text_; }

private:
    char* text_ = nullptr;
};

}  // namespace

CString LookupErrorText(DWORD nCode) {
    const tk::afx::KeptLastError kept;  // many codes have no text, which is no failure
    const SystemText system(nCode);
    CString text;
    // Contract: the line break at the end of the system's text stays.
    if (system.Get() != nullptr) text.Format(tk::util::kSystemErrorFormat, static_cast<unsigned>(nCode), system.Get());
    return text;
}

CString GetLastErrorText() {
    return LookupErrorText(GetLastError());
}

CString GetLastErrorText(DWORD* pCode) {
    const DWORD code = GetLastError();
    if (pCode != nullptr) *pCode = code;
    return LookupErrorText(code);
}

CString GetExceptionError(CException* e) {
    return tk::util::ExceptionMessage(e);
}

CString GetExceptionError(const char* szWhere, const char* szWhat) {
    return tk::util::ComposeMessage(tk::util::kExceptionFormat, szWhere, szWhat);
}
