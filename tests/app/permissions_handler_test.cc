// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "app/NetworkManagerConfig.h"
#include "support/capture.h"
#include "support/child.h"
#include "support/files.h"

namespace {

const std::string FAILED = "Failed to execute zor-network-permissions-handler: ";
const std::string STARTED = "Calling permissions handler action: ";

/** All that comes from a descriptor, until its other side is closed. */
std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 512> block{};
  // A terminal whose other side is closed gives an error instead of an end.
  for (ssize_t length = 0; (length = read(descriptor, block.data(), block.size())) > 0;)
    text.append(block.data(), static_cast<std::size_t>(length));
  close(descriptor);
  return text;
}

class PermissionsHandler : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string record = directory.file("record");
  std::function<void()> prepareCaller = [] {};

  void SetUp() override {
    setenv("PATH", directory.makeDirectory("bin").c_str(), 1);
    setenv("RECORD", record.c_str(), 1);
    unsetenv("RETURNED");
    std::signal(SIGHUP, SIG_DFL);  // ignored where the tests run in the background
  }

  std::string handler() const { return directory.file("bin/zor-network-permissions-handler"); }
  void install() const { std::filesystem::create_symlink(HANDLER_RECORDER, handler()); }

  [[noreturn]] void call(const char* action, const char* argument) const {
    prepareCaller();
    execl(HANDLER_CALLER, "handler-caller", action, argument, nullptr);
    _exit(127);
  }

  /** Requests an action in a fresh process whose two streams are pipes. */
  Output request(const char* action, const char* argument) const {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) return {};
    const pid_t caller = fork();
    if (caller == 0) {
      dup2(out[1], STDOUT_FILENO);
      dup2(err[1], STDERR_FILENO);
      call(action, argument);
    }
    close(out[1]);
    close(err[1]);
    Output output;
    output.out = readAll(out[0]);  // neither says more than fits into a pipe
    output.err = readAll(err[0]);
    EXPECT_EQ(0, waitForStatus(caller));
    return output;
  }

  /** The same on a pseudo-terminal, which shows both streams. */
  std::string requestOnTerminal(const char* action, const char* argument) const {
    int terminal = -1;
    const pid_t caller = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (caller == 0) call(action, argument);
    std::string text = readAll(terminal);
    EXPECT_EQ(0, waitForStatus(caller));
    return text;
  }
};

TEST_F(PermissionsHandler, GetsItsNameAndTheActionOnly) {
  install();
  prepareCaller = [] { umask(022); };
  for (const char* action : {"unlock", "rollback"}) {
    EXPECT_EQ(request(action, ""), (Output{"exit 0\n", ""}));
    EXPECT_EQ(std::string("<zor-network-permissions-handler><") + action + "> umask 22",
              readBytes(record));
  }
}

TEST_F(PermissionsHandler, GetsTheArgumentAsItIs) {
  install();
  prepareCaller = [] { umask(022); };
  request("finalize_wifi", "Hotspot");
  EXPECT_EQ("<zor-network-permissions-handler><finalize_wifi><Hotspot> umask 22",
            readBytes(record));
  request("finalize_ethernet", " $(id) 'a' \"b\" *\n\xFF");
  EXPECT_BYTES_EQ(
      "<zor-network-permissions-handler><finalize_ethernet>< $(id) 'a' \"b\" *\n\xFF> umask 22",
      readBytes(record));
}

TEST_F(PermissionsHandler, InheritsWhatTheProgramDidNotSet) {
  install();
  prepareCaller = [] {
    umask(0002);
    std::signal(SIGHUP, SIG_IGN);
  };
  request("unlock", "");
  EXPECT_EQ("<zor-network-permissions-handler><unlock> umask 2 SIGHUP ignored", readBytes(record));
}

TEST_F(PermissionsHandler, IsNotWaitedFor) {
  install();
  prepareCaller = [] { umask(022); };
  setenv("RETURNED", directory.file("returned").c_str(), 1);
  EXPECT_EQ(request("unlock", ""), (Output{"exit 0\n", ""}));
  EXPECT_EQ("<zor-network-permissions-handler><unlock> umask 22 caller went on", readBytes(record));
}

TEST_F(PermissionsHandler, MissingOneIsReportedOnceAndTheProgramGoesOn) {
  EXPECT_EQ(request("unlock", ""), (Output{"exit 1\n", FAILED + "No such file or directory\n"}));
  EXPECT_EQ(request("finalize_wifi", "Hotspot"),
            (Output{"exit 1\n", FAILED + "No such file or directory\n"}));
}

TEST_F(PermissionsHandler, OneThatCannotBeExecutedIsReported) {
  writeBytes(handler(), "#!/bin/sh\n");
  EXPECT_EQ(request("unlock", ""), (Output{"exit 1\n", FAILED + "Permission denied\n"}));
}

TEST_F(PermissionsHandler, TerminalShowsTheUnflushedLine) {
  install();
  EXPECT_EQ(STARTED + "unlock\r\nexit 0\r\n", requestOnTerminal("unlock", ""));
  std::filesystem::remove(handler());
  EXPECT_EQ(STARTED + "finalize_wifi\r\n" + FAILED + "No such file or directory\r\nexit 1\r\n",
            requestOnTerminal("finalize_wifi", "Hotspot"));
}

TEST_F(PermissionsHandler, RequestIsLostSilentlyWhenNoProcessCanBeStarted) {
  install();
  EXPECT_EQ(0, asOrdinaryUser([&] {
              const rlimit none{0, 0};
              ASSERT_EQ(0, setrlimit(RLIMIT_NPROC, &none));
              EXPECT_EQ(capture([] {
                          NetworkManagerConfig::getInstance().runPermissionsHandler("unlock", "");
                        }),
                        Output{});
              ASSERT_EQ(-1, wait(nullptr)) << "a child was started after all";
            }));
  EXPECT_FALSE(std::filesystem::exists(record));
}

}  // namespace
