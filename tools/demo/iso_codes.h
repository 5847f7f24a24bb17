// tools/demo/iso_codes.h - the ISO lists of countries, their subdivisions and currencies with their Chinese names, as
// Debian's iso-codes package installs them.
#pragma once

#include <string>
#include <vector>

namespace tk::tools {

struct Country {
    std::string code;  // two letters
    int number = 0;
    std::string name;
    std::string chineseName;
};

struct Subdivision {
    std::string code;  // CN-BJ
    std::string country;
    std::string kind;
    std::string name;
    std::string chineseName;  // empty where nobody has translated it
};

struct Currency {
    std::string code;
    int number = 0;
    std::string name;
    std::string chineseName;
};

struct IsoCodes {
    std::vector<Country> countries;
    std::vector<Subdivision> subdivisions;
    std::vector<Currency> currencies;
};

/// Texts are UTF-8.
/// @throws std::runtime_error with the file's name when a list cannot be read
IsoCodes LoadIsoCodes(const std::string& shareFolder = "/usr/share");

}  // namespace tk::tools
