#include <cstring>
#include <string>

#include "comdef.h"
#include "tkwin32/text.h"

namespace {

BSTR Checked(BSTR text) {
    if (text == nullptr) _com_issue_error(E_OUTOFMEMORY);
    return text;
}

std::u16string_view View(BSTR text) noexcept {
    return {text, SysStringLen(text)};
}

}  // namespace

_bstr_t::_bstr_t(const _bstr_t& other) : text_(other.copy()) {}

_bstr_t::_bstr_t(const char* text) {
    if (text == nullptr) return;
    const std::u16string wide = tk::text::GbkToUtf16(text);
    text_ = Checked(SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size())));
}

_bstr_t::_bstr_t(const OLECHAR* text) {
    if (text != nullptr) text_ = Checked(SysAllocString(text));
}

_bstr_t::_bstr_t(BSTR text, bool copy) : text_(text) {
    if (copy && text != nullptr) text_ = Checked(SysAllocStringLen(text, SysStringLen(text)));
}

_bstr_t::~_bstr_t() {
    SysFreeString(text_);
    delete[] narrow_;
}

_bstr_t::operator const char*() const {
    if (text_ == nullptr || narrow_ != nullptr) return narrow_;
    const std::string narrow = tk::text::Utf16ToGbk(View(text_));
    narrow_ = new char[narrow.size() + 1];
    std::memcpy(narrow_, narrow.c_str(), narrow.size() + 1);
    return narrow_;
}

BSTR _bstr_t::copy() const {
    return text_ != nullptr ? Checked(SysAllocStringLen(text_, SysStringLen(text_))) : nullptr;
}

BSTR _bstr_t::Detach() noexcept {
    delete[] std::exchange(narrow_, nullptr);
    return std::exchange(text_, nullptr);
}

bool _bstr_t::operator==(const _bstr_t& other) const noexcept {
    return View(text_) == View(other.text_);
}
