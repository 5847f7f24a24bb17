// util/message_buffer.h - messages that fit the interface's 256-byte buffers: long ones are cut, never split
// mid-character.
#pragma once

#include <afx.h>

namespace tk::util {

inline constexpr int kMessageBytes = 256;  // with the terminator

/// @param format  takes two texts; null texts are empty
CString ComposeMessage(const char* format, const char* first, const char* second);

/// @return the exception's own text; "" when it has none or is null
CString ExceptionMessage(CException* exception);

}  // namespace tk::util
