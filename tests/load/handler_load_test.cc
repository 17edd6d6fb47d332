// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "load/cost.h"
#include "support/child.h"
#include "support/printed.h"
#include "support/recorder.h"

namespace {

constexpr int STARTS = 10'000 / REDUCTION;

/** How many child processes this one has, by name and state, which is Z for one that ended. */
std::map<std::string, int> childrenByState() {
  std::map<std::string, int> children;
  const std::string parent = std::to_string(getpid());
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(entry.path() / "stat");  // pid (name) state parent ...
    std::string line;
    if (!std::getline(file, line)) continue;
    const std::size_t open = line.find('(');
    const std::size_t close = line.rfind(')');
    if (line.compare(close + 4, parent.size() + 1, parent + " ") != 0) continue;
    ++children[line.substr(open + 1, close - open - 1) + line.substr(close + 1, 2)];
  }
  return children;
}

/** Waits, without reaping any, until no child runs any more. Returns whether it came to that. */
bool allEnded() {
  constexpr useconds_t STEP = 10'000;
  for (int i = 0; i < 3000; ++i, usleep(STEP)) {
    bool ended = true;
    for (const auto& [child, count] : childrenByState()) ended &= child.back() == 'Z';
    if (ended) return true;
  }
  return false;
}

class HandlerLoad : public testing::Test {
 protected:
  Recorder recorder;

  static void request(int times) {
    const NetworkManagerConfig& config = NetworkManagerConfig::getInstance();
    for (int i = 0; i < times; ++i) config.runPermissionsHandler("finalize_wifi", "Hotspot");
  }
};

TEST_F(HandlerLoad, TenThousandStartsLeaveOneEndedProcessEachAndNothingElse) {
  constexpr int NO_ROOM = 77;
  // What the requesting process leaves behind comes to us.
  ASSERT_EQ(0, prctl(PR_SET_CHILD_SUBREAPER, 1));
  const int status = inChild([] {
    alarm(0);
    EXPECT_EQ("", printedBy([] { request(1); }));
    const int descriptors = countDescriptors();
    const long blocks = blocksInUse();
    const long peak = peakKilobytes();

    EXPECT_EQ("", printedBy([] { request(STARTS - 1); }));
    EXPECT_LE(peakKilobytes(), peak + NOISE_IN_KILOBYTES);

    const pid_t probe = fork();
    if (probe < 0) _exit(NO_ROOM);  // so some of them were lost
    if (probe == 0) _exit(0);
    waitForStatus(probe);
    EXPECT_TRUE(allEnded());
    // The kernel cuts the name.
    EXPECT_EQ((std::map<std::string, int>{{"zor-network-per Z", STARTS}}), childrenByState());
    EXPECT_EQ(descriptors, countDescriptors());
    EXPECT_EQ(blocks, blocksInUse());
  });

  // They were executed, all of them, and go with the process that asked for them.
  std::map<int, int> statuses;
  for (int each = 0; wait(&each) > 0;) ++statuses[WEXITSTATUS(each)];
  if (status == NO_ROOM) GTEST_SKIP() << "this account may not have " << STARTS << " processes";
  EXPECT_EQ(0, status);
  EXPECT_EQ((std::map<int, int>{{RECORDER_STATUS, STARTS}}), statuses);
}

TEST_F(HandlerLoad, RequestsBeyondTheProcessLimitAreLostSilently) {
  constexpr int LIMIT = 100;
  EXPECT_EQ(0, asOrdinaryUser([&] {
              {  // what the first time keeps is not counted
                const ResourceLimit few(RLIMIT_NPROC, LIMIT);
                printedBy([&] { request(10 * LIMIT); });
              }
              while (wait(nullptr) > 0) continue;
              const int descriptors = countDescriptors();
              const long blocks = blocksInUse();
              {
                const ResourceLimit few(RLIMIT_NPROC, LIMIT);
                EXPECT_EQ("", printedBy([&] { request(10 * LIMIT); }));
                EXPECT_EQ(-1, fork());
              }
              EXPECT_EQ(descriptors, countDescriptors());
              EXPECT_EQ(blocks, blocksInUse());
              int started = 0;
              while (wait(nullptr) > 0) ++started;
              EXPECT_GE(LIMIT, started);  // fewer where this user has other processes

              // The next request is not lost, as soon as there is room.
              request(1);
              EXPECT_LT(0, wait(nullptr));
            }));
}

}  // namespace
