#include <iterator>

#include "tkkernel/util.h"
#include "util/messages.h"

CString NumberToChinese(short nNumber) {
    using tk::util::kSmallNumerals;
    if (nNumber < 0) return {};
    // Contract: one character, never a composed number: after ten it begins again at zero.
    const auto& numeral = kSmallNumerals[static_cast<unsigned>(nNumber) % std::size(kSmallNumerals)];
    return {numeral.bytes, sizeof(numeral.bytes)};
}
