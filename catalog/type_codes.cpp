#include <algorithm>
#include <iterator>

#include "catalog/messages.h"
#include "catalog/value_kind.h"
#include "tkkernel/catalog.h"

namespace tk::catalog {
namespace {

struct TypeCode {
    long code;
    VARTYPE vt;
    bool quoted = false;  // its literal stands in quotes
};

// What is not here has no variant type and no quotes.
// Contract: 2 gives VT_I1 and 16 gives VT_I2. It looks swapped; it is the interface.
// Contract: 139 is the one code that travels as text and has no quotes.
constexpr TypeCode kTypeCodes[] = {
    {2, VT_I1},             // small integer
    {3, VT_I4},             //
    {4, VT_R4},             //
    {5, VT_R8},             //
    {6, VT_CY},             //
    {7, VT_DATE, true},     // date, as automation has it
    {8, VT_BSTR, true},     //
    {9, VT_DISPATCH},       //
    {10, VT_ERROR},         //
    {11, VT_BOOL},          //
    {12, VT_VARIANT},       //
    {13, VT_UNKNOWN},       //
    {14, VT_DECIMAL},       //
    {16, VT_I2},            // tiny integer
    {17, VT_UI1},           //
    {18, VT_UI2},           //
    {19, VT_UI4},           //
    {20, VT_I8},            //
    {21, VT_UI8},           //
    {129, VT_BSTR, true},   // char
    {130, VT_BSTR, true},   // wide char
    {131, VT_DECIMAL},      // numeric
    {132, VT_USERDEFINED},  //
    {133, VT_DATE, true},   // date
    {134, VT_DATE, true},   // time
    {135, VT_DATE, true},   // date and time
    {139, VT_BSTR},         // var numeric
    {200, VT_BSTR, true},   // varchar
    {201, VT_BSTR, true},   // long varchar
    {202, VT_BSTR, true},   // wide varchar
    {203, VT_BSTR, true},   // long wide varchar
};
static_assert(std::ranges::is_sorted(kTypeCodes, {}, &TypeCode::code));

constexpr TypeCode FindTypeCode(long code) noexcept {
    const TypeCode* row = std::ranges::lower_bound(kTypeCodes, code, {}, &TypeCode::code);
    return row != std::end(kTypeCodes) && row->code == code ? *row : TypeCode{code, VT_EMPTY};
}

}  // namespace
}  // namespace tk::catalog

unsigned short DBTypeToVT(long nType) {
    return tk::catalog::FindTypeCode(nType).vt;
}

int IsStringType(long nType) {
    return tk::catalog::FindTypeCode(nType).quoted ? 1 : 0;
}

int IsTextType(unsigned int vt) {
    using tk::catalog::ValueKind;
    const ValueKind kind = tk::catalog::KindOf(vt);
    return kind == ValueKind::Date || kind == ValueKind::Text ? 1 : 0;
}

CString GetTypeName(unsigned int vt) {
    using namespace tk::catalog;
    switch (KindOf(vt)) {
        case ValueKind::Number:
            return kNumberName;
        case ValueKind::Date:
            return kDateName;
        case ValueKind::Text:
            return kTextName;
        default:
            return {};
    }
}
