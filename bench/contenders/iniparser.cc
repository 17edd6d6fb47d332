// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// iniparser. Saving forgets the comments of the file.
#include <iniparser.h>

#include <cstdio>
#include <cstring>

#include "contender.h"

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
  const bool saved = saveBeside(path, [&](const char* beside) {
    FILE* target = std::fopen(beside, "w");
    iniparser_dump_ini(file, target);
    return std::fclose(target) == 0;
  });
  iniparser_freedict(file);
  return saved;
}

// Every key that is loaded is compared with all those before it: 100 000 lines take ten seconds.
const Entered INIPARSER({"iniparser", readValue, writeValue, 10000});

}  // namespace
