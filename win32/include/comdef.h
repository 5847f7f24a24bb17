// comdef.h - _com_error: the failure of a component as an object to throw and catch.
//
//   try { _com_util::CheckError(object->Invoke(...)); }
//   catch (const _com_error& error) { Report(error.ErrorMessage()); }
#pragma once

#include "comutil.h"
#include "ole2.h"

/// A failure code with what the failing component said about it, where it said something.
class TKWIN32_API _com_error {
public:
    // Codes of a component's own; what is above the first is its WCode.
    static constexpr HRESULT WCODE_HRESULT_FIRST = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x200);
    static constexpr HRESULT WCODE_HRESULT_LAST = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF + 1, 0) - 1;

    /// @param perrinfo  taken over, unless fAddRef asks for a reference of its own; may be null
    explicit _com_error(HRESULT hr, IErrorInfo* perrinfo = nullptr, bool fAddRef = false) noexcept;
    _com_error(const _com_error& other) noexcept;
    _com_error& operator=(const _com_error& other) noexcept;
    virtual ~_com_error() noexcept;

    HRESULT Error() const noexcept { return code_; }
    /// @return the code less WCODE_HRESULT_FIRST within that range, else 0
    WORD WCode() const noexcept { return HRESULTToWCode(code_); }

    /// @return null, or a reference for the caller
    IErrorInfo* ErrorInfo() const noexcept;
    _bstr_t Description() const;
    _bstr_t Source() const;
    _bstr_t HelpFile() const;
    DWORD HelpContext() const noexcept;

    /// The system's text for the code without the line break at its end; "IDispatch error #n" or "Unknown error 0xn"
    /// where it has none. GBK; lives as long as the object.
    const TCHAR* ErrorMessage() const noexcept;

    static HRESULT WCodeToHRESULT(WORD wCode) noexcept {
        return wCode >= 0xFE00 ? WCODE_HRESULT_LAST : WCODE_HRESULT_FIRST + wCode;
    }
    static WORD HRESULTToWCode(HRESULT hr) noexcept {
        return hr >= WCODE_HRESULT_FIRST && hr <= WCODE_HRESULT_LAST ? static_cast<WORD>(hr - WCODE_HRESULT_FIRST) : 0;
    }

private:
    HRESULT code_;
    IErrorInfo* info_;
    mutable TCHAR* message_ = nullptr;
};

/// Throw _com_error.
[[noreturn]] TKWIN32_API void _com_issue_error(HRESULT hr);
/// @param perrinfo  taken over; may be null
[[noreturn]] TKWIN32_API void _com_raise_error(HRESULT hr, IErrorInfo* perrinfo = nullptr);

namespace _com_util {
inline void CheckError(HRESULT hr) {
    if (FAILED(hr)) _com_issue_error(hr);
}
}  // namespace _com_util
