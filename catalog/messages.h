// catalog/messages.h - the words that this room shows to users, in GBK.
#pragma once

namespace tk::catalog {

extern const char kNumberName[];
extern const char kDateName[];
extern const char kTextName[];

}  // namespace tk::catalog
