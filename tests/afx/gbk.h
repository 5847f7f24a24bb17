// tests/afx/gbk.h - double-byte characters whose second byte looks like something else.
#pragma once

inline constexpr char kEndsInBackslash[] = "\xD5\x5C";
inline constexpr char kEndsInBar[] = "\x81\x7C";
inline constexpr char kEndsInUpperA[] = "\x81\x41";
inline constexpr char kEndsInLowerA[] = "\x81\x61";
inline constexpr char kHalf[] = "\xC4";  // a lead byte alone
