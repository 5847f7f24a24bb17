#include "util/chinese_reference.h"

#include <cmath>
#include <string_view>
#include <vector>

#include "util/slow_reference.h"

namespace tk::test {
namespace {

/// The double-byte character at an index of a text that has no others.
std::string Character(const char* text, std::size_t index) {
    return std::string(text).substr(index * 2, 2);
}

std::string Capital(char digit) {
    return Character("零壹贰叁肆伍陆柒捌玖", static_cast<std::size_t>(digit - '0'));
}

std::string FixedForm(const std::vector<std::string>& groups, const std::string& fraction) {
    std::string result;
    bool seen = false;
    for (std::size_t group = 0; group < 3; ++group) {
        if (groups[group] == "0000" && !seen) continue;
        seen = true;
        for (std::size_t position = 0; position < 4; ++position) {
            result += Capital(groups[group][position]);
            if (position < 3) result += Character("仟佰拾", position);
        }
        result += Character("亿万元", group);
    }
    return result + Capital(fraction[0]) + "角" + Capital(fraction[1]) + "分";
}

std::string UsualForm(const std::vector<std::string>& groups, const std::string& whole, const std::string& fraction) {
    std::string result;
    bool pending = false;
    for (std::size_t group = 0; group < 3; ++group) {
        if (groups[group] == "0000") continue;
        for (std::size_t position = 0; position < 4; ++position) {
            const char digit = groups[group][position];
            if (digit == '0') {
                if (position == 3) break;
                pending = true;
                continue;
            }
            if (pending) {
                if (!result.empty()) result += "零";
                pending = false;
            }
            result += Capital(digit);
            if (position < 3) result += Character("仟佰拾", position);
        }
        result += Character("亿万元", group);
    }
    if (groups[2] == "0000" && whole != "0") result += "元";
    if (fraction != "00") {
        if (whole.back() == '0' && whole.size() > 1) result += "零";
        result += Capital(fraction[0]);
        if (fraction[0] != '0') result += "角";
        if (fraction[1] != '0') result += Capital(fraction[1]) + "分";
    }
    return result + "整";
}

}  // namespace

std::string AmountInCapitals(double amount, int mode) {
    if (!std::isfinite(amount) || amount == 0) return "零元零角零分";
    if (amount < 0) return "负" + AmountInCapitals(-amount, mode);
    std::string text = TwelvePointTwo(amount);
    text.erase(0, text.find_first_not_of(' '));
    const std::size_t point = text.find('.');
    const std::string whole = text.substr(0, point);
    const std::string fraction = text.substr(point + 1);

    std::string digits = "000000000000";
    for (std::size_t i = 0; i < whole.size() && i < 12; ++i)
        digits[11 - i] = whole[whole.size() - 1 - i];
    const std::vector<std::string> groups = {digits.substr(0, 4), digits.substr(4, 4), digits.substr(8, 4)};
    return mode == 2 ? FixedForm(groups, fraction) : UsualForm(groups, whole, fraction);
}

std::string Initials(const std::string& text) {
    static const std::string boundaries = "啊芭擦搭蛾发噶哈击喀垃妈拿哦啪期然撒塌挖昔压匝";
    static const std::string letters = "ABCDEFGHJKLMNOPQRSTWXYZ";
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            result += text[at];
            continue;
        }
        if (at + 1 == text.size()) break;
        const std::string character = text.substr(at++, 2);
        std::size_t stop = 0;
        while (stop < letters.size() && boundaries.substr(stop * 2, 2) <= character)
            ++stop;
        if (stop > 0) result += letters[stop - 1];
    }
    return result == text ? "v" + result : result;
}

}  // namespace tk::test
