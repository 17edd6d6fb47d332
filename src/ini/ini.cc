// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/ini.h"

#include <cassert>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/retry.h"
#include "ini/change.h"
#include "ini/lines.h"
#include "ini/text.h"
#include "ini/value.h"

namespace {

using ini::reading;

/**
 * Runs a search, which gets a reader of the file, and returns its outcome. It is run again where
 * reading fails: the caller would get a default value, and might save that over the real one.
 */
template <typename Search>
reading look(const char* Filename, Search search) {
  reading outcome = reading::FAILED;
  succeedsOnRetry([&] {
    ini::line_reader reader(Filename);
    const bool found = reader.is_open() && search(reader);
    outcome = found ? reading::FOUND : reading::ABSENT;
    if (reader.failed()) outcome = reading::FAILED;
    return outcome != reading::FAILED;
  });
  return outcome;
}

bool has_value(const char* Section, const char* Key, char* Buffer, int BufferSize,
               const char* Filename) {
  return ini::read_value(Section, Key, Buffer, BufferSize, Filename) == reading::FOUND;
}

/** The length of a name that a search has copied, or has not found. */
int length_of_name(reading outcome, char* Buffer) {
  if (outcome != reading::FOUND) *Buffer = '\0';
  return static_cast<int>(std::strlen(Buffer));
}

/** Calls a callback for each key line but the first ones: told says how many it has had already. */
void browse(ini::line_reader& reader, ini_callback Callback, void* UserData, long* told) {
  char section[INI_BUFFERSIZE] = "";
  char key[INI_BUFFERSIZE];
  char value[INI_BUFFERSIZE];
  long known = *told;
  // The section's name and the line, each with its NUL, have the room of one buffer: a long name
  // leaves less for the line.
  while (reader.next(INI_BUFFERSIZE - (std::strlen(section) + 1) - 1)) {
    if (const auto name = ini::header_name(reader.line())) {
      ini::copy_name(*name, section, sizeof section);
    } else if (const auto parts = ini::split(reader.line()); parts && known-- <= 0) {
      ++*told;
      ini::copy_name(parts->name, key, sizeof key);
      ini::copy_value(parts->value, value, sizeof value);
      if (Callback(section, key, value, UserData) == 0) return;
    }
  }
}

}  // namespace

ini::reading ini::read_value(const char* Section, const char* Key, char* Buffer, int BufferSize,
                             const char* Filename) {
  return look(Filename, [&](line_reader& reader) {
    return getkeystring(reader, Section, Key, BY_NAME, Buffer, BufferSize);
  });
}

int ini_gets(const char* Section, const char* Key, const char* DefValue, char* Buffer,
             int BufferSize, const char* Filename) {
  if (Buffer == NULL || BufferSize <= 0 || Key == NULL) return 0;
  if (!has_value(Section, Key, Buffer, BufferSize, Filename)) {
    const char* text = DefValue != NULL ? DefValue : "";
    ini::ini_strncpy(Buffer, text, static_cast<std::size_t>(BufferSize), ini::QUOTE_NONE);
  }
  return static_cast<int>(std::strlen(Buffer));
}

long ini_getl(const char* Section, const char* Key, long DefValue, const char* Filename) {
  char text[64];
  if (ini_gets(Section, Key, "", text, sizeof text, Filename) == 0) return DefValue;
  const bool hexadecimal = std::toupper(static_cast<unsigned char>(text[1])) == 'X';
  return std::strtol(text, NULL, hexadecimal ? 16 : 10);
}

float ini_getf(const char* Section, const char* Key, float DefValue, const char* Filename) {
  char text[64];
  if (Key == NULL || !has_value(Section, Key, text, sizeof text, Filename)) return DefValue;
  return static_cast<float>(std::strtod(text, NULL));  // infinity for what is beyond float
}

int ini_getbool(const char* Section, const char* Key, int DefValue, const char* Filename) {
  char text[2];
  if (Key == NULL || !has_value(Section, Key, text, sizeof text, Filename)) return DefValue;
  switch (std::toupper(static_cast<unsigned char>(text[0]))) {
    case '1':
    case 'Y':
    case 'T':
      return 1;
    case '0':
    case 'N':
    case 'F':
      return 0;
    default:
      return DefValue;
  }
}

int ini_getsection(int idx, char* Buffer, int BufferSize, const char* Filename) {
  if (Buffer == NULL || BufferSize < 1 || idx < 0) return 0;
  const auto search = [&](ini::line_reader& reader) {
    const bool found = ini::find_section_at(reader, idx);
    if (found) ini::copy_name(*ini::header_name(reader.line()), Buffer, BufferSize);
    return found;
  };
  return length_of_name(look(Filename, search), Buffer);
}

int ini_getkey(const char* Section, int idx, char* Buffer, int BufferSize, const char* Filename) {
  if (Buffer == NULL || BufferSize < 1 || idx < 0) return 0;
  const auto search = [&](ini::line_reader& reader) {
    return ini::getkeystring(reader, Section, NULL, idx, Buffer, BufferSize);
  };
  return length_of_name(look(Filename, search), Buffer);
}

int ini_hassection(const char* Section, const char* Filename) {
  const auto search = [&](ini::line_reader& reader) { return ini::find_section(reader, Section); };
  return look(Filename, search) == reading::FOUND;
}

int ini_haskey(const char* Section, const char* Key, const char* Filename) {
  char scratch[32];
  return has_value(Section, Key, scratch, sizeof scratch, Filename);
}

int ini_browse(ini_callback Callback, void* UserData, const char* Filename) {
  bool opened = false;
  long told = 0;
  succeedsOnRetry([&] {
    ini::line_reader reader(Filename);
    opened = opened || reader.is_open();
    if (reader.is_open() && Callback != NULL) browse(reader, Callback, UserData, &told);
    return !reader.failed();
  });
  return opened && Callback != NULL;
}

int ini_puts(const char* Section, const char* Key, const char* Value, const char* Filename) {
  assert(Filename != NULL);
  return succeedsOnRetry([&] { return ini::apply({Section, Key, Value}, Filename); });
}

int ini_putl(const char* Section, const char* Key, long Value, const char* Filename) {
  char text[32];
  std::snprintf(text, sizeof text, "%ld", Value);
  return ini_puts(Section, Key, text, Filename);
}

int ini_putf(const char* Section, const char* Key, float Value, const char* Filename) {
  char text[64];
  std::snprintf(text, sizeof text, "%f", static_cast<double>(Value));
  return ini_puts(Section, Key, text, Filename);
}

int ini_putbool(const char* Section, const char* Key, int Value, const char* Filename) {
  return ini_puts(Section, Key, Value != 0 ? "true" : "false", Filename);
}
