#include "ado/error.h"

#include <tkwin32/text.h>

#include <cstdio>
#include <utility>

#include "ado/messages.h"

namespace tk::ado {
namespace {

std::string Render(HRESULT code, const std::u16string& description) {
    char head[16];
    std::snprintf(head, sizeof head, "%08X ", static_cast<unsigned>(code));
    return head + text::Utf16ToUtf8(description);
}

}  // namespace

AdoError::AdoError(ErrorNumber number, std::u16string detail)
    : code_(static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(number))), description_(MessageOf(number)) {
    if (!detail.empty()) description_.append(kColon).append(detail);
    what_ = Render(code_, description_);
}

AdoError::AdoError(std::vector<ErrorRecord> records) : code_(E_FAIL), records_(std::move(records)) {
    if (records_.empty()) {
        description_ = kNoDiagnostics;
        source_ = kProviderSource;
    } else {
        code_ = records_.front().number;
        description_ = records_.front().description;
        source_ = records_.front().source;
    }
    what_ = Render(code_, description_);
}

AdoError AdoError::From(const std::exception& cause) {
    if (const auto* own = dynamic_cast<const AdoError*>(&cause)) return *own;
    return AdoError(ErrorNumber::ProviderFailed, text::Utf8ToUtf16(cause.what()));
}

}  // namespace tk::ado
