// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "contender.h"
#include "ini/ini.h"

namespace {

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  return ini_gets(section, key, "", value, static_cast<int>(size), path) > 0;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  return ini_puts(section, key, value, path) != 0;
}

const Entered OURS({"ours", readValue, writeValue});

}  // namespace
