#include "support/tds/call.h"

#include <algorithm>
#include <charconv>

#include "support/tds/messages.h"
#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

struct NumberedName {
    std::uint16_t number;
    const char* name;
};

constexpr NumberedName kNumbered[] = {
    {10, "sp_executesql"}, {11, "sp_prepare"}, {12, "sp_execute"}, {13, "sp_prepexec"}, {15, "sp_unprepare"},
};

std::string ReadName(ByteReader& in) {
    constexpr std::uint16_t kByNumber = 0xFFFF;
    constexpr std::size_t kLongestName = 1046;
    const std::uint16_t units = in.U16();
    if (units != kByNumber) {
        if (units > kLongestName) throw ProtocolError("the name of a procedure is too long");
        return PlainName(in.Text(units));
    }
    const std::uint16_t number = in.U16();
    const auto* const known = std::ranges::find(kNumbered, number, &NumberedName::number);
    return known != std::end(kNumbered) ? known->name : "procedure " + std::to_string(number);
}

Cell LiteralCell(const Word& word) {
    if (word.IsText()) return word.Plain();
    if (EqualWords(word.text, "null")) return {};
    std::int64_t number = 0;
    const char* const end = word.text.data() + word.text.size();
    if (std::from_chars(word.text.data(), end, number).ptr == end) return number;
    return std::string(word.text);
}

}  // namespace

std::string_view WithoutHeaders(std::string_view message) {
    ByteReader in(message);
    const std::uint32_t size = in.U32();
    if (size < 4 || size > message.size()) throw ProtocolError("headers longer than their message");
    return message.substr(size);
}

std::vector<Call> ReadCalls(std::string_view message) {
    constexpr std::uint8_t kSeparator = 0x80, kOtherSeparator = 0xFF, kByReference = 1;
    constexpr std::size_t kMostArguments = 2100;
    std::vector<Call> calls;
    std::string_view rest = message;
    ByteReader in(rest);
    while (!in.AtEnd()) {
        Call call;
        call.name = ReadName(in);
        in.U16();
        while (!in.AtEnd()) {
            const std::uint8_t units = in.U8();
            if (units == kSeparator || units == kOtherSeparator) break;
            Argument argument;
            argument.name = in.Text(units);
            argument.isOutput = (in.U8() & kByReference) != 0;
            argument.type = ReadType(in);
            argument.value = ReadCell(in, argument.type);
            call.arguments.push_back(std::move(argument));
            if (call.arguments.size() > kMostArguments) throw ProtocolError("too many arguments");
        }
        calls.push_back(std::move(call));
    }
    return calls;
}

std::string PlainName(std::string_view name) {
    std::string last;
    for (const Word& word : WordsOf(name)) {
        if (word.text == ";") break;
        if (word.text != ".") last = word.Plain();
    }
    return last;
}

Call ParseCall(std::string_view text) {
    std::vector<Word> words = WordsOf(text);
    std::size_t at = 0;
    const auto is = [&](std::size_t place, std::string_view mark) {
        return place < words.size() && words[place].text == mark;
    };
    if (!words.empty() && (EqualWords(words[0].text, "exec") || EqualWords(words[0].text, "execute"))) ++at;
    if (at == words.size()) throw SyntaxError("exec");
    Call call;
    call.name = words[at++].Plain();
    while (is(at, ".") && at + 1 < words.size()) {
        call.name = words[at + 1].Plain();
        at += 2;
    }
    while (at < words.size()) {
        Argument argument;
        if (words[at].text.starts_with('@') && is(at + 1, "=")) {
            argument.name = words[at].text;
            at += 2;
        }
        const bool isNegative = is(at, "-");
        if (isNegative) ++at;
        if (at == words.size()) throw SyntaxError(call.name);
        argument.value = LiteralCell(words[at++]);
        auto* const number = std::get_if<std::int64_t>(&argument.value);
        if (isNegative && number == nullptr) throw SyntaxError(call.name);
        if (isNegative) *number = -*number;
        call.arguments.push_back(std::move(argument));
        if (at < words.size() && !is(at++, ",")) throw SyntaxError(std::string(words[at - 1].text));
    }
    return call;
}

}  // namespace tk::test::tds
