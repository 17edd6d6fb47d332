// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/open_private.h"

namespace ini {

namespace {

constexpr char TEMPORARY_SUFFIX = '~';

/**
 * The name with the suffix as its last byte; a name that has it already gets one more. Empty for
 * what cannot name a file, or leaves no room.
 */
char* temporary_name(char (&name)[PATH_MAX], const char* Filename) {
  const std::size_t length = std::strlen(Filename);
  name[0] = '\0';
  if (length == 0 || length + 1 >= sizeof name || Filename[length - 1] == '/') return name;
  const std::size_t last = Filename[length - 1] == TEMPORARY_SUFFIX ? length : length - 1;
  std::memcpy(name, Filename, last);
  name[last] = TEMPORARY_SUFFIX;
  name[last + 1] = '\0';
  return name;
}

/** Creates a file that is not there yet; -1, with errno set, if it is. */
int create_new(const char* Filename) { return openPrivate(Filename, O_WRONLY | O_CREAT | O_EXCL); }

/** The same in place of a leftover, perhaps one that others can read, or a link. */
int create_anew(const char* Filename) {
  const int descriptor = create_new(Filename);
  if (descriptor >= 0 || errno != EEXIST || unlink(Filename) != 0) return descriptor;
  return create_new(Filename);
}

/** Copies a file to a name that was freed for it. Returns whether the file has no use any more. */
bool copy(const char* Filename, const char* place) {
  writer target(create_new(place));
  if (!target.is_open()) return errno == EEXIST;  // the old file could not be removed
  line_reader reader(Filename);
  while (reader.next()) target.put(reader.line());
  return reader.is_open() && !reader.failed() && target.close();
}

}  // namespace

temporary_file::temporary_file(const char* Filename)
    : place(Filename), target(create_anew(temporary_name(name, Filename))) {}

void temporary_file::discard() { (void)unlink(name); }

void temporary_file::take_place() {
  (void)std::remove(place);
  if (std::rename(name, place) != 0 && copy(name, place)) discard();
}

}  // namespace ini
