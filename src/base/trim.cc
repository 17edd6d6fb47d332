// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/trim.h"

std::string_view trim(std::string_view text) {
  constexpr std::string_view BLANKS = " \t\n\r";
  const auto first = text.find_first_not_of(BLANKS);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}
