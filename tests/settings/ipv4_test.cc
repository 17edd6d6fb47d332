// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Texts of every kind, one by one. All masks, prefixes and short texts: exhaustive_test.cc.
#include "settings/ipv4.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/printed.h"

namespace {

// ---- Dotted addresses

Ipv4Octets octetsOf(const std::string& text, bool expected) {
  Ipv4Octets octets = {250, 251, 252, 253};
  EXPECT_EQ(expected, parseIpv4Octets(text, octets)) << "'" << text << "'";
  return octets;
}

TEST(Ipv4Octets, HaveTheFirstFieldFirst) {
  EXPECT_EQ((Ipv4Octets{192, 168, 1, 10}), octetsOf("192.168.1.10", true));
}

TEST(Ipv4Octets, MayHaveBlanksLeadingZerosAndOneFinalDot) {
  for (const char* text : {" \t10.0.0.1\r\n", "10 . 0\t. 0\n.\r1", "010.000.000.001", "10.0.0.1.",
                           " 10.0.0.1. ", "10.0.0.1 .", "0000000010.0.0.1"})
    EXPECT_EQ((Ipv4Octets{10, 0, 0, 1}), octetsOf(text, true)) << text;
}

TEST(Ipv4Octets, AreNothingElse) {
  for (const char* text :
       {"",           " ",          ".",          "10",          "10.0.0",
        "10.0.0.",    "10.0.0.1.1", "10.0.0.1..", "10.0.0.1. .", "10..0.1",
        ".10.0.0.1",  "10. .0.1",   "1a.0.0.1",   "+1.0.0.1",    "-1.0.0.1",
        "1 0.0.0.1",  "256.0.0.1",  "10.0.0.256", "10,0,0,1",    "99999999999.0.0.1",
        "0x10.0.0.1", "::1",        "10.0.0.\v1", "10.0.0.\xB2", "10.0.0.4294967297",
        "10.0.0.1 x", "10.0.0.1/24"})
    octetsOf(text, false);
}

TEST(Ipv4Octets, EndWithTheTextWhateverStandsBehindIt) {
  Ipv4Octets octets{};
  EXPECT_TRUE(parseIpv4Octets(std::string_view("10.0.0.12").substr(0, 8), octets));
  EXPECT_EQ((Ipv4Octets{10, 0, 0, 1}), octets);
}

TEST(Ipv4Octets, AreWrittenUpToTheFirstBadField) {
  EXPECT_EQ((Ipv4Octets{10, 20, 252, 253}), octetsOf("10.20.x.40", false));
  EXPECT_EQ((Ipv4Octets{250, 251, 252, 253}), octetsOf("256.20.30.40", false));
  EXPECT_EQ((Ipv4Octets{10, 20, 30, 40}), octetsOf("10.20.30.40.50", false));
}

// ---- Prefixes and masks

TEST(CidrPrefix, IsANumberUpTo32AndHandedBackWhenItIsLarger) {
  const struct {
    const char* text;
    bool valid;
    std::uint32_t handedBack;
  } cases[] = {
      {"24", true, 24},
      {" \t24\r\n", true, 24},
      {"0", true, 0},
      {"32", true, 32},
      {"33", false, 33},
      {"2147483647", false, 2147483647},
      {"0000000000024", true, 24},
      {"2147483648", false, 99},
      {"99999999999", false, 99},
      {"", false, 99},
      {" ", false, 99},
      {"-1", false, 99},
      {"+1", false, 99},
      {"2 4", false, 99},
      {"24x", false, 99},
      {"/24", false, 99},
  };
  for (const auto& wanted : cases) {
    std::uint32_t prefix = 99;
    EXPECT_EQ(wanted.valid, parseCidrPrefix(wanted.text, prefix)) << wanted.text;
    EXPECT_EQ(wanted.handedBack, prefix) << wanted.text;
  }
}

TEST(SubnetMask, HasNoGapsAndIsRefusedSilently) {
  const std::vector<std::pair<std::string, int>> cases = {
      {"255.255.255.0", 24},
      {" 255.255.255.0. ", 24},
      {"0.0.0.0", 0},
      {"255.0.255.0", -1},
      {"0.255.255.255", -1},
      {"255.255.0.255", -1},
      {"0.0.0.1", -1},
      {"255.255.255.253", -1},
      {"255.255.255.256", -1},
      {"255.255.255", -1},
      {"", -1},
      {"24", -1},
      {"mask", -1},
  };
  for (const auto& [mask, prefix] : cases) {
    int found = 99;
    EXPECT_EQ("", printedBy([&, text = mask] { found = subnetMaskToCidrPrefix(text); }));
    EXPECT_EQ(prefix, found) << mask;
    EXPECT_EQ(prefix >= 0, isValidSubnetMask(mask)) << mask;
  }
}

TEST(SubnetMask, OfALargerPrefixIsEmptyAndReported) {
  std::string mask = "mask";
  EXPECT_EQ("! Invalid CIDR prefix: 33\n", printedBy([&] { mask = cidrPrefixToSubnetMask(33); }));
  EXPECT_EQ("", mask);
}

// ---- The logged check

TEST(IpAddressCheck, LogsTextAndVerdict) {
  bool valid = false;
  EXPECT_EQ(printedBy([&] { valid = validateIpAddress("10.0.0.1"); }),
            "Validating IP Address: 10.0.0.1\nIP Address validation result: Valid\n");
  EXPECT_TRUE(valid);
  EXPECT_EQ(printedBy([&] { valid = validateIpAddress(" \xFF "); }),
            "Validating IP Address:  \xFF \nIP Address validation result: Invalid\n");
  EXPECT_FALSE(valid);
}

// ---- Stored addresses

/** How a stored address is split: what is printed, or the pieces. */
std::string splitEthernet(const std::string& stored) {
  std::string address = "before";
  std::string mask = "before";
  std::string gateway = "before";
  const std::string printed =
      printedBy([&] { splitEthernetAddress(stored, address, mask, gateway); });
  return printed + address + "|" + mask + "|" + gateway;
}

std::string splitAp(const std::string& stored) {
  std::string address = "before";
  std::string mask = "before";
  const std::string printed = printedBy([&] { splitApAddress(stored, address, mask); });
  return printed + address + "|" + mask;
}

TEST(StoredAddress, OfEthernetIsAddressMaskAndGateway) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"192.168.1.10/24,192.168.1.1", "192.168.1.10|255.255.255.0|192.168.1.1"},
      {"\t192.168.1.10 / 16 , 192.168.1.1\r\n", "192.168.1.10|255.255.0.0|192.168.1.1"},
      {"192.168.1.10/24,", "192.168.1.10|255.255.255.0|"},
      // Only trimmed
      {"anything/0,1,2/3", "anything|0.0.0.0|1,2/3"},
      {"/32,", "|255.255.255.255|"},
      // The prefix runs to the end when the comma comes first
      {"1.2.3.4,5/24", "1.2.3.4,5|255.255.255.0|5/24"},
  };
  for (const auto& [stored, pieces] : cases) EXPECT_EQ(pieces, splitEthernet(stored));
}

TEST(StoredAddress, OfEthernetThatCannotBeSplitIsReported) {
  for (const std::string stored :
       {"", "192.168.1.10", "192.168.1.10/24", "192.168.1.10,192.168.1.1"})
    EXPECT_EQ("! Invalid Ethernet address format: " + stored + "\n||", splitEthernet(stored));
  for (const std::string stored :
       {"192.168.1.10/abc,192.168.1.1", "1.2.3.4/33,5.6.7.8", "1.2.3.4/,5.6.7.8",
        "1.2.3.4/2/4,5.6.7.8", "1.2.3.4/-1,x", "a/99999999999,\xFF", "1.2.3.4,5/24,6", ",/"})
    EXPECT_EQ("! Invalid CIDR prefix in ethernet address: " + stored + "\n||",
              splitEthernet(stored));
}

TEST(StoredAddress, OfAnAccessPointIsAddressAndMask) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"10.42.0.1/24,10.42.0.1", "10.42.0.1|255.255.255.0"},
      {" 10.42.0.1 / 24 ,x", "10.42.0.1|255.255.255.0"},
      {"a,b/8", "a,b|255.0.0.0"},
      {"", "! Invalid Format\n|"},
      {"10.42.0.1/24", "! Invalid Format\n|"},
      {"10.42.0.1,10.42.0.1", "! Invalid Format\n|"},
      {"10.42.0.1/33,x", "! Invalid CIDR prefix in address: 10.42.0.1/33,x\n|"},
      {"10.42.0.1/ ,x", "! Invalid CIDR prefix in address: 10.42.0.1/ ,x\n|"},
  };
  for (const auto& [stored, pieces] : cases) EXPECT_EQ(pieces, splitAp(stored));
}

}  // namespace
