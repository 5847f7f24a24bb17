// ado/cursor/messages.h - what the cursor itself has to say about a failed change; provider errors, so with a code.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "ado/error.h"
#include "ado/messages.h"

namespace tk::ado {

inline constexpr HRESULT kDeletedRow = static_cast<HRESULT>(0x80040E23);
inline constexpr HRESULT kErrorsInCommand = static_cast<HRESULT>(0x80040E14);
inline constexpr HRESULT kErrorsOccurred = static_cast<HRESULT>(0x80040E21);
inline constexpr HRESULT kIntegrityViolation = static_cast<HRESULT>(0x80040E2F);
inline constexpr HRESULT kNoTable = static_cast<HRESULT>(0x80040E37);
inline constexpr HRESULT kConcurrencyViolation = static_cast<HRESULT>(0x80040E38);
inline constexpr HRESULT kPermissionDenied = static_cast<HRESULT>(0x80040E09);
inline constexpr HRESULT kCantConvertValue = static_cast<HRESULT>(0x80040E07);
inline constexpr HRESULT kDataOverflow = static_cast<HRESULT>(0x80040E57);
inline constexpr HRESULT kAbortLimitReached = static_cast<HRESULT>(0x80040E31);
inline constexpr HRESULT kOperationCanceled = static_cast<HRESULT>(0x80040E4E);
inline constexpr HRESULT kBadBookmark = static_cast<HRESULT>(0x80040E0E);

inline constexpr std::u16string_view kCursorSource = u"Microsoft Cursor Engine";

inline constexpr std::u16string_view kTextDeletedRow = u"该行已被删除,不能再读取它的值。";
inline constexpr std::u16string_view kTextConcurrency =
    u"并发冲突: 无法定位要更新或删除的行,自上次读取后某些值可能已被更改。";
inline constexpr std::u16string_view kTextTooManyRows = u"更新或删除所用的键列不足以确定一行,影响的行不止一行。";
inline constexpr std::u16string_view kTextNoBaseTable = u"没有足够的基本表信息,不能更新或刷新。";
inline constexpr std::u16string_view kTextNoKey = u"没有足够的键列信息,不能更新或刷新: 结果中必须包含表的全部主键列。";
inline constexpr std::u16string_view kTextBatchFailed = u"部分行没有写入,各行的原因见其状态。";
inline constexpr std::u16string_view kTextTooLong = u"文本超出字段定义的长度。";

/// A failure with a code of the layer below, to be listed by the connection's Errors.
inline AdoError ProviderFailure(HRESULT code, std::u16string_view text, std::u16string_view source) {
    ErrorRecord record;
    record.number = code;
    record.description = text;
    record.source = source;
    return AdoError({std::move(record)});
}

}  // namespace tk::ado
