// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/text.h"

#include <strings.h>

#include <cassert>
#include <cstring>

namespace ini {

bool is_space(char byte) { return byte > 0 && byte <= ' '; }

char* skip_leading(char* str) {
  assert(str != NULL);
  while (is_space(*str)) ++str;
  return str;
}

char* skip_trailing(char* str, const char* base) {
  assert(str != NULL);
  assert(base != NULL);
  while (str > base && is_space(str[-1])) --str;
  return str;
}

std::string_view trimmed(char* begin, char* end) {
  begin = skip_leading(begin);
  if (begin > end) begin = end;
  end = skip_trailing(end, begin);
  return {begin, static_cast<std::size_t>(end - begin)};
}

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
  if (option == QUOTE_ENQUOTE && maxlen < 3) option = QUOTE_NONE;

  std::size_t length = 0;
  switch (option) {
    case QUOTE_NONE:
      while (*source != '\0' && length < maxlen - 1) dest[length++] = *source++;
      break;
    case QUOTE_ENQUOTE:
      dest[length++] = '"';
      while (*source != '\0' && length < maxlen - 2) {
        if (*source == '"') {
          if (maxlen - 1 - length < 3) break;  // backslash, quote and the closing quote
          dest[length++] = '\\';
        }
        dest[length++] = *source++;
      }
      dest[length++] = '"';
      break;
    case QUOTE_DEQUOTE:
      while (*source != '\0' && length < maxlen - 1) {
        if ((source[0] == '"' || source[0] == '\\') && source[1] == '"') ++source;
        dest[length++] = *source++;
      }
      break;
  }
  dest[length] = '\0';
}

quote_option check_enquote(const char* Value) {
  assert(Value != NULL);
  const char* p = Value + std::strcspn(Value, "\";#");
  const bool ends_in_blank = p > Value && p[-1] == ' ';
  return *p != '\0' || ends_in_blank ? QUOTE_ENQUOTE : QUOTE_NONE;
}

char* cleanstring(char* string, quote_option* quotes) {
  assert(string != NULL);
  bool quoted = false;
  char* ep = string;
  while (*ep != '\0' && (quoted || (*ep != ';' && *ep != '#'))) {
    if ((ep[0] == '"' || ep[0] == '\\') && ep[1] == '"') {
      ep += 2;
    } else {
      if (*ep == '"') quoted = !quoted;
      ++ep;
    }
  }
  ep = skip_trailing(ep, string);
  *quotes = QUOTE_NONE;
  if (ep > string && *string == '"' && ep[-1] == '"') {
    *quotes = QUOTE_DEQUOTE;
    --ep;
    if (string < ep) ++string;  // a lone quote is both the first and the last
  }
  *ep = '\0';
  return string;
}

}  // namespace ini
