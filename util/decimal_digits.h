// util/decimal_digits.h - a number's digits rounded the way people round what they see: 1.005 to two decimals is 1.01,
// although the double that holds it lies below.
#pragma once

#include <cstddef>
#include <string_view>

namespace tk::util {

/// The decimal digits of a finite magnitude, rounded to a count of decimals: halves of the shortest decimal text that
/// means the number go away from zero.
class DecimalDigits {
public:
    /// @param shift  the number is taken times ten to this power, 0 to 3
    DecimalDigits(double magnitude, std::size_t shift, std::size_t decimals);
    DecimalDigits(const DecimalDigits&) = delete;
    DecimalDigits& operator=(const DecimalDigits&) = delete;

    /// Without leading zeros; empty below one.
    std::string_view Whole() const { return {begin_, static_cast<std::size_t>(point_ - begin_)}; }
    /// All decimals; those behind the last one a double can have are left out.
    std::string_view Fraction() const { return {point_, static_cast<std::size_t>(end_ - point_)}; }
    bool IsZero() const;

private:
    /// No double has a digit further behind the point.
    static constexpr std::size_t kMostDecimals = 345;
    static constexpr std::size_t kMostWhole = 312;

    bool RoundQuickly(double magnitude, std::size_t power);
    void RoundShortest(double magnitude, std::size_t power);

    char room_[kMostDecimals + kMostWhole + kMostDecimals];  // zeros in front of a small number, a large one's digits
    const char* begin_ = room_;
    const char* point_ = room_;
    const char* end_ = room_;
};

}  // namespace tk::util
