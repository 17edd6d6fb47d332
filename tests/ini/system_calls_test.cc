// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Files on a system that reads less than it is asked for, fails to read on, or has no memory left.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ini/ini_fixture.h"

namespace {

std::size_t mostAtATime = SIZE_MAX;  // bytes that one read gives
int readsThatWork = INT_MAX;         // until they fail for good
bool memoryIsUsedUp = false;

}  // namespace

// In the place of the C library's: read() is linked so, malloc() by its name.
extern "C" ssize_t __real_read(int descriptor, void* bytes, std::size_t size);
extern "C" ssize_t __wrap_read(int descriptor, void* bytes, std::size_t size) {
  if (readsThatWork-- > 0) return __real_read(descriptor, bytes, std::min(size, mostAtATime));
  errno = EIO;
  return -1;
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
    memoryIsUsedUp = false;
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
