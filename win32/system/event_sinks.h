// Where records of the event log go.
#pragma once

#include <memory>
#include <string>

#include "tkwin32/event_log.h"

namespace tk::system {

class EventSink {
public:
    virtual ~EventSink() = default;
    /// Waits a second at most for whoever takes the record. @return false when it is lost, with errno telling why
    virtual bool Write(const EventRecord& record) = 0;
};

/// The system journal; null when it does not run.
std::unique_ptr<EventSink> OpenJournal();

/// A file of one record a line, made with its folders where it is missing; null, with errno telling why, when that
/// cannot be.
std::unique_ptr<EventSink> OpenEventFile(const std::string& path);

}  // namespace tk::system
