// afx/dispatch_arguments.h - the typed argument list of a late-bound call, read into VARIANTs in the order Invoke
// wants.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstdarg>
#include <memory>

namespace tk::afx {

class DispatchArguments {
public:
    /// @param codes  the parameter codes, NUL-terminated; null for none; they outlive the object
    explicit DispatchArguments(const BYTE* codes);
    DispatchArguments(const DispatchArguments&) = delete;
    DispatchArguments& operator=(const DispatchArguments&) = delete;
    ~DispatchArguments();  // frees the texts made for the call; everything else was borrowed

    /// Reads the arguments, once. A code that does not exist raises COleException with DISP_E_BADVARTYPE.
    void Read(va_list arguments);
    /// Gives by-reference longs their values after the call.
    void StoreBack() noexcept;

    VARIANT* Data() noexcept { return values_; }
    UINT Count() const noexcept { return count_; }

private:
    // A VARIANT refers to 32 bits; the caller's long may have 64.
    struct LongCell {
        LONG value;
        long* target;
    };
    static constexpr UINT kInline = 8;

    VARIANT& Slot(UINT argument) noexcept { return values_[count_ - 1 - argument]; }

    const BYTE* codes_;
    UINT count_ = 0;
    UINT read_ = 0;
    UINT cellsUsed_ = 0;
    VARIANT* values_ = inlineValues_;
    LongCell* cells_ = inlineCells_;
    VARIANT inlineValues_[kInline];
    LongCell inlineCells_[kInline];
    std::unique_ptr<VARIANT[]> heapValues_;
    std::unique_ptr<LongCell[]> heapCells_;
};

}  // namespace tk::afx
