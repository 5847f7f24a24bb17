// The system's own message texts, in Chinese, without the line break that each of them ends with.
#pragma once

#include <algorithm>
#include <span>

#include "windef.h"

namespace tk::system {

struct SystemText {
    DWORD code;
    const char16_t* text;  // %1 and so on stand for inserts
};

/// Ascending by code, no code twice.
consteval bool IsWellOrdered(std::span<const SystemText> texts) {
    return std::ranges::adjacent_find(texts, [](const SystemText& first, const SystemText& second) {
               return first.code >= second.code;
           }) == texts.end();
}

// One table for each family of codes; a code is in one of them at most.
extern const std::span<const SystemText> kGeneralTexts;    // 0 to 999: files, devices, processes
extern const std::span<const SystemText> kServiceTexts;    // 1000 to 1999: services, accounts, windows, remote calls
extern const std::span<const SystemText> kNetworkTexts;    // 2000 and above: network and sockets
extern const std::span<const SystemText> kComponentTexts;  // results of components, 0x8...

/// @return null for a code that has no text; the failure form of a plain code (0x8007....) has the plain code's text
const char16_t* FindSystemText(DWORD code) noexcept;

}  // namespace tk::system
