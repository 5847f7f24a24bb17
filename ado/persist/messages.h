// ado/persist/messages.h - what is wrong with a file, for the detail of "cannot open", "cannot read", "cannot write".
#pragma once

#include <string_view>

namespace tk::ado {

inline constexpr std::u16string_view kTextNotAFile = u"不是普通文件";
inline constexpr std::u16string_view kTextAlreadyThere = u"文件已存在";
inline constexpr std::u16string_view kTextNotSavedRows = u"不是保存的记录集";
inline constexpr std::u16string_view kTextTruncated = u"文件不完整";
inline constexpr std::u16string_view kTextDamaged = u"文件已损坏";
inline constexpr std::u16string_view kTextBehindEnd = u"记录集结束之后还有多余的内容";
inline constexpr std::u16string_view kTextUnknownPart = u"文件中有不能识别的部分";
inline constexpr std::u16string_view kTextChildRows = u"不支持带有子记录集的文件";
inline constexpr std::u16string_view kTextImplausible = u"文件中的行数或列数不合理";
inline constexpr std::u16string_view kTextTooManyColumns = u"列太多，此格式容纳不下";
inline constexpr std::u16string_view kTextTooLong = u"值太长，此格式容纳不下";
inline constexpr std::u16string_view kTextBadColumn = u"列的说明有误";
inline constexpr std::u16string_view kTextBadValue = u"列中有不能识别的值";
inline constexpr std::u16string_view kTextDoctype = u"不接受带有文档类型声明的文件";
inline constexpr std::u16string_view kTextTooDeep = u"元素嵌套过深";
inline constexpr std::u16string_view kTextNoSchema = u"缺少列的说明";
inline constexpr std::u16string_view kTextMisplaced = u"元素的位置不对";
inline constexpr std::u16string_view kTextNoName = u"没有指定文件名";
inline constexpr std::u16string_view kTextLine = u"行";

}  // namespace tk::ado
