// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Files on a system that reads less than it is asked for, fails to read on, or has no memory left.
#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/whole_file.h"
#include "ini/ini_fixture.h"
#include "settings/keyfile.h"

namespace {

std::size_t mostAtATime = SIZE_MAX;  // bytes that one read gives
int readsThatWork = INT_MAX;         // until they fail
int readError = EIO;                 // what they fail with then
int pauseThatMends = INT_MAX;        // milliseconds, after which they work again
int paused = 0;                      // milliseconds in all; no pause takes any time here
bool renamingFails = false;          // and whatever reads after it
bool memoryIsUsedUp = false;

}  // namespace

// In the place of the C library's: read() is linked so, malloc() by its name.
extern "C" ssize_t __real_read(int descriptor, void* bytes, std::size_t size);
extern "C" ssize_t __wrap_read(int descriptor, void* bytes, std::size_t size) {
  if (readsThatWork-- > 0 || paused >= pauseThatMends)
    return __real_read(descriptor, bytes, std::min(size, mostAtATime));
  errno = readError;
  return -1;
}

extern "C" int __real_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to) {
  if (!renamingFails) return __real_rename(from, to);
  readsThatWork = 0;
  errno = EIO;
  return -1;
}

extern "C" int nanosleep(const timespec* time, timespec* /*rest*/) {
  paused += static_cast<int>(time->tv_nsec / 1'000'000);
  return 0;
}

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* malloc(std::size_t size) {
  if (!memoryIsUsedUp) return __libc_malloc(size);
  errno = ENOMEM;
  return nullptr;
}

namespace {

class SystemCalls : public IniTest {
 protected:
  void TearDown() override {
    mostAtATime = SIZE_MAX;
    readsThatWork = INT_MAX;
    readError = EIO;
    pauseThatMends = INT_MAX;
    paused = 0;
    renamingFails = false;
    memoryIsUsedUp = false;
  }

  /** Reading fails with an error, for a time. */
  void letReadingFail(int error, int milliseconds) {
    readsThatWork = 0;
    readError = error;
    pauseThatMends = milliseconds;
    paused = 0;
  }
};

TEST_F(SystemCalls, ShortReadsDoNotEndAFile) {
  const std::string before = "[s]\nfirst=1\n" + std::string(600, 'x') + "\nk=old\n[t]\nlast=2";
  const std::string after = "[s]\nfirst=1\n" + std::string(600, 'x') + "\nk=longer\n[t]\nlast=2";
  for (const std::size_t most : {1, 2, 7, 100, 511}) {
    mostAtATime = most;
    writeBytes(file, before);
    EXPECT_EQ("old", get("s", "k")) << most;
    EXPECT_EQ("2", get("t", "last")) << most;
    EXPECT_EQ(1, put("s", "k", "longer"));
    EXPECT_BYTES_EQ(after, readBytes(file));
  }
}

TEST_F(SystemCalls, ValueIsNotCutWhereReadingFails) {
  const std::string value(60, 'v');
  for (const std::size_t above : {0U, 480U, 980U, 4070U, 32740U}) {
    std::string filling;
    while (filling.size() < above) filling += "; filling\n";
    writeBytes(file, filling + "k=" + value + "\n" + filling);
    for (int reads = 0; reads < 80; ++reads) {
      readsThatWork = reads;
      const std::string found = get("", "k");
      EXPECT_TRUE(found == value || found == "<default>") << found << " after " << reads;
    }
    readsThatWork = INT_MAX;
    EXPECT_EQ(value, get("", "k"));
  }
}

TEST_F(SystemCalls, NothingChangesWhereReadingFails) {
  const std::string content = "[s]\n" + std::string(3000, 'x') + "\nk=old\n";
  writeBytes(file, content);
  int reads = 0;
  const auto putAfterReads = [&] {
    readsThatWork = reads++;
    const int result = put("s", "k", "longer");
    readsThatWork = INT_MAX;
    return result;
  };
  while (putAfterReads() == 0) {
    EXPECT_BYTES_EQ(content, readBytes(file));
    ASSERT_EQ(std::vector<std::string>{"test.ini"}, directory.names());
  }
  EXPECT_LT(10, reads);
  EXPECT_EQ("longer", get("s", "k"));
}

TEST_F(SystemCalls, WhatMayPassIsWaitedForUpToATenthOfASecond) {
  writeBytes(file, "[s]\nk=old\n");
  for (const int error : {EAGAIN, EINTR, EIO, EMFILE, ENFILE, ENOMEM, ESTALE}) {
    for (const int time : {1, 5, 20, 100}) {
      letReadingFail(error, time);
      EXPECT_EQ("old", get("s", "k")) << error;
      letReadingFail(error, time);
      EXPECT_EQ(1, ini_hassection("s", file.c_str())) << error;
    }
    letReadingFail(error, INT_MAX);
    EXPECT_EQ("<default>", get("s", "k"));
    EXPECT_EQ(100, paused) << error;
  }
  letReadingFail(EIO, 100);
  EXPECT_EQ(1, put("s", "k", "longer"));
  EXPECT_BYTES_EQ("[s]\nk=longer\n", readBytes(file));
}

TEST_F(SystemCalls, BrowsingGoesOnWhereItFailed) {
  const std::string content = "[s]\na=1\n" + std::string(1000, 'x') + "\nb=2\n[t]\nc=3\n";
  writeBytes(file, content);
  const ini_callback append = [](const char* section, const char* key, const char*, void* names) {
    static_cast<std::string*>(names)->append(section).append(".").append(key).append(" ");
    return 1;
  };
  for (int reads = 0; reads < 6; ++reads) {
    std::string names;
    letReadingFail(EIO, 20);
    readsThatWork = reads;
    EXPECT_EQ(1, ini_browse(append, &names, file.c_str()));
    EXPECT_EQ("s.a s.b t.c ", names) << reads;
  }
}

TEST_F(SystemCalls, WhatDoesNotPassIsNotWaitedFor) {
  writeBytes(file, "[s]\nk=old\n");
  for (const int error : {EACCES, EISDIR, EINVAL}) {
    letReadingFail(error, INT_MAX);
    EXPECT_EQ("<default>", get("s", "k"));
    EXPECT_EQ(0, put("s", "k", "longer"));
    EXPECT_EQ(0, paused) << error;
  }
}

TEST_F(SystemCalls, QuotesAreNotRemovedWhereReadingFails) {
  const std::string content = "permissions=\"user:zor:;\"\npsk=kept\n";
  writeBytes(file, content);
  for (const int error : {EIO, EPERM, EUCLEAN, ETIMEDOUT}) {
    letReadingFail(error, INT_MAX);
    removeKeyfileValueQuotes(file);
    readsThatWork = INT_MAX;
    EXPECT_BYTES_EQ(content, readBytes(file)) << error;
  }
}

TEST_F(SystemCalls, WhatCannotBeMovedNorCopiedStaysWhole) {
  writeBytes(file, "[s]\nk=old\n");
  renamingFails = true;
  EXPECT_EQ(1, put("s", "k", "longer")) << "whether it was moved is not told";
  EXPECT_EQ(std::vector<std::string>{"test.in~"}, directory.names());
  EXPECT_BYTES_EQ("[s]\nk=longer\n", readBytes(temporary));
}

TEST_F(SystemCalls, FileThatDoesNotFitIntoMemoryCannotBeRead) {
  writeBytes(file, "[s]\nk=old, and longer than what needs no memory\n");
  memoryIsUsedUp = true;
  const bool read = readFile(file).has_value();
  memoryIsUsedUp = false;
  EXPECT_FALSE(read);
  EXPECT_EQ(100, paused);
}

TEST_F(SystemCalls, NoMemoryIsNeeded) {
  writeBytes(file, "[s]\nk=old\n");
  memoryIsUsedUp = true;
  const int changed = ini_puts("s", "k", "longer", file.c_str());
  char buffer[16];
  const int length = ini_gets("s", "k", "", buffer, sizeof buffer, file.c_str());
  memoryIsUsedUp = false;
  EXPECT_EQ(1, changed);
  EXPECT_EQ(6, length);
  EXPECT_EQ(std::vector<std::string>{"test.ini"}, directory.names());
}

}  // namespace
