// tkwin32/event_log.h - reading the event log where it is a file, one record a line.
//
//   tk::system::ReadEventLog(tk::system::EventLogPath(), [](const tk::system::EventRecord& record) {
//       Print(record.time, record.source, record.strings);
//       return true;  // go on
//   });
//
// The form of the file is described in win32/README.md. Where the system journal runs, records are there instead:
// journalctl TK_EVENT_SOURCE=name.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "windef.h"

namespace tk::system {

/// One record, texts in UTF-8.
struct EventRecord {
    std::string time;    // UTC, as 2003-07-04T05:06:07.123456Z
    std::string source;  // the program's name, as RegisterEventSource got it
    WORD type = 0;       // EVENTLOG_..._TYPE
    WORD category = 0;
    DWORD id = 0;
    DWORD process = 0;
    std::vector<std::string> strings;
    std::vector<BYTE> data;
};

struct EventLogReading {
    bool opened = false;      // the file could be read
    std::size_t records = 0;  // handed to the visitor
    std::size_t damaged = 0;  // lines that are no record
};

/// The file records go to when the journal does not take them: $TKKERNEL_EVENT_LOG, else tkkernel/events.jsonl in the
/// user's state folder.
TKWIN32_API std::string EventLogPath();

/// Hands every record of the file to the visitor, oldest first, until it returns false. Other programs may go on
/// writing meanwhile; a line that is not finished yet is left out.
TKWIN32_API EventLogReading ReadEventLog(const std::string& path, const std::function<bool(const EventRecord&)>& visit);

/// One line of the file without its line break, both ways.
TKWIN32_API std::string FormatEventRecord(const EventRecord& record);
TKWIN32_API std::optional<EventRecord> ParseEventRecord(std::string_view line);

}  // namespace tk::system
