// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/NetworkManagerConfig.h"
#include "contenders/contenders.h"
#include "ini/ini.h"
#include "settings/keyfile.h"

namespace {

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  return ini_gets(section, key, "", value, static_cast<int>(size), path) > 0;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  return ini_puts(section, key, value, path) != 0;
}

void finishSave(const char* path) { removeKeyfileValueQuotes(path); }

/** The folder is the one that the environment names; see discoveryFolder(). */
void discover(const char* /*folder*/) {
  NetworkManagerConfig::getInstance().refreshConnectionPaths();
}

}  // namespace

const Contender OURS = {"ours", readValue, writeValue, finishSave, discover};
