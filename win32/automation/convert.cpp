#include "win32/automation/convert.h"

#include <cfloat>
#include <string_view>

#include "win32/automation/date_text.h"
#include "win32/automation/number.h"
#include "win32/automation/number_text.h"
#include "win32/automation/plain_text.h"

namespace tk::automation {

namespace {

// ---- Text into values

struct BooleanWord {
    std::u16string_view text;
    VARIANT_BOOL value;
};
constexpr BooleanWord kBooleanWords[] = {
    {u"true", VARIANT_TRUE},
    {u"false", VARIANT_FALSE},
    {u"#true#", VARIANT_TRUE},
    {u"#false#", VARIANT_FALSE},
};

bool EqualsIgnoringCase(std::u16string_view text, std::u16string_view lower) {
    if (text.size() != lower.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (LowerAscii(text[i]) != lower[i]) return false;
    }
    return true;
}

bool StoreBooleanWord(std::u16string_view text, VARIANT& result) {
    for (const BooleanWord& word : kBooleanWords) {
        if (!EqualsIgnoringCase(text, word.text)) continue;
        result.boolVal = word.value;
        result.vt = VT_BOOL;
        return true;
    }
    return false;
}

// &HFFFF is -1 in 16 bits: digits of a signed type's full width are its bits.
HRESULT StoreRadix(const ParsedNumber& number, VARTYPE target, NumberType facts, VARIANT& result) {
    Int128 value = number.bits;
    const int bits = facts.bytes * 8;
    if (facts.isSigned && bits < 128 && value >= Int128{1} << (bits - 1) && value < Int128{1} << bits) {
        value -= Int128{1} << bits;
    }
    return StoreInteger(value, target, result);
}

HRESULT StoreParsed(const ParsedNumber& number, VARTYPE target, VARIANT& result) {
    const NumberType facts = NumberTypeOf(target);
    if (target == VT_BOOL) {
        result.boolVal = number.count != 0 || number.bits != 0 ? VARIANT_TRUE : VARIANT_FALSE;
        result.vt = VT_BOOL;
        return S_OK;
    }
    HRESULT outcome = DISP_E_TYPEMISMATCH;
    if (facts.form == Form::Integer) {
        if (number.radix) return StoreRadix(number, target, facts, result);
        Int128 integer = 0;
        outcome = IntegerFromParsed(number, 0, integer);
        if (SUCCEEDED(outcome)) outcome = StoreInteger(integer, target, result);
    } else if (facts.form == Form::Currency) {
        Int128 units = 0;
        outcome = IntegerFromParsed(number, kCurrencyPlaces, units);
        if (SUCCEEDED(outcome)) outcome = StoreCurrency(units, result);
    } else if (facts.form == Form::Real) {
        double real = 0;
        outcome = RealFromParsed(number, real);
        if (SUCCEEDED(outcome)) outcome = StoreReal(real, target, result);
    } else if (facts.form == Form::Decimal) {
        DECIMAL decimal{};
        outcome = DecimalFromParsed(number, decimal);
        if (SUCCEEDED(outcome)) {
            result.decVal = decimal;
            result.vt = VT_DECIMAL;
        }
    }
    return outcome;
}

// ---- Values into text

constexpr int kSingleDigits = FLT_DIG + 1;

HRESULT WriteValue(const VARIANT& source, const ConvertRules& rules, NumberText& text) {
    if (source.vt == VT_EMPTY) return S_OK;
    if (source.vt == VT_DATE) return WriteDate(source.date, FactsOfLocale(rules.locale), rules.flags, text);
    if (source.vt == VT_BOOL && rules.namedBooleans) {
        text.Add(source.boolVal != VARIANT_FALSE ? "True" : "False");
        return S_OK;
    }
    Number number;
    const HRESULT result = LoadNumber(source, number);
    if (FAILED(result)) return result;
    switch (number.form) {
        case Form::Real:
            WriteReal(number.real, source.vt == VT_R4 ? kSingleDigits : DBL_DIG, text);
            break;
        case Form::Currency: {
            const bool negative = number.integer < 0;
            const Int128 magnitude = negative ? -number.integer : number.integer;
            WriteScaled(static_cast<UInt128>(magnitude), kCurrencyPlaces, negative, text);
            break;
        }
        case Form::Decimal:
            WriteScaled(MagnitudeOf(number.decimal), number.decimal.scale, IsNegative(number.decimal), text);
            break;
        default:
            WriteInteger(number.integer, text);
    }
    return S_OK;
}

HRESULT ConvertToText(const VARIANT& source, const ConvertRules& rules, VARIANT& result) {
    NumberText text;
    const HRESULT outcome = WriteValue(source, rules, text);
    if (FAILED(outcome)) return outcome;
    BSTR made = MakeText(text.View());
    if (made == nullptr) return E_OUTOFMEMORY;
    result.bstrVal = made;
    result.vt = VT_BSTR;
    return S_OK;
}

}  // namespace

HRESULT ConvertText(const OLECHAR* text, VARTYPE target, const ConvertRules& rules, VARIANT& result) noexcept {
    if (text == nullptr) return DISP_E_TYPEMISMATCH;
    if (target == VT_BSTR) {
        BSTR copy = SysAllocString(text);
        if (copy == nullptr) return E_OUTOFMEMORY;
        result.bstrVal = copy;
        result.vt = VT_BSTR;
        return S_OK;
    }
    const std::u16string_view view(text);
    const LocaleFacts& locale = FactsOfLocale(rules.locale);
    if (target == VT_DATE) {
        DATE date = 0;
        const HRESULT outcome = ParseDate(view, locale, rules.flags, date);
        return FAILED(outcome) ? outcome : StoreReal(date, VT_DATE, result);
    }
    if (target == VT_BOOL && StoreBooleanWord(view, result)) return S_OK;
    ParsedNumber number;
    const HRESULT outcome = ParseNumber(view, locale, number);
    return FAILED(outcome) ? outcome : StoreParsed(number, target, result);
}

HRESULT ConvertPlain(const VARIANT& source, VARTYPE target, const ConvertRules& rules, VARIANT& result) noexcept {
    if (source.vt == VT_BSTR) return ConvertText(source.bstrVal, target, rules, result);
    if (target == VT_BSTR) return ConvertToText(source, rules, result);
    Number number;
    const HRESULT outcome = LoadNumber(source, number);
    return FAILED(outcome) ? outcome : StoreNumber(number, target, result);
}

HRESULT DefaultValueOf(IDispatch* object, LCID locale, VARIANT& value) noexcept {
    constexpr int kMostSteps = 16;  // objects whose value is each other must not hold us forever
    if (object == nullptr) return DISP_E_TYPEMISMATCH;
    object->AddRef();
    for (int step = 0; step < kMostSteps; ++step) {
        DISPPARAMS none{nullptr, nullptr, 0, 0};
        VARIANT answer;
        VariantInit(&answer);
        const HRESULT result =
            object->Invoke(DISPID_VALUE, IID_NULL, locale, DISPATCH_PROPERTYGET, &none, &answer, nullptr, nullptr);
        object->Release();
        if (FAILED(result)) {
            VariantClear(&answer);
            return DISP_E_TYPEMISMATCH;
        }
        if (answer.vt != VT_DISPATCH) {
            value = answer;
            return S_OK;
        }
        object = answer.pdispVal;  // its reference is ours
        if (object == nullptr) return DISP_E_TYPEMISMATCH;
    }
    object->Release();
    return DISP_E_TYPEMISMATCH;
}

HRESULT ConvertObject(IDispatch* object, VARTYPE target, const ConvertRules& rules, VARIANT& result) noexcept {
    VARIANT value;
    VariantInit(&value);
    HRESULT outcome = DefaultValueOf(object, rules.locale, value);
    if (FAILED(outcome)) return outcome;
    VARIANT converted;
    VariantInit(&converted);
    const ULONG known = rules.flags & VAR_LOCALBOOL;
    const auto flags = static_cast<USHORT>((rules.namedBooleans ? VARIANT_ALPHABOOL : 0) |
                                           (known != 0 ? VARIANT_LOCALBOOL : 0) | VARIANT_NOVALUEPROP);
    outcome = VariantChangeTypeEx(&converted, &value, rules.locale, flags, target);
    VariantClear(&value);
    if (SUCCEEDED(outcome)) result = converted;
    return outcome;
}

}  // namespace tk::automation
