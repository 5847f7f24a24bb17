// conversion_cursor.h - where a conversion stands in its source and its buffer.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "tkwin32/text.h"

namespace tk::text {

/// In and Out are std::uint8_t or char16_t, so that bytes compare as the numbers they are.
template <class In, class Out>
class Cursor {
    template <class Unit>
    using Character = std::conditional_t<std::is_same_v<Unit, std::uint8_t>, char, char16_t>;

public:
    Cursor(std::basic_string_view<Character<In>> text, Character<Out>* buffer, std::size_t capacity) noexcept
        : source(reinterpret_cast<const In*>(text.data())),
          sourceEnd(source + text.size()),
          target(reinterpret_cast<Out*>(buffer)),
          targetEnd(target + capacity),
          sourceBegin_(source),
          targetBegin_(target) {}

    std::size_t Left() const noexcept { return static_cast<std::size_t>(sourceEnd - source); }
    std::size_t Room() const noexcept { return static_cast<std::size_t>(targetEnd - target); }
    std::size_t Both() const noexcept { return std::min(Left(), Room()); }
    bool Done() const noexcept { return source == sourceEnd || target == targetEnd; }

    void Advance(std::size_t units, std::size_t stored) noexcept {
        source += units;
        target += stored;
    }

    Converted Result() const noexcept {
        return {static_cast<std::size_t>(source - sourceBegin_), static_cast<std::size_t>(target - targetBegin_),
                replaced};
    }

    const In* source;
    const In* sourceEnd;
    Out* target;
    Out* targetEnd;
    bool replaced = false;

private:
    const In* sourceBegin_;
    Out* targetBegin_;
};

}  // namespace tk::text
