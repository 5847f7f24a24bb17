// tools/tkdb/print.h - standard_streams.h with values in the texts.
//
//   Print("{} row(s)\n", rows);
//   Complain("cannot read {}", file);
#pragma once

#include <fmt/format.h>

#include <utility>

#include "tools/tkdb/standard_streams.h"

namespace tk::tools {

template <typename... Values>
void Print(fmt::format_string<Values...> format, Values&&... values) {
    PrintText(fmt::format(format, std::forward<Values>(values)...));
}

template <typename... Values>
void Complain(fmt::format_string<Values...> format, Values&&... values) {
    ComplainText(fmt::format(format, std::forward<Values>(values)...));
}

}  // namespace tk::tools
