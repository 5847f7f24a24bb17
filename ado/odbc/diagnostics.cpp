#include "ado/odbc/diagnostics.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "ado/messages.h"

namespace tk::ado {
namespace {

constexpr HRESULT kErrorsInCommand = static_cast<HRESULT>(0x80040E14);
constexpr HRESULT kCantConvert = static_cast<HRESULT>(0x80040E07);
constexpr HRESULT kPermissionDenied = static_cast<HRESULT>(0x80040E09);
constexpr HRESULT kParamNotOptional = static_cast<HRESULT>(0x80040E10);
constexpr HRESULT kIntegrityViolation = static_cast<HRESULT>(0x80040E2F);
constexpr HRESULT kAbortLimit = static_cast<HRESULT>(0x80040E31);
constexpr HRESULT kNoTable = static_cast<HRESULT>(0x80040E37);
constexpr HRESULT kConcurrency = static_cast<HRESULT>(0x80040E38);
constexpr HRESULT kAuthFailed = static_cast<HRESULT>(0x80040E4D);
constexpr HRESULT kCanceled = static_cast<HRESULT>(0x80040E4E);
constexpr HRESULT kNotSupported = static_cast<HRESULT>(0x80040E53);
constexpr HRESULT kOverflow = static_cast<HRESULT>(0x80040E57);

const char16_t kNoWords[] = u"";

struct StateRule {
    std::string_view state;  // whole, or the two characters of a class
    HRESULT code;
    const char16_t* words;
    bool connectionLost = false;
};

// The first match counts: single states before their class.
constexpr StateRule kStateRules[] = {
    {"07001", kParamNotOptional, kCauseSyntax},
    {"07002", kParamNotOptional, kCauseSyntax},
    {"08", E_FAIL, kCauseConnection, true},
    {"22001", kOverflow, kCauseOverflow},
    {"22003", kOverflow, kCauseOverflow},
    {"22007", kCantConvert, kNoWords},
    {"22008", kCantConvert, kNoWords},
    {"22018", kCantConvert, kNoWords},
    {"22P02", kCantConvert, kNoWords},
    {"23", kIntegrityViolation, kCauseConstraint},
    {"25006", kPermissionDenied, kCausePermission},
    {"28", kAuthFailed, kCauseConnection},
    {"37000", kErrorsInCommand, kCauseSyntax},
    {"40001", kConcurrency, kCauseConcurrency},
    {"40P01", kConcurrency, kCauseConcurrency},
    {"55P03", kConcurrency, kCauseConcurrency},
    {"42501", kPermissionDenied, kCausePermission},
    {"42S02", kNoTable, kCauseMissingObject},
    {"42P01", kNoTable, kCauseMissingObject},
    {"S0002", kNoTable, kCauseMissingObject},
    {"42S22", kErrorsInCommand, kCauseMissingObject},
    {"42703", kErrorsInCommand, kCauseMissingObject},
    {"42883", kErrorsInCommand, kCauseMissingObject},
    {"3F000", kErrorsInCommand, kCauseMissingObject},
    {"42S01", kErrorsInCommand, kNoWords},
    {"42P07", kErrorsInCommand, kNoWords},
    {"42", kErrorsInCommand, kCauseSyntax},
    {"57014", kCanceled, kCauseCancelled},
    {"57P01", E_FAIL, kCauseConnection, true},
    {"57P02", E_FAIL, kCauseConnection, true},
    {"57P03", E_FAIL, kCauseConnection, true},
    {"HY008", kCanceled, kCauseCancelled},
    {"HY018", kCanceled, kCauseCancelled},
    {"HYC00", kNotSupported, kNoWords},
    {"HYT", kAbortLimit, kCauseTimeout},
    {"IM", E_FAIL, kCauseConnection},
};

// For drivers that say HY000 to everything: the native code, then a word of the text ("" matches any).
struct NativeRule {
    SQLINTEGER native;
    std::string_view word;
    HRESULT code;
    const char16_t* words;
    bool connectionLost = false;
};

constexpr NativeRule kNativeRules[] = {
    {1, "no such table", kNoTable, kCauseMissingObject},
    {1, "no such view", kNoTable, kCauseMissingObject},
    {1, "no such column", kErrorsInCommand, kCauseMissingObject},
    {1, "no such function", kErrorsInCommand, kCauseMissingObject},
    {1, "no such index", kErrorsInCommand, kCauseMissingObject},
    {1, "has no column", kErrorsInCommand, kCauseMissingObject},
    {1, "already exists", kErrorsInCommand, kNoWords},
    {1, "syntax error", kErrorsInCommand, kCauseSyntax},
    {1, "incomplete input", kErrorsInCommand, kCauseSyntax},
    {1, "unrecognized token", kErrorsInCommand, kCauseSyntax},
    {1, "Couldn't parse SQL", kErrorsInCommand, kCauseSyntax},
    {-1, "only one SQL statement allowed", kErrorsInCommand, kCauseSyntax},
    {3, "access permission denied", kPermissionDenied, kCausePermission},
    {5, "locked", kConcurrency, kCauseConcurrency},
    {6, "locked", kConcurrency, kCauseConcurrency},
    {8, "readonly", kPermissionDenied, kCausePermission},
    {9, "interrupt", kCanceled, kCauseCancelled},
    {14, "connect failed", E_FAIL, kCauseConnection},
    {14, "unable to open", E_FAIL, kCauseConnection},
    {19, "constraint", kIntegrityViolation, kCauseConstraint},
    {23, "not authorized", kPermissionDenied, kCausePermission},
    {26, "not a database", E_FAIL, kCauseConnection},
    {1047, "", E_FAIL, kCauseConnection, true},
    {1205, "", kConcurrency, kCauseConcurrency},
    {1969, "", kAbortLimit, kCauseTimeout},
    {2002, "", E_FAIL, kCauseConnection, true},
    {2003, "", E_FAIL, kCauseConnection, true},
    {2006, "", E_FAIL, kCauseConnection, true},
    {2013, "", E_FAIL, kCauseConnection, true},
    {2014, "", E_FAIL, kCauseConnection, true},  // out of sync: with rows on it that nobody can read
    {20017, "", E_FAIL, kCauseConnection, true},
};

// Servers that know permissions only by number, whatever the state says.
constexpr SQLINTEGER kPermissionNatives[] = {229, 230, 262, 1044, 1142, 1143, 1227, 1370};

// Microsoft SQL Server refuses a login under the state of any other error.
constexpr SQLINTEGER kLoginNatives[] = {18452, 18456, 18470, 18486, 18487, 18488};

bool IsGenericState(std::string_view state) {
    return state.empty() || state == "HY000" || state == "S1000" || state == "01000" || state == "HY018" ||
           state == "70100";
}

std::string_view NoTrailingBreaks(std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.remove_suffix(1);
    return text;
}

AdoError Make(const std::vector<DiagnosticRecord>& records, const FailureClass& fallback,
              const FailureClass* insteadOfCancelled) {
    std::vector<ErrorRecord> errors;
    std::u16string all;
    std::u16string_view words;
    HRESULT code = E_FAIL;
    for (const DiagnosticRecord& record : records) {
        FailureClass failure = Classify(record);
        if (insteadOfCancelled != nullptr && failure.code == kCanceled) failure = *insteadOfCancelled;
        const std::u16string message = text::Utf8ToUtf16(StripPrefixes(record.message));
        errors.push_back({failure.code, message, kProviderSource, record.sqlState, record.native});
        // The first record that tells a cause decides; drivers put the general before the particular or after it.
        if (words.empty()) words = failure.words;
        if (code == E_FAIL) code = failure.code;
        if (message.empty() || all.find(message) != std::u16string::npos) continue;
        if (!all.empty()) all.append(u"; ");
        all.append(message);
    }
    if (words.empty()) words = fallback.words;
    if (code == E_FAIL) code = fallback.code;
    if (errors.empty()) errors.push_back({E_FAIL, {}, kProviderSource, "HY000", 0});
    if (all.empty()) all = kNoDiagnostics;
    errors.front().number = code;
    errors.front().description = words.empty() ? all : std::u16string(words) + kColon + all;
    return AdoError(std::move(errors));
}

}  // namespace

std::vector<DiagnosticRecord> ReadDiagnostics(SQLSMALLINT kind, SQLHANDLE handle) {
    constexpr SQLSMALLINT kMaxRecords = 32;  // a driver that repeats itself for ever must not hang us
    std::vector<DiagnosticRecord> records;
    std::string buffer(1024, '\0');
    for (SQLSMALLINT number = 1; number <= kMaxRecords; ++number) {
        SQLCHAR state[6] = {};
        SQLINTEGER native = 0;
        SQLSMALLINT length = 0;
        auto* text = reinterpret_cast<SQLCHAR*>(buffer.data());
        SQLRETURN result = Odbc().GetDiagRec(kind, handle, number, state, &native, text,
                                             static_cast<SQLSMALLINT>(buffer.size()), &length);
        if (!SQL_SUCCEEDED(result)) break;
        if (length >= static_cast<SQLSMALLINT>(buffer.size()) && length < SQL_MAX_MESSAGE_LENGTH * 60) {
            buffer.resize(static_cast<std::size_t>(length) + 1);
            text = reinterpret_cast<SQLCHAR*>(buffer.data());
            result = Odbc().GetDiagRec(kind, handle, number, state, &native, text,
                                       static_cast<SQLSMALLINT>(buffer.size()), &length);
            if (!SQL_SUCCEEDED(result)) break;
        }
        // The length is not to be trusted: some drivers count what they could not store.
        const std::string_view stored(buffer.data(), strnlen(buffer.data(), buffer.size() - 1));
        records.push_back({reinterpret_cast<const char*>(state), native, std::string(NoTrailingBreaks(stored))});
        buffer.assign(buffer.size(), '\0');
    }
    return records;
}

FailureClass Classify(const DiagnosticRecord& record) {
    if (std::ranges::find(kPermissionNatives, record.native) != std::end(kPermissionNatives) &&
        record.sqlState.starts_with("42")) {
        return {kPermissionDenied, kCausePermission, false};
    }
    if (std::ranges::find(kLoginNatives, record.native) != std::end(kLoginNatives)) {
        return {kAuthFailed, kCauseConnection, false};
    }
    if (IsGenericState(record.sqlState)) {
        for (const NativeRule& rule : kNativeRules) {
            if (rule.native == record.native && record.message.find(rule.word) != std::string::npos) {
                return {rule.code, rule.words, rule.connectionLost};
            }
        }
    }
    for (const StateRule& rule : kStateRules) {
        if (record.sqlState.starts_with(rule.state)) return {rule.code, rule.words, rule.connectionLost};
    }
    return {E_FAIL, kNoWords, false};
}

std::string_view StripPrefixes(std::string_view message) {
    while (message.starts_with('[')) {
        const std::size_t end = message.find(']');
        if (end == std::string_view::npos) break;
        message.remove_prefix(end + 1);
    }
    while (message.starts_with(' '))
        message.remove_prefix(1);
    return message;
}

AdoError MakeError(const std::vector<DiagnosticRecord>& records) {
    return MakeError(records, FailureClass{});
}

AdoError MakeCancelledError() {
    return MakeError({{"HY008", 0, "Operation canceled"}});
}

AdoError MakeWaitedError() {
    return MakeError({{"HYT00", 0, "Timeout expired"}});
}

bool IsEnded(const AdoError& error) noexcept {
    return error.Code() == kCanceled || error.Code() == kAbortLimit;
}

bool AreOfLock(const std::vector<DiagnosticRecord>& records) {
    return std::ranges::any_of(records, [](const auto& each) { return Classify(each).code == kConcurrency; });
}

AdoError MakeTimeoutError(const std::vector<DiagnosticRecord>& records, bool isCertain) {
    const FailureClass timeout = {kAbortLimit, kCauseTimeout, false};
    return Make(records, isCertain ? timeout : FailureClass{}, &timeout);
}

AdoError MakeError(const std::vector<DiagnosticRecord>& records, const FailureClass& fallback) {
    return Make(records, fallback, nullptr);
}
void ThrowDiagnostics(SQLSMALLINT kind, SQLHANDLE handle, SQLRETURN result) {
    if (result == SQL_INVALID_HANDLE) throw MakeError({});
    throw MakeError(ReadDiagnostics(kind, handle));
}

}  // namespace tk::ado
