#include <cstdio>
#include <cstring>

#include "comdef.h"

namespace {

constexpr std::size_t kFallbackSize = 64;

/// The system's text without its line break; null when there is none.
TCHAR* SystemMessage(HRESULT code) noexcept {
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    TCHAR* message = nullptr;
    const DWORD length =
        FormatMessageA(kFlags, nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<LPSTR>(&message), 0, nullptr);
    if (length == 0) return nullptr;
    if (length >= 2 && std::strcmp(message + length - 2, "\r\n") == 0) message[length - 2] = 0;
    return message;
}

TCHAR* FallbackMessage(HRESULT code) noexcept {
    auto* message = static_cast<TCHAR*>(LocalAlloc(LPTR, kFallbackSize));
    if (message == nullptr) return nullptr;
    if (code >= _com_error::WCODE_HRESULT_FIRST && code <= _com_error::WCODE_HRESULT_LAST) {
        std::snprintf(message, kFallbackSize, "IDispatch error #%d", _com_error::HRESULTToWCode(code));
    } else {
        std::snprintf(message, kFallbackSize, "Unknown error 0x%0X", static_cast<unsigned>(code));
    }
    return message;
}

_bstr_t Ask(IErrorInfo* info, HRESULT (IErrorInfo::*member)(BSTR*)) {
    BSTR text = nullptr;
    if (info == nullptr || FAILED((info->*member)(&text))) return {};
    return _bstr_t(text, false);
}

}  // namespace

_com_error::_com_error(HRESULT hr, IErrorInfo* perrinfo, bool fAddRef) noexcept : code_(hr), info_(perrinfo) {
    if (info_ != nullptr && fAddRef) info_->AddRef();
}

_com_error::_com_error(const _com_error& other) noexcept : _com_error(other.code_, other.info_, true) {}

_com_error& _com_error::operator=(const _com_error& other) noexcept {
    _com_error copy(other);
    std::swap(code_, copy.code_);
    std::swap(info_, copy.info_);
    std::swap(message_, copy.message_);
    return *this;
}

_com_error::~_com_error() noexcept {
    if (info_ != nullptr) info_->Release();
    LocalFree(message_);
}

IErrorInfo* _com_error::ErrorInfo() const noexcept {
    if (info_ != nullptr) info_->AddRef();
    return info_;
}

_bstr_t _com_error::Description() const {
    return Ask(info_, &IErrorInfo::GetDescription);
}
_bstr_t _com_error::Source() const {
    return Ask(info_, &IErrorInfo::GetSource);
}
_bstr_t _com_error::HelpFile() const {
    return Ask(info_, &IErrorInfo::GetHelpFile);
}

DWORD _com_error::HelpContext() const noexcept {
    DWORD context = 0;
    return info_ != nullptr && SUCCEEDED(info_->GetHelpContext(&context)) ? context : 0;
}

const TCHAR* _com_error::ErrorMessage() const noexcept {
    if (message_ == nullptr) message_ = SystemMessage(code_);
    if (message_ == nullptr) message_ = FallbackMessage(code_);
    return message_ != nullptr ? message_ : "";
}

void _com_issue_error(HRESULT hr) {
    throw _com_error(hr);
}
void _com_raise_error(HRESULT hr, IErrorInfo* perrinfo) {
    throw _com_error(hr, perrinfo);
}
