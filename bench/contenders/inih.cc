// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// inih, a parser with a callback. It only reads, and always to the end of the file.
#include <ini.h>

#include <cstring>

#include "contender.h"

namespace {

struct Search {
  const char* section;
  const char* key;
  char* value;
  std::size_t size;
  bool found = false;
};

int onValue(void* user, const char* section, const char* key, const char* value) {
  auto& search = *static_cast<Search*>(user);
  if (!search.found && std::strcmp(section, search.section) == 0 &&
      std::strcmp(key, search.key) == 0) {
    copyValue(search.value, search.size, value, std::strlen(value));
    search.found = true;
  }
  return 1;
}

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  Search search{section, key, value, size};
  ini_parse(path, onValue, &search);
  return search.found;
}

const Entered INIH({"inih", readValue, nullptr});

}  // namespace
