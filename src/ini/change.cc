// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/change.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "base/open_private.h"
#include "ini/lines.h"
#include "ini/temporary_file.h"
#include "ini/text.h"

namespace ini {

namespace {

// ---- What is to be done

/** The way to a file that holds a setting. */
enum class step {
  NOTHING,  // it does already
  CREATE,
  PATCH,  // the key's line has the length of the new one
  REWRITE,
  FAIL,  // the file is there, but cannot be read: it must not be taken for a missing one
};

/** Finds that out; for a patch, also where the line begins. */
step find_step(const setting& wanted, const char* Filename, off_t* start) {
  line_reader line(Filename);
  if (line.is_missing()) return wanted.deletes() ? step::NOTHING : step::CREATE;
  if (line.failed()) return step::FAIL;
  if (wanted.key == NULL) return step::REWRITE;

  char stored[INI_BUFFERSIZE];
  const bool found = getkeystring(line, wanted.section, wanted.key, -1, stored, sizeof stored);
  if (line.failed()) return step::FAIL;
  if (!found) return wanted.deletes() ? step::NOTHING : step::REWRITE;
  if (wanted.deletes()) return step::REWRITE;
  if (std::strcmp(stored, wanted.value) == 0) return step::NOTHING;
  *start = line.start();
  const new_line replacement(wanted.key, wanted.value);
  return replacement.bytes().size() == line.bytes().size() ? step::PATCH : step::REWRITE;
}

// ---- New contents

void put_header(writer& target, const char* Section) {
  if (is_unnamed(Section)) return;
  target.put("[");
  target.put(Section);
  target.put("]\n");
}

void put_key(writer& target, const setting& wanted) {
  target.put(new_line(wanted.key, wanted.value).bytes());
}

/** Copies up to and with the section's header, or all when there is none; not one to delete. */
bool copy_up_to_section(line_reader& line, writer& target, const setting& wanted) {
  if (is_unnamed(wanted.section)) return true;
  while (line.next()) {
    const bool found = is_section(line.bytes(), wanted.section);
    if (!found || wanted.key != NULL) target.put(line.bytes());
    if (found) return true;
  }
  return false;
}

/** Reads on to the next header, and copies that. */
void skip_section(line_reader& line, writer& target) {
  while (line.next() && !header_name(line.bytes())) continue;
  target.put(line.bytes());
}

/** Copies up to the key's line or the end of its section, and sets or deletes the key there. */
void copy_with_key(line_reader& line, writer& target, const setting& wanted) {
  bool found = false;
  while (!found && line.next() && !header_name(line.bytes())) {
    const auto key = split(line.bytes());
    found = key && same_name(key->name, wanted.key);
    if (!found) target.put(line.bytes());
  }
  if (wanted.value != NULL) {
    const bool at_end = line.bytes().empty();
    if (at_end && line.start() > 0 && !target.ends_in_lf()) target.put("\n");
    put_key(target, wanted);
  }
  if (!found) target.put(line.bytes());  // the next header, if there is one
}

void append_section(writer& target, const setting& wanted) {
  if (wanted.deletes()) return;
  if (!target.ends_in_lf()) target.put("\n");  // an empty file does not end in LF either
  put_header(target, wanted.section);
  put_key(target, wanted);
}

void copy_rest(line_reader& line, writer& target) {
  while (line.next()) target.put(line.bytes());
}

/** Copies a file with the setting in it. Returns whether all of the file could be read. */
bool copy_changed(const char* Filename, writer& target, const setting& wanted) {
  line_reader line(Filename);
  if (!copy_up_to_section(line, target, wanted)) {
    append_section(target, wanted);
  } else if (wanted.key == NULL) {
    skip_section(line, target);
  } else {
    copy_with_key(line, target, wanted);
  }
  copy_rest(line, target);
  return line.is_open() && !line.failed();
}

// ---- Ways to them

bool create(const setting& wanted, const char* Filename) {
  writer target(openPrivate(Filename, O_WRONLY | O_CREAT | O_TRUNC));
  if (!target.is_open()) return false;
  put_header(target, wanted.section);
  put_key(target, wanted);
  if (target.close()) return true;
  // What was created may stand at the end of a link, which was there before.
  char created[PATH_MAX];
  if (realpath(Filename, created) != NULL) (void)unlink(created);
  return false;
}

/** Overwrites the key's line in place; when that fails, the old line is put back. */
bool patch(const setting& wanted, const char* Filename, off_t start) {
  const int descriptor = openPrivate(Filename, O_RDWR);
  if (descriptor < 0) return false;
  const new_line line(wanted.key, wanted.value);
  char old[INI_BUFFERSIZE];
  const std::size_t size = line.bytes().size();
  const auto whole = static_cast<ssize_t>(size);
  bool patched = pread(descriptor, old, size, start) == whole;
  if (patched && pwrite(descriptor, line.bytes().data(), size, start) != whole) {
    patched = false;
    [[maybe_unused]] const ssize_t restored = pwrite(descriptor, old, size, start);
  }
  return close(descriptor) == 0 && patched;
}

bool rewrite(const setting& wanted, const char* Filename) {
  temporary_file file(Filename);
  if (!file.content().is_open()) return false;
  const bool copied = copy_changed(Filename, file.content(), wanted);
  if (!file.content().close() || !copied) {
    file.discard();
    return false;
  }
  file.take_place();
  return true;
}

}  // namespace

bool apply(const setting& wanted, const char* Filename) {
  off_t start = 0;
  switch (find_step(wanted, Filename, &start)) {
    case step::NOTHING:
      return true;
    case step::CREATE:
      return create(wanted, Filename);
    case step::PATCH:
      return patch(wanted, Filename, start);
    case step::REWRITE:
      return rewrite(wanted, Filename);
    case step::FAIL:
      break;
  }
  return false;
}

}  // namespace ini
