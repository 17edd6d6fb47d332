// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// What is left of files where one system call fails, once or for good.
#include "support/failing_calls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/shared_file.h"
#include "base/whole_file.h"
#include "support/bytes.h"
#include "support/child.h"
#include "support/files.h"

namespace {

using Names = std::vector<std::string>;

class FailingCalls : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("file");
  std::string temporary = directory.file("fil~");

  void SetUp() override { writeBytes(file, "old"); }

  void expectOnly(const std::string& content) {
    EXPECT_EQ(Names{"file"}, directory.names());
    EXPECT_BYTES_EQ(content, readBytes(file));
  }
};

TEST_F(FailingCalls, OnceLeaveWhatWasAskedFor) {
  for (const char* call : {"close", "fsync", "write"}) {
    writeBytes(file, "old");
    const FailingCall failing({call, EIO, 0, 1});
    EXPECT_TRUE(replaceFile(file, "new")) << call;
    expectOnly("new");
  }
  for (const std::string content : {"n", "longer"}) {
    for (const char* call : {"close", "fstat", "ftruncate", "pwrite", "write"}) {
      writeBytes(file, "old");
      const FailingCall failing({call, EIO, 0, 1});
      EXPECT_TRUE(overwriteFile(file, content)) << call;
      expectOnly(content);
    }
  }
  for (const char* call : {"close", "fstat", "ftruncate", "write"}) {
    writeBytes(file, "old");
    const FailingCall failing({call, EIO, 0, 1});
    EXPECT_TRUE(writeSharedFile(file, "n")) << call;
    expectOnly("n");
  }
  const FailingCall failing({"unlink", EIO, 0, 1});
  const FailingCall too({"rename", EIO, 0, 1});
  moveFile(file, temporary);
  removeFile(temporary);
  EXPECT_EQ(Names{}, directory.names());
}

TEST_F(FailingCalls, ForGoodLeaveTheOldFileOfWhatIsReplaced) {
  for (const char* call : {"close", "fsync", "write"}) {
    const FailingCall failing({call, ENOSPC});
    EXPECT_FALSE(replaceFile(file, "new")) << call;
    expectOnly("old");
  }
  const FailingCall failing({"unlink", EPERM});
  const FailingCall too({"rename", EXDEV});
  EXPECT_FALSE(replaceFile(file, "new"));
  EXPECT_BYTES_EQ("old", readBytes(file));
}

TEST_F(FailingCalls, ForGoodAreReported) {
  for (const char* call : {"close", "fstat", "ftruncate", "write"}) {
    const FailingCall failing({call, EIO});
    EXPECT_FALSE(overwriteFile(file, "new")) << call;
  }
  for (const char* call : {"fstat", "ftruncate"}) {
    writeBytes(file, "old");
    const FailingCall failing({call, EIO});
    EXPECT_FALSE(writeSharedFile(file, "new")) << call;
    expectOnly("old");
  }
  for (const char* call : {"close", "write"}) {
    const FailingCall failing({call, EIO});
    EXPECT_FALSE(writeSharedFile(file, "new")) << call;
  }
}

TEST_F(FailingCalls, OnceAreNoFailureThoughTheyAreNotLikelyToPass) {
  const FailingCall failing({"write", ENOSPC, 0, 1});
  EXPECT_TRUE(replaceFile(file, "new"));
  expectOnly("new");
}

TEST_F(FailingCalls, LeaveNothingOpenOrBehindWithoutStandardInput) {
  EXPECT_EQ(0, inChild([&] {
              close(STDIN_FILENO);
              {
                const FailingCall failing({"write", ENOSPC});
                EXPECT_FALSE(replaceFile(file, "new"));
              }
              expectOnly("old");
              EXPECT_EQ(-1, close(STDIN_FILENO));
            }));
}

TEST_F(FailingCalls, FileIsReadFromItsBeginningAgain) {
  const std::string content(10000, 'x');
  writeBytes(file, content);
  const FailingCall failing({"read", EIO, 1, 1});
  EXPECT_EQ(content, readFile(file));
}

TEST_F(FailingCalls, FileIsPrivateThoughOneFails) {
  for (const char* call : {"fchmod", "fstat"}) {
    chmod(file.c_str(), 0644);
    const FailingCall failing({call, EIO, 0, 1});
    EXPECT_TRUE(overwriteFile(file, "new")) << call;
    EXPECT_EQ(0600U, modeOf(file)) << call;
  }
}

TEST_F(FailingCalls, FileWithoutAKnownSizeIsReadAllTheSame) {
  const FailingCall failing({"fstat", EIO});
  EXPECT_EQ("old", readFile(file));
}

TEST_F(FailingCalls, FileOfAnImpossibleSizeCannotBeRead) {
  const ResourceLimit none(RLIMIT_FSIZE, RLIM_INFINITY);
  const int memory = memfd_create("hollow", MFD_CLOEXEC);
  ASSERT_EQ(0, ftruncate(memory, std::numeric_limits<off_t>::max()));
  errno = ENOENT;  // of something before; nothing has taken the file away
  EXPECT_EQ(std::nullopt, readFile("/proc/self/fd/" + std::to_string(memory)));
  EXPECT_EQ(ENOMEM, errno);
  close(memory);
}

TEST_F(FailingCalls, FileSystemNeedNotKnowHowToFlush) {
  const FailingCall failing({"fsync", EINVAL});
  EXPECT_TRUE(replaceFile(file, "new"));
  EXPECT_EQ(1, failing.calls());
  expectOnly("new");
}

TEST_F(FailingCalls, WhatCannotBeMovedIsCopied) {
  const std::string content(2000, 'x');
  const FailingCall failing({"rename", EXDEV});
  const std::filesystem::directory_iterator none;
  const auto descriptors = [&] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), none);
  };
  const auto before = descriptors();
  EXPECT_TRUE(replaceFile(file, content));
  EXPECT_EQ(before, descriptors());
  expectOnly(content);
  EXPECT_EQ(0600U, modeOf(file));
  {
    const FailingCall once({"open", EIO, 1, 1});  // the file that is to be the copy
    EXPECT_TRUE(replaceFile(file, "old"));
    expectOnly("old");
  }
  EXPECT_EQ(0, inChild([&] {
              close(STDIN_FILENO);  // whose place the new file takes
              EXPECT_TRUE(replaceFile(file, "new"));
              expectOnly("new");
            }));
}

TEST_F(FailingCalls, WhatFailsForAMomentIsMovedAllTheSame) {
  for (const int error : {EIO, ENOMEM, ENOSPC}) {
    writeBytes(file, "old");
    const FailingCall unmovable({"rename", error, 0, 1});
    const FailingCall failing({"open", error, 1, 1});  // the file that would be the copy
    EXPECT_TRUE(replaceFile(file, "new")) << error;
    expectOnly("new");
  }
  writeBytes(file, "old");
  const FailingCall unremovable({"unlink", EIO, 0, 1});
  const FailingCall unmovable({"rename", EIO, 0, 5});
  EXPECT_TRUE(replaceFile(file, "new"));
  expectOnly("new");
}

TEST_F(FailingCalls, WhatCannotBeMovedNorCopiedStays) {
  for (const char* call : {"close", "write"}) {
    const FailingCall unmovable({"rename", EXDEV});
    // The first one is about the temporary file itself.
    const FailingCall failing({call, ENOSPC, 1});
    EXPECT_FALSE(replaceFile(file, "new")) << call;
    EXPECT_BYTES_EQ("new", readBytes(temporary));
    EXPECT_EQ(Names{"fil~"}, directory.names()) << call;
  }
  for (const int after : {1, 2}) {  // the new file, and the temporary one to copy from
    removeFile(temporary);
    writeBytes(file, "old");
    const FailingCall unmovable({"rename", EXDEV});
    const FailingCall failing({"open", EMFILE, after});
    EXPECT_FALSE(replaceFile(file, "new")) << after;
    EXPECT_EQ(Names{"fil~"}, directory.names()) << after;
  }
  EXPECT_BYTES_EQ("new", readBytes(temporary));
}

TEST_F(FailingCalls, WhatCannotBeMovedIsGivenUpWhereTheOldFileStays) {
  const FailingCall unremovable({"unlink", EPERM, 0, 1});
  const FailingCall unmovable({"rename", EXDEV});
  EXPECT_FALSE(replaceFile(file, "new"));
  expectOnly("old");
}

TEST_F(FailingCalls, FileIsWrittenOnceThereIsADescriptorAgain) {
  const auto replace = [](const std::string& path) { return replaceFile(path, "new"); };
  const auto overwrite = [](const std::string& path) { return overwriteFile(path, "new"); };
  const auto share = [](const std::string& path) { return writeSharedFile(path, "new"); };
  for (const auto write : {+replace, +overwrite, +share}) {
    writeBytes(file, "old");
    const FailingCall failing({"open", EMFILE, 0, 3});
    EXPECT_TRUE(write(file));
    expectOnly("new");
  }
}

TEST_F(FailingCalls, NamesThatLeaveNoRoomForATemporaryOneAreRefused) {
  const std::string longest = directory.path + "/" + std::string(PATH_MAX, 'x');
  for (const std::string& path :
       {std::string(), directory.path + "/", directory.path + "/missing/", longest})
    EXPECT_FALSE(replaceFile(path, "new")) << path;
  expectOnly("old");

  std::string path = directory.path + "/";
  while (path.size() + 100 < PATH_MAX) path += std::string(49, 'd') + "/";
  std::filesystem::create_directories(path);
  path.append(PATH_MAX - 2 - path.size(), 'x');  // one of its bytes is the NUL at its end
  EXPECT_TRUE(replaceFile(path, "new"));
  EXPECT_BYTES_EQ("new", readBytes(path));
  EXPECT_FALSE(replaceFile(path + "x", "new"));  // it could have no "~" of its own
}

TEST_F(FailingCalls, WhatIsWrittenOverIsNotEmptyInBetween) {
  writeBytes(file, "older than new");
  const FailingCall failing({"ftruncate", EIO});
  EXPECT_FALSE(overwriteFile(file, "new\n"));
  expectOnly("new\n\n\n\n\n\n\n\n\n\n\n");
  const FailingCall too({"write", EIO});
  EXPECT_FALSE(overwriteFile(file, "n"));
  expectOnly("new\n\n\n\n\n\n\n\n\n\n\n");
  EXPECT_FALSE(overwriteFile(file, "new, and longer"));
  expectOnly("new\n\n\n\n\n\n\n\n\n\n\n\n");
}

TEST_F(FailingCalls, InterruptedWriteGoesOn) {
  const FailingCall failing({"write", EINTR, 0, 10});  // more often than anything is tried again
  EXPECT_TRUE(replaceFile(file, "new"));
  EXPECT_EQ(11, failing.calls());
  expectOnly("new");
}

TEST_F(FailingCalls, MissingFileIsRemovedAtOnce) {
  const FailingCall counted({"unlink", 0, 0, 0});
  removeFile(directory.file("missing"));
  EXPECT_EQ(1, counted.calls());
  expectOnly("old");
}

TEST_F(FailingCalls, FileThatCannotBeRemovedIsLeft) {
  const FailingCall failing({"unlink", EPERM});
  removeFile(file);
  EXPECT_EQ(2, failing.calls());
  expectOnly("old");
}

TEST_F(FailingCalls, FlushingIsAboutTheFileAndItsFolder) {
  for (const auto& [path, flushes] : {std::pair(file, 2), {directory.file("missing"), 1}}) {
    const FailingCall counted({"fsync", 0, 0, 0});
    flushToDisk(path);
    EXPECT_EQ(flushes, counted.calls()) << path;
  }
  // A failure changes nothing: the folder is flushed all the same.
  const FailingCall failing({"fsync", EACCES});
  flushToDisk(file);
  EXPECT_EQ(4, failing.calls());
  expectOnly("old");
}

TEST_F(FailingCalls, FlushingIsTriedAgain) {
  {
    const FailingCall failing({"fsync", EIO, 0, 1});
    flushToDisk(file);
    EXPECT_EQ(3, failing.calls());
  }
  const FailingCall failing({"open", EMFILE, 0, 1});
  const FailingCall counted({"fsync", 0, 0, 0});
  flushToDisk(file);
  EXPECT_EQ(2, counted.calls());
}

TEST_F(FailingCalls, CopyIsFlushedBeforeTheTemporaryFileGoes) {
  const FailingCall unmovable({"rename", EXDEV});
  const FailingCall failing({"fsync", EIO, 1, 1});
  EXPECT_FALSE(replaceFile(file, "new"));
  EXPECT_EQ(2, failing.calls());
  EXPECT_BYTES_EQ("new", readBytes(temporary));
}

TEST_F(FailingCalls, FileWhoseBytesCannotBeReadIsUnreadable) {
  writeBytes(directory.file("empty"), "");
  EXPECT_FALSE(isUnreadable(directory.file("empty")));
  for (const char* call : {"open", "pread"}) {
    for (const int error : {EPERM, EUCLEAN, EIO}) {
      const FailingCall failing({call, error});
      EXPECT_TRUE(isUnreadable(file)) << call << error;
    }
  }
  std::filesystem::create_symlink("link", directory.file("link"));
  EXPECT_FALSE(isUnreadable(directory.file("link"))) << "it leads to no file";
  EXPECT_FALSE(isUnreadable(directory.path));
  const std::string fifo = directory.file("fifo");
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  const int writer = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_FALSE(isUnreadable(fifo));
  close(writer);
}

TEST_F(FailingCalls, FileThatCannotBeReadKeepsItsName) {
  writeBytes(temporary, "moved");
  {
    const FailingCall failing({"open", EMFILE});
    EXPECT_TRUE(isUnreadable(file));
    EXPECT_TRUE(isUnreadable(directory.file("missing")));  // for all that is known
    moveFile(temporary, file);
  }
  EXPECT_BYTES_EQ("old", readBytes(file));
  EXPECT_FALSE(isUnreadable(file));
  EXPECT_FALSE(isUnreadable(directory.file("missing")));
}

}  // namespace
