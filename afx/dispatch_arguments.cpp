#include "afx/dispatch_arguments.h"

#include <cstring>
#include <iterator>
#include <new>

#include "afx/text_codes.h"
#include "afx_ole_exception.h"

namespace tk::afx {
namespace {

constexpr BYTE kNarrowText = 0x0E;
constexpr BYTE kByReference = 0x40;
constexpr BYTE kByReferenceLong = kByReference | VT_I4;

struct Arguments {
    va_list list;
};

void SetOmitted(VARIANT& value) {
    value.vt = VT_ERROR;
    value.scode = DISP_E_PARAMNOTFOUND;
}

BSTR CopyWide(LPCOLESTR text) {
    if (text == nullptr) return nullptr;
    const BSTR copy = SysAllocString(text);
    if (copy == nullptr) AfxThrowMemoryException();
    return copy;
}

struct Parameter {
    VARTYPE vt;  // VT_EMPTY: no such code
    void (*read)(Arguments& from, VARIANT& value);
};

// One row a code, in the order of the codes. What is passed through "..." has the promoted type.
constexpr Parameter kParameters[] = {
    {VT_EMPTY, nullptr},
    {VT_EMPTY, nullptr},
    {VT_I2, [](Arguments& from, VARIANT& value) { value.iVal = static_cast<SHORT>(va_arg(from.list, int)); }},
    {VT_I4, [](Arguments& from, VARIANT& value) { value.lVal = static_cast<LONG>(va_arg(from.list, long)); }},
    {VT_R4, [](Arguments& from, VARIANT& value) { value.fltVal = static_cast<FLOAT>(va_arg(from.list, double)); }},
    {VT_R8, [](Arguments& from, VARIANT& value) { value.dblVal = va_arg(from.list, double); }},
    {VT_CY,
     [](Arguments& from, VARIANT& value) {
         const CY* const amount = va_arg(from.list, const CY*);
         if (amount == nullptr) return SetOmitted(value);
         value.cyVal = *amount;
     }},
    {VT_DATE, [](Arguments& from, VARIANT& value) { value.date = va_arg(from.list, DATE); }},
    {VT_BSTR, [](Arguments& from, VARIANT& value) { value.bstrVal = CopyWide(va_arg(from.list, LPCOLESTR)); }},
    {VT_DISPATCH, [](Arguments& from, VARIANT& value) { value.pdispVal = va_arg(from.list, IDispatch*); }},
    {VT_ERROR, [](Arguments& from, VARIANT& value) { value.scode = va_arg(from.list, SCODE); }},
    {VT_BOOL, [](Arguments& from,
                 VARIANT& value) { value.boolVal = va_arg(from.list, int) != 0 ? VARIANT_TRUE : VARIANT_FALSE; }},
    {VT_VARIANT,
     [](Arguments& from, VARIANT& value) {
         const VARIANT* const passed = va_arg(from.list, const VARIANT*);
         if (passed == nullptr) return SetOmitted(value);
         value = *passed;  // borrowed with everything it owns
     }},
    {VT_UNKNOWN, [](Arguments& from, VARIANT& value) { value.punkVal = va_arg(from.list, IUnknown*); }},
    {VT_BSTR, [](Arguments& from, VARIANT& value) { value.bstrVal = NewBstr(va_arg(from.list, const char*)); }},
    {VT_EMPTY, nullptr},
    {VT_I1, [](Arguments& from, VARIANT& value) { value.cVal = static_cast<CHAR>(va_arg(from.list, int)); }},
    {VT_UI1, [](Arguments& from, VARIANT& value) { value.bVal = static_cast<BYTE>(va_arg(from.list, int)); }},
    {VT_UI2, [](Arguments& from, VARIANT& value) { value.uiVal = static_cast<USHORT>(va_arg(from.list, int)); }},
    {VT_UI4,
     [](Arguments& from, VARIANT& value) { value.ulVal = static_cast<ULONG>(va_arg(from.list, unsigned long)); }},
    {VT_I8, [](Arguments& from, VARIANT& value) { value.llVal = va_arg(from.list, long long); }},
    {VT_UI8, [](Arguments& from, VARIANT& value) { value.ullVal = va_arg(from.list, unsigned long long); }},
};

const Parameter* FindParameter(BYTE code) {
    const BYTE type = code & static_cast<BYTE>(~kByReference);
    if (type >= std::size(kParameters) || kParameters[type].vt == VT_EMPTY) return nullptr;
    if (code == (kByReference | kNarrowText)) return nullptr;  // a narrow text cannot be handed back
    return &kParameters[type];
}

bool OwnsText(BYTE code) {
    return code == kNarrowText || code == VT_BSTR;
}

}  // namespace

DispatchArguments::DispatchArguments(const BYTE* codes)
    : codes_(codes),
      count_(codes == nullptr ? 0 : static_cast<UINT>(std::strlen(reinterpret_cast<const char*>(codes)))) {
    if (count_ <= kInline) return;
    heapValues_.reset(new (std::nothrow) VARIANT[count_]);
    heapCells_.reset(new (std::nothrow) LongCell[count_]);
    if (heapValues_ == nullptr || heapCells_ == nullptr) AfxThrowMemoryException();
    values_ = heapValues_.get();
    cells_ = heapCells_.get();
}

DispatchArguments::~DispatchArguments() {
    for (UINT i = 0; i < read_; ++i) {
        if (OwnsText(codes_[i])) SysFreeString(Slot(i).bstrVal);
    }
}

void DispatchArguments::Read(va_list arguments) {
    Arguments from;
    va_copy(from.list, arguments);
    struct Ending {
        Arguments& from;
        ~Ending() { va_end(from.list); }
    } ending{from};
    for (; read_ < count_; ++read_) {
        const BYTE code = codes_[read_];
        const Parameter* const parameter = FindParameter(code);
        if (parameter == nullptr) AfxThrowOleException(DISP_E_BADVARTYPE);
        VARIANT& value = Slot(read_);
        if ((code & kByReference) == 0) {
            value.vt = parameter->vt;
            parameter->read(from, value);
            continue;
        }
        value.vt = static_cast<VARTYPE>(parameter->vt | VT_BYREF);
        value.byref = va_arg(from.list, void*);
        if (code == kByReferenceLong && value.byref != nullptr) {
            LongCell& cell = cells_[cellsUsed_++];
            cell.target = static_cast<long*>(value.byref);
            cell.value = static_cast<LONG>(*cell.target);
            value.plVal = &cell.value;
        }
    }
}

void DispatchArguments::StoreBack() noexcept {
    for (UINT i = 0; i < cellsUsed_; ++i)
        *cells_[i].target = cells_[i].value;
}

}  // namespace tk::afx
