// util/currency_rounding.h - the one rounding that all conversions of currency values share.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace tk::util {

/// A currency amount with two decimals, halves away from zero, as the nearest double. Minus zero for amounts that round
/// to zero from below.
double RoundCurrency(CY value);

}  // namespace tk::util
