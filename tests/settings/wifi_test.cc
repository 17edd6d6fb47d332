// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/wifi.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "settings/entries.h"
#include "support/child.h"
#include "support/files.h"
#include "support/printed.h"

namespace {

using Lines = std::vector<std::string>;

static_assert(WIFI_AP_MODE == "ap");
static_assert(WIFI_CLIENT_MODE == "infrastructure");
static_assert(WIFI_DISABLED_MODE == "disabled");
static_assert(WIFI_BAND == "bg");

// ---- Passwords

void expectPasswordRule() {
  EXPECT_FALSE(isValidWifiPassword(""));
  EXPECT_FALSE(isValidWifiPassword("sevenxx"));
  EXPECT_TRUE(isValidWifiPassword("seven xx")) << "a blank counts";
  EXPECT_TRUE(isValidWifiPassword("        ")) << "it is not trimmed";
  EXPECT_TRUE(isValidWifiPassword(std::string(100, 'x')));
  EXPECT_FALSE(isValidWifiPassword("eightxxx!"));
  EXPECT_FALSE(isValidWifiPassword("p\xC3\xA4sswords")) << "UTF-8";
  EXPECT_FALSE(isValidWifiPassword("p\xE4sswords")) << "Latin-1";
  const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 -_";
  for (int byte = 0; byte <= 255; ++byte) {
    const char c = static_cast<char>(byte);
    EXPECT_EQ(allowed.find(c) != std::string::npos, isValidWifiPassword(std::string(8, c)))
        << "byte " << byte;
  }
}

TEST(WifiPassword, KeepsItsRuleInTheCLocale) { expectPasswordRule(); }

TEST(WifiPassword, KeepsItsRuleWhereOtherBytesAreLettersToo) {
  // Few machines have such a locale, so it is made here.
  constexpr int NO_LOCALE = 77;
  const TemporaryDirectory directory;
  const std::string latin1 = directory.file("latin1");
  (void)std::system(("localedef -i en_US -f ISO-8859-1 " + latin1 + " >/dev/null 2>&1").c_str());
  const int status = inChild([&] {
    setenv("LOCPATH", directory.path.c_str(), 1);
    if (std::setlocale(LC_ALL, "latin1") == nullptr || std::isalpha(0xE4) == 0) _exit(NO_LOCALE);
    expectPasswordRule();
  });
  if (status == NO_LOCALE) {
    ASSERT_EQ(nullptr, std::getenv("CI")) << "locales is not installed";
    GTEST_SKIP() << "locales is not installed";
  }
  EXPECT_EQ(0, status);
}

// ---- The stored address

struct StoredAp {
  std::string text;
  std::string output;
};

StoredAp store(const std::string& address, const std::string& mask) {
  StoredAp stored;
  stored.output = printedBy([&] { stored.text = formatApAddress(address, mask); });
  return stored;
}

std::string logOf(const std::string& address, const std::string& verdict) {
  return "Validating IP Address: " + address + "\nIP Address validation result: " + verdict + "\n";
}

TEST(StoredApAddress, GatewayIsTheFirstAddressOfTheLastField) {
  const std::vector<std::array<std::string, 3>> cases = {
      {"192.168.4.20", "255.255.255.0", "192.168.4.20/24,192.168.4.1"},
      {"10.42.5.7", "255.255.0.0", "10.42.5.7/16,10.42.5.1"},
      {"10.42.5.1", "255.255.255.0", "10.42.5.1/24,10.42.5.1"},
      {"010.42.5.7", " 255.255.255.255 ", "010.42.5.7/32,010.42.5.1"},
      {"10.42.5.7.", "0.0.0.0", "10.42.5.7./0,10.42.5.7.1"},
  };
  for (const auto& [address, mask, expected] : cases) {
    const StoredAp stored = store(address, mask);
    EXPECT_EQ(expected, stored.text);
    EXPECT_EQ(logOf(address, "Valid"), stored.output);
  }
}

TEST(StoredApAddress, TrimsTheAddress) {
  const StoredAp stored = store(" \t10.42.0.1\r\n", "255.255.255.0");
  EXPECT_EQ("10.42.0.1/24,10.42.0.1", stored.text);
  EXPECT_EQ(logOf("10.42.0.1", "Valid"), stored.output);
}

const std::string FAILED = "Unable to create AP address: invalid IP or subnet mask\n";

TEST(StoredApAddress, BadMaskFailsBeforeTheAddressIsLookedAt) {
  for (const char* mask : {"255.255.0.255", "", "24"}) {
    const StoredAp stored = store("192.168.4.20", mask);
    EXPECT_EQ("", stored.text);
    EXPECT_EQ("! " + FAILED, stored.output);
  }
}

TEST(StoredApAddress, BadAddressFails) {
  for (const char* address : {"", "192.168.4", "192.168.4.256", "ap"}) {
    const StoredAp stored = store(address, "255.255.255.0");
    EXPECT_EQ("", stored.text);
    EXPECT_EQ(logOf(address, "Invalid") + "! " + FAILED, stored.output);
  }
}

// ---- The keyfile

const WifiSettings SETTINGS = {"wlan7", " my;ssid ", "pass\"word", "11", "10.0.0.9/8,10.0.0.1"};

TEST(WifiKeyfile, HasTheEntriesOfAnAccessPointInOrder) {
  EXPECT_EQ((Lines{
                "connection | id | Hotspot",
                "connection | type | wifi",
                "connection | autoconnect | true",
                "connection | interface-name | wlan7",
                "wifi | mode | ap",
                "wifi | ssid |  my;ssid ",
                "wifi | band | bg",
                "wifi | channel | 11",
                "wifi-security | group | ccmp;",
                "wifi-security | key-mgmt | wpa-psk",
                "wifi-security | pairwise | ccmp;",
                "wifi-security | proto | rsn;",
                "wifi-security | psk | pass\"word",
                "ipv4 | method | shared",
                "ipv4 | address1 | 10.0.0.9/8,10.0.0.1",
                "ipv6 | addr-gen-mode | stable-privacy",
                "ipv6 | method | ignore",
            }),
            describe(wifiKeyfileEntries("ap", SETTINGS)));
}

TEST(WifiKeyfile, HasTheEntriesOfAClientInOrder) {
  EXPECT_EQ((Lines{
                "connection | id | ZOR",
                "connection | type | wifi",
                "connection | autoconnect | true",
                "connection | interface-name | wlan7",
                "connection | permissions | user:zor:;",
                "wifi | mode | infrastructure",
                "wifi | ssid |  my;ssid ",
                "wifi-security | auth-alg | open",
                "wifi-security | key-mgmt | wpa-psk",
                "wifi-security | psk | pass\"word",
                "ipv4 | method | auto",
                "ipv6 | addr-gen-mode | stable-privacy",
                "ipv6 | method | auto",
            }),
            describe(wifiKeyfileEntries("infrastructure", SETTINGS)));
}

TEST(WifiKeyfile, EmptySettingsAreWrittenToo) {
  EXPECT_EQ(17U, wifiKeyfileEntries("ap", {}).size());
  EXPECT_EQ(13U, wifiKeyfileEntries("infrastructure", {}).size());
}

TEST(WifiKeyfile, OtherModesWriteNothing) {
  for (const char* mode : {"disabled", "", "AP", "ap ", "client"})
    EXPECT_TRUE(wifiKeyfileEntries(mode, SETTINGS).empty()) << mode;
}

}  // namespace
