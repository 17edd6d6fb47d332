// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/bytes.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace {

/** Bytes as text in which everything unprintable is escaped, and as hexadecimal numbers. */
std::string describeBytes(std::string_view bytes) {
  std::string text;
  std::string hexadecimal;
  std::array<char, 8> piece{};
  for (const char byte : bytes) {
    const unsigned number = static_cast<unsigned char>(byte);
    const bool printable = number >= ' ' && number <= '~';
    std::snprintf(piece.data(), piece.size(), printable ? "%c" : "\\x%02X", number);
    text += piece.data();
    std::snprintf(piece.data(), piece.size(), " %02X", number);
    hexadecimal += piece.data();
  }
  return "\"" + text + "\" =" + hexadecimal;
}

}  // namespace

testing::AssertionResult compareBytes(const char* /*expectedText*/, const char* actualText,
                                      std::string_view expected, std::string_view actual) {
  if (expected == actual) return testing::AssertionSuccess();
  constexpr std::size_t BEFORE = 8;
  constexpr std::size_t SHOWN = 24;
  const auto [first, second] =
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  const auto offset = static_cast<std::size_t>(first - expected.begin());
  const std::size_t from = offset - std::min(offset, BEFORE);
  return testing::AssertionFailure()
         << actualText << " differs at byte " << offset << "; from byte " << from
         << "\n  expected (" << expected.size() << " bytes) "
         << describeBytes(expected.substr(from, SHOWN)) << "\n  actual   (" << actual.size()
         << " bytes) " << describeBytes(actual.substr(from, SHOWN));
}
