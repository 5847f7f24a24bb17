// afx/messages.h - the texts of exceptions, in GBK.
#pragma once

namespace tk::afx {

extern const char kOutOfMemory[];
extern const char kNotSupported[];
extern const char kInvalidArgument[];
extern const char kNoResource[];
extern const char kUserCancelled[];

}  // namespace tk::afx
