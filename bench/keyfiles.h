// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "settings/keyfile.h"

/** The text of a keyfile, and the keys in it that are worth measuring. */
struct Keyfile {
  int lines;
  std::string text;
  KeyfileEntry first;
  KeyfileEntry last;
  KeyfileEntry absent;   // would stand in the last section
  KeyfileEntry changed;  // the key to write
};

/** An access point's keyfile, 26 lines; the password is what is changed in it. */
const Keyfile& wifiKeyfile();

/** A keyfile of a multiple of ten lines; its last key, the hardest to get at, is changed. */
Keyfile generatedKeyfile(int lines);

std::string ethernetKeyfile();

/** One that is neither wired nor wireless. */
std::string bridgeKeyfile();

void writeKeyfile(const std::string& path, const std::string& text);
