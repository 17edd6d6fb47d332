// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/validation.h"

std::string describeInvalidFields(std::initializer_list<CheckedField> fields) {
  std::string names;
  for (const auto& [label, valid] : fields) {
    if (valid) continue;
    if (!names.empty()) names += ", ";
    names += label;
  }
  return "Invalid " + (names.empty() ? "All fields are valid" : names);
}
