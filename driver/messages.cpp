#include "driver/messages.h"

#if defined(__GNUC__) && !defined(__clang__)
static_assert(sizeof("库") == 3);  // this source needs -fexec-charset=GBK
#endif

namespace tk::driver {

const char kOperationDone[] = "返回编码:[0x00000000]操作完全成功。";
const char kOperationDoneNoResult[] = "返回编码:[0x00000000]操作完全成功，但没有结果集返回。";
const char kOpenDatabaseFailed[] = "打开数据库失败";
const char kCannotCloseDatabase[] = "数据库没有打开或打开失败,无法关闭!";
const char kCannotCloseOpenedDatabase[] = "Can not close the opened database!!";
const char kDatabaseNotOpened[] = "数据库没有打开或打开失败,系统没有合法调用Open方法！";
const char kOpenSchemaFailed[] = "OpenSchema 出错!";
// Contract: the one-argument form words its failure differently from the other two.
const char kOpenSchemaFailedShort[] = "OpenSchema 时出错";
const char kGetPropertyValueFailed[] = "操作 GetPropertyValue 出现异常!";
const char kNoConnection[] = "没有数据库连接信息！";
const char kNoConnectionDetail[] = "系统无法连接未指定或不确定数据库。";
const char kRecordsetOpenFailed[] = "Open";
const char kRecordsetCloseFailed[] = " Can not close!";
const char kInvalidInterface[] = "非法接口地址,传入地址无法在内存定位!";
const char kOpenFieldFailed[] = "操作 OpenField 时出现异常!";
const char kIsOpenFailed[] = "IsOpen 出错!";
const char kRequeryFailed[] = "Requery 时出错!";
const char kGetRecordCountFailed[] = "GetRecordCount!";
const char kMoveFailed[] = "Can not Move!";
const char kFindFailed[] = "Find Error!";
const char kGetFilterFailed[] = "GetFilter!";
const char kGetValueFailed[] = "可能数据源绑定错误!试着用 OpenField()打开数据源";
const char kSetValueFailed[] = "SetValue!";
const char kGetFieldNamesFailed[] = "操作 GetAllFieldNames 时出现异常!";
const char kAskOverwrite[] = "该文件已经存在是否删除?";
const char kSaveXmlFailed[] = "SaveAsXML!";
const char kSaveFileFailed[] = "SaveAsFile!";
const char kReadColumnFailed[] = "操作 SelectOneColumn 数据库出现异常!";
const char kReadCurrentFailed[] = " 操作 SelectCurRecordToString 数据库出现异常!";
const char kReadFirstFailed[] = " 操作 SelectFirstRecordToString 数据库出现异常!";
const char kReadNextFailed[] = " 操作 SelectNextRecordToString 数据库出现异常!";

}  // namespace tk::driver
