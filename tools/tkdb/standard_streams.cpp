#include "tools/tkdb/standard_streams.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "tools/tkdb/command_support.h"

namespace tk::tools {
namespace {

int lostFor = 0;  // the error of the first output that was lost

// A stream drops what it could not write, and knows no more than that it failed.
void Note(bool isWritten) noexcept {
    if (!isWritten && lostFor == 0) lostFor = errno;
}

}  // namespace

void PrintText(std::string_view text) noexcept {
    Note(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
}

void FlushOutput() noexcept {
    Note(std::fflush(stdout) == 0);
}

void ComplainText(std::string_view text) noexcept {
    // There is nobody to tell that this cannot be told.
    static_cast<void>(std::fprintf(stderr, "tkdb: %.*s\n", static_cast<int>(text.size()), text.data()));
}

bool IsOutputLost() noexcept {
    return lostFor != 0;
}

int FinishOutput(int code) {
    FlushOutput();
    if (lostFor == 0 || lostFor == EPIPE) return code;
    const int unwritable = Unwritable("standard output", {lostFor, std::generic_category()});
    return code == kSuccess ? unwritable : code;
}

}  // namespace tk::tools
