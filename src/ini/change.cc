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
#include "base/temporary_file.h"
#include "ini/lines.h"
#include "ini/text.h"

namespace ini {

namespace {

/** What must be done so that a file holds a setting. */
enum class step {
  NOTHING,
  CREATE,
  PATCH,  // the new line has the length of the old one
  REWRITE,
  FAIL,  // the file is there, but cannot be read: it must not be taken for a missing one
};

/** Decides the step; for PATCH it also tells where the line begins. */
step find_step(line_reader& reader, const setting& wanted, off_t* start) {
  if (reader.is_missing()) return wanted.deletes() ? step::NOTHING : step::CREATE;
  if (reader.failed()) return step::FAIL;
  if (wanted.key == NULL) return step::REWRITE;

  char stored[INI_BUFFERSIZE];
  const bool found =
      getkeystring(reader, wanted.section, wanted.key, BY_NAME, stored, sizeof stored);
  if (reader.failed()) return step::FAIL;
  if (wanted.deletes()) return found ? step::REWRITE : step::NOTHING;
  if (!found) return step::REWRITE;
  if (std::strcmp(stored, wanted.value) == 0) return step::NOTHING;
  *start = reader.start();
  const new_line replacement(wanted.key, wanted.value);
  return replacement.bytes().size() == reader.line().size() ? step::PATCH : step::REWRITE;
}

// ---- The new content of a file that is rewritten

void put_header(writer& target, const char* Section) {
  if (is_unnamed(Section)) return;
  target.put("[");
  target.put(Section);
  target.put("]\n");
}

void put_key(writer& target, const setting& wanted) {
  target.put(new_line(wanted.key, wanted.value).bytes());
}

/**
 * Copies up to the section's header, and that too unless the section is to be deleted. Returns
 * false when there is none; then all is copied.
 */
bool copy_up_to_section(line_reader& reader, writer& target, const setting& wanted) {
  if (is_unnamed(wanted.section)) return true;
  while (reader.next()) {
    const bool found = is_section(reader.line(), wanted.section);
    if (!found || wanted.key != NULL) target.put(reader.line());
    if (found) return true;
  }
  return false;
}

/** Reads on to the next header, and copies that. */
void skip_section(line_reader& reader, writer& target) {
  while (reader.next() && !header_name(reader.line())) continue;
  target.put(reader.line());
}

/** Copies up to the key's line or the end of its section, and sets or deletes the key there. */
void copy_with_key(line_reader& reader, writer& target, const setting& wanted) {
  bool found = false;
  while (!found && reader.next() && !header_name(reader.line())) {
    const auto key = split(reader.line());
    found = key && same_name(key->name, wanted.key);
    if (!found) target.put(reader.line());
  }
  if (wanted.value != NULL) {
    const bool at_end = reader.line().empty();
    const bool empty_file = at_end && reader.start() == 0;
    if (at_end && !empty_file && !target.ends_in_lf()) target.put("\n");
    put_key(target, wanted);
  }
  if (!found) target.put(reader.line());  // the next header, if there is one
}

void append_section(writer& target, const setting& wanted) {
  if (wanted.deletes()) return;
  if (!target.ends_in_lf()) target.put("\n");  // in an empty file, too
  put_header(target, wanted.section);
  put_key(target, wanted);
}

void copy_rest(line_reader& reader, writer& target) {
  while (reader.next()) target.put(reader.line());
}

/** Copies a file with the setting in it. Returns whether all of the file could be read. */
bool copy_changed(line_reader& reader, writer& target, const setting& wanted) {
  if (!reader.restart()) return false;
  if (!copy_up_to_section(reader, target, wanted)) {
    append_section(target, wanted);
  } else if (wanted.key == NULL) {
    skip_section(reader, target);
  } else {
    copy_with_key(reader, target, wanted);
  }
  copy_rest(reader, target);
  return !reader.failed();
}

// ---- The steps

bool create(const setting& wanted, const char* Filename) {
  const int descriptor = openPrivate(Filename, O_WRONLY | O_CREAT | O_TRUNC);
  if (descriptor == -1) return false;
  writer target(descriptor);
  put_header(target, wanted.section);
  put_key(target, wanted);
  const bool written = target.finish();
  if (close(descriptor) == 0 && written) return true;
  // What was created may stand at the end of a link, which was there before.
  char created[PATH_MAX];
  if (realpath(Filename, created) != NULL) (void)unlink(created);
  return false;
}

/** Overwrites the key's line in place; when that fails, the old line is put back. */
bool patch(const setting& wanted, const char* Filename, off_t start) {
  const int descriptor = openPrivate(Filename, O_RDWR);
  if (descriptor == -1) return false;
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

bool rewrite(line_reader& reader, const setting& wanted, const char* Filename) {
  TemporaryFile file(Filename);
  if (file.descriptor() == -1) return false;
  writer target(file.descriptor());
  if (!copy_changed(reader, target, wanted) || !target.finish() || !file.close()) return false;
  (void)file.takePlace();  // what becomes of it is not told
  return true;
}

}  // namespace

bool apply(const setting& wanted, const char* Filename) {
  line_reader reader(Filename);
  off_t start{};
  switch (find_step(reader, wanted, &start)) {
    case step::NOTHING:
      return true;
    case step::CREATE:
      return create(wanted, Filename);
    case step::PATCH:
      return patch(wanted, Filename, start);
    case step::REWRITE:
      return rewrite(reader, wanted, Filename);
    case step::FAIL:
      break;
  }
  return false;
}

}  // namespace ini
