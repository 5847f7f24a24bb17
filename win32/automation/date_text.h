// date_text.h - dates as text, by the habits of a locale.
#pragma once

#include <string_view>

#include "win32/automation/date_value.h"
#include "win32/automation/locale_facts.h"
#include "win32/automation/plain_text.h"

namespace tk::automation {

/// @param flags  VAR_TIMEVALUEONLY, VAR_DATEVALUEONLY; without them a time of 0 or a day of 0 is left out
/// @return E_INVALIDARG out of range
HRESULT WriteDate(DATE date, const LocaleFacts& locale, ULONG flags, NumberText& text) noexcept;

/// Reads day, time, or both. @return DISP_E_TYPEMISMATCH when the text is no date
HRESULT ParseDate(std::u16string_view text, const LocaleFacts& locale, ULONG flags, DATE& date) noexcept;

}  // namespace tk::automation
