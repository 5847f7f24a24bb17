// ado/odbc/result_sizes.h - how many rows statement texts gave when they were last run.
//
// Streaming a result saves holding it twice, and costs a small result more than it brings. The text alone tells which
// it will be only the first time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tk::ado {

/// Rows that make streaming worth its cost.
inline constexpr std::uint32_t kManyRows = 5'000;

/// The name under which a text's rows are remembered; never 0.
std::uint64_t ResultName(std::string_view connectionKey, std::string_view sql) noexcept;

/// What the text gave the last time; nullopt when it is not remembered.
std::optional<std::uint32_t> RememberedRows(std::uint64_t name) noexcept;

void RememberRows(std::uint64_t name, std::size_t rows) noexcept;

}  // namespace tk::ado
