// Any text as a number, a date, an amount and a truth value; what is accepted prints and reads back as the same value.
#include <windows.h>

#include <oleauto.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

constexpr LCID kLocales[] = {0x0804, 0x0409, 0x007F};

void Require(bool holds) {
    if (!holds) std::abort();
}

void TryTargets(BSTR text, LCID locale) {
    VARIANT source;
    VariantInit(&source);
    source.vt = VT_BSTR;
    source.bstrVal = text;
    for (const VARTYPE target : {VT_I1, VT_I2, VT_I4, VT_I8, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_R4, VT_R8, VT_CY,
                                 VT_DATE, VT_BOOL, VT_DECIMAL}) {
        VARIANT value;
        VariantInit(&value);
        if (SUCCEEDED(VariantChangeTypeEx(&value, &source, locale, 0, target))) {
            Require(value.vt == target);
            VARIANT printed;
            VariantInit(&printed);
            const HRESULT code = VariantChangeTypeEx(&printed, &value, locale, 0, VT_BSTR);
            if (target == VT_DECIMAL || target == VT_CY || target == VT_I8 || target == VT_UI8) {
                Require(SUCCEEDED(code));
                VARIANT again;
                VariantInit(&again);
                Require(SUCCEEDED(VariantChangeTypeEx(&again, &printed, locale, 0, target)));
                if (target == VT_DECIMAL) Require(VarDecCmp(&again.decVal, &value.decVal) == VARCMP_EQ);
                if (target == VT_CY) Require(again.cyVal.int64 == value.cyVal.int64);
                VariantClear(&again);
            }
            if (target == VT_DATE) Require(value.date > -657435 && value.date < 2958466);
            VariantClear(&printed);
        }
        VariantClear(&value);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::u16string units(size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(data[2 * i] | (data[2 * i + 1] << 8));
    BSTR text = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    for (const LCID locale : kLocales)
        TryTargets(text, locale);
    SysFreeString(text);
    return 0;
}
