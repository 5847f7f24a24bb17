// platform/messages.h - the texts this room shows to users, in GBK; kept apart because only their source is compiled
// so.
#pragma once

namespace tk::platform {

extern const char kSocketsFailed[];
extern const char kComNotStarted[];
extern const char kCallAuthorFault[];
extern const char kFolderPrompt[];
extern const char kNoDrive[];
extern const char kWrongTarget[];

}  // namespace tk::platform
