// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

namespace ini {

/** What reading a value comes to. */
enum class reading {
  FOUND,
  ABSENT,  // no such key, section or file
  FAILED,  // the file is there and cannot be read: nothing is known of the value
};

/**
 * Copies a value into the buffer where it is found, as ini_gets() does, which does not tell the
 * other two apart.
 */
reading read_value(const char* Section, const char* Key, char* Buffer, int BufferSize,
                   const char* Filename);

}  // namespace ini
