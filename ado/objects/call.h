// ado/objects/call.h - one automation call: its arguments in the order of the member's description, and its result.
//
//   const LONG rows = call.Long(0, -1);           // first argument, -1 when it was left out
//   call.Return(Value(rows));
//
// A fault of the arguments leaves as CallFault and becomes the call's own result code, without an error record.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <array>
#include <string>

#include "ado/cursor/value.h"
#include "ado/objects/ref.h"

namespace tk::ado {

/// The member is unknown, or its arguments are wrong in number or type.
struct CallFault {
    HRESULT code;
    UINT argument;  // index in rgvarg; counts for wrong types and missing arguments only
};

class Call {
public:
    /// @throws CallFault for named arguments that name nothing and for more arguments than any member has
    explicit Call(const DISPPARAMS& parameters);

    UINT Count() const noexcept { return count_; }

    /// True when the argument was not given, or given as "left out".
    bool IsOmitted(UINT index) const noexcept;

    /// A text without even a place; an empty one has one.
    bool IsNullText(UINT index) const noexcept;

    /// Left out, empty, NULL or a null object: an optional argument that says nothing.
    bool IsNothing(UINT index) const noexcept;

    /// The argument with references followed. @throws CallFault when left out
    const VARIANT& Argument(UINT index) const;

    /// Converted by the platform's rules. @throws CallFault
    LONG Long(UINT index) const;
    LONG Long(UINT index, LONG fallback) const { return IsOmitted(index) ? fallback : Long(index); }
    BYTE Byte(UINT index) const;
    bool Boolean(UINT index) const;
    std::u16string Text(UINT index) const;

    /// The same in place, for a text that is only read during the call.
    /// @param converted  keeps what had to be converted
    std::u16string_view Text(UINT index, Value& converted) const;
    /// A null text counts as left out: it is what callers send that cannot leave out anything.
    std::u16string Text(UINT index, std::u16string_view fallback) const {
        return IsOmitted(index) || IsNullText(index) ? std::u16string(fallback) : Text(index);
    }

    /// A copy; an object stands for its default member where a plain value is wanted. Empty when left out.
    Value Variant(UINT index) const;
    Value PlainValue(UINT index) const;

    /// An object or Nothing, borrowed. @throws CallFault for anything else
    IUnknown* Object(UINT index) const;

    /// Stores into an argument passed by reference; what was there is cleared. Does nothing for other arguments.
    void Store(UINT index, Value value);

    void Return(Value value) noexcept { result_ = std::move(value); }
    void ReturnLong(LONG number) noexcept { result_ = Value(number); }
    void ReturnByte(BYTE number) noexcept;
    void ReturnBoolean(bool truth) noexcept { result_ = Value::Boolean(truth); }
    void ReturnText(std::u16string_view text) { result_ = Value::Text(text); }

    /// Takes over the reference; null is Nothing.
    void ReturnObject(IDispatch* object) noexcept;
    template <class T>
    void ReturnObject(Ref<T> object) noexcept {
        ReturnObject(static_cast<IDispatch*>(object.Detach()));
    }
    void ReturnUnknown(IUnknown* object) noexcept;

    Value& Result() noexcept { return result_; }

    /// An argument fault at the argument's place in rgvarg.
    CallFault Fault(HRESULT code, UINT index) const noexcept { return {code, index < count_ ? places_[index] : 0}; }

    static constexpr UINT kMostArguments = 8;

private:
    Value Converted(UINT index, VARTYPE type) const;

    UINT count_ = 0;
    std::array<VARIANT*, kMostArguments> arguments_{};
    std::array<UINT, kMostArguments> places_{};
    Value result_;
};

}  // namespace tk::ado
