// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

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

/** A folder of this process alone, in memory where there is such a place; removed at its end. */
class Folder {
 public:
  Folder() {
    std::error_code ignored;
    const bool memory = access("/dev/shm", W_OK) == 0;
    path = memory ? "/dev/shm" : std::filesystem::temp_directory_path(ignored).string();
    path += "/zor-fuzz-XXXXXX";
    REQUIRE(mkdtemp(path.data()) != nullptr);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  std::string file(const std::string& name) const { return path + "/" + name; }

  /** Whether one name, or none, is all that there is. */
  bool holdsNothingBut(const std::string& name) const {
    for (const auto& entry : std::filesystem::directory_iterator(path))
      if (entry.path().filename() != name) return false;
    return true;
  }

  std::string path;
};

inline std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/** Writes a file with a time of change that any later change is sure to replace. */
inline void writeOldFile(const std::string& path, std::string_view bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
  REQUIRE(file >= 0);
  REQUIRE(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  const std::array<timespec, 2> times = {{{1000, 1}, {1000, 1}}};
  REQUIRE(futimens(file, times.data()) == 0);
  close(file);
}

inline struct stat statusOf(const std::string& path) {
  struct stat status {};
  REQUIRE(stat(path.c_str(), &status) == 0);
  return status;
}

inline bool isStillOld(const std::string& path) {
  const timespec changed = statusOf(path).st_mtim;
  return changed.tv_sec == 1000 && changed.tv_nsec == 1;
}
