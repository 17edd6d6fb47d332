// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "settings/keyfile.h"

/** Keyfile values as lines, to be compared with a table. */
inline std::vector<std::string> describe(const std::vector<KeyfileEntry>& entries) {
  std::vector<std::string> lines;
  for (const auto& [section, key, value] : entries)
    lines.push_back(section + " | " + key + " | " + value);
  return lines;
}
