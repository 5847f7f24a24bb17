#include "platform/messages.h"

namespace tk::platform {

#ifndef __clang__
static_assert(sizeof("库") == 3, "this source is compiled with GBK as its execution character set");
#endif

const char kSocketsFailed[] = "SOCKET INIT FAILED.";
const char kComNotStarted[] = "无法初始化OLE引擎,进程没有调用CoInitialize(NULL)函数!";
const char kCallAuthorFault[] = "连接点关闭出现异常[异常位置:GetCallAuthor]";
const char kFolderPrompt[] = "请选择文件夹：";
const char kNoDrive[] = "无盘符错误!";
const char kWrongTarget[] = "目标路径错误!";

}  // namespace tk::platform
