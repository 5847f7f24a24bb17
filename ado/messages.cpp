#include "ado/messages.h"

#include <algorithm>
#include <array>

namespace tk::ado {
namespace {

struct Message {
    ErrorNumber number;
    std::u16string_view text;
};

constexpr Message kMessages[] = {
    {ErrorNumber::ProviderFailed, u"驱动程序未能完成操作"},
    {ErrorNumber::InvalidArgument, u"参数类型不符、超出范围或互相矛盾"},
    {ErrorNumber::OpeningFile, u"无法打开文件"},
    {ErrorNumber::ReadingFile, u"无法读取文件"},
    {ErrorNumber::WritingFile, u"无法写入文件"},
    {ErrorNumber::NoCurrentRecord, u"没有当前记录：已在首记录之前或末记录之后，或者当前记录已被删除"},
    {ErrorNumber::IllegalOperation, u"当前状态下不允许此操作"},
    {ErrorNumber::CantChangeProvider, u"指定的驱动程序与正在使用的不同"},
    {ErrorNumber::InTransaction, u"事务尚未结束，不能关闭连接"},
    {ErrorNumber::FeatureNotAvailable, u"对象或驱动程序不支持此功能"},
    {ErrorNumber::ItemNotFound, u"集合中没有此名称或序号的项目"},
    {ErrorNumber::ObjectInCollection, u"集合中已有同名对象，不能添加"},
    {ErrorNumber::ObjectNotSet, u"对象已失效"},
    {ErrorNumber::DataConversion, u"值的类型不适用于此操作"},
    {ErrorNumber::ObjectClosed, u"对象已关闭，不能执行此操作"},
    {ErrorNumber::ObjectOpen, u"对象已打开，不能执行此操作"},
    {ErrorNumber::ProviderNotFound, u"找不到驱动程序，可能没有安装"},
    {ErrorNumber::BoundToCommand, u"记录集来自命令对象，不能更换它的连接"},
    {ErrorNumber::InvalidParamInfo, u"参数对象的定义不完整或不一致"},
    {ErrorNumber::InvalidConnection, u"连接已关闭或无效，不能执行此操作"},
    {ErrorNumber::NotReentrant, u"正在处理事件，不能执行此操作"},
    {ErrorNumber::StillExecuting, u"前一操作仍在执行"},
    {ErrorNumber::OperationCancelled, u"操作已取消"},
    {ErrorNumber::StillConnecting, u"连接仍在建立中"},
    {ErrorNumber::InvalidTransaction, u"事务无效"},
    {ErrorNumber::NotExecuting, u"没有正在执行的操作"},
};
static_assert(std::ranges::is_sorted(kMessages, {}, &Message::number));

}  // namespace

std::u16string_view MessageOf(ErrorNumber number) noexcept {
    const auto* found = std::ranges::lower_bound(kMessages, number, {}, &Message::number);
    return found != std::end(kMessages) && found->number == number ? found->text : kMessages[0].text;
}

const char16_t kCauseConnection[] = u"连接失败";
const char16_t kCauseTimeout[] = u"超时";
const char16_t kCauseCancelled[] = u"已取消";
const char16_t kCauseSyntax[] = u"语法错误";
const char16_t kCauseConstraint[] = u"违反约束";
const char16_t kCausePermission[] = u"权限不足";
const char16_t kCauseMissingObject[] = u"对象不存在";
const char16_t kCauseOverflow[] = u"数据溢出";
const char16_t kCauseConcurrency[] = u"并发冲突";

const char16_t kColon[] = u"：";
const char16_t kNoDiagnostics[] = u"驱动程序没有说明原因";
const char16_t kProviderSource[] = u"Microsoft OLE DB Provider for ODBC Drivers";
const char16_t kNoTransaction[] = u"没有活动的事务。";
const char16_t kTransactionExists[] = u"该会话上已有一个事务,不能再开始另一个。";
const char16_t kTransactionAborted[] = u"数据库已撤销该事务,请先回滚。";
const char16_t kUnsupportedParameter[] = u"参数值的类型不能发送给数据库";

}  // namespace tk::ado
