// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The floor for streams: the same tricks (a buffer on the stack, no locks, a copy that does not
// look at what it copies), and the least parser that finds a key in the plain files of this
// benchmark.
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "contender.h"

namespace {

constexpr std::size_t STREAM_BUFFER = 4096;
constexpr std::size_t LINE = 512;

/** Where a key's line is, and its value, which the line's LF ends. */
struct Place {
  long offset = 0;
  char line[LINE] = "";
  const char* value = nullptr;  // NULL: the key is not there
};

void findKey(FILE* file, const char* section, const char* key, Place& place) {
  const std::size_t sectionLength = std::strlen(section);
  const std::size_t keyLength = std::strlen(key);
  bool inside = false;
  while (fgets_unlocked(place.line, LINE, file) != nullptr) {
    if (place.line[0] == '[') {
      if (inside) return;
      inside = std::strncmp(place.line + 1, section, sectionLength) == 0 &&
               place.line[1 + sectionLength] == ']';
    } else if (inside && std::strncmp(place.line, key, keyLength) == 0 &&
               place.line[keyLength] == '=') {
      place.value = place.line + keyLength + 1;
      return;
    }
    place.offset += static_cast<long>(std::strlen(place.line));
  }
}

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  char buffer[STREAM_BUFFER];
  FILE* file = std::fopen(path, "rbe");
  std::setvbuf(file, buffer, _IOFBF, sizeof buffer);
  Place place;
  findKey(file, section, key, place);
  std::fclose(file);
  if (place.value == nullptr) return false;
  copyValue(value, size, place.value, std::strcspn(place.value, "\n"));
  return true;
}

void copyBytes(FILE* source, FILE* target, std::size_t count) {
  char block[LINE];
  while (count > 0) {
    const std::size_t wanted = count < sizeof block ? count : sizeof block;
    const std::size_t length = fread_unlocked(block, 1, wanted, source);
    if (length == 0) return;
    fwrite_unlocked(block, 1, length, target);
    count -= length;
  }
}

bool patchFile(const char* path, const Place& place, const char* line) {
  char buffer[STREAM_BUFFER];
  FILE* file = std::fopen(path, "r+be");
  std::setvbuf(file, buffer, _IOFBF, sizeof buffer);
  std::fseek(file, place.offset, SEEK_SET);
  std::fputs(line, file);
  return std::fclose(file) == 0;
}

bool replaceFile(const char* path, const Place& place, const char* line) {
  char temporary[4096];
  char sourceBuffer[STREAM_BUFFER];
  char targetBuffer[STREAM_BUFFER];
  std::snprintf(temporary, sizeof temporary, "%s~", path);
  FILE* source = std::fopen(path, "rbe");
  FILE* target = std::fopen(temporary, "wbxe");
  std::setvbuf(source, sourceBuffer, _IOFBF, sizeof sourceBuffer);
  std::setvbuf(target, targetBuffer, _IOFBF, sizeof targetBuffer);
  copyBytes(source, target, static_cast<std::size_t>(place.offset));
  char old[LINE];
  if (fgets_unlocked(old, LINE, source) != nullptr) std::fputs(line, target);
  copyBytes(source, target, static_cast<std::size_t>(-1));
  std::fclose(source);
  const bool flushed = std::fflush(target) == 0 && fsync(fileno(target)) == 0;
  return std::fclose(target) == 0 && flushed && std::remove(path) == 0 &&
         std::rename(temporary, path) == 0;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  Place place;
  {
    char buffer[STREAM_BUFFER];
    FILE* file = std::fopen(path, "rbe");
    std::setvbuf(file, buffer, _IOFBF, sizeof buffer);
    findKey(file, section, key, place);
    std::fclose(file);
  }
  if (place.value == nullptr) return false;
  char line[LINE];
  std::snprintf(line, sizeof line, "%s=%s\n", key, value);
  if (std::strcmp(line, place.line) == 0) return true;
  return std::strlen(line) == std::strlen(place.line) ? patchFile(path, place, line)
                                                      : replaceFile(path, place, line);
}

const Entered STDIO({"stdio", readValue, writeValue});

}  // namespace
