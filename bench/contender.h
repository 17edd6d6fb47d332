// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

/**
 * One way to read and write single values of a keyfile. Each call opens the file anew: what a
 * contender could keep between two calls is not what is compared here.
 */
struct Contender {
  const char* name;

  /** Copies a value into a buffer, cut to its size. Returns false when the key is not there. */
  bool (*read)(const char* path, const char* section, const char* key, char* value,
               std::size_t size);

  /**
   * Changes the value of a key that is there. At every moment a whole file is on the disk; a
   * library that saves over the old one saves beside it here. NULL for a contender that only reads.
   */
  bool (*write)(const char* path, const char* section, const char* key, const char* value);

  int maxLines = 1000000;  // of the longest keyfile that is worth waiting for
};

/** All that are linked into the program. */
inline std::vector<Contender>& contenders() {
  static std::vector<Contender> all;
  return all;
}

/** Enters a contender: one object in each contender's file. */
struct Entered {
  explicit Entered(const Contender& contender) { contenders().push_back(contender); }
};

/** Copies text as read() does. */
inline void copyValue(char* value, std::size_t size, const char* text, std::size_t length) {
  length = std::min(length, size - 1);
  std::memcpy(value, text, length);
  value[length] = '\0';
}

/** Has a function write a file under another name, and lets that take the old one's place. */
template <typename Save>
bool saveBeside(const char* path, const Save& save) {
  const std::string temporary = std::string(path) + "~";
  return save(temporary.c_str()) && std::rename(temporary.c_str(), path) == 0;
}
