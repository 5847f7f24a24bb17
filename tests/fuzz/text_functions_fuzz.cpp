// Any text through every function on texts: positions stay inside, what can be undone comes back, lengths are bounded.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tkkernel/util.h"

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

int Length(const std::string& text) {
    return static_cast<int>(std::char_traits<char>::length(text.c_str()));
}

void TryLists(const std::string& text, const std::string& mark) {
    CStringArray array;
    StringToArray(array, text.c_str(), mark.c_str());
    const CString joined = ArrayToString(array, mark.c_str());
    Require(joined.GetLength() <= Length(text));
    SortArray(array);
    for (int i = 0; i < array.GetSize(); ++i)
        Require(StringInArray(array, array[i]) == 1 && StringInArrayPos(array, array[i]) <= i);
    StringToArray(array, text.data(), static_cast<int>(text.size()));
    CMapStringToString map;
    StringToMap(map, text.c_str());
    Require(MapToString(map).GetLength() <= Length(text));
    CString rest(text.c_str());
    const char ch = mark.empty() ? ',' : mark[0];
    const int fields = CountSubString(text.c_str(), ch);
    for (int field = 1; ch != '\0' && field < fields; ++field)
        DivideString(rest, ch);
    Require(ch == '\0' || IsExist(rest, ch) == 0);
}

void TrySearch(const std::string& text, const std::string& mark, int count) {
    int position = 0;
    GetUnitPos(mark.c_str(), text.c_str(), mark.c_str(), position);
    Require(position >= -1 && position <= Length(text));
    GetUnitNoCase(mark.c_str(), text.c_str(), mark.c_str(), position);
    Require(position >= -1 && position <= Length(text));
    GetUnit(mark.c_str(), text.c_str(), mark.c_str());
    const int found = FindStringPos(mark.c_str(), text.c_str());
    Require(FindString(mark.c_str(), text.c_str()).GetLength() == (found < 0 ? 0 : found));
    FindStringNoCase(text.c_str(), mark.c_str());
    for (const int before : {0, 1})
        Require(GetSubString(mark.c_str(), text.c_str(), before, count).GetLength() <= Length(text));
}

void TryChanges(const std::string& text, const std::string& mark, int count) {
    const char ch = mark.empty() ? '0' : mark[0];
    for (const auto trim : {TrimLeft, TrimRight}) {
        std::vector<char> buffer(text.c_str(), text.c_str() + Length(text) + 1);
        const int removed = trim(buffer.data(), mark.c_str());
        Require(StrLen(buffer.data()) == Length(text) - (removed < 0 ? 0 : removed));
    }
    Require(TruncString(text.c_str(), ch).GetLength() <= Length(text));
    Require(CutString(text.c_str(), ch).GetLength() <= Length(text));
    CString changed(text.c_str());
    ReplaceTextA(changed, mark.c_str(), "xy");
    ReplaceString(text.c_str(), mark.c_str(), "xy");
    std::vector<char> target(text.size() + 1);
    Require(StringLeft(text.c_str(), target.data(), count) == StrLen(target.data()));
    Require(StringRight(text.c_str(), target.data(), count) == StrLen(target.data()));
    Require(HexStringToString(StringToHexString(text.c_str())) == text.c_str());
    HexStringToString(text.c_str());
    StringToWord(text.c_str());
    IsDigit(text.c_str());
    const unsigned number = StringToNumber(text.c_str(), count);
    if (count >= 2 && count <= 36) Require(StringToNumber(NumberToString(number, count), count) == number);
}

void TryNumbersAndDates(const std::string& text, int count) {
    Round(text.c_str(), count);
    CString number(text.c_str());
    TruncDouble(number);
    StringToDouble(text.c_str());
    StringToDecimal(text.c_str());
    const DATE date = StringToDate(text.c_str());
    Require(date > -657435 && date < 2958466);
    GetLocalDate(text.c_str());
    for (const int oracle : {0, 1})
        Require(GetDateString(text.c_str(), oracle).GetLength() < 64);
}

void TryInitials(const std::string& text) {
    const CString initials = ToPyHead(text.data(), static_cast<int>(text.size()));
    Require(initials.GetLength() <= static_cast<int>(text.size()) + 1);
    for (int i = 0; i < initials.GetLength(); ++i)
        Require(static_cast<unsigned char>(initials[i]) < 0x80);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const int count = static_cast<std::int8_t>(data[0]);
    const std::string rest(reinterpret_cast<const char*>(data) + 2, size - 2);
    const std::size_t cut = data[1] % 5 < rest.size() ? data[1] % 5 : 0;
    const std::string mark = rest.substr(0, cut);
    const std::string text = rest.substr(cut);
    TryLists(text, mark);
    TrySearch(text, mark, count);
    TryChanges(text, mark, count);
    TryNumbersAndDates(text, count);
    TryInitials(text);
    return 0;
}
