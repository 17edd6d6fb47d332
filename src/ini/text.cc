// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/text.h"

#include <strings.h>

#include <cassert>
#include <cstring>

namespace ini {

namespace {

/** Whether an escaped quote begins here: a backslash or another quote before it. */
bool is_escape(const char* p) { return (p[0] == '"' || p[0] == '\\') && p[1] == '"'; }

// Each of these copies with one option and returns how many bytes that makes.

std::size_t copy_plain(char* dest, const char* source, std::size_t maxlen) {
  std::size_t length = 0;
  while (*source != '\0' && length < maxlen - 1) dest[length++] = *source++;
  return length;
}

std::size_t copy_enquoted(char* dest, const char* source, std::size_t maxlen) {
  std::size_t length = 0;
  dest[length++] = '"';
  while (*source != '\0' && length < maxlen - 2) {
    if (*source == '"') {
      if (maxlen - 1 - length < 3) break;  // backslash, quote and the closing quote
      dest[length++] = '\\';
    }
    dest[length++] = *source++;
  }
  dest[length++] = '"';
  return length;
}

std::size_t copy_dequoted(char* dest, const char* source, std::size_t maxlen) {
  std::size_t length = 0;
  while (*source != '\0' && length < maxlen - 1) {
    if (is_escape(source)) ++source;
    dest[length++] = *source++;
  }
  return length;
}

/** Where a value ends: at the first ";" or "#" outside quotes, or with the text. */
const char* end_of_value(const char* string) {
  bool quoted = false;
  while (*string != '\0' && (quoted || (*string != ';' && *string != '#'))) {
    if (is_escape(string)) {
      string += 2;
    } else {
      if (*string == '"') quoted = !quoted;
      ++string;
    }
  }
  return string;
}

}  // namespace

bool same_name(std::string_view name, const char* wanted) {
  return name.size() == std::strlen(wanted) && strncasecmp(name.data(), wanted, name.size()) == 0;
}

void ini_strncpy(char* dest, const char* source, std::size_t maxlen, quote_option option) {
  // A broken contract prints these texts: they keep their exact shape.
  // clang-format off
  assert(maxlen>0);
  assert(source != NULL && dest != NULL);
  assert((dest < source || (dest == source && option != QUOTE_ENQUOTE)) || dest > source + strlen(source));
  // clang-format on
  auto* copy = copy_plain;
  if (option == QUOTE_DEQUOTE) copy = copy_dequoted;
  if (option == QUOTE_ENQUOTE && maxlen >= 3) copy = copy_enquoted;
  dest[copy(dest, source, maxlen)] = '\0';
}

quote_option check_enquote(const char* Value) {
  assert(Value != NULL);
  const char* p = Value + std::strcspn(Value, "\";#");
  const bool ends_in_blank = p > Value && p[-1] == ' ';
  return *p != '\0' || ends_in_blank ? QUOTE_ENQUOTE : QUOTE_NONE;
}

char* cleanstring(char* string, quote_option* quotes) {
  assert(string != NULL);
  auto length = static_cast<std::size_t>(skip_trailing(end_of_value(string), string) - string);
  // A value does not end before its first quote; a lone one is the last byte, too, and goes.
  const bool quoted = string[0] == '"' && string[length - 1] == '"';
  *quotes = quoted ? QUOTE_DEQUOTE : QUOTE_NONE;
  if (quoted) --length;
  string[length] = '\0';
  return quoted ? string + 1 : string;
}

}  // namespace ini
