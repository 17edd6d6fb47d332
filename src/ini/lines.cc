// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/lines.h"

#include <cassert>
#include <cstring>

#include "ini/text.h"

namespace ini {

namespace {

std::string_view as_text(std::string_view line) { return line.substr(0, line.find('\0')); }

}  // namespace

std::optional<std::string_view> header_name(std::string_view line) {
  if (!begins_with_bracket(line)) return {};
  const std::string_view text = trimmed(as_text(line));
  const std::size_t closing = text.rfind(']');
  if (closing == std::string_view::npos) return {};
  const char* ep = text.data() + closing;
  assert(ep != NULL && *ep == ']');  // a text of the contract: it cannot fail here
  return trimmed(text.substr(1, closing - 1));
}

std::optional<key_line> split(std::string_view line) {
  const std::string_view text = trimmed(as_text(line));
  if (text.empty() || text.front() == ';' || text.front() == '#') return {};
  std::size_t separator = text.find('=');
  if (separator == std::string_view::npos) separator = text.find(':');
  if (separator == std::string_view::npos) return {};
  const char* ep = text.data() + separator;
  assert(*ep == '=' || *ep == ':');  // this one neither
  return key_line{trimmed(text.substr(0, separator)), text.substr(separator + 1)};
}

bool is_unnamed(const char* Section) { return Section == NULL || *Section == '\0'; }

bool find_section(line_reader& reader, const char* Section) {
  if (is_unnamed(Section)) return true;
  while (reader.next())
    if (is_section(reader.line(), Section)) return true;
  return false;
}

bool find_section_at(line_reader& reader, int idx) {
  while (reader.next())
    if (header_name(reader.line()) && idx-- == 0) return true;
  return false;
}

bool getkeystring(line_reader& reader, const char* Section, const char* Key, int idxKey,
                  char* Buffer, int BufferSize) {
  if (!find_section(reader, Section)) return false;
  assert(Key != NULL || idxKey >= 0);
  while (reader.next() && !header_name(reader.line())) {
    const auto key = split(reader.line());
    if (!key) continue;
    if (Key != NULL && same_name(key->name, Key)) {
      copy_value(key->value, Buffer, BufferSize);
      return true;
    }
    if (Key == NULL && idxKey-- == 0) {
      copy_name(key->name, Buffer, BufferSize);
      return true;
    }
  }
  return false;
}

void copy_name(std::string_view name, char* Buffer, int BufferSize) {
  Buffer[name.copy(Buffer, static_cast<std::size_t>(BufferSize) - 1)] = '\0';
}

void copy_value(std::string_view value, char* Buffer, int BufferSize) {
  char text[INI_BUFFERSIZE];
  copy_name(trimmed(value), text, sizeof text);
  quote_option quotes = QUOTE_NONE;
  const char* cleaned = cleanstring(text, &quotes);
  ini_strncpy(Buffer, cleaned, static_cast<std::size_t>(BufferSize), quotes);
}

new_line::new_line(const char* Key, const char* Value) {
  assert(Key != NULL && Value != NULL);
  char first_line[INI_BUFFERSIZE];  // a value is one line
  copy_name({Value, std::strcspn(Value, "\n")}, first_line, sizeof first_line);

  constexpr std::size_t AFTER_KEY = sizeof "=\n";
  ini_strncpy(text, Key, sizeof text - AFTER_KEY, QUOTE_NONE);
  length = std::strlen(text);
  text[length++] = '=';
  ini_strncpy(text + length, first_line, sizeof text - 1 - length, check_enquote(first_line));
  length += std::strlen(text + length);
  text[length++] = '\n';
}

}  // namespace ini
