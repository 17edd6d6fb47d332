// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// SimpleIni.
// For the header; the class for bytes converts nothing in any case.
#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <cstring>

#include "contender.h"

namespace {

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  CSimpleIniA file;
  file.LoadFile(path);
  const char* found = file.GetValue(section, key);
  if (found != nullptr) copyValue(value, size, found, std::strlen(found));
  return found != nullptr;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  CSimpleIniA file;
  file.SetSpaces(false);
  file.LoadFile(path);
  file.SetValue(section, key, value);
  return saveBeside(path,
                    [&](const char* beside) { return file.SaveFile(beside, false) == SI_OK; });
}

const Entered SIMPLEINI({"SimpleIni", readValue, writeValue});

}  // namespace
