// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

// Files as tests make and look at them. What cannot be done is an exception, unless it says
// otherwise.

/** The account without rights that tests take on when they run as root. */
inline constexpr unsigned ORDINARY_USER = 65534;

/** The bytes of a file; empty text if there is none. */
std::string readBytes(const std::string& path);

/** Writes a file that everybody may read, as careless hands would leave it. */
void writeBytes(const std::string& path, std::string_view bytes);

bool exists(const std::string& path);

/** What the system says about a file, or about a link itself. */
struct stat statusOf(const std::string& path);
mode_t modeOf(const std::string& path);
ino_t inodeOf(const std::string& path);

/** Gives a file or directory a time of change that any later change is sure to replace. */
void makeOld(const std::string& path);
bool isStillOld(const std::string& path);

/** The sorted names of all that is in a folder. */
std::vector<std::string> namesIn(const std::string& folder);

/** Has the folders of all tests in memory where there is so much room, which spares the disk. */
void preferMemory(unsigned long long bytes);

/** A folder of the test's own, removed with all that is in it. */
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  std::string file(const std::string& name) const { return path + "/" + name; }
  std::string makeDirectory(const std::string& name) const;

  std::vector<std::string> names() const { return namesIn(path); }

  /** Lets the account that tests take on own the folder and the files in it. */
  void giveToOrdinaryUser() const;

  std::string path;
};
