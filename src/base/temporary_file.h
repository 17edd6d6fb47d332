// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <climits>

/**
 * The new form of a private file, beside the old one under a temporary name: the old name with "~"
 * for its last byte. It is removed again unless it takes the place of the old file.
 */
class TemporaryFile {
 public:
  /** Creates it, empty, in place of a leftover. */
  explicit TemporaryFile(const char* path);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  /** Where its bytes are written to; -1, with errno set, if it could not be created. */
  int descriptor() const { return opened; }

  /**
   * Ends the writing. Returns whether all bytes are on the disk, where a power cut leaves them: the
   * old file is to be removed.
   */
  bool close();

  /**
   * Removes the old file and gives this one its name, after close(). Where it cannot be moved it is
   * copied, and stays when that fails too; it is given up where the old file cannot be removed.
   * Returns whether its bytes stand under the name.
   */
  bool takePlace();

 private:
  const char* place;                  // the name of the old file
  std::array<char, PATH_MAX> name{};  // "" when there can be none
  int opened;                         // under that name, which is made first; -1 when it is closed
  bool discarded;                     // whether what stands under that name is removed at the end
};
