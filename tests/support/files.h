// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/** The account without rights that tests take on when they run as root. */
inline constexpr unsigned ORDINARY_USER = 65534;

inline std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/** Writes a file that everybody may read, as careless hands would leave it. */
inline void writeBytes(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file || chmod(path.c_str(), 0644) != 0) throw std::runtime_error("cannot write " + path);
}

inline struct stat statusOf(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) throw std::runtime_error("cannot stat " + path);
  return status;
}

inline mode_t modeOf(const std::string& path) { return statusOf(path).st_mode & 07777; }

inline ino_t inodeOf(const std::string& path) { return statusOf(path).st_ino; }

/** Gives a file or directory a time of change that any later change is sure to replace. */
inline void makeOld(const std::string& path) {
  const std::array<timespec, 2> times = {{{1000, 1}, {1000, 1}}};
  if (utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0)
    throw std::runtime_error("cannot set the times of " + path);
}

inline bool isStillOld(const std::string& path) {
  const timespec changed = statusOf(path).st_mtim;
  return changed.tv_sec == 1000 && changed.tv_nsec == 1;
}

/** A folder of the test's own, removed with all that is in it. */
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path(std::filesystem::canonical(std::filesystem::temp_directory_path())) {
    path += "/zor-test-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("cannot create " + path);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    (void)chmod(path.c_str(), S_IRWXU);
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  std::string file(const std::string& name) const { return path + "/" + name; }

  std::string makeDirectory(const std::string& name) const {
    std::filesystem::create_directories(file(name));
    return file(name);
  }

  /** The sorted names of all that is in it. */
  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(path))
      result.push_back(entry.path().filename().string());
    std::sort(result.begin(), result.end());
    return result;
  }

  /** Lets the account that becomeOrdinaryUser() takes on own the folder and the files in it. */
  void giveToOrdinaryUser() const {
    if (geteuid() != 0) return;
    for (const std::string& name : names()) giveAway(file(name));
    giveAway(path);
  }

  std::string path;

 private:
  static void giveAway(const std::string& name) {
    if (lchown(name.c_str(), ORDINARY_USER, ORDINARY_USER) != 0)
      throw std::runtime_error("cannot give away " + name);
  }
};

/** Bytes as text in which everything unprintable is escaped, and as hexadecimal numbers. */
inline std::string describeBytes(std::string_view bytes) {
  std::string text;
  std::string hexadecimal;
  std::array<char, 8> piece{};
  for (const char byte : bytes) {
    const unsigned number = static_cast<unsigned char>(byte);
    const bool printable = number >= ' ' && number <= '~';
    std::snprintf(piece.data(), piece.size(), printable ? "%c" : "\\x%02X", number);
    text += piece.data();
    std::snprintf(piece.data(), piece.size(), " %02X", number);
    hexadecimal += piece.data();
  }
  return "\"" + text + "\" =" + hexadecimal;
}

/** For EXPECT_BYTES_EQ: says where two byte strings begin to differ. */
inline testing::AssertionResult compareBytes(const char* /*expectedText*/, const char* actualText,
                                             std::string_view expected, std::string_view actual) {
  if (expected == actual) return testing::AssertionSuccess();
  constexpr std::size_t BEFORE = 8;
  constexpr std::size_t SHOWN = 24;
  const auto [first, second] =
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  const auto offset = static_cast<std::size_t>(first - expected.begin());
  const std::size_t from = offset - std::min(offset, BEFORE);
  return testing::AssertionFailure()
         << actualText << " differs at byte " << offset << "; from byte " << from
         << "\n  expected (" << expected.size() << " bytes) "
         << describeBytes(expected.substr(from, SHOWN)) << "\n  actual   (" << actual.size()
         << " bytes) " << describeBytes(actual.substr(from, SHOWN));
}

#define EXPECT_BYTES_EQ(expected, actual) EXPECT_PRED_FORMAT2(compareBytes, expected, actual)
