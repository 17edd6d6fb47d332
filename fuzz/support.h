// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "support/files.h"

/** What each fuzzing program consists of: it looks at one input, and ends the process if a rule is
 * broken. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/** Ends the process, so that the input is kept, unless a rule holds. */
#define REQUIRE(rule) \
  (static_cast<bool>(rule) ? void() : requirementFailed(__FILE__, __LINE__, #rule))

[[noreturn]] inline void requirementFailed(const char* file, int line, const char* rule) {
  std::fprintf(stderr, "%s:%d: broken rule: %s\n", file, line, rule);
  std::abort();
}

/** An input as text. */
inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/** The pieces of an input, which has "@@" and an LF between them. */
inline std::vector<std::string> splitInput(const std::string& input) {
  constexpr std::string_view SEPARATOR = "@@\n";
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (std::size_t end = 0; (end = input.find(SEPARATOR, start)) != std::string::npos;
       start = end + SEPARATOR.size())
    pieces.push_back(input.substr(start, end - start));
  pieces.push_back(input.substr(start));
  return pieces;
}

/** The folder for all inputs of a process, in memory where there is such a place. */
inline const TemporaryDirectory& fuzzFolder() {
  preferMemory(1U << 20U);
  static const TemporaryDirectory folder;
  return folder;
}

/** Writes a file whose next change shows. */
inline void writeOldFile(const std::string& path, std::string_view bytes) {
  writeBytes(path, bytes);
  makeOld(path);
}
