// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "base/whole_file.h"
#include "load/cost.h"
#include "settings/ethernet.h"
#include "settings/keyfile.h"
#include "settings/wifi.h"
#include "support/bytes.h"
#include "support/files.h"

namespace {

using Entries = std::vector<KeyfileEntry>;

/** What an access point, a client, a static and a dynamic save write, with values of two kinds. */
std::vector<Entries> savesOf(const std::string& id, const std::string& password) {
  WifiSettings wifi;
  wifi.deviceName = "wlan" + id;
  wifi.ssid = "network;" + id;
  wifi.password = password;
  wifi.channel = id;
  wifi.storedAddress = "10.42.0." + id + "/24,10.42.0.1";
  return {wifiKeyfileEntries(WIFI_AP_MODE, wifi), wifiKeyfileEntries(WIFI_CLIENT_MODE, wifi),
          ethernetKeyfileEntries(ETHERNET_STATIC_MODE, {wifi.storedAddress, "8.8.8." + id}),
          ethernetKeyfileEntries(ETHERNET_DYNAMIC_MODE, {})};
}

class SavesLoad : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string keyfile = directory.file("wlan0.nmconnection");
  const NetworkManagerConfig& config = NetworkManagerConfig::getInstance();

  void save(const Entries& entries) const {
    for (const auto& [section, key, value] : entries)
      EXPECT_EQ(1, config.writeIniString(section, key, value, keyfile));
    removeKeyfileValueQuotes(keyfile);
    flushToDisk(keyfile);
  }

  /** Saves twice of every kind, so that each changes what the one before wrote. */
  void saveAll() const {
    for (const Entries& entries : savesOf("7", "first password")) save(entries);
    for (const Entries& entries : savesOf("11", "another; password")) save(entries);
  }

  static constexpr int IN_A_ROUND = 8;
};

TEST_F(SavesLoad, AThousandLeaveTheSameFileAsAFew) {
  constexpr int ROUNDS = 1000 / IN_A_ROUND;
  saveAll();
  const std::string content = readBytes(keyfile);
  EXPECT_NE(std::string::npos, content.find("\npsk=\"another; password\"\n"));
  EXPECT_NE(std::string::npos, content.find("\nproto=rsn;\n"));
  const int descriptors = countDescriptors();
  const long blocks = blocksInUse();
  const long peak = peakKilobytes();
  const Pauses before = pauses();

  for (int i = 0; i < ROUNDS; ++i) saveAll();

  EXPECT_BYTES_EQ(content, readBytes(keyfile));
  EXPECT_EQ(std::vector<std::string>{"wlan0.nmconnection"}, directory.names());
  EXPECT_EQ(0600U, modeOf(keyfile));
  EXPECT_EQ(descriptors, countDescriptors());
  EXPECT_EQ(blocks, blocksInUse());
  EXPECT_LE(peakKilobytes(), peak + NOISE_IN_KILOBYTES);
  // Not slept here, but asked for by each of them.
  EXPECT_EQ(before.count + ROUNDS * IN_A_ROUND, pauses().count);
  EXPECT_EQ(before.nanoseconds + 50'000'000LL * ROUNDS * IN_A_ROUND, pauses().nanoseconds);
}

TEST_F(SavesLoad, EachCostsTheSame) {
  saveAll();
  const Cost one = costOf([&] { saveAll(); });
  for (int i = 0; i < 100; ++i) saveAll();
  const Cost later = costOf([&] { saveAll(); });
  EXPECT_EQ(one.bytes, later.bytes);
  EXPECT_EQ(one.calls, later.calls);
  EXPECT_EQ(one.allocations, later.allocations);
  EXPECT_EQ(one.allocations, one.releases);
}

TEST_F(SavesLoad, QuotesAreRemovedInTimeThatGrowsWithTheFile) {
  const auto clean = [&](int lines) {
    return [this, lines] {
      std::string content;
      for (int i = 0; i < lines; ++i) content += "proto=\"rsn;\"\nssid=\"a;b\"\n";
      ASSERT_TRUE(overwriteFile(keyfile, content));
      removeKeyfileValueQuotes(keyfile);
      content.clear();
      for (int i = 0; i < lines; ++i) content += "proto=rsn;\nssid=\"a;b\"\n";
      ASSERT_TRUE(content == readBytes(keyfile));
    };
  };
  constexpr int LINES = 50'000;
  expectLinear(costOf(clean(LINES)), costOf(clean(10 * LINES)));
  expectLinearTime(clean(LINES), clean(10 * LINES));
}

TEST_F(SavesLoad, QuotesAreRemovedWithTheFileInMemoryOnce) {
  constexpr long KILOBYTES = 50'000 / REDUCTION;
  writeBytes(keyfile, "proto=\"rsn;\"\npsk=" + std::string(KILOBYTES * 1024, 'x'));
  const Cost cost = costOf([&] { removeKeyfileValueQuotes(keyfile); });
  EXPECT_LE(cost.kilobytes, KILOBYTES + NOISE_IN_KILOBYTES);
}

}  // namespace
