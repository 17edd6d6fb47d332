// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/keyfile.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <thread>

#include "base/whole_file.h"

namespace {

constexpr std::chrono::milliseconds PAUSE_BEFORE_REWRITING{50};

bool hasUnquotedKey(std::string_view line) {
  // Looked for anywhere in the line, so a password that holds one of them loses its quotes as well.
  constexpr std::array<std::string_view, 4> KEYS = {
      "permissions=", "group=", "pairwise=", "proto="};
  return std::any_of(KEYS.begin(), KEYS.end(), [line](std::string_view key) {
    return line.find(key) != std::string_view::npos;
  });
}

std::string withoutQuotes(std::string_view content) {
  std::string result;
  result.reserve(content.size() + 1);
  while (!content.empty()) {
    const std::string_view line = content.substr(0, content.find('\n'));
    if (hasUnquotedKey(line)) {
      std::remove_copy(line.begin(), line.end(), std::back_inserter(result), '"');
    } else {
      result += line;
    }
    result += '\n';
    content.remove_prefix(std::min(line.size() + 1, content.size()));
  }
  return result;
}

}  // namespace

void removeKeyfileValueQuotes(const std::string& path) {
  const std::string content = readFile(path).value_or("");
  std::this_thread::sleep_for(PAUSE_BEFORE_REWRITING);
  overwriteFile(path, content, withoutQuotes(content));
}
