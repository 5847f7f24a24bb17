#include "afx/messages.h"

#ifndef __clang__
static_assert(sizeof("库") == 3, "narrow literals are GBK here: -fexec-charset=GBK");
#endif

namespace tk::afx {

const char kOutOfMemory[] = "内存不足。";
const char kNotSupported[] = "试图执行系统不支持的操作。";
const char kInvalidArgument[] = "遇到不适当的参数。";
const char kNoResource[] = "找不到所需的资源。";
const char kUserCancelled[] = "操作已取消。";

}  // namespace tk::afx
