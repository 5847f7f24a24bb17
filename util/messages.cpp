#include "util/messages.h"

namespace tk::util {

static_assert(sizeof("库") == 3, "this source is compiled with GBK as its execution character set");

const char kSystemErrorFormat[] = "错误[0x%08X]:%s";

// Contract: the error text says "面临崩溃危险", the log "以至于面临崩溃危险"; both wordings are meant.
const char kExceptionFormat[] = "%s出现异常,面临崩溃危险[异常位置:%s]";
const char kLoggedExceptionFormat[] = "%s出现异常,以至于面临崩溃危险[异常位置:%s]";
const char kLoggedExceptionTextFormat[] = "%s出现异常,以至于面临崩溃危险:\r\n%s";

}  // namespace tk::util
