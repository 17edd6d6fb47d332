// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/shared_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/bytes.h"
#include "support/child.h"
#include "support/files.h"

namespace {

class SharedFile : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("record");
  std::string other = directory.file("other");
};

TEST_F(SharedFile, IsWrittenOverAnOlderOne) {
  for (const char* bytes : {"a\r\n\xFF", "a longer one than before", "short", ""}) {
    EXPECT_TRUE(writeSharedFile(file, bytes));
    EXPECT_BYTES_EQ(bytes, readBytes(file));
  }
}

TEST_F(SharedFile, IsAsTheUmaskSaysAndKeepsItsMode) {
  EXPECT_EQ(0, inChild([&] {
              umask(0);
              EXPECT_TRUE(writeSharedFile(other, "record"));
              EXPECT_EQ(0666U, modeOf(other));
              umask(0027);
              EXPECT_TRUE(writeSharedFile(file, "record"));
              EXPECT_EQ(0640U, modeOf(file));
              chmod(file.c_str(), 0604);
              EXPECT_TRUE(writeSharedFile(file, "record"));
              EXPECT_EQ(0604U, modeOf(file));
            }));
}

TEST_F(SharedFile, IsNoLink) {
  writeBytes(other, "mine");
  ASSERT_EQ(0, symlink(other.c_str(), file.c_str()));
  EXPECT_FALSE(writeSharedFile(file, "x"));
  EXPECT_BYTES_EQ("mine", readBytes(other));
  ASSERT_EQ(0, unlink(other.c_str()));
  EXPECT_FALSE(writeSharedFile(file, "x"));
  EXPECT_FALSE(exists(other));
}

TEST_F(SharedFile, HasNoSecondName) {
  writeBytes(other, "mine");
  ASSERT_EQ(0, link(other.c_str(), file.c_str()));
  EXPECT_FALSE(writeSharedFile(file, "x"));
  EXPECT_BYTES_EQ("mine", readBytes(other));
}

TEST_F(SharedFile, IsNoFifo) {
  ASSERT_EQ(0, mkfifo(file.c_str(), 0666));
  EXPECT_EQ(0, inChild([&] {
              EXPECT_FALSE(writeSharedFile(file, "x"));
              const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
              EXPECT_FALSE(writeSharedFile(file, "x"));
              char byte = 0;
              EXPECT_EQ(0, read(reader, &byte, 1));
            }));
}

TEST_F(SharedFile, IsNeitherFolderNorDevice) {
  EXPECT_FALSE(writeSharedFile(directory.path, "x"));
  EXPECT_FALSE(writeSharedFile("/dev/null", "x"));
}

TEST_F(SharedFile, IsNotOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  writeBytes(file, "theirs");
  ASSERT_EQ(0, chmod(file.c_str(), 0666));
  ASSERT_EQ(0, chmod(directory.path.c_str(), 0755));
  EXPECT_EQ(0, asOrdinaryUser([&] {
              EXPECT_EQ(0, access(file.c_str(), W_OK));
              EXPECT_FALSE(writeSharedFile(file, "x"));
            }));
  EXPECT_BYTES_EQ("theirs", readBytes(file));
}

TEST_F(SharedFile, IsReportedWhenItCannotBeMade) {
  EXPECT_FALSE(writeSharedFile(directory.file("missing/record"), "x"));
  EXPECT_FALSE(writeSharedFile("", "x"));
}

TEST_F(SharedFile, IsReportedOnAFullDisk) {
  const ResourceLimit size(RLIMIT_FSIZE, 10);
  EXPECT_TRUE(writeSharedFile(file, "12345"));
  EXPECT_FALSE(writeSharedFile(file, "123456789012"));
}

TEST_F(SharedFile, IsClosedAgain) {
  const auto nextDescriptor = [] {
    const int descriptor = dup(0);
    close(descriptor);
    return descriptor;
  };
  const int before = nextDescriptor();
  for (const std::string& path : {file, directory.path, std::string("/dev/null")})
    (void)writeSharedFile(path, "x");
  EXPECT_EQ(before, nextDescriptor());
}

}  // namespace
