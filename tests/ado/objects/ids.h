// tests/ado/objects/ids.h - the ids that programs call members by.
#pragma once

#include <windows.h>

#include <wtypes.h>

namespace tk::ado::test {

namespace connection {
enum : DISPID {
    kConnectionString = 0,
    kCommandTimeout = 2,
    kConnectionTimeout = 3,
    kVersion = 4,
    kClose = 5,
    kExecute = 6,
    kBeginTrans = 7,
    kCommitTrans = 8,
    kRollbackTrans = 9,
    kOpen = 10,
    kErrors = 11,
    kDefaultDatabase = 12,
    kIsolationLevel = 13,
    kAttributes = 14,
    kCursorLocation = 15,
    kMode = 16,
    kProvider = 17,
    kState = 18,
    kOpenSchema = 19,
    kCancel = 21,
    kProperties = 500
};
}

namespace recordset {
enum : DISPID {
    kFields = 0,
    kProperties = 500,
    kAbsolutePosition = 1000,
    kActiveConnection = 1001,
    kBof = 1002,
    kBookmark = 1003,
    kCacheSize = 1004,
    kCursorType = 1005,
    kEof = 1006,
    kLockType = 1008,
    kMaxRecords = 1009,
    kRecordCount = 1010,
    kSource = 1011,
    kAddNew = 1012,
    kCancelUpdate = 1013,
    kClose = 1014,
    kDelete = 1015,
    kGetRows = 1016,
    kMove = 1017,
    kMoveNext = 1018,
    kMovePrevious = 1019,
    kMoveFirst = 1020,
    kMoveLast = 1021,
    kOpen = 1022,
    kRequery = 1023,
    kResync = 1024,
    kUpdate = 1025,
    kEditMode = 1026,
    kStatus = 1029,
    kFilter = 1030,
    kSort = 1031,
    kClone = 1034,
    kUpdateBatch = 1035,
    kSupports = 1036,
    kAbsolutePage = 1047,
    kPageSize = 1048,
    kCancelBatch = 1049,
    kPageCount = 1050,
    kCursorLocation = 1051,
    kNextRecordset = 1052,
    kMarshalOptions = 1053,
    kState = 1054,
    kCancel = 1055,
    kDataSource = 1056,
    kSave = 1057,
    kFind = 1058,
    kActiveCommand = 1061,
    kGetString = 1062,
    kStayInSync = 1063,
    kDataMember = 1064,
    kCompareBookmarks = 1065,
    kSeek = 1066,
    kIndex = 1067,
    kCollect = -8
};
}

namespace field {
enum : DISPID {
    kValue = 0,
    kProperties = 500,
    kName = 1100,
    kType = 1102,
    kDefinedSize = 1103,
    kOriginalValue = 1104,
    kUnderlyingValue = 1105,
    kAppendChunk = 1107,
    kGetChunk = 1108,
    kActualSize = 1109,
    kPrecision = 1112,
    kNumericScale = 1113,
    kAttributes = 1114,
    kDataFormat = 1115,
    kStatus = 1116
};
}

namespace command {
enum : DISPID {
    kParameters = 0,
    kActiveConnection = 1,
    kCommandText = 2,
    kCommandTimeout = 3,
    kPrepared = 4,
    kExecute = 5,
    kCreateParameter = 6,
    kCommandType = 7,
    kName = 8,
    kState = 9,
    kCancel = 10,
    kProperties = 500
};
}

namespace parameter {
enum : DISPID {
    kValue = 0,
    kName = 1,
    kType = 2,
    kDirection = 3,
    kPrecision = 4,
    kNumericScale = 5,
    kSize = 6,
    kAppendChunk = 7,
    kAttributes = 8
};
enum : DISPID { kAppend = 0x60030000, kDelete = 0x60030001 };  // of the collection
}  // namespace parameter

namespace collection {
enum : DISPID { kItem = 0, kCount = 1, kRefresh = 2, kAppend = 3, kDelete = 4, kNewEnum = -4 };
}

}  // namespace tk::ado::test
