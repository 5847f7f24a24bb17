#include "util/messages.h"

#ifndef __clang__
static_assert(sizeof("库") == 3, "narrow literals are GBK here: -fexec-charset=GBK");
#endif

namespace tk::util {
namespace {

template <unsigned long Size>
consteval Han Of(const char (&text)[Size]) {
    return {{text[0], text[1]}};
}

}  // namespace

const char kSystemErrorFormat[] = "错误[0x%08X]:%s";

// Contract: the error text says "面临崩溃危险", the log "以至于面临崩溃危险"; both wordings are meant.
const char kExceptionFormat[] = "%s出现异常,面临崩溃危险[异常位置:%s]";
const char kLoggedExceptionFormat[] = "%s出现异常,以至于面临崩溃危险[异常位置:%s]";
const char kLoggedExceptionTextFormat[] = "%s出现异常,以至于面临崩溃危险:\r\n%s";

const Han kSmallNumerals[] = {Of("零"), Of("一"), Of("二"), Of("三"), Of("四"), Of("五"),
                              Of("六"), Of("七"), Of("八"), Of("九"), Of("十")};
const Han kCapitalDigits[] = {Of("零"), Of("壹"), Of("贰"), Of("叁"), Of("肆"),
                              Of("伍"), Of("陆"), Of("柒"), Of("捌"), Of("玖")};
const Han kPlaceUnits[] = {Of("仟"), Of("佰"), Of("拾")};
const Han kGroupUnits[] = {Of("亿"), Of("万"), Of("元")};
const Han kJiao = Of("角");
const Han kFen = Of("分");
const Han kWhole = Of("整");
const Han kBelowZero = Of("负");
const char kZeroAmount[] = "零元零角零分";
const char kAmountPattern[] = "(大写货币一)";
const char kFixedAmountPattern[] = "(大写货币二)";

const Han kWeekdays[] = {Of("一"), Of("二"), Of("三"), Of("四"), Of("五"), Of("六"), Of("日")};

const char kPerMille[] = "‰";

}  // namespace tk::util
