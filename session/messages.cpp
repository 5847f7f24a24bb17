#include "session/messages.h"

#if defined(__GNUC__) && !defined(__clang__)
static_assert(sizeof("库") == 3);  // this source needs -fexec-charset=GBK
#endif

namespace tk::session {

const char kServerName[] = "数据库服务器";
const char kClientName[] = "数据库客户端";

const char kNotOpen[] = "数据库会话没有打开,终端没有调用OpenSQL接口.";
const char kNoConnection[] = "没有引用数据库会话事务，即没有调用BeginTrans接口.";
const char kFullyOccupied[] = "数据库会话已经完全被占有并且打开,没有可以使用的会话.";
const char kLendingFailed[] = "打开数据库会话失败";

const char kBanner[] =
    "//=============================================================\r\n"
    "// 数据库代理组件(Release 3.0 版本)\r\n"
    "// 创建日期: 2026-11-21\r\n"
    "// 作    者: TKKernel 项目组\r\n"
    "// 联系方式: 见随程序附带的 README\r\n"
    "// 公    司: TKKernel 项目\r\n"
    "// 说    明: 借用和归还数据库会话, 会话内的一切异常都转化为错误信息\r\n"
    "//=============================================================\r\n";

}  // namespace tk::session
