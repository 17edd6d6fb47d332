// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/keyfile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/bytes.h"
#include "support/child.h"
#include "support/files.h"
#include "support/printed.h"

using namespace std::string_literals;

namespace {

/** What happens while the code pauses. */
std::function<void()> inThePause;

}  // namespace

/** In place of the C library's: it may be our code that calls it, or the C++ library. */
extern "C" int nanosleep(const timespec* wanted, timespec* left) {
  if (inThePause) inThePause();
  errno = clock_nanosleep(CLOCK_MONOTONIC, 0, wanted, left);
  return errno == 0 ? 0 : -1;
}

namespace {

class KeyfileQuotes : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("wlan0.nmconnection");

  void removeQuotes() {
    EXPECT_EQ("", printedBy([&] { removeKeyfileValueQuotes(file); }));
  }

  std::string cleaned(const std::string& bytes) {
    writeBytes(file, bytes);
    removeQuotes();
    return readBytes(file);
  }
};

TEST_F(KeyfileQuotes, AreRemovedFromTheFourKeys) {
  EXPECT_BYTES_EQ("group=ccmp;\npairwise=ccmp;\nproto=rsn;\npermissions=user:zor:;\n",
                  cleaned("group=\"ccmp;\"\npairwise=\"ccmp;\"\nproto=\"rsn;\"\n"
                          "permissions=\"user:zor:;\"\n"));
}

TEST_F(KeyfileQuotes, StayInOtherLines) {
  const std::string bytes =
      "[s]\n\npsk=\"a;b\"\nssid=\"\"\ngroup =\"x\"\nGROUP=\"x\"\nprot=\"x\"\n\xFF\"\0\"\r\n"s;
  EXPECT_BYTES_EQ(bytes, cleaned(bytes));
}

TEST_F(KeyfileQuotes, AreRemovedWhereverALineHoldsOneOfTheKeys) {
  EXPECT_BYTES_EQ("psk=a;group=\\b\nssid=xproto=\n; permissions=\nmypairwise=x\n",
                  cleaned("psk=\"a;group=\\\"b\"\nssid=\"x\"proto=\n; \"permissions=\n"
                          "mypairwise=\"x\"\n"));
}

TEST_F(KeyfileQuotes, EveryLineEndsInLineFeedAfterwards) {
  EXPECT_BYTES_EQ("a\n\nb\n", cleaned("a\n\nb"));
  EXPECT_BYTES_EQ("group=x\n", cleaned("group=\"x\""));
  EXPECT_BYTES_EQ("a\n\n", cleaned("a\n\n"));
  EXPECT_BYTES_EQ("\n", cleaned("\n"));
  EXPECT_BYTES_EQ("", cleaned(""));
}

TEST_F(KeyfileQuotes, LinesMayBeLong) {
  const std::string longText(100000, 'x');
  EXPECT_BYTES_EQ("group=" + longText + "\npsk=\"" + longText + "\"\n",
                  cleaned("group=\"" + longText + "\"\npsk=\"" + longText + "\"\n"));
}

TEST_F(KeyfileQuotes, MissingFileIsCreatedEmpty) {
  removeQuotes();
  EXPECT_BYTES_EQ("", readBytes(file));
  EXPECT_EQ(0600U, modeOf(file));
}

TEST_F(KeyfileQuotes, WrittenFileIsPrivate) {
  cleaned("psk=secret\n");
  EXPECT_EQ(0600U, modeOf(file));
}

TEST_F(KeyfileQuotes, FileIsReplacedOnlyWhereQuotesAreRemoved) {
  writeBytes(file, "psk=\"a;b\"\n");
  const ino_t inode = inodeOf(file);
  removeQuotes();
  EXPECT_EQ(inode, inodeOf(file));
  writeBytes(file, "proto=\"rsn;\"\n");
  removeQuotes();
  EXPECT_NE(inode, inodeOf(file));
  EXPECT_EQ((std::vector<std::string>{"wlan0.nmconnection"}), directory.names());
}

TEST_F(KeyfileQuotes, FileInAReadOnlyFolderIsWrittenOver) {
  writeBytes(file, "proto=\"rsn;\"\n");
  directory.giveToOrdinaryUser();
  chmod(directory.path.c_str(), 0500);
  EXPECT_EQ(0, asOrdinaryUser([&] { removeQuotes(); }));
  chmod(directory.path.c_str(), 0700);
  EXPECT_BYTES_EQ("proto=rsn;\n", readBytes(file));
}

TEST_F(KeyfileQuotes, FileIsReadAgainAfterThePause) {
  // It cannot be read for longer than reading is tried, and less long than that and the pause.
  const std::string hidden = file + ".hidden";
  writeBytes(file, "proto=\"rsn;\"\n");
  std::filesystem::rename(file, hidden);
  EXPECT_EQ(0, inChild([&] {
              static const std::string* names[2];
              names[0] = &hidden;
              names[1] = &file;
              struct sigaction action {};
              action.sa_handler = [](int) { rename(names[0]->c_str(), names[1]->c_str()); };
              sigaction(SIGALRM, &action, nullptr);
              const itimerval once{{0, 0}, {0, 25'000}};
              setitimer(ITIMER_REAL, &once, nullptr);
              removeQuotes();
            }));
  EXPECT_BYTES_EQ("proto=rsn;\n", readBytes(file));
}

TEST_F(KeyfileQuotes, UnwritableFileStaysAndUnreadableOneIsEmptied) {
  for (const auto& [mode, expected] :
       std::vector<std::pair<mode_t, std::string>>{{0400, "proto=\"rsn;\"\n"}, {0200, ""}}) {
    writeBytes(file, "proto=\"rsn;\"\n");
    directory.giveToOrdinaryUser();
    chmod(file.c_str(), mode);
    EXPECT_EQ(0, asOrdinaryUser([&] { removeQuotes(); }));
    chmod(file.c_str(), 0600);
    EXPECT_BYTES_EQ(expected, readBytes(file));
  }
}

TEST_F(KeyfileQuotes, FileThatMayBeReadableLaterStays) {
  writeBytes(file, "proto=\"rsn;\"\n");
  EXPECT_EQ(0, inChild([&] {
              const ResourceLimit none(RLIMIT_NOFILE, 0);
              // Readable again when it has been tried four times more, twice, with a pause between.
              inThePause = [pauses = 0]() mutable {
                rlimit some{};
                getrlimit(RLIMIT_NOFILE, &some);
                some.rlim_cur = 64;
                if (++pauses > 4 + 1 + 4) setrlimit(RLIMIT_NOFILE, &some);
              };
              removeKeyfileValueQuotes(file);
            }));
  EXPECT_BYTES_EQ("proto=\"rsn;\"\n", readBytes(file));
}

TEST_F(KeyfileQuotes, DirectoriesAndFifosAreLeftAlone) {
  std::filesystem::create_directory(file);
  removeQuotes();
  EXPECT_TRUE(std::filesystem::is_directory(file));
  file = directory.file("fifo");
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  EXPECT_EQ(0, inChild([&] { removeQuotes(); }));
  EXPECT_TRUE(std::filesystem::is_fifo(file));
}

TEST_F(KeyfileQuotes, PauseLiesBetweenReadingAndWriting) {
  writeBytes(file, "proto=\"rsn;\"\n");
  int pauses = 0;
  inThePause = [&] {
    ++pauses;
    EXPECT_BYTES_EQ("proto=\"rsn;\"\n", readBytes(file));
    writeBytes(file, "late=\"1\"\n");
  };
  removeQuotes();
  inThePause = nullptr;
  EXPECT_EQ(1, pauses);
  EXPECT_BYTES_EQ("proto=rsn;\n", readBytes(file));
}

TEST_F(KeyfileQuotes, PauseLasts50MillisecondsWhateverSignalsArrive) {
  using std::chrono::steady_clock;
  EXPECT_EQ(0, inChild([&] {
              // A signal every 5 ms, delivered to a handler, interrupts any sleep.
              struct sigaction action {};
              action.sa_handler = [](int) {};
              sigaction(SIGALRM, &action, nullptr);
              const itimerval often{{0, 5000}, {0, 5000}};
              setitimer(ITIMER_REAL, &often, nullptr);
              const auto start = steady_clock::now();
              removeKeyfileValueQuotes(file);
              EXPECT_LE(std::chrono::milliseconds(50), steady_clock::now() - start);
            }));
}

}  // namespace
