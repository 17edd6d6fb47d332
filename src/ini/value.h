// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

namespace ini {

/** The outcome of reading a value. */
enum class reading {
  FOUND,
  ABSENT,  // no such key, section or file
  FAILED,  // the file is there and cannot be read: nothing is known of the value
};

/**
 * Copies a value into the buffer if it is found. Like ini_gets(), which returns the same for ABSENT
 * and FAILED.
 */
reading read_value(const char* Section, const char* Key, char* Buffer, int BufferSize,
                   const char* Filename);

}  // namespace ini
