// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

// Text as the grammar sees it: any bytes, of which those from 1 to 32 are whitespace.

namespace ini {

enum quote_option {
  QUOTE_NONE,     // plain copy
  QUOTE_ENQUOTE,  // surround with double quotes and escape inner quotes
  QUOTE_DEQUOTE,  // undo the escapes of a quoted value
};

bool is_space(char byte);
char* skip_leading(char* str);

/** Steps back from str, the end of a text that starts at base, over trailing whitespace. */
char* skip_trailing(char* str, const char* base);

std::string_view trimmed(char* begin, char* end);
bool same_name(std::string_view name, const char* wanted);

/** Copies at most maxlen - 1 bytes and a NUL, applying the quotes that the option asks for. */
void ini_strncpy(char* dest, const char* source, std::size_t maxlen, quote_option option);

/** Whether a value must be written in quotes to read back as it is. */
quote_option check_enquote(const char* Value);

/**
 * Cuts the trailing note, whitespace and outer quotes off a value. Returns where it starts and
 * tells in quotes how to copy it.
 */
char* cleanstring(char* string, quote_option* quotes);

}  // namespace ini
