// util/messages.h - the texts this room shows to users, in GBK; kept apart because only their source is compiled so.
#pragma once

namespace tk::util {

extern const char kSystemErrorFormat[];          ///< code, the system's text
extern const char kExceptionFormat[];            ///< where, what
extern const char kLoggedExceptionFormat[];      ///< where, what
extern const char kLoggedExceptionTextFormat[];  ///< where, the exception's own message

/// One double-byte character.
struct Han {
    char bytes[2];
};

// Numerals and amounts.
extern const Han kSmallNumerals[11];  ///< zero to ten
extern const Han kCapitalDigits[10];  ///< as cheques spell them
extern const Han kPlaceUnits[3];      ///< thousands, hundreds, tens: the first three places of a group of four
extern const Han kGroupUnits[3];      ///< hundreds of millions, tens of thousands, yuan
extern const Han kJiao;               ///< a tenth of a yuan
extern const Han kFen;                ///< a hundredth of a yuan
extern const Han kWhole;              ///< the end of an amount in the usual form
extern const Han kBelowZero;
extern const char kZeroAmount[];
extern const char kAmountPattern[];       ///< the format that asks for an amount in the usual form
extern const char kFixedAmountPattern[];  ///< the format that asks for an amount with every place written

/// Monday to Sunday.
extern const Han kWeekdays[7];

extern const char kPerMille[];

}  // namespace tk::util
