// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <iostream>
#include <string>

/**
 * Writes one whole line and flushes it. The pieces go out byte for byte, in any locale. A stream
 * that failed once (a full disk, say) is tried again with the next line.
 */
template <typename... Pieces>
void printLine(std::ostream& stream, const Pieces&... pieces) {
  std::string line;
  (line.append(pieces), ...);
  line += '\n';
  stream.clear();
  stream << line << std::flush;
}

/** A line of progress, on standard output. */
template <typename... Pieces>
void logLine(const Pieces&... pieces) {
  printLine(std::cout, pieces...);
}

/** A line about a failure, on standard error. */
template <typename... Pieces>
void logError(const Pieces&... pieces) {
  printLine(std::cerr, pieces...);
}
