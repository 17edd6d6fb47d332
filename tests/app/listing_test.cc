// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "support/files.h"
#include "support/printed.h"

namespace {

/** After how many entries a directory cannot be read on. */
int readableEntries = 0;
int entriesRead = 0;
int failures = 0;  // that are left, each in a reading of its own
int readingError = EIO;

void* readEntry(DIR* directory, const char* function) {
  if (failures > 0 && entriesRead++ == readableEntries) {
    entriesRead = 0;
    --failures;
    errno = readingError;
    return nullptr;
  }
  return reinterpret_cast<void* (*)(DIR*)>(dlsym(RTLD_NEXT, function))(directory);
}

int strangers = 0;  // as many times the link cannot be followed now, and why
int strangersError = ESTALE;

int status(const char* path, struct stat* result, const char* function) {
  if (strangers > 0 && std::filesystem::path(path).filename() == "link") {
    --strangers;
    errno = strangersError;
    return -1;
  }
  return reinterpret_cast<int (*)(const char*, struct stat*)>(dlsym(RTLD_NEXT, function))(path,
                                                                                          result);
}

}  // namespace

// In the place of the C library's, for the C++ library too, by whichever name it calls it. The
// header gives one name to both.
extern "C" int statShort(const char* path, struct stat* result) __asm__("stat");
extern "C" int statShort(const char* path, struct stat* result) {
  return status(path, result, "stat");
}
extern "C" int statLarge(const char* path, struct stat* result) __asm__("stat64");
extern "C" int statLarge(const char* path, struct stat* result) {
  return status(path, result, "stat64");
}
extern "C" void* readShort(DIR* directory) __asm__("readdir");
extern "C" void* readShort(DIR* directory) { return readEntry(directory, "readdir"); }
extern "C" void* readLarge(DIR* directory) __asm__("readdir64");
extern "C" void* readLarge(DIR* directory) { return readEntry(directory, "readdir64"); }

namespace {

TEST(Listing, IsTriedAgainAndKeepsWhatItSawBeforeItFailed) {
  const TemporaryDirectory directory;
  for (const char* name : {"a", "b", "c"})
    writeBytes(directory.file(name), "[connection]\ntype=ethernet\n");
  setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", directory.path.c_str(), 1);
  auto& config = NetworkManagerConfig::getInstance();
  printedBy([&] { config.initialize(NetworkManagerConfig::DEBUG); });

  const std::vector<std::string> all = config.listConnectionFiles();
  ASSERT_EQ(3U, all.size());
  for (std::size_t seen = 0; seen <= all.size(); ++seen) {
    std::vector<std::string> names;
    int entries = 0;
    std::string printed;
    // "." and ".." are entries, too, anywhere among them.
    do {
      entriesRead = 0;
      readableEntries = entries++;
      failures = INT_MAX;
      printed = printedBy([&] { names = config.listConnectionFiles(); });
      failures = 0;
    } while (names.size() < seen);
    EXPECT_EQ(std::vector<std::string>(all.begin(), all.begin() + static_cast<long>(seen)), names);
    EXPECT_NE(std::string::npos, printed.find("Input/output error")) << printed;
    EXPECT_EQ(0U, printed.find("! Error: ")) << printed;
  }

  // One that succeeds is not taken again: the files, ".", ".." and the end are asked for once.
  readableEntries = INT_MAX;
  entriesRead = 0;
  failures = 1;
  EXPECT_EQ(all, config.listConnectionFiles());
  EXPECT_EQ(6, entriesRead);

  for (readableEntries = 0; readableEntries < 5; ++readableEntries) {
    entriesRead = 0;
    failures = 1;
    EXPECT_EQ("", printedBy([&] { EXPECT_EQ(all, config.listConnectionFiles()); }));
    EXPECT_EQ(0, failures);
  }
}

TEST(Listing, LinkThatCannotBeFollowedForAMomentIsStillAFile) {
  const TemporaryDirectory directory;
  const std::string folder = directory.makeDirectory("folder");
  writeBytes(directory.file("keyfile"), "[connection]\ntype=wifi\n");
  // Before and after some that lead nowhere, in whatever order a folder is listed.
  for (const char* name : {"a", "b", "c"})
    std::filesystem::create_symlink("nowhere", folder + "/" + name);
  std::filesystem::create_symlink(directory.file("keyfile"), folder + "/link");
  for (const char* name : {"x", "y", "z"})
    std::filesystem::create_symlink("nowhere", folder + "/" + name);
  setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", folder.c_str(), 1);
  auto& config = NetworkManagerConfig::getInstance();
  printedBy([&] { config.initialize(NetworkManagerConfig::DEBUG); });

  std::vector<std::string> names;
  for (const auto& [error, times] : {std::pair{ESTALE, 3}, std::pair{EACCES, 1}}) {
    strangers = times;
    strangersError = error;
    EXPECT_EQ("", printedBy([&] { names = config.listConnectionFiles(); }));
    EXPECT_EQ(std::vector<std::string>{"link"}, names);
    EXPECT_EQ(0, strangers);
  }

  // For good, it is none; that is nothing to complain about, and hides no other file.
  writeBytes(folder + "/file", "");
  strangers = INT_MAX;
  EXPECT_EQ("", printedBy([&] { names = config.listConnectionFiles(); }));
  EXPECT_EQ(std::vector<std::string>{"file"}, names);
  strangers = 0;

  // Nor does one more failure, wherever it is.
  readingError = EACCES;
  for (readableEntries = 0; readableEntries < 30; ++readableEntries) {
    entriesRead = 0;
    failures = 1;
    EXPECT_EQ("", printedBy([&] { names = config.listConnectionFiles(); }));
    std::sort(names.begin(), names.end());
    EXPECT_EQ((std::vector<std::string>{"file", "link"}), names) << readableEntries;
  }
  failures = 0;
  readingError = EIO;
}

}  // namespace
