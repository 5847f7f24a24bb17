#include "catalog/messages.h"

#if defined(__GNUC__) && !defined(__clang__)
static_assert(sizeof("库") == 3);  // this source needs -fexec-charset=GBK
#endif

namespace tk::catalog {

const char kNumberName[] = "数字";
const char kDateName[] = "时间";
const char kTextName[] = "字符串";

}  // namespace tk::catalog
