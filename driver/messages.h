// messages.h - every text that the members of this room put into a last-error text, in GBK.
#pragma once

namespace tk::driver {

extern const char kOperationDone[];              // after an automation object was created
extern const char kOperationDoneNoResult[];      // before every Recordset.Open; stays when the open succeeds
extern const char kOpenDatabaseFailed[];         // Connection.Open, or reading the properties that follow
extern const char kCannotCloseDatabase[];        // Connection.Close
extern const char kCannotCloseOpenedDatabase[];  // closing in the destructor
extern const char kDatabaseNotOpened[];          // Execute told nothing and the system's last error is 0
extern const char kOpenSchemaFailed[];           // the two- and three-argument forms
extern const char kOpenSchemaFailedShort[];      // the one-argument form
extern const char kGetPropertyValueFailed[];
extern const char kNoConnection[];  // the two lines for a recordset that is not bound
extern const char kNoConnectionDetail[];
extern const char kRecordsetOpenFailed[];
extern const char kRecordsetCloseFailed[];  // begins with a blank
extern const char kInvalidInterface[];
extern const char kOpenFieldFailed[];  // OpenField and OpenDispatch
extern const char kIsOpenFailed[];
extern const char kRequeryFailed[];
extern const char kGetRecordCountFailed[];
extern const char kMoveFailed[];
extern const char kFindFailed[];
extern const char kGetFilterFailed[];
extern const char kGetValueFailed[];
extern const char kSetValueFailed[];
extern const char kGetFieldNamesFailed[];
extern const char kAskOverwrite[];  // a question, not a failure
extern const char kSaveXmlFailed[];
extern const char kSaveFileFailed[];
extern const char kReadColumnFailed[];
extern const char kReadCurrentFailed[];  // all three members that read the current record; begins with a blank
extern const char kReadFirstFailed[];    // begins with a blank
extern const char kReadNextFailed[];     // begins with a blank

}  // namespace tk::driver
