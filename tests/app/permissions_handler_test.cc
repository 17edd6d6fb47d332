// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "app/inherited.h"
#include "support/bytes.h"
#include "support/child.h"
#include "support/printed.h"
#include "support/recorder.h"

namespace {

const std::string FAILED = "Failed to execute zor-network-permissions-handler: ";

class PermissionsHandler : public testing::Test {
 protected:
  Recorder recorder;
  int status = -1;  // of the last request's child process

  std::string request(const char* action, const char* argument) {
    return printedBy([&] {
      NetworkManagerConfig::getInstance().runPermissionsHandler(action, argument);
      status = waitForStatus(-1);
    });
  }
};

TEST_F(PermissionsHandler, GetsTheActionAndAnArgumentThatIsNotEmpty) {
  const struct {
    const char* action;
    const char* argument;
    std::string recorded;
  } cases[] = {
      {"unlock", "", "[unlock]"},
      {"finalize_wifi", "Hotspot", "[finalize_wifi][Hotspot]"},
      {"finalize_ethernet", " $(id) 'a' \"b\" *\n\xFF",
       "[finalize_ethernet][ $(id) 'a' \"b\" *\n\xFF]"},
  };
  for (const auto& wanted : cases) {
    EXPECT_EQ("", request(wanted.action, wanted.argument));
    EXPECT_EQ(RECORDER_STATUS, status);
    const std::vector<Call> calls = recorder.calls();
    ASSERT_EQ(1U, calls.size());
    EXPECT_BYTES_EQ(wanted.recorded, calls[0].arguments);
    EXPECT_TRUE(calls[0].circumstances.starts_with("zor-network-permissions-handler "));
  }
}

TEST_F(PermissionsHandler, InheritsWhatTheProgramWasGiven) {
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGTERM);
  for (const bool given : {false, true}) {
    const auto set = [&](bool on) {
      for (const int number : {SIGPIPE, SIGXFSZ}) std::signal(number, on ? SIG_IGN : SIG_DFL);
      sigprocmask(on ? SIG_BLOCK : SIG_UNBLOCK, &stop, nullptr);
    };
    EXPECT_EQ(0, inChild([&] {
                umask(0026);
                std::signal(SIGHUP, SIG_IGN);
                set(given);
                keepInherited();
                set(!given);
                clearenv();  // in which the recorder is found, and finds its folder
                request("unlock", "");
              }));
    EXPECT_EQ(std::string("zor-network-permissions-handler umask 26") +
                  (given ? " SIGPIPE ignored SIGXFSZ ignored" : "") + " SIGHUP ignored" +
                  (given ? " SIGTERM blocked" : ""),
              recorder.calls().at(0).circumstances);
  }
}

TEST_F(PermissionsHandler, IsNotWaitedFor) {
  std::filesystem::remove(recorder.program());
  std::filesystem::create_symlink("/bin/cat", recorder.program());
  EXPECT_EQ(0, inChild([] {
              std::array<int, 2> input{};
              ASSERT_EQ(0, pipe2(input.data(), O_CLOEXEC));
              dup2(input[0], STDIN_FILENO);
              NetworkManagerConfig::getInstance().runPermissionsHandler("-", "");
              close(input[1]);  // only now it can end
              EXPECT_EQ(0, waitForStatus(-1));
            }));
}

TEST_F(PermissionsHandler, IsReportedWhenItCannotBeExecuted) {
  writeBytes(recorder.program(), "#!/bin/sh\n");
  EXPECT_EQ(request("unlock", ""), "! " + FAILED + "Permission denied\n");
  EXPECT_EQ(1, status);
  std::filesystem::remove(recorder.program());
  EXPECT_EQ(request("finalize_wifi", "Hotspot"), "! " + FAILED + "No such file or directory\n");
  EXPECT_EQ(1, status);
}

TEST_F(PermissionsHandler, IsAnnouncedOnATerminalOnlyEvenIfItCannotBeExecuted) {
  std::filesystem::remove(recorder.program());
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // as it is where all is said on a terminal
    NetworkManagerConfig::getInstance().runPermissionsHandler("finalize_wifi", "Hotspot");
    _exit(waitForStatus(-1));
  }
  std::string text;
  // A terminal whose other side is closed gives an error instead of an end.
  for (char byte = 0; read(terminal, &byte, 1) > 0;) text += byte;
  close(terminal);
  EXPECT_EQ(1, waitForStatus(child));
  EXPECT_EQ("Calling permissions handler action: finalize_wifi\r\n" + FAILED +
                "No such file or directory\r\n",
            text);
}

TEST_F(PermissionsHandler, IsStartedWhenAProcessCanBeStartedAgain) {
  EXPECT_EQ(0, asOrdinaryUser([] {
              rlimit limit{};
              ASSERT_EQ(0, getrlimit(RLIMIT_NPROC, &limit));
              limit.rlim_cur = 0;
              static rlim_t before = limit.rlim_max;
              ASSERT_EQ(0, setrlimit(RLIMIT_NPROC, &limit));
              struct sigaction action {};
              action.sa_handler = [](int) {
                const rlimit enough{before, before};
                setrlimit(RLIMIT_NPROC, &enough);
              };
              sigaction(SIGALRM, &action, nullptr);
              const itimerval once{{0, 0}, {0, 10'000}};
              setitimer(ITIMER_REAL, &once, nullptr);
              NetworkManagerConfig::getInstance().runPermissionsHandler("unlock", "");
              EXPECT_TRUE(hasChild());
              waitForChildren();
            }));
}

TEST_F(PermissionsHandler, IsForgottenSilentlyWhenNoProcessCanBeStarted) {
  EXPECT_EQ(0, asOrdinaryUser([] {
              const ResourceLimit none(RLIMIT_NPROC, 0);
              EXPECT_EQ("", printedBy([] {
                          NetworkManagerConfig::getInstance().runPermissionsHandler("unlock", "");
                        }));
              EXPECT_FALSE(hasChild());
            }));
  EXPECT_EQ("", recorder.requests());
}

}  // namespace
