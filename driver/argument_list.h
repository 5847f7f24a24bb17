// argument_list.h - ends a variable argument list also when formatting from it fails.
//
//   va_start(arguments, szFormat);
//   const ArgumentListEnd end{arguments};
#pragma once

#include <cstdarg>

namespace tk::driver {

struct ArgumentListEnd {
    va_list& list;
    ~ArgumentListEnd() { va_end(list); }
};

}  // namespace tk::driver
