// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// iniparser. Saving truncates the file in place, and forgets its comments.
#include <iniparser.h>

#include <cstdio>
#include <cstring>

#include "contenders/contenders.h"

namespace {

struct Entry {
  char text[256];
  Entry(const char* section, const char* key) {
    std::snprintf(text, sizeof text, "%s:%s", section, key);
  }
};

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  dictionary* file = iniparser_load(path);
  const char* found = iniparser_getstring(file, Entry(section, key).text, nullptr);
  if (found != nullptr) copyValue(value, size, found, std::strlen(found));
  iniparser_freedict(file);
  return found != nullptr;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  dictionary* file = iniparser_load(path);
  iniparser_set(file, Entry(section, key).text, value);
  FILE* target = std::fopen(path, "w");
  iniparser_dump_ini(file, target);
  iniparser_freedict(file);
  return std::fclose(target) == 0;
}

}  // namespace

// Every key that is loaded is compared with all those before it: 100 000 lines take ten seconds.
const Contender INIPARSER = {"iniparser", readValue, writeValue, nullptr, nullptr, 10000};
