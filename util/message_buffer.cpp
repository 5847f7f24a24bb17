#include "util/message_buffer.h"

#include "util/text.h"

namespace tk::util {

CString ComposeMessage(const char* format, const char* first, const char* second) {
    CString message;
    message.Format(format, OrEmpty(first), OrEmpty(second));
    return ToText(WholeCharacters(View(message), kMessageBytes - 1));
}

CString ExceptionMessage(CException* exception) {
    char text[kMessageBytes] = {};
    if (exception == nullptr || !exception->GetErrorMessage(text, sizeof(text))) return {};
    text[kMessageBytes - 1] = '\0';  // an exception class of the application may forget to
    return text;
}

}  // namespace tk::util
