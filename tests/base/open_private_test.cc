// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/open_private.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/shared_file.h"
#include "base/whole_file.h"
#include "support/bytes.h"
#include "support/child.h"
#include "support/files.h"

namespace {

class OpenedFiles : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("file");
};

TEST_F(OpenedFiles, AreNotPassedOnToAnotherProgram) {
  const int descriptor = openPrivate(file.c_str(), O_WRONLY | O_CREAT);
  EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
  close(descriptor);
}

TEST_F(OpenedFiles, DoNotBecomeTheControllingTerminal) {
  int master = -1;
  int slave = -1;
  std::string name(100, '\0');
  ASSERT_EQ(0, openpty(&master, &slave, name.data(), nullptr, nullptr));
  EXPECT_EQ(0, inChild([&] {
              setsid();
              EXPECT_LE(0, openPrivate(name.c_str(), O_RDWR));
              (void)writeSharedFile(name.c_str(), "");
              EXPECT_EQ(-1, open("/dev/tty", O_RDWR));
              EXPECT_EQ(ENXIO, errno);
            }));
  close(slave);
  close(master);
}

TEST_F(OpenedFiles, MayTakeThePlaceOfStandardInput) {
  writeBytes(file, "old");
  chmod(file.c_str(), 0644);
  const int before = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  EXPECT_EQ("old", readFile(file));
  EXPECT_TRUE(overwriteFile(file, "written"));
  EXPECT_EQ("written", readFile(file));
  EXPECT_EQ(0600U, modeOf(file));
  EXPECT_TRUE(replaceFile(file, "replaced"));
  EXPECT_EQ("replaced", readFile(file));
  EXPECT_TRUE(overwriteFile(file, "cut"));
  EXPECT_EQ("cut", readFile(file));
  EXPECT_TRUE(writeSharedFile(file, "shared"));
  EXPECT_EQ("shared", readFile(file));
  EXPECT_FALSE(isUnreadable(file));
  flushToDisk(file);
  EXPECT_EQ(-1, fcntl(STDIN_FILENO, F_GETFD)) << "left open";
  dup2(before, STDIN_FILENO);
  close(before);
}

}  // namespace
