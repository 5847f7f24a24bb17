#include <cmath>

#include "tkkernel/util.h"
#include "util/messages.h"
#include "util/number_pattern.h"
#include "util/number_printf.h"
#include "util/number_text.h"
#include "util/text.h"

namespace tk::util {
namespace {

constexpr int kUsualForm = 1;
constexpr int kFixedForm = 2;

}  // namespace
}  // namespace tk::util

CString DoubleToString(double nValue, const char* szFormat) {
    using namespace tk::util;
    const std::string_view format = View(szFormat);
    if (format.empty()) return {};
    if (format == kAmountPattern) return UpperCurrency(nValue, kUsualForm);
    if (format == kFixedAmountPattern) return UpperCurrency(nValue, kFixedForm);
    if (!std::isfinite(nValue)) return {};
    TextBuilder result;
    if (FormatByPattern(nValue, format, result) || FormatByPrintf(nValue, format, result)) return result.Take();
    return {};
}

CString IntToString(int nValue, const char* szFormat) {
    using namespace tk::util;
    const std::string_view format = View(szFormat);
    if (format.empty()) return IntegerText(nValue);
    const std::size_t slash = format.find('/');  // no second byte of a character equals it
    if (slash == std::string_view::npos) return DoubleToString(nValue, szFormat);
    return ToText(nValue != 0 ? format.substr(0, slash) : format.substr(slash + 1));
}
