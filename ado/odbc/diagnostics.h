// ado/odbc/diagnostics.h - what a driver says about a failure, and the automation error made from it.
//
// Read the records first after a failure: almost any other call on the handle replaces them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ado/error.h"
#include "ado/odbc/odbc_api.h"

namespace tk::ado {

/// One diagnostic record as the driver gives it.
struct DiagnosticRecord {
    std::string sqlState;  // five characters; empty when the driver leaves it so
    SQLINTEGER native = 0;
    std::string message;  // UTF-8, with the driver's prefixes
};

/// All records of the handle; empty when the driver keeps none.
std::vector<DiagnosticRecord> ReadDiagnostics(SQLSMALLINT kind, SQLHANDLE handle);

/// The class of a cause, which decides the word group in front of the text and the HRESULT.
struct FailureClass {
    HRESULT code = E_FAIL;
    const char16_t* words = u"";  // empty when the cause is not known
    bool connectionLost = false;
};

/// By state, native code and (for drivers that say HY000 to everything) the text.
FailureClass Classify(const DiagnosticRecord& record);

/// The message without its [vendor][driver][source] prefixes.
std::string_view StripPrefixes(std::string_view message);

/// The failure as the Errors collection shows it: one record for each diagnostic record. The first record's description
/// holds the word group and all messages.
AdoError MakeError(const std::vector<DiagnosticRecord>& records);

/// As above; what the records do not tell is taken from the fallback.
AdoError MakeError(const std::vector<DiagnosticRecord>& records, const FailureClass& fallback);

/// A wait of ours that another thread has cancelled, or whose time is over.
AdoError MakeCancelledError();
AdoError MakeWaitedError();

/// True for an error that says so, or that a driver gives for a call that was ended.
bool IsEnded(const AdoError& error) noexcept;

/// True when the records say that another connection holds a lock.
bool AreOfLock(const std::vector<DiagnosticRecord>& records);

/// As above, for a statement with a time limit that nobody has cancelled: where the driver says "cancelled" this says
/// that the time is over; with isCertain also where the driver tells no cause at all.
AdoError MakeTimeoutError(const std::vector<DiagnosticRecord>& records, bool isCertain);

/// Reads the diagnostics of the handle and throws; a handle without records gives a text of its own.
[[noreturn]] void ThrowDiagnostics(SQLSMALLINT kind, SQLHANDLE handle, SQLRETURN result);

}  // namespace tk::ado
