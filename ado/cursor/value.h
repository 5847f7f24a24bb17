// ado/cursor/value.h - owns one VARIANT and clears it once.
//
//   Value value = Value::Text(u"abc");
//   rows.Read(0, 0, *value.Out());
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <new>
#include <string_view>
#include <utility>

namespace tk::ado {

/// A VARIANT that holds nothing that could be copied: a null reference, or a type that VARIANTs do not have.
struct BadVariant {
    HRESULT code;
};

class Value {
public:
    Value() noexcept { Forget(); }
    explicit Value(LONG number) noexcept {
        Forget();
        held_.vt = VT_I4;
        held_.lVal = number;
    }

    /// A copy of a VARIANT that somebody else owns, references followed.
    /// @throws BadVariant
    explicit Value(const VARIANT& other) {
        Forget();
        Check(VariantCopyInd(&held_, &other));
    }
    Value(const Value& other) : Value(other.held_) {}
    Value(Value&& other) noexcept : held_(other.held_) { other.Forget(); }
    Value& operator=(Value other) noexcept {
        std::swap(held_, other.held_);
        return *this;
    }
    ~Value() { Clear(); }

    static Value Null() noexcept {
        Value value;
        value.held_.vt = VT_NULL;
        return value;
    }
    static Value Boolean(bool truth) noexcept {
        Value value;
        value.held_.vt = VT_BOOL;
        value.held_.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
        return value;
    }
    static Value Real(double number) noexcept {
        Value value;
        value.held_.vt = VT_R8;
        value.held_.dblVal = number;
        return value;
    }
    static Value Text(std::u16string_view text) {
        Value value;
        value.held_.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        if (value.held_.bstrVal == nullptr) throw std::bad_alloc();
        value.held_.vt = VT_BSTR;
        return value;
    }

    /// Takes over what a VARIANT holds.
    static Value Adopt(VARIANT& other) noexcept {
        Value value;
        std::swap(value.held_, other);
        return value;
    }

    const VARIANT& Get() const noexcept { return held_; }
    VARTYPE Type() const noexcept { return held_.vt; }
    bool IsNull() const noexcept { return held_.vt == VT_NULL; }
    bool IsEmpty() const noexcept { return held_.vt == VT_EMPTY; }

    /// Cleared, for somebody else to fill.
    VARIANT* Out() noexcept {
        Clear();
        return &held_;
    }

    /// Gives up what is held; the caller clears it.
    VARIANT Detach() noexcept {
        VARIANT given = held_;
        Forget();
        return given;
    }

    /// The value as another type by the platform's rules, or an empty Value when there is no such conversion.
    /// @param result  why not
    Value As(VARTYPE type, HRESULT& result, LCID locale = 0x0804) const {
        Value changed;
        result = VariantChangeTypeEx(&changed.held_, &held_, locale, 0, type);
        if (result == E_OUTOFMEMORY) throw std::bad_alloc();
        return changed;
    }

private:
    static void Check(HRESULT result) {
        if (result == E_OUTOFMEMORY) throw std::bad_alloc();
        if (FAILED(result)) throw BadVariant{result == DISP_E_BADVARTYPE ? result : DISP_E_TYPEMISMATCH};
    }
    /// Types below VT_BSTR, numbers and dates, have nothing to free.
    void Clear() noexcept {
        if (held_.vt >= VT_BSTR) VariantClear(&held_);
        Forget();
    }
    void Forget() noexcept { held_.vt = VT_EMPTY; }

    VARIANT held_;
};

/// The characters of a text; a null one is empty.
inline std::u16string_view ViewOf(BSTR text) noexcept {
    return text == nullptr ? std::u16string_view() : std::u16string_view(text, SysStringLen(text));
}

}  // namespace tk::ado
