// Texts whose last byte is the first half of a character, at the very end of the memory that may be read: nothing looks
// behind their terminator; who does ends this program.
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <random>
#include <string>

#include "tkkernel/util.h"

namespace {

/// A page, and behind it one that may not be touched.
class LastPage {
public:
    LastPage() : size_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        memory_ =
            static_cast<char*>(mmap(nullptr, 2 * size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(memory_ + size_, size_, PROT_NONE);
    }
    LastPage(const LastPage&) = delete;
    LastPage& operator=(const LastPage&) = delete;
    ~LastPage() { munmap(memory_, 2 * size_); }

    /// A copy of the text whose terminator is the last byte of the page.
    char* Place(const std::string& text) {
        char* const at = memory_ + size_ - text.size() - 1;
        std::memcpy(at, text.c_str(), text.size() + 1);
        return at;
    }

private:
    std::size_t size_;
    char* memory_;
};

VARIANT Number(double value) {
    VARIANT variant = {};
    variant.vt = VT_R8;
    variant.dblVal = value;
    return variant;
}

constexpr struct {
    const char* label;
    void (*use)(char* text);
} kFunctions[] = {
    {"an array",
     [](char* text) {
         CStringArray array;
         StringToArray(array, text, ";");
     }},
    {"an array by this text",
     [](char* text) {
         CStringArray array;
         StringToArray(array, "a库;b", text);
     }},
    {"a map",
     [](char* text) {
         CMapStringToString map;
         StringToMap(map, text);
     }},
    {"a division",
     [](char* text) {
         CString copy(text);
         DivideString(copy, ';');
     }},
    {"a count", [](char* text) { CountSubString(text, ';'); }},
    {"a search",
     [](char* text) {
         FindStringPos("库", text);
         FindString("库", text);
         FindStringNoCase(text, "b库");
     }},
    {"a search for it",
     [](char* text) {
         FindStringPos(text, "a库");
         FindStringNoCase("a库", text);
     }},
    {"a unit",
     [](char* text) {
         int at = 0;
         GetUnitPos("a", text, text, at);
         GetUnitNoCase(text, text, "b", at);
     }},
    {"a part",
     [](char* text) {
         GetSubString("a", text, 0, 3);
         GetSubString("a", text, 1, 3);
     }},
    {"trimmed",
     [](char* text) {
         TrimLeft(text, "a ");
         TrimRight(text, "a ");
     }},
    {"a set",
     [](char* text) {
         char buffer[] = "库a存";
         TrimLeft(buffer, text);
         TrimRight(buffer, text);
     }},
    {"cut at a character",
     [](char* text) {
         TruncString(text, 'a');
         CutString(text, 'a');
     }},
    {"a replacement",
     [](char* text) {
         ReplaceString(text, "a", "库");
         ReplaceString("a库a", text, text);
     }},
    {"a replacement in place",
     [](char* text) {
         CString copy(text);
         ReplaceTextA(copy, text, "b");
     }},
    {"sides",
     [](char* text) {
         char other[300];
         StringLeft(text, other, 3);
         StringRight(text, other, 3);
     }},
    {"digits",
     [](char* text) {
         IsDigit(text);
         StringToWord(text);
         StringToNumber(text, 16);
     }},
    {"hexadecimal",
     [](char* text) {
         StringToHexString(text);
         HexStringToString(text);
     }},
    {"a date by it", [](char* text) { DateToString(37622.5, text); }},
    {"a date in it",
     [](char* text) {
         StringToDate(text);
         GetLocalDate(text);
         GetDateString(text, 1);
     }},
    {"an integer by it", [](char* text) { IntToString(5, text); }},
    {"a number by it",
     [](char* text) {
         DoubleToString(-1234.5, text);
         FormatVariant(Number(12.5), text);
     }},
    {"a number in it",
     [](char* text) {
         StringToDouble(text);
         StringToDecimal(text);
         Round(text, 2);
     }},
    {"its integer",
     [](char* text) {
         CString copy(text);
         TruncDouble(copy);
     }},
    {"initials", [](char* text) { ToPyHead(text, static_cast<int>(std::strlen(text))); }},
    {"a message", [](char* text) { GetExceptionError(text, text); }},
};

TEST(TextEdge, NobodyReadsBehindHalfACharacterAtTheEnd) {
    constexpr unsigned kSeed = 20031231;
    RecordProperty("seed", static_cast<int>(kSeed));
    std::mt19937 random(kSeed);
    static constexpr const char* kPieces[] = {"库", "存", "誠", "丂", "a", "b", ";", "=", "0", "#", ".", "%", "Y", " "};
    LastPage page;
    for (int round = 0; round < 200; ++round) {
        std::string text;
        for (std::size_t i = std::uniform_int_distribution<std::size_t>(0, 12)(random); i > 0; --i)
            text += kPieces[std::uniform_int_distribution<std::size_t>(0, std::size(kPieces) - 1)(random)];
        text += static_cast<char>(std::uniform_int_distribution<int>(0x81, 0xFE)(random));
        for (const auto& function : kFunctions) {
            SCOPED_TRACE(function.label);
            function.use(page.Place(text));
        }
    }
}

}  // namespace
