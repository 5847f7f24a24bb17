#include "tkkernel/util.h"
#include "util/alarm.h"
#include "util/message_buffer.h"
#include "util/messages.h"
#include "util/text.h"

namespace {

constexpr DWORD kEventId = 0x4000000C;
constexpr WORD kCategory = 0;
constexpr char kUnknownSource[] = "UnknownService";

struct Record {
    const char* first;
    const char* second;
    DWORD eventId;
    WORD type;
    WORD dataLength;
    void* data;
};

int Write(const Record& record) {
    _tagPATHITEM program;
    const char* source = GetAppName(&program) != 0 ? program.szFileName : kUnknownSource;
    if (record.type == EVENTLOG_ERROR_TYPE) tk::util::SoundAlarm();

    const HANDLE log = RegisterEventSourceA(nullptr, source);
    if (log == nullptr) return 0;

    // Contract: three strings; a viewer that joins them shows the two texts on lines of their own.
    const char* strings[] = {tk::util::OrEmpty(record.first), "\r\n", tk::util::OrEmpty(record.second)};
    const DWORD dataLength = record.data == nullptr ? 0 : record.dataLength;
    // Contract: whether the record was written is not looked at.
    ReportEventA(log, record.type, kCategory, record.eventId, nullptr, static_cast<WORD>(std::size(strings)),
                 dataLength, strings, record.data);
    return DeregisterEventSource(log);
}

int WriteException(const CString& message, CString* copy) {
    if (copy != nullptr) *copy = message;
    return Write({message, GetLastErrorText(), kEventId, EVENTLOG_ERROR_TYPE, 0, nullptr});
}

}  // namespace

int AddLog(const char* szFirst, const char* szSecond, DWORD nEventId, WORD nType, WORD nLength, void* pData) {
    return Write({szFirst, szSecond, nEventId, nType, nLength, pData});
}

int AddErrorLog(const char* szText, int bLastError, WORD nLength, void* pData) {
    const CString reason = bLastError != 0 ? GetLastErrorText() : CString();
    return Write({szText, reason, kEventId, EVENTLOG_ERROR_TYPE, nLength, pData});
}

int AddWarnLog(const char* szFirst, const char* szSecond, WORD nLength, void* pData) {
    return Write({szFirst, szSecond, kEventId, EVENTLOG_WARNING_TYPE, nLength, pData});
}

int AddInforLog(const char* szFirst, const char* szSecond, WORD nLength, void* pData) {
    return Write({szFirst, szSecond, kEventId, EVENTLOG_INFORMATION_TYPE, nLength, pData});
}

int AddExcepLog(const char* szWhere, const char* szWhat, CString* pMessage) {
    return WriteException(tk::util::ComposeMessage(tk::util::kLoggedExceptionFormat, szWhere, szWhat), pMessage);
}

int AddExcepLog(CException* e, const char* szWhere, CString* pMessage) {
    const CString reason = tk::util::ExceptionMessage(e);
    return WriteException(tk::util::ComposeMessage(tk::util::kLoggedExceptionTextFormat, szWhere, reason), pMessage);
}
