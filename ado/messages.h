// ado/messages.h - the texts of ado/'s own errors and the words that tell the cause of an error from below.
#pragma once

#include <string_view>

#include "ado/error.h"

namespace tk::ado {

/// The text of an error number.
std::u16string_view MessageOf(ErrorNumber number) noexcept;

// In front of a driver's message, so that an operator can tell a dead server from a wrong statement.
extern const char16_t kCauseConnection[];
extern const char16_t kCauseTimeout[];
extern const char16_t kCauseCancelled[];
extern const char16_t kCauseSyntax[];
extern const char16_t kCauseConstraint[];
extern const char16_t kCausePermission[];
extern const char16_t kCauseMissingObject[];
extern const char16_t kCauseOverflow[];
extern const char16_t kCauseConcurrency[];

/// Between a word group and the driver's message, and between a text and its detail.
extern const char16_t kColon[];

/// When a driver fails without a diagnostic record.
extern const char16_t kNoDiagnostics[];

/// The source of errors from below.
extern const char16_t kProviderSource[];

extern const char16_t kNoTransaction[];
extern const char16_t kTransactionExists[];
extern const char16_t kTransactionAborted[];

/// An integer value too large to be sent, a text too long to be bound, and the like.
extern const char16_t kUnsupportedParameter[];

}  // namespace tk::ado
