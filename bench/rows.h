// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

/** One thing to do with a keyfile, again and again. */
struct Row {
  std::string name;
  int lines;
  std::string text;  // of the keyfile
  std::string section;
  std::string key;
  std::vector<std::string> values;  // two to write in turns, or the one that is read
  bool writes() const { return values.size() == 2; }
};

/** An access point's keyfile, whose password is changed; and long ones, of which the last key is.
 */
std::vector<Row> allRows();
