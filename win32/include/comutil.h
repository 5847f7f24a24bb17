// comutil.h - _bstr_t: a text of automation that frees itself.
//
//   _bstr_t name("Orders");  // from GBK
//   Open(name.GetBSTR());
#pragma once

#include <utility>

#include "oleauto.h"

/// Owns a BSTR, which may be null; a copy is a text of its own. Throws _com_error for E_OUTOFMEMORY.
class TKWIN32_API _bstr_t {
public:
    _bstr_t() noexcept = default;
    _bstr_t(const _bstr_t& other);
    _bstr_t(_bstr_t&& other) noexcept
        : text_(std::exchange(other.text_, nullptr)), narrow_(std::exchange(other.narrow_, nullptr)) {}
    /// From GBK.
    _bstr_t(const char* text);
    _bstr_t(const OLECHAR* text);
    /// @param copy  false takes the text over
    _bstr_t(BSTR text, bool copy);
    ~_bstr_t();

    _bstr_t& operator=(_bstr_t other) noexcept {
        std::swap(text_, other.text_);
        std::swap(narrow_, other.narrow_);
        return *this;
    }

    /// @return characters
    unsigned length() const noexcept { return SysStringLen(text_); }
    bool operator!() const noexcept { return text_ == nullptr; }
    operator const OLECHAR*() const noexcept { return text_; }
    operator OLECHAR*() const noexcept { return text_; }
    /// In GBK, made when first asked for; the pointer is good as long as the object holds the same text.
    operator const char*() const;

    /// Borrowed.
    BSTR GetBSTR() const noexcept { return text_; }
    /// A text of the caller's own; null for null.
    BSTR copy() const;
    BSTR Detach() noexcept;

    bool operator==(const _bstr_t& other) const noexcept;

private:
    BSTR text_ = nullptr;
    mutable char* narrow_ = nullptr;
};
