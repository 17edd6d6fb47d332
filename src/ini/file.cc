// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>

#include "base/open_private.h"
#include "base/write_all.h"

namespace ini {

line_reader::line_reader(const char* Filename) : descriptor(openPrivate(Filename, O_RDONLY)) {
  if (is_open()) return;
  progress = errno == ENOENT || errno == ENOTDIR ? MISSING : FAILED;
}

line_reader::~line_reader() {
  if (is_open()) ::close(descriptor);
}

bool line_reader::restart() {
  // Of what has no place to go back to, a FIFO, nothing may have been read.
  const bool moved = offset > 0 || filled > 0;
  if (moved && lseek(descriptor, 0, SEEK_SET) != 0) return false;
  progress = READING;
  offset = 0;
  begin = length = filled = 0;
  return true;
}

/** Moves what is there of the line to the front and reads on behind it. */
bool line_reader::fill() {
  if (progress == READING) {
    std::copy(buffer + begin, buffer + filled, buffer);
    filled -= begin;
    begin = 0;
    const ssize_t got = read(descriptor, buffer + filled, sizeof buffer - filled);
    if (got > 0) {
      filled += static_cast<std::size_t>(got);
    } else {
      progress = got == 0 ? ENDED : FAILED;
    }
  }
  if (failed()) length = 0;
  return progress == READING;
}

void writer::put(std::string_view text) {
  while (!text.empty()) {
    if (pending == INI_BUFFERSIZE - 1) cache_flush(&pending);
    const auto room = static_cast<std::size_t>(INI_BUFFERSIZE - 1 - pending);
    const std::size_t taken = text.copy(block + pending, room);
    pending += static_cast<int>(taken);
    text.remove_prefix(taken);
  }
}

bool writer::finish() {
  cache_flush(&pending);
  return complete;
}

void writer::cache_flush(int* size) {
  assert(*size <= INI_BUFFERSIZE);
  if (*size == 0) return;
  const int pos = std::min(*size, INI_BUFFERSIZE - 1);
  assert(pos > 0 && pos <= INI_BUFFERSIZE);
  complete = complete && writeAll(descriptor, {block, static_cast<std::size_t>(pos)});
  *size = 0;
}

}  // namespace ini
