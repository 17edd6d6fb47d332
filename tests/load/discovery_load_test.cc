// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "app/NetworkManagerConfig.h"
#include "load/cost.h"
#include "support/files.h"
#include "support/printed.h"

namespace {

constexpr int FILES = 1'000;

/** Folders of a thousand and of ten thousand keyfiles, all of another type. */
class DiscoveryLoad : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string small = directory.makeDirectory("small");
  std::string large = directory.makeDirectory("large");
  NetworkManagerConfig& config = NetworkManagerConfig::getInstance();

  void SetUp() override {
    fill(small, FILES);
    fill(large, 10 * FILES);
  }
  ~DiscoveryLoad() override { unsetenv("ZOR_NETWORKMANAGER_DEBUG_PATH"); }

  static void fill(const std::string& folder, int files) {
    for (int i = 0; i < files; ++i)
      writeBytes(
          folder + "/connection " + std::to_string(i) + ".nmconnection",
          "[connection]\nid=" + std::to_string(i) + "\ntype=bridge\n\n[ipv4]\nmethod=auto\n");
  }

  std::string initializeIn(const std::string& folder) const {
    setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", folder.c_str(), 1);
    return printedBy([&] { config.initialize(NetworkManagerConfig::DEBUG); });
  }

  std::function<void()> search(const std::string& folder) const {
    return [this, folder] {
      EXPECT_EQ("NetworkManagerDirectoryPath: " + folder +
                    "\n"
                    "No Ethernet Connection Exists\n"
                    "Ethernet Connection Path: \n"
                    "No Wifi Connection Exists\n"
                    "Wifi Connection Path: \n",
                initializeIn(folder));
    };
  }
};

TEST_F(DiscoveryLoad, FindsTheOneOfEachTypeAmongTenThousand) {
  const std::string ethernet = large + "/the wired one";
  const std::string wifi = large + "/the wireless one";
  writeBytes(ethernet, "[connection]\ntype=ethernet\n");
  writeBytes(wifi, "[connection]\ntype=wifi\n");
  EXPECT_EQ("NetworkManagerDirectoryPath: " + large +
                "\n"
                "Ethernet Connection Path: " +
                ethernet +
                "\n"
                "Wifi Connection Path: " +
                wifi + "\n",
            initializeIn(large));
  EXPECT_EQ(10U * FILES + 2, config.listConnectionFiles().size());
}

TEST_F(DiscoveryLoad, CostGrowsWithTheNumberOfFiles) {
  const Cost one = costOf(search(small));
  const Cost ten = costOf(search(large));
  expectLinear(one, ten);
  expectLinearTime(search(small), search(large));
  EXPECT_EQ(0, ten.descriptorsLeftOpen);
  // The names are in memory, and nothing of the files.
  constexpr int BYTES_FOR_A_NAME = 256;
  EXPECT_LE(ten.kilobytes,
            one.kilobytes + 10 * FILES * BYTES_FOR_A_NAME / 1024 + NOISE_IN_KILOBYTES);
}

TEST_F(DiscoveryLoad, KeepsNothingOfTheSearch) {
  search(large)();
  const long blocks = blocksInUse();
  const int descriptors = countDescriptors();
  for (int i = 0; i < 3; ++i) search(large)();
  EXPECT_EQ(blocks, blocksInUse());
  EXPECT_EQ(descriptors, countDescriptors());
}

}  // namespace
