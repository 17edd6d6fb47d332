// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The floor: the system calls that the work cannot do without, one search in memory, and no rule of
// the grammar. It is right only for the plain files of this benchmark.
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "contender.h"

namespace {

// Holds a whole file, and is there before the measurement: a floor pays for no memory.
char content[16 << 20];

/** The whole file in one read. */
std::string_view readAll(int descriptor) {
  const ssize_t length = read(descriptor, content, sizeof content);
  return {content, length > 0 ? static_cast<std::size_t>(length) : 0};
}

/** The value of the first such key behind the section's header; without data if there is none. */
std::string_view findValue(std::string_view text, const char* section, const char* key) {
  char pattern[256];
  const char* end = text.data() + text.size();
  const auto behind = [&](const char* from, int length) -> const char* {
    const auto size = static_cast<std::size_t>(length);
    auto* found =
        static_cast<const char*>(memmem(from, static_cast<std::size_t>(end - from), pattern, size));
    return found != nullptr ? found + size : nullptr;
  };
  const char* header = behind(text.data(), std::snprintf(pattern, sizeof pattern, "[%s]", section));
  if (header == nullptr) return {};
  const char* value = behind(header, std::snprintf(pattern, sizeof pattern, "\n%s=", key));
  if (value == nullptr) return {};
  const auto* newline =
      static_cast<const char*>(std::memchr(value, '\n', static_cast<std::size_t>(end - value)));
  return {value, static_cast<std::size_t>((newline != nullptr ? newline : end) - value)};
}

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
  const std::string_view found = findValue(readAll(descriptor), section, key);
  close(descriptor);
  if (found.data() == nullptr) return false;
  copyValue(value, size, found.data(), found.size());
  return true;
}

iovec piece(const char* data, std::size_t size) { return {const_cast<char*>(data), size}; }

/** One write to a new file, which then takes the place of the old one. */
bool replaceFile(const char* path, std::string_view text, std::string_view old, const char* value) {
  char temporary[4096];
  std::snprintf(temporary, sizeof temporary, "%s~", path);
  const int descriptor = open(temporary, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  const char* rest = old.data() + old.size();
  const iovec pieces[] = {
      piece(text.data(), static_cast<std::size_t>(old.data() - text.data())),
      piece(value, std::strlen(value)),
      piece(rest, static_cast<std::size_t>(text.data() + text.size() - rest)),
  };
  // Flushed, since the old file is removed before the new one has its name.
  const bool written = writev(descriptor, pieces, 3) >= 0 && fsync(descriptor) == 0;
  close(descriptor);
  return written && unlink(path) == 0 && std::rename(temporary, path) == 0;
}

/** As little as each kind of change needs: nothing, the value's bytes in place, or a new file. */
bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  const int descriptor = open(path, O_RDWR | O_CLOEXEC);
  const std::string_view text = readAll(descriptor);
  const std::string_view old = findValue(text, section, key);
  const std::size_t length = std::strlen(value);
  bool patched = false;
  if (old.size() == length && old != value)
    patched = pwrite(descriptor, value, length, old.data() - text.data()) >= 0;
  close(descriptor);
  if (old.data() == nullptr) return false;
  return patched || old == value || replaceFile(path, text, old, value);
}

const Entered RAW({"raw", readValue, writeValue});

}  // namespace
