#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tkwin32/text.h"
#include "winbase.h"

void OutputDebugStringA(LPCSTR lpOutputString) {
    if (lpOutputString == nullptr || std::getenv("TKKERNEL_DEBUG_OUTPUT") == nullptr) return;
    const std::string text = tk::text::GbkToUtf8(lpOutputString);
    // One write for one text; what standard error does not take is not worth a failure.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}
