// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "ini/ini.h"

namespace ini {

/** Reads a file line by line through one buffer, without ever waiting. */
class line_reader {
 public:
  /** As much of a line as is seen at a time; what follows counts as the next line. */
  static constexpr std::size_t LONGEST = INI_BUFFERSIZE - 1;

  explicit line_reader(const char* Filename);
  line_reader(const line_reader&) = delete;
  line_reader& operator=(const line_reader&) = delete;
  ~line_reader();

  bool is_open() const { return descriptor >= 0; }

  /** Whether there is no such file, which is not a failure. */
  bool is_missing() const { return progress == MISSING; }

  /** Whether the file could not be opened, or not be read on. */
  bool failed() const { return progress == FAILED; }

  /**
   * Goes on to the next line, or to the first one. False at the end of the file and where it cannot
   * be read: no part of a line is given then. A limit, at most LONGEST, makes lines shorter.
   */
  bool next(std::size_t limit = LONGEST) {
    offset += static_cast<off_t>(length);
    begin += length;
    while (!find_end(limit) && fill()) continue;
    return length > 0;
  }

  /** Goes back to before the first line. Returns false where that fails. */
  bool restart();

  /** The bytes of the line with its LF, until next() is called; none behind the last line. */
  std::string_view line() const { return {buffer + begin, length}; }

  /** Where in the file the line begins; behind the last line, the file's size. */
  off_t start() const { return offset; }

 private:
  enum state { READING, ENDED, MISSING, FAILED };

  /** Finds the end of the line. False where it may be further on than what has been read. */
  bool find_end(std::size_t limit) {
    const char* start = buffer + begin;
    const std::size_t seen = std::min(filled - begin, limit);
    const auto* newline = static_cast<const char*>(std::memchr(start, '\n', seen));
    length = newline != NULL ? static_cast<std::size_t>(newline + 1 - start) : seen;
    return newline != NULL || seen == limit;
  }

  /** Reads on. False at the end, and where that fails: the line has no bytes then. */
  bool fill();

  int descriptor;  // -1 unless the file is open
  state progress = READING;
  off_t offset = 0;        // of the line in the file
  std::size_t begin = 0;   // of the line in the buffer
  std::size_t length = 0;  // of the line; 0 before the first one and behind the last one
  std::size_t filled = 0;  // bytes in the buffer, those of the line and of what follows it
  char buffer[INI_BUFFERSIZE];
};

/** Writes to a descriptor in blocks. What fails shows at the end. */
class writer {
 public:
  explicit writer(int opened) : descriptor(opened) {}
  writer(const writer&) = delete;
  writer& operator=(const writer&) = delete;
  ~writer() = default;

  void put(std::string_view text);

  /** Whether there is a last byte, and it is an LF. */
  bool ends_in_lf() const { return pending > 0 && block[pending - 1] == '\n'; }

  /** Writes what is left in the block. Returns whether all that was put has been written. */
  bool finish();

  /** Writes the first bytes of the block, and sets their number to 0. Public for its contract. */
  void cache_flush(int* size);

 private:
  int descriptor;
  bool complete = true;  // whether every block so far was written whole
  int pending = 0;       // bytes of the block; more than 0 once anything was put
  char block[INI_BUFFERSIZE];
};

}  // namespace ini
