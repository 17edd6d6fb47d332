// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "ini/file.h"
#include "ini/ini.h"
#include "ini/text.h"

// What the bytes of a line mean, and the search for one. As text a line ends before its first NUL.

namespace ini {

/** A quick look that rules out most lines: only one that begins with a bracket can be a header. */
inline bool begins_with_bracket(std::string_view line) {
  const char* end = line.data() + line.size();
  const char* sp = skip_leading(line.data(), end);
  return sp < end && *sp == '[';
}

/** The name in a section header; nothing for any other line. */
std::optional<std::string_view> header_name(std::string_view line);

/** Whether a line is the header of a section. */
inline bool is_section(std::string_view line, const char* Section) {
  if (!begins_with_bracket(line)) return false;
  const auto name = header_name(line);
  return name && same_name(*name, Section);
}

/** The parts of a key line: the trimmed name, and the value as it stands there. */
struct key_line {
  std::string_view name;
  std::string_view value;
};

/** Splits a line that is no header; nothing for a comment and a line without a separator. */
std::optional<key_line> split(std::string_view line);

/** Whether Section means the keys before the first header. */
bool is_unnamed(const char* Section);

/** Reads on up to the header of a section; for the unnamed one nothing may have been read yet. */
bool find_section(line_reader& reader, const char* Section);

/** The same for the section with an index, from 0. */
bool find_section_at(line_reader& reader, int idx);

/** The index for a key that is found by its name. */
inline constexpr int BY_NAME = -1;

/**
 * Finds a key by name, copying its value, or (Key NULL, idxKey from 0) by index, copying its name.
 * On success the reader stands on the key's line.
 */
bool getkeystring(line_reader& reader, const char* Section, const char* Key, int idxKey,
                  char* Buffer, int BufferSize);

/** Copies a name, cut to the buffer's size, which is at least 1. */
void copy_name(std::string_view name, char* Buffer, int BufferSize);

/** The same for a value, without its note and quotes. */
void copy_value(std::string_view value, char* Buffer, int BufferSize);

/** The line of a key as it is written, LF included: what is too long for a buffer is cut. */
class new_line {
 public:
  new_line(const char* Key, const char* Value);
  std::string_view bytes() const { return {text, length}; }

 private:
  std::size_t length;
  char text[INI_BUFFERSIZE];
};

}  // namespace ini
