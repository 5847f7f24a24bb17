// util/messages.h - the texts this room shows to users, in GBK; kept apart because only their source is compiled so.
#pragma once

namespace tk::util {

extern const char kSystemErrorFormat[];          ///< code, the system's text
extern const char kExceptionFormat[];            ///< where, what
extern const char kLoggedExceptionFormat[];      ///< where, what
extern const char kLoggedExceptionTextFormat[];  ///< where, the exception's own message

}  // namespace tk::util
