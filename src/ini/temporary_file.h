// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <climits>

#include "ini/file.h"

namespace ini {

/** The new form of a file, beside it under a temporary name until it is complete. */
class temporary_file {
 public:
  /** Creates it, in place of a leftover. Where that cannot be done, content() is not open. */
  explicit temporary_file(const char* Filename);

  writer& content() { return target; }

  void discard();

  /**
   * Removes the old file and gives this one its name. Where it cannot be moved it is copied, and
   * stays when that fails too; it is given up where the old file cannot be removed.
   */
  void take_place();

 private:
  const char* place;    // the name of the old file
  char name[PATH_MAX];  // "" when there can be none
  writer target;        // under that name, which is made first
};

}  // namespace ini
