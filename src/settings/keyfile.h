// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

/** What is written where a connection has no keyfile, or one of another mode. */
struct DefaultKeyfile {
  std::string_view fileName;
  std::string_view content;
};

/** One value of a connection keyfile. */
struct KeyfileEntry {
  std::string section;
  std::string key;
  std::string value;
};

/**
 * Removes the double quotes from the lines of a keyfile that hold "permissions=", "group=",
 * "pairwise=" or "proto=" anywhere: the values of these keys hold ";" and are quoted when they are
 * written, which NetworkManager does not accept. Every line ends in LF afterwards.
 *
 * Blocks for 50 ms between reading and writing. A file that is missing is created, empty, and one
 * that the user must not read is left empty; where reading fails otherwise it stays as it is, and
 * so does one that cannot be written. Nothing is reported.
 */
void removeKeyfileValueQuotes(const std::string& path);
