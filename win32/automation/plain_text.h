// plain_text.h - numbers as ASCII characters, the same in every locale that is served.
#pragma once

#include <string_view>

#include "win32/automation/wide_integer.h"
#include "win32/include/oleauto.h"

namespace tk::automation {

/// Room for any number here: sign, 29 digits, point, exponent.
inline constexpr int kNumberRoom = 64;

/// A text being written; it has room.
class NumberText {
public:
    void Add(char character) noexcept { text_[length_++] = character; }
    void Add(std::string_view characters) noexcept { length_ += characters.copy(text_ + length_, characters.size()); }
    void AddTimes(int count, char character) noexcept {
        for (; count > 0; --count)
            Add(character);
    }
    std::string_view View() const noexcept { return {text_, length_}; }

private:
    char text_[kNumberRoom];
    std::size_t length_ = 0;
};

/// Writes the digits and returns their end. 39 characters at most.
char* PutDigits(char* to, UInt128 value) noexcept;

/// digit[0].digit[1]... times 10^exponent, without zeros at the end.
struct RealDigits {
    bool negative;
    int count;
    int exponent;
    char digit[24];
};
/// The value rounded to so many digits (17 at most). Zero is the one digit 0. The value is finite.
void SplitReal(double value, int significantDigits, RealDigits& digits) noexcept;

void WriteInteger(Int128 value, NumberText& text) noexcept;
/// The exponent form from 10^significantDigits on, and when the fraction would need more places than that.
void WriteReal(double value, int significantDigits, NumberText& text) noexcept;
/// magnitude / 10^scale in plain form; zeros at the end of the fraction are dropped.
void WriteScaled(UInt128 magnitude, int scale, bool negative, NumberText& text) noexcept;

/// @return null when memory is out
BSTR MakeText(std::string_view ascii) noexcept;

}  // namespace tk::automation
