// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cassert>
#include <cstddef>
#include <string_view>

// Text as the grammar sees it: any bytes, of which those from 1 to 32 are whitespace.

namespace ini {

/** What becomes of quotes when a value is copied. */
enum quote_option {
  QUOTE_NONE,     // plain copy
  QUOTE_ENQUOTE,  // surround with double quotes and escape inner quotes
  QUOTE_DEQUOTE,  // undo the escapes of a quoted value
};

// These are run for each line that is read: in place, since calls would cost more than they do.

inline bool is_space(char byte) { return byte > 0 && byte <= ' '; }

/** The first byte from str to end that is no whitespace, or end. */
inline const char* skip_leading(const char* str, const char* end) {
  assert(str != NULL);
  while (str < end && is_space(*str)) ++str;
  return str;
}

/** The place behind the last byte from base to str that is no whitespace, or base. */
inline const char* skip_trailing(const char* str, const char* base) {
  assert(str != NULL);
  assert(base != NULL);
  while (str > base && is_space(str[-1])) --str;
  return str;
}

/** The text without whitespace at either end. */
inline std::string_view trimmed(std::string_view text) {
  const char* end = text.data() + text.size();
  const char* begin = skip_leading(text.data(), end);
  return {begin, skip_trailing(end, begin)};
}

/** Whether names are the same, as strncasecmp() has it. */
bool same_name(std::string_view name, const char* wanted);

/**
 * Copies text into room for maxlen bytes, its NUL included; what is too long is cut, but never
 * within an escape nor before the closing quote. Room for less than 3 bytes gets no quotes.
 */
void ini_strncpy(char* dest, const char* source, std::size_t maxlen, quote_option option);

/** Whether a value is written in quotes: for a note's sign, a quote or a blank at its end. */
quote_option check_enquote(const char* Value);

/**
 * Cuts the note, the whitespace before it and the outer quotes off a trimmed value. Returns where
 * the value begins, and tells in quotes how it is to be copied.
 */
char* cleanstring(char* string, quote_option* quotes);

}  // namespace ini
