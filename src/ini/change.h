// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

namespace ini {

/** What a file is to hold. value NULL stands for no such key, key NULL for no such section. */
struct setting {
  const char* section;
  const char* key;
  const char* value;

  bool deletes() const { return key == nullptr || value == nullptr; }
};

/**
 * Makes a file hold a setting, by as little as that takes: nothing, a line written in place, a new
 * file, or a rewritten one. Returns false when that failed; the file is then as it was, as far as
 * the disk allows.
 */
bool apply(const setting& wanted, const char* Filename);

}  // namespace ini
