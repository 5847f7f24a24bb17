#include "util/message_buffer.h"

#include <cstring>

#include "util/text.h"

namespace tk::util {

CString ComposeMessage(const char* format, const char* first, const char* second) {
    CString message;
    message.Format(format, OrEmpty(first), OrEmpty(second));
    return ToText(WholeCharacters(View(message), kMessageBytes - 1));
}

CString ExceptionMessage(CException* exception) {
    char text[kMessageBytes] = {};
    // The buffer is the answer, whatever is returned; an exception class of the application may fill it to its end.
    if (exception != nullptr) exception->GetErrorMessage(text, sizeof(text));
    return ToText(WholeCharacters({text, strnlen(text, sizeof(text))}, sizeof(text) - 1));
}

}  // namespace tk::util
