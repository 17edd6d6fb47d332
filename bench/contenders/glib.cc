// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// GLib's GKeyFile, which NetworkManager itself uses.
#include <glib.h>

#include <cstring>

#include "contender.h"

namespace {

GKeyFile* load(const char* path) {
  GKeyFile* file = g_key_file_new();
  g_key_file_load_from_file(file, path, G_KEY_FILE_KEEP_COMMENTS, nullptr);
  return file;
}

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  GKeyFile* file = load(path);
  gchar* found = g_key_file_get_value(file, section, key, nullptr);
  if (found != nullptr) copyValue(value, size, found, std::strlen(found));
  const bool present = found != nullptr;
  g_free(found);
  g_key_file_free(file);
  return present;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  GKeyFile* file = load(path);
  g_key_file_set_value(file, section, key, value);
  const bool written = g_key_file_save_to_file(file, path, nullptr) != FALSE;
  g_key_file_free(file);
  return written;
}

const Entered GLIB({"GKeyFile", readValue, writeValue});

}  // namespace
