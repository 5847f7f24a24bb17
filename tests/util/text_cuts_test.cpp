// Random texts of one and two bytes a character, cut at every place that a fixed buffer has: what is left is whole.
#include <gtest/gtest.h>

#include <afxole.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tkkernel/util.h"

namespace {

class TextCuts : public testing::Test {
protected:
    TextCuts() { RecordProperty("seed", static_cast<int>(kSeed)); }

    std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }

    /// That many characters, a good half of them of two bytes; some of their second bytes look like letters.
    std::string Characters(std::size_t count) {
        static constexpr const char* kCharacters[] = {"库", "存", "誠", "丂", "龥", "a", "|", "\\", " ", "%"};
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += kCharacters[Below(std::size(kCharacters))];
        return text;
    }

private:
    static constexpr unsigned kSeed = 20031231;
    std::mt19937 random_{kSeed};
};

/// Whether a text has no half characters.
bool IsWhole(const std::string& text) {
    std::vector<WCHAR> wide(text.size() + 1);
    return text.empty() || MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()),
                                               wide.data(), static_cast<int>(wide.size())) != 0;
}

/// What is left of a text in a buffer: its beginning, whole, and no byte less than fits.
void ExpectCut(const std::string& kept, const std::string& text, std::size_t most) {
    ASSERT_LE(kept.size(), most);
    ASSERT_EQ(kept, text.substr(0, kept.size()));
    ASSERT_TRUE(IsWhole(kept)) << "half a character behind byte " << kept.size();
    ASSERT_LE(std::min(most, text.size()) - kept.size(), 1u);
}

TEST_F(TextCuts, MessagesOfExceptionsAreWholeInEveryBuffer) {
    for (int round = 0; round < 40; ++round) {
        const std::string text = Characters(1 + Below(40));
        COleDispatchException exception(text.c_str());
        for (UINT room = 1; room < text.size() + 3; ++room) {
            std::vector<char> buffer(room, '\x5A');
            exception.GetErrorMessage(buffer.data(), room);
            ASSERT_NO_FATAL_FAILURE(ExpectCut(buffer.data(), text, room - 1)) << "room " << room;
        }
    }
}

TEST_F(TextCuts, MessagesOfPlacesAreWhole) {
    for (std::size_t length = 100; length < 160; ++length) {
        const std::string where = Characters(length);
        ASSERT_NO_FATAL_FAILURE(ExpectCut(std::string(GetExceptionError(where.c_str(), "OpenDatabase")),
                                          where + "出现异常,面临崩溃危险[异常位置:OpenDatabase]", 255));
        COleDispatchException exception(where.c_str());
        ASSERT_NO_FATAL_FAILURE(ExpectCut(std::string(GetExceptionError(&exception)), where, 255));
    }
}

TEST_F(TextCuts, DateLiteralsAreWhole) {
    for (std::size_t length = 1; length < 64; ++length) {
        std::string text = Characters(length);
        std::replace(text.begin(), text.end(), '%', 'p');  // not the current date
        ASSERT_NO_FATAL_FAILURE(ExpectCut(std::string(GetDateString(text.c_str(), 0)), "'" + text + "'", 63));
        ASSERT_NO_FATAL_FAILURE(ExpectCut(std::string(GetDateString(text.c_str(), 1)),
                                          "TO_DATE('" + text + "','YYYY-MM-DD HH24:MI:SS')", 63));
    }
}

}  // namespace
