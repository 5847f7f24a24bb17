// ado/error.h - failures inside ado/ are exceptions; the automation layer turns them into EXCEPINFO in one place.
#pragma once

#include <windows.h>

#include <exception>
#include <string>
#include <vector>

namespace tk::ado {

/// ADO's own error numbers; the HRESULT is 0x800A0000 + number, the text comes from messages.h.
enum class ErrorNumber : unsigned short {
    ProviderFailed = 3000,
    InvalidArgument = 3001,
    OpeningFile = 3002,
    ReadingFile = 3003,
    WritingFile = 3004,
    NoCurrentRecord = 3021,
    IllegalOperation = 3219,
    CantChangeProvider = 3220,
    InTransaction = 3246,
    FeatureNotAvailable = 3251,
    ItemNotFound = 3265,
    ObjectInCollection = 3367,
    ObjectNotSet = 3420,
    DataConversion = 3421,
    ObjectClosed = 3704,
    ObjectOpen = 3705,
    ProviderNotFound = 3706,
    BoundToCommand = 3707,
    InvalidParamInfo = 3708,
    InvalidConnection = 3709,
    NotReentrant = 3710,
    StillExecuting = 3711,
    OperationCancelled = 3712,
    StillConnecting = 3713,
    InvalidTransaction = 3714,
    NotExecuting = 3715,
};

/// One record of a provider failure, as the Errors collection shows it.
struct ErrorRecord {
    HRESULT number = E_FAIL;
    std::u16string description;
    std::u16string source;
    std::string sqlState;  // five ASCII characters
    LONG nativeError = 0;
};

/// A failure on its way to the automation layer.
class AdoError : public std::exception {
public:
    /// An ADO error; the detail (which object, which name or number) is appended to the number's text.
    explicit AdoError(ErrorNumber number, std::u16string detail = {});

    /// An error from below: the first record is the one reported, all of them go to the Errors collection.
    explicit AdoError(std::vector<ErrorRecord> records);

    /// An AdoError as it is; any other exception as ProviderFailed, with its words.
    static AdoError From(const std::exception& cause);

    HRESULT Code() const noexcept { return code_; }
    const std::u16string& Description() const noexcept { return description_; }

    /// Empty for ADO errors: the object that reports them fills in its own name.
    const std::u16string& Source() const noexcept { return source_; }

    /// Empty for ADO errors.
    const std::vector<ErrorRecord>& Records() const noexcept { return records_; }

    /// An ASCII rendering for logs of the program's own.
    const char* what() const noexcept override { return what_.c_str(); }

private:
    HRESULT code_;
    std::u16string description_;
    std::u16string source_;
    std::vector<ErrorRecord> records_;
    std::string what_;
};

}  // namespace tk::ado
