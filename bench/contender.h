// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
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

  /** Changes the value of a key that is there. NULL for a contender that only reads. */
  bool (*write)(const char* path, const char* section, const char* key, const char* value);

  /** What a save does after its last value. NULL when nothing is left to do. */
  void (*finishSave)(const char* path) = nullptr;

  /** Finds the first wired and the first wireless keyfile of a folder. NULL: by read(), for all. */
  void (*discover)(const char* folder) = nullptr;

  /** The longest keyfile worth waiting for. */
  int maxLines = 1000000;
};

/** Ours first, then the two floors, then the libraries. */
const std::vector<Contender>& allContenders();

/** Copies text as read() does. */
void copyValue(char* value, std::size_t size, const char* text, std::size_t length);
