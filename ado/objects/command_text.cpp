#include "ado/objects/command_text.h"

#include <algorithm>

#include "ado/cursor/text.h"
#include "ado/error.h"

namespace tk::ado {
namespace {

/// Statements of one word: a text that is one of them is no table.
constexpr std::u16string_view kWordStatements[] = {u"ABORT", u"ANALYZE", u"BEGIN",    u"CHECKPOINT", u"COMMIT",
                                                   u"END",   u"REINDEX", u"ROLLBACK", u"VACUUM"};

bool IsNameUnit(char16_t unit) {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z') ||
           unit == u'_' || unit == u'$' || unit == u'#' || unit >= 0x80;
}

std::u16string_view Trimmed(std::u16string_view text) {
    const auto first = text.find_first_not_of(u" \t\r\n");
    if (first == std::u16string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(u" \t\r\n") - first + 1);
}

}  // namespace

bool IsSingleName(std::u16string_view text) {
    text = Trimmed(text);
    if (text.empty()) return false;
    static constexpr struct {
        char16_t open;
        char16_t close;
    } kQuotes[] = {{u'"', u'"'}, {u'[', u']'}, {u'`', u'`'}};
    for (const auto& quote : kQuotes) {
        if (text.front() != quote.open) continue;
        return text.size() > 2 && text.find(quote.close, 1) == text.size() - 1;
    }
    return std::ranges::all_of(text, IsNameUnit) && !(text.front() >= u'0' && text.front() <= u'9') &&
           std::ranges::none_of(kWordStatements, [&](std::u16string_view word) { return SameName(word, text); });
}

Command MakeCommand(std::u16string_view text, LONG options) {
    if (options == -1) options = kCommandUnknown;
    constexpr LONG kKinds =
        kCommandText | kCommandTable | kCommandStoredProc | kCommandUnknown | kCommandFile | kCommandTableDirect;
    constexpr LONG kWays = kExecuteAsync | kFetchAsync | kFetchNonBlocking | kExecuteNoRecords;
    if ((options & ~(kKinds | kWays)) != 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(options));
    Command command;
    command.text = ToUtf8(text);
    command.asynchronousFetch = (options & (kFetchAsync | kFetchNonBlocking)) != 0;
    command.noRecords = (options & kExecuteNoRecords) != 0;
    LONG kind = options & kKinds;
    if (kind == 0 || kind == kCommandUnknown) kind = IsSingleName(text) ? kCommandTable : kCommandText;
    switch (kind) {
        case kCommandText:
            break;
        case kCommandTable:
        case kCommandTableDirect:
            command.kind = Command::Kind::Table;
            break;
        case kCommandStoredProc:
            command.kind = Command::Kind::Procedure;
            break;
        case kCommandFile:
            throw AdoError(ErrorNumber::FeatureNotAvailable, std::u16string(text));
        default:
            throw AdoError(ErrorNumber::InvalidArgument, NumberText(options));
    }
    return command;
}

}  // namespace tk::ado
