#include <tkkernel/util.h>

#include <charconv>
#include <iostream>
#include <optional>

#include "tools/tkdb/commands.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

template <typename Number>
std::optional<Number> Parsed(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    return number;
}

/// @return nothing when the text is not what the work is about
std::optional<CString> Converted(TextWork work, const std::string& text, int mode, const CString& format) {
    const CString gbk = TerminalToGbk(text).c_str();
    switch (work) {
        case TextWork::Currency:
            if (const auto amount = Parsed<double>(text)) return UpperCurrency(*amount, mode);
            return std::nullopt;
        case TextWork::Numeral:
            if (const auto number = Parsed<short>(text); number && *number >= 0) return NumberToChinese(*number);
            return std::nullopt;
        case TextWork::Number:
            if (const auto number = Parsed<double>(text)) {
                const CString converted = DoubleToString(*number, format);
                if (!converted.IsEmpty()) return converted;
            }
            return std::nullopt;
        case TextWork::Pinyin:
            return ToPyHead(gbk, gbk.GetLength());
        case TextWork::Date:
            break;
    }
    const DATE date = StringToDate(gbk);
    if (date == 0.0) return std::nullopt;
    return DateToString(date, format);
}

}  // namespace

int PrintTexts(TextWork work, const std::vector<std::string>& texts, int mode, const std::string& format) {
    const CString gbkFormat = TerminalToGbk(format).c_str();
    int code = kSuccess;
    const auto print = [&](const std::string& text) {
        if (const auto converted = Converted(work, text, mode, gbkFormat)) {
            Print("{}\n", GbkToTerminal(static_cast<const char*>(*converted)));
        } else {
            Complain("cannot read {}", text);
            code = kWrongUsage;
        }
    };
    for (const auto& text : texts)
        print(text);
    if (texts.empty()) {
        for (std::string line; !IsOutputLost() && std::getline(std::cin, line);)
            print(line);
    }
    return code;
}

}  // namespace tk::tools
