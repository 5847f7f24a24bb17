#include "catalog/messages.h"

#if defined(__GNUC__) && !defined(__clang__)
static_assert(sizeof("库") == 3);  // this source needs -fexec-charset=GBK
#endif

namespace tk::catalog {

const char kNumberName[] = "数字";
const char kDateName[] = "时间";
const char kTextName[] = "字符串";

// Contract: three wordings of one failure: with and without the R, and with full-width parentheses.
const char kUnknownRdbms[] = "无法识别的数据库管理系统(RDBMS SYSTEM ERROR)!";
const char kUnknownDbms[] = "无法识别的数据库管理系统(DBMS SYSTEM ERROR)!";
const char kUnknownRdbmsWide[] = "无法识别的数据库管理系统（RDBMS SYSTEM ERROR）!";

const char kGetFieldInfoFailed[] = "GetFieldInfo!";
const char kGetFieldsStructFailed[] = "GetFieldsStruct!";
const char kListObjectsFailed[] = "筛选数据对象出错";

const char kGetSpecialValueFault[] = "数据库服务器出现异常,面临崩溃危险[异常位置:GetSpecialValue]";
const char kGetRecordValuesFault[] = "数据库服务器出现异常,面临崩溃危险[异常位置:GetRecordValues]";

}  // namespace tk::catalog
