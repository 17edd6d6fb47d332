// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/whole_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/child.h"
#include "support/files.h"

using namespace std::string_literals;

namespace {

class Files : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("file");
};

TEST_F(Files, KeepEveryByte) {
  const std::string bytes = "a\0\r\n\xFF"s + std::string(10000, 'x');
  EXPECT_TRUE(overwriteFile(file, bytes));
  EXPECT_BYTES_EQ(bytes, readBytes(file));
  EXPECT_BYTES_EQ(bytes, readFile(file).value());
  EXPECT_TRUE(overwriteFile(file, "short"));
  EXPECT_BYTES_EQ("short", readFile(file).value());
}

TEST_F(Files, AreForTheOwnerWhateverTheUmask) {
  for (const mode_t mask : {0000, 0022, 0777}) {
    EXPECT_EQ(0, inChild([&] {
                umask(mask);
                EXPECT_TRUE(overwriteFile(file, "psk"));
                EXPECT_EQ(0600U, modeOf(file));
                chmod(file.c_str(), 0644);
                EXPECT_TRUE(overwriteFile(file, "psk"));
                EXPECT_EQ(0600U, modeOf(file));
                unlink(file.c_str());
              }));
  }
}

TEST_F(Files, UnreadableOnesAreReported) {
  EXPECT_EQ(std::nullopt, readFile(file));
  EXPECT_EQ(std::nullopt, readFile(directory.path));
  EXPECT_EQ(std::nullopt, readFile(""));
}

TEST_F(Files, UnwritableOnesAreReported) {
  EXPECT_FALSE(overwriteFile(directory.path, "x"));
  EXPECT_FALSE(overwriteFile(directory.file("missing/file"), "x"));
  EXPECT_FALSE(overwriteFile("", "x"));
}

TEST_F(Files, FifosAreNotWaitedFor) {
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  EXPECT_EQ(0, inChild([&] {
              EXPECT_EQ(std::string(), readFile(file));
              EXPECT_FALSE(overwriteFile(file, "x"));
            }));
}

TEST_F(Files, OnlyRegularOnesGetAnotherMode) {
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  ASSERT_EQ(0, chmod(file.c_str(), 0644));
  const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_TRUE(overwriteFile(file, "x"));
  EXPECT_EQ(0644U, modeOf(file));
  close(reader);
}

TEST_F(Files, FullDiskIsReported) {
  const ResourceLimit size(RLIMIT_FSIZE, 10);
  EXPECT_TRUE(overwriteFile(file, "12345"));
  EXPECT_FALSE(overwriteFile(file, "123456789012"));
  EXPECT_FALSE(overwriteFile(file, std::string(100000, 'x')));
}

TEST_F(Files, ReplacedOnesArePrivateAndLeaveWhatALinkNames) {
  for (const mode_t mask : {0000, 0777}) {
    writeBytes(directory.file("target"), "theirs\n");
    std::filesystem::create_symlink("target", file);
    EXPECT_EQ(0, inChild([&] {
                umask(mask);
                EXPECT_TRUE(replaceFile(file, "first\n"));
              }));
    EXPECT_TRUE(replaceFile(file, "second\n"));
    EXPECT_BYTES_EQ("second\n", readBytes(file));
    EXPECT_EQ(0600U, modeOf(file));
    EXPECT_BYTES_EQ("theirs\n", readBytes(directory.file("target")));
    EXPECT_EQ((std::vector<std::string>{"file", "target"}), directory.names());
    std::filesystem::remove(file);
  }
}

TEST_F(Files, WhatCannotBeReplacedStays) {
  writeBytes(file, "old\n");
  {
    const ResourceLimit size(RLIMIT_FSIZE, 10);
    EXPECT_FALSE(replaceFile(file, "too long for the disk\n"));
  }
  EXPECT_BYTES_EQ("old\n", readBytes(file));
  EXPECT_FALSE(replaceFile(directory.path, "x"));
  EXPECT_FALSE(replaceFile(directory.file("missing/file"), "x"));
  ASSERT_EQ(0, mkfifo(directory.file("fifo").c_str(), 0600));
  EXPECT_FALSE(replaceFile(directory.file("fifo"), "x"));
  EXPECT_EQ((std::vector<std::string>{"fifo", "file"}), directory.names());
}

TEST_F(Files, MovedOnesTakeThePlaceOfFilesAndLinksOnly) {
  writeBytes(file, "moved");
  writeBytes(directory.file("target"), "theirs");
  writeBytes(directory.file("other"), "other");
  std::filesystem::create_symlink("target", directory.file("link"));
  ASSERT_EQ(0, mkfifo(directory.file("fifo").c_str(), 0600));
  for (const char* name : {"fifo", ".", "missing/file"}) moveFile(file, directory.file(name));
  moveFile("", directory.file("other"));
  for (const char* name : {"file", "new", "other", "link"}) {
    moveFile(file, directory.file(name));
    file = directory.file(name);
    EXPECT_BYTES_EQ("moved", readBytes(file));
  }
  EXPECT_EQ((std::vector<std::string>{"fifo", "link", "target"}), directory.names());
  EXPECT_BYTES_EQ("theirs", readBytes(directory.file("target")));
}

TEST_F(Files, LinkDoesNotTakeThePlaceOfWhatItLeadsTo) {
  writeBytes(file, "kept");
  for (const std::string& target : {std::string("file"), "./file"s, file}) {
    std::filesystem::create_symlink(target, directory.file("link"));
    moveFile(directory.file("link"), file);
    EXPECT_EQ(std::vector<std::string>{"file"}, directory.names()) << target;
    EXPECT_BYTES_EQ("kept", readBytes(file));
  }
  std::filesystem::create_symlink("other", directory.file("link"));
  moveFile(directory.file("link"), file);
  EXPECT_EQ(std::vector<std::string>{"file"}, directory.names());
  EXPECT_EQ("other", std::filesystem::read_symlink(file));
}

TEST_F(Files, OverwrittenOnesAreWhole) {
  EXPECT_TRUE(overwriteFile(file, "made\n"));
  EXPECT_BYTES_EQ("made\n", readBytes(file));
  EXPECT_EQ(0600U, modeOf(file));
  const ino_t inode = inodeOf(file);
  for (const std::string& bytes : {"longer than before\n"s, "short\n"s, ""s}) {
    EXPECT_TRUE(overwriteFile(file, bytes));
    EXPECT_BYTES_EQ(bytes, readBytes(file));
  }
  EXPECT_EQ(inode, inodeOf(file));
}

TEST_F(Files, OverwrittenOnesNeedNoRoomAndStayWithoutIt) {
  writeBytes(file, "old bytes!");
  const ResourceLimit size(RLIMIT_FSIZE, 10);
  EXPECT_FALSE(overwriteFile(file, "new bytes!!"));
  EXPECT_BYTES_EQ("old bytes!", readBytes(file));
  EXPECT_TRUE(overwriteFile(file, "new bytes\n"));
  EXPECT_BYTES_EQ("new bytes\n", readBytes(file));
  writeBytes(file, "shorter");
  EXPECT_FALSE(overwriteFile(file, "new bytes!!"));  // there is room for some of them
  EXPECT_BYTES_EQ("shorter", readBytes(file));
  EXPECT_TRUE(overwriteFile(file, "new bytes\n"));
  EXPECT_BYTES_EQ("new bytes\n", readBytes(file));
}

TEST_F(Files, DescriptorsAreClosedAgain) {
  const auto nextDescriptor = [] {
    const int descriptor = dup(0);
    close(descriptor);
    return descriptor;
  };
  ASSERT_EQ(0, mkfifo(directory.file("fifo").c_str(), 0600));
  EXPECT_EQ(0, inChild([&] {
              const int before = nextDescriptor();
              for (const std::string& path : {file, directory.path, directory.file("fifo")}) {
                (void)readFile(path);
                (void)overwriteFile(path, "x");
                (void)replaceFile(path, "x");
              }
              EXPECT_EQ(before, nextDescriptor());
            }));
}

}  // namespace
