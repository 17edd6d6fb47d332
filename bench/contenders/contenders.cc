// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "contenders/contenders.h"

#include <algorithm>
#include <cstring>

const std::vector<Contender>& allContenders() {
  static const std::vector<Contender> all = {OURS, RAW,       STDIO, INIH, SIMPLEINI,
                                             GLIB, INIPARSER, BOOST, QT};
  return all;
}

void copyValue(char* value, std::size_t size, const char* text, std::size_t length) {
  length = std::min(length, size - 1);
  std::memcpy(value, text, length);
  value[length] = '\0';
}
