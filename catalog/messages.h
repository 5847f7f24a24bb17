// catalog/messages.h - the words that this room shows to users, in GBK.
#pragma once

namespace tk::catalog {

extern const char kNumberName[];
extern const char kDateName[];
extern const char kTextName[];

// The tag stands for no known system. Which member uses which is part of the interface.
extern const char kUnknownRdbms[];
extern const char kUnknownDbms[];
extern const char kUnknownRdbmsWide[];

// Contexts of failures.
extern const char kGetFieldInfoFailed[];
extern const char kGetFieldsStructFailed[];
extern const char kListObjectsFailed[];  // the lists of the schema queries

// What a fault inside a lookup becomes.
extern const char kGetSpecialValueFault[];
extern const char kGetRecordValuesFault[];

}  // namespace tk::catalog
