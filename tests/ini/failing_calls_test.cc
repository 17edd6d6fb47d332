// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Writing where one system call fails, once or for good.
#include "support/failing_calls.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "ini/ini_fixture.h"
#include "support/child.h"

namespace {

using Names = std::vector<std::string>;
const std::string UNTOUCHED = "[s]\nk=old\n";

class FailingWrites : public IniTest {
 protected:
  void SetUp() override { writeBytes(file, UNTOUCHED); }

  void expectOnly(const std::string& content) {
    EXPECT_EQ(Names{"test.ini"}, directory.names());
    EXPECT_BYTES_EQ(content, readBytes(file));
  }
};

TEST_F(FailingWrites, OnceAreDoneAgain) {
  for (const char* call : {"close", "fsync", "lseek", "write"}) {
    writeBytes(file, UNTOUCHED);
    const FailingCall failing({call, EIO, 0, 1});
    EXPECT_EQ(1, put("s", "k", "longer")) << call;
    expectOnly("[s]\nk=longer\n");
  }
  for (const char* call : {"close", "pwrite"}) {
    writeBytes(file, UNTOUCHED);
    const FailingCall failing({call, EIO, 0, 1});
    EXPECT_EQ(1, put("s", "k", "new")) << call;
    expectOnly("[s]\nk=new\n");
  }
  for (const char* call : {"close", "write"}) {
    std::filesystem::remove(file);
    const FailingCall failing({call, EIO, 0, 1});
    EXPECT_EQ(1, put("s", "k", "new")) << call;
    expectOnly("[s]\nk=new\n");
  }
}

TEST_F(FailingWrites, WaitForADescriptor) {
  for (const char* value : {"longer", "new"}) {
    writeBytes(file, UNTOUCHED);
    const FailingCall failing({"open to write", EMFILE, 0, 3});
    EXPECT_EQ(1, put("s", "k", value));
    expectOnly(std::string("[s]\nk=") + value + "\n");
  }
  std::filesystem::remove(file);
  const FailingCall failing({"open to write", EMFILE, 0, 3});
  EXPECT_EQ(1, put("s", "k", "new"));
  expectOnly("[s]\nk=new\n");
}

TEST_F(FailingWrites, ForGoodLeaveTheFileAsItWas) {
  for (const char* call : {"close", "fsync", "lseek", "write"}) {
    const FailingCall failing({call, EIO});
    EXPECT_EQ(0, put("s", "k", "longer")) << call;
    EXPECT_EQ(0, put("t", "k", "v")) << call;
    expectOnly(UNTOUCHED);
  }
  for (const char* call : {"pread", "pwrite"}) {
    const FailingCall failing({call, EIO});
    EXPECT_EQ(0, put("s", "k", "new"));
    expectOnly(UNTOUCHED);
  }
}

TEST_F(FailingWrites, NeedNoStandardInput) {
  EXPECT_EQ(0, inChild([&] {
              close(STDIN_FILENO);
              EXPECT_EQ("old", get("s", "k"));
              EXPECT_EQ(1, put("s", "k", "new"));
              EXPECT_EQ(1, put("s", "k", "longer"));
              expectOnly("[s]\nk=longer\n");
              std::filesystem::remove(file);
              EXPECT_EQ(1, put("s", "k", "made"));
              expectOnly("[s]\nk=made\n");
              EXPECT_EQ(-1, close(STDIN_FILENO)) << "left open";
            }));
}

TEST_F(FailingWrites, LeaveNothingOfAFileThatWasMissing) {
  for (const char* call : {"close", "write"}) {
    std::filesystem::remove(file);
    const FailingCall failing({call, EIO});
    EXPECT_EQ(0, put("s", "k", "new")) << call;
    EXPECT_EQ(Names{}, directory.names());
  }
}

TEST_F(FailingWrites, ReplaceAFileThatWasMissingBefore) {
  const FailingCall missing({"open", ENOENT, 0, 1});
  EXPECT_EQ(1, put("s", "k", "n"));
  expectOnly("[s]\nk=n\n");
}

TEST_F(FailingWrites, LeaveAFileWhoseNameIsNotKnown) {
  std::filesystem::remove(file);
  const FailingCall failing({"write", EIO});
  const FailingCall nameless({"realpath", ENOMEM});
  EXPECT_EQ(0, put("s", "k", "new"));
  expectOnly("");
}

}  // namespace
