// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ini/ini_fixture.h"
#include "support/child.h"

namespace {

using Strings = std::vector<std::string>;

const std::string ORIGINAL = "[s]\nk=old\n";

class Failures : public IniTest {
 protected:
  /** No kind of change works, and none leaves a trace. */
  void expectNoChange() {
    const Strings before = directory.names();
    EXPECT_EQ(0, put("s", "k", "new")) << "same length";
    EXPECT_EQ(0, put("s", "k", "longer"));
    EXPECT_EQ(0, put("s", "other", "v"));
    EXPECT_EQ(0, put("t", "k", "v"));
    EXPECT_EQ(0, put("s", "k", nullptr));
    EXPECT_EQ(0, put("s", nullptr, nullptr));
    EXPECT_EQ(before, directory.names());
  }

  void expectOriginal() const { EXPECT_BYTES_EQ(ORIGINAL, readBytes(file)); }
};

// ---- Things that are no files

TEST_F(Failures, DirectoryInPlaceOfTheFile) {
  std::filesystem::create_directory(file);
  EXPECT_EQ("<default>", get("s", "k"));
  EXPECT_EQ(0, ini_hassection("s", file.c_str()));
  EXPECT_EQ(0, put("s", "k", "v"));
  EXPECT_EQ(0, put("s", nullptr, nullptr));
  EXPECT_TRUE(std::filesystem::is_directory(file));
  EXPECT_EQ(Strings{"test.ini"}, directory.names());
}

TEST_F(Failures, FifoInPlaceOfTheFileIsNotWaitedFor) {
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  EXPECT_EQ(0, inChild([&] {
              EXPECT_EQ("<default>", get("s", "k"));
              EXPECT_EQ(0, ini_hassection("s", file.c_str()));
              EXPECT_EQ(1, put("s", "k", nullptr));
              EXPECT_EQ(1, put("s", "k", "v")) << "it is replaced like an empty file";
              EXPECT_EQ("v", get("s", "k"));
            }));
  EXPECT_EQ(Strings{"test.ini"}, directory.names());
}

TEST_F(Failures, FifoWithAWriterIsNotWaitedFor) {
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  EXPECT_EQ(0, inChild([&] {
              ASSERT_LE(0, open(file.c_str(), O_RDWR));
              EXPECT_EQ("<default>", get("s", "k"));
            }));
}

TEST_F(Failures, DanglingLinkIsAMissingFile) {
  std::filesystem::create_symlink("target.ini", file);
  EXPECT_EQ("<default>", get("s", "k"));
  EXPECT_EQ(1, put("s", "k", nullptr));
  EXPECT_EQ(Strings{"test.ini"}, directory.names());
  EXPECT_EQ(1, put("s", "k", "v"));
  EXPECT_BYTES_EQ("[s]\nk=v\n", readBytes(directory.file("target.ini")));
}

TEST_F(Failures, LinkToItselfCannotBeRead) {
  std::filesystem::create_symlink("test.ini", file);
  EXPECT_EQ("<default>", get("s", "k"));
  expectNoChange();
}

TEST_F(Failures, NamesThatNoFileCanHave) {
  for (const std::string& name : {std::string(), directory.file(std::string(300, 'n')),
                                  directory.file("missing/x.ini"), std::string(10000, 'n')}) {
    char buffer[16];
    EXPECT_EQ(3, ini_gets("s", "k", "def", buffer, sizeof buffer, name.c_str())) << name;
    EXPECT_EQ(0, ini_puts("s", "k", "v", name.c_str())) << name;
  }
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(Failures, NothingIsToBeDeletedBelowAFile) {
  writeBytes(file, ORIGINAL);
  const std::string below = file + "/x.ini";
  EXPECT_EQ(1, ini_puts("s", "k", nullptr, below.c_str()));
  EXPECT_EQ(1, ini_puts("s", nullptr, nullptr, below.c_str()));
  EXPECT_EQ(0, ini_puts("s", "k", "v", below.c_str()));
  expectOriginal();
}

TEST_F(Failures, NameWithoutRoomForATemporaryOne) {
  file = directory.file(std::string(254, 'n') + "~");
  writeBytes(file, ORIGINAL);
  EXPECT_EQ(0, put("s", "k", "longer"));
  expectOriginal();
}

TEST_F(Failures, TemporaryNameIsTaken) {
  writeBytes(file, ORIGINAL);
  std::filesystem::create_directory(temporary);
  EXPECT_EQ(0, put("s", "k", "longer"));
  EXPECT_EQ(1, put("s", "k", "new")) << "needs no temporary file";
  EXPECT_BYTES_EQ("[s]\nk=new\n", readBytes(file));
}

// ---- Rights

TEST_F(Failures, UnreadableFileIsNotTakenForAMissingOne) {
  for (const mode_t mode : {0000, 0200}) {
    writeBytes(file, ORIGINAL);
    directory.giveToOrdinaryUser();
    ASSERT_EQ(0, chmod(file.c_str(), mode));
    EXPECT_EQ(0, asOrdinaryUser([&] {
                EXPECT_EQ("<default>", get("s", "k"));
                expectNoChange();
              }));
    EXPECT_EQ(mode, modeOf(file));
    ASSERT_EQ(0, chmod(file.c_str(), 0600));
    expectOriginal();
  }
}

TEST_F(Failures, ReadOnlyDirectory) {
  writeBytes(file, ORIGINAL);
  directory.giveToOrdinaryUser();
  ASSERT_EQ(0, chmod(directory.path.c_str(), 0500));
  EXPECT_EQ(0, asOrdinaryUser([&] {
              EXPECT_EQ(0, put("s", "k", "longer"));
              EXPECT_EQ(0, put("s", "k", nullptr));
              expectOriginal();
              EXPECT_EQ(0, ini_puts("s", "k", "v", directory.file("new.ini").c_str()));
              EXPECT_EQ(1, put("s", "k", "new")) << "the file itself can be written";
            }));
  EXPECT_BYTES_EQ("[s]\nk=new\n", readBytes(file));
  EXPECT_EQ(Strings{"test.ini"}, directory.names());
}

TEST_F(Failures, ReadOnlyFileIsReplacedButNotPatched) {
  writeBytes(file, ORIGINAL);
  directory.giveToOrdinaryUser();
  ASSERT_EQ(0, chmod(file.c_str(), 0400));
  EXPECT_EQ(0, asOrdinaryUser([&] {
              EXPECT_EQ(0, put("s", "k", "new"));
              expectOriginal();
              EXPECT_EQ(1, put("s", "k", "longer"));
            }));
  EXPECT_BYTES_EQ("[s]\nk=longer\n", readBytes(file));
  EXPECT_EQ(0600U, modeOf(file));
}

TEST_F(Failures, NoDescriptorLeft) {
  writeBytes(file, ORIGINAL);
  {
    const ResourceLimit none(RLIMIT_NOFILE, 0);
    EXPECT_EQ(0, put("s", "k", "longer"));
  }
  expectOriginal();
}

// ---- Full disks

TEST_F(Failures, FailedWriteLeavesTheFileAsItWas) {
  const std::string original = ORIGINAL + std::string(20000, '\n');
  for (const rlim_t size : {0U, 1U, 4096U, 4097U, 20000U}) {
    writeBytes(file, original);
    {
      const ResourceLimit limit(RLIMIT_FSIZE, size);
      EXPECT_EQ(0, put("s", "k", "longer"));
      EXPECT_EQ(0, put("t", "k", "v"));
    }
    EXPECT_BYTES_EQ(original, readBytes(file));
    EXPECT_EQ(Strings{"test.ini"}, directory.names());
  }
}

TEST_F(Failures, FailedPatchLeavesTheFileAsItWas) {
  writeBytes(file, ORIGINAL);
  for (rlim_t size = 0; size < ORIGINAL.size(); ++size) {
    {
      const ResourceLimit limit(RLIMIT_FSIZE, size);
      EXPECT_EQ(0, put("s", "k", "new"));
    }
    expectOriginal();
  }
}

TEST_F(Failures, FailedCreationLeavesNothing) {
  const ResourceLimit limit(RLIMIT_FSIZE, 3);
  EXPECT_EQ(0, put("s", "k", "v"));
  EXPECT_TRUE(directory.names().empty());
  std::filesystem::create_symlink("target.ini", file);
  EXPECT_EQ(0, put("s", "k", "v"));
  EXPECT_EQ(Strings{"test.ini"}, directory.names()) << "the link was there before";
}

/** Mounts a disk of four pages that this process alone sees. */
bool mountTinyDisk(const std::string& path) {
  const auto mountIt = [&] {
    // Where this is refused (the root of a chroot is no mount point), unmounting has to do.
    (void)mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    return mount("none", path.c_str(), "tmpfs", 0, "size=16k,mode=0700") == 0;
  };
  if (unshare(CLONE_NEWNS) == 0) return mountIt();
  const std::string user = "0 " + std::to_string(geteuid()) + " 1";
  const std::string group = "0 " + std::to_string(getegid()) + " 1";
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << user;
  std::ofstream("/proc/self/gid_map") << group;
  return mountIt();
}

TEST_F(Failures, FullDisk) {
  constexpr int NO_MOUNT = 77;
  const std::string disk = directory.makeDirectory("disk");
  const int status = inChild([&] {
    if (!mountTinyDisk(disk)) _exit(NO_MOUNT);
    file = disk + "/test.ini";
    const std::string original = ORIGINAL + std::string(3000, '\n');
    writeBytes(file, original);
    std::ofstream filler(disk + "/filler");
    while (filler.write("0123456789abcdef", 16).flush()) continue;
    filler.close();

    EXPECT_EQ(0, put("s", "k", "longer"));
    EXPECT_EQ(0, put("t", "k", "v"));
    EXPECT_EQ(0, ini_puts("s", "k", "v", (disk + "/new.ini").c_str()));
    EXPECT_BYTES_EQ(original, readBytes(file));
    EXPECT_EQ((Strings{"filler", "test.ini"}), namesIn(disk));
    EXPECT_EQ(1, put("s", "k", "new")) << "a patch needs no more room";
    umount2(disk.c_str(), MNT_DETACH);
  });
  if (status == NO_MOUNT) GTEST_SKIP() << "neither root nor user namespaces";
  EXPECT_EQ(0, status);
}

// ---- Privacy

TEST_F(Failures, WrittenFilesArePrivateWhateverTheUmask) {
  for (const mode_t mask : {0000, 0022, 0777}) {
    EXPECT_EQ(0, inChild([&] {
                umask(mask);
                EXPECT_EQ(1, put("s", "k", "created"));
                EXPECT_EQ(0600U, modeOf(file));
                chmod(file.c_str(), 0644);
                EXPECT_EQ(1, put("s", "k", "rewritten"));
                EXPECT_EQ(0600U, modeOf(file));
                chmod(file.c_str(), 0644);
                EXPECT_EQ(1, put("s", "k", "PATCHED--"));
                EXPECT_EQ(0600U, modeOf(file));
                std::filesystem::remove(file);
              }));
  }
}

TEST_F(Failures, LeftoverTemporaryFileDoesNotGetThePassword) {
  writeBytes(file, ORIGINAL);
  writeBytes(temporary, "leftover");
  std::filesystem::create_hard_link(temporary, directory.file("spy"));
  EXPECT_EQ(1, put("s", "k", "password"));
  EXPECT_BYTES_EQ("leftover", readBytes(directory.file("spy")));
  EXPECT_EQ(0600U, modeOf(file));
  EXPECT_EQ((Strings{"spy", "test.ini"}), directory.names()) << "it was in the way";
}

TEST_F(Failures, LinkUnderTheTemporaryNameIsNotFollowed) {
  writeBytes(file, ORIGINAL);
  writeBytes(directory.file("victim"), "victim");
  std::filesystem::create_symlink("victim", temporary);
  EXPECT_EQ(1, put("s", "k", "password"));
  EXPECT_BYTES_EQ("victim", readBytes(directory.file("victim")));
  EXPECT_EQ((Strings{"test.ini", "victim"}), directory.names());
}

}  // namespace
