// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/ipv4.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/print.h"
#include "support/printed.h"

namespace {

using Cases = std::vector<std::pair<std::string, std::string>>;

// ---- Dotted addresses

Ipv4Octets octetsOf(const std::string& text, bool expected) {
  Ipv4Octets octets = {250, 251, 252, 253};
  EXPECT_EQ(expected, parseIpv4Octets(text, octets)) << "'" << text << "'";
  return octets;
}

TEST(ParseIpv4Octets, ReadsTheFirstFieldFirst) {
  EXPECT_EQ((Ipv4Octets{192, 168, 1, 10}), octetsOf("192.168.1.10", true));
  EXPECT_EQ((Ipv4Octets{0, 0, 0, 0}), octetsOf("0.0.0.0", true));
  EXPECT_EQ((Ipv4Octets{255, 255, 255, 255}), octetsOf("255.255.255.255", true));
}

TEST(ParseIpv4Octets, ToleratesBlanksLeadingZerosAndOneFinalDot) {
  for (const char* text : {" \t10.0.0.1\r\n", "10 . 0\t. 0\n.\r1", "010.000.000.001", "10.0.0.1.",
                           " 10.0.0.1. ", "10.0.0.1 .", "0000000010.0.0.1"})
    EXPECT_EQ((Ipv4Octets{10, 0, 0, 1}), octetsOf(text, true)) << text;
}

TEST(ParseIpv4Octets, RejectsEverythingElse) {
  for (const char* text : {"",
                           " ",
                           ".",
                           "10",
                           "10.0.0",
                           "10.0.0.",
                           "10.0.0.1.1",
                           "10.0.0.1..",
                           "10.0.0.1. .",
                           "10..0.1",
                           ".10.0.0.1",
                           "10. .0.1",
                           "1a.0.0.1",
                           "+1.0.0.1",
                           "-1.0.0.1",
                           "1 0.0.0.1",
                           "256.0.0.1",
                           "10.0.0.256",
                           "99999999999.0.0.1",
                           "10.0.0.4294967297",
                           "10,0,0,1",
                           "0x10.0.0.1",
                           "10.0.0.1/24",
                           "10.0.0.\v1",
                           "10.0.0.\xB2",
                           "10.0.0.1 x",
                           "::1"})
    octetsOf(text, false);
}

TEST(ParseIpv4Octets, WritesTheFieldsBeforeTheFirstBadOne) {
  EXPECT_EQ((Ipv4Octets{10, 20, 252, 253}), octetsOf("10.20.x.40", false));
  EXPECT_EQ((Ipv4Octets{250, 251, 252, 253}), octetsOf("256.20.30.40", false));
  EXPECT_EQ((Ipv4Octets{10, 20, 30, 40}), octetsOf("10.20.30.40.50", false));
}

// ---- Prefix lengths

TEST(ParseCidrPrefix, AcceptsDigitsWithBlanksAround) {
  const std::vector<std::pair<std::string, std::uint32_t>> cases = {
      {"24", 24}, {" \t24\r\n", 24}, {"0", 0}, {"32", 32}, {"0000000000024", 24}};
  for (const auto& [text, expected] : cases) {
    std::uint32_t prefix = 99;
    EXPECT_TRUE(parseCidrPrefix(text, prefix)) << text;
    EXPECT_EQ(expected, prefix) << text;
  }
}

TEST(ParseCidrPrefix, LeavesTheOutputAloneWhenItCannotConvert) {
  for (const char* text : {"", " ", "-1", "+1", "2 4", "24x", "/24", "99999999999", "2147483648"}) {
    std::uint32_t prefix = 99;
    EXPECT_FALSE(parseCidrPrefix(text, prefix)) << text;
    EXPECT_EQ(99U, prefix) << text;
  }
}

TEST(ParseCidrPrefix, HandsBackNumbersThatAreTooLarge) {
  std::uint32_t prefix = 0;
  EXPECT_FALSE(parseCidrPrefix("33", prefix));
  EXPECT_EQ(33U, prefix);
  EXPECT_FALSE(parseCidrPrefix("2147483647", prefix));
  EXPECT_EQ(2147483647U, prefix);
}

// ---- Masks

TEST(CidrPrefixToSubnetMask, WritesTheMask) {
  const std::vector<std::pair<std::uint32_t, std::string>> cases = {
      {0, "0.0.0.0"},        {1, "128.0.0.0"},        {8, "255.0.0.0"},       {23, "255.255.254.0"},
      {24, "255.255.255.0"}, {31, "255.255.255.254"}, {32, "255.255.255.255"}};
  for (const auto& [prefix, expected] : cases) {
    std::string mask;
    EXPECT_EQ(printedBy([&, length = prefix] { mask = cidrPrefixToSubnetMask(length); }), "");
    EXPECT_EQ(expected, mask);
  }
}

TEST(CidrPrefixToSubnetMask, ReportsAPrefixAbove32) {
  std::string mask = "before";
  EXPECT_EQ(printedBy([&] { mask = cidrPrefixToSubnetMask(33); }), "! Invalid CIDR prefix: 33\n");
  EXPECT_EQ("", mask);
  EXPECT_EQ(printedBy([&] { mask = cidrPrefixToSubnetMask(4294967295U); }),
            "! Invalid CIDR prefix: 4294967295\n");
}

TEST(SubnetMaskToCidrPrefix, CountsTheBits) {
  for (std::uint32_t prefix = 0; prefix <= 32; ++prefix) {
    const std::string mask = cidrPrefixToSubnetMask(prefix);
    EXPECT_EQ(static_cast<int>(prefix), subnetMaskToCidrPrefix(mask)) << mask;
    EXPECT_TRUE(isValidSubnetMask(mask)) << mask;
  }
  EXPECT_EQ(24, subnetMaskToCidrPrefix(" 255.255.255.0. "));
}

TEST(SubnetMaskToCidrPrefix, RejectsGapsAndOtherTextSilently) {
  EXPECT_EQ(printedBy([] {
              for (const char* mask :
                   {"255.0.255.0", "0.255.255.255", "255.255.0.255", "0.0.0.1", "127.255.255.255",
                    "255.255.255.253", "255.255.255.256", "255.255.255", "", "24", "/24", "mask"}) {
                if (subnetMaskToCidrPrefix(mask) != -1 || isValidSubnetMask(mask))
                  logError("accepted: ", mask);
              }
            }),
            "");
}

// ---- The logged check

TEST(ValidateIpAddress, LogsTextAndVerdict) {
  bool valid = false;
  EXPECT_EQ(printedBy([&] { valid = validateIpAddress("10.0.0.1"); }),
            "Validating IP Address: 10.0.0.1\nIP Address validation result: Valid\n");
  EXPECT_TRUE(valid);
  EXPECT_EQ(printedBy([&] { valid = validateIpAddress(" \xFF "); }),
            "Validating IP Address:  \xFF \nIP Address validation result: Invalid\n");
  EXPECT_FALSE(valid);
}

// ---- Stored addresses

struct Split {
  std::string address = "before";
  std::string mask = "before";
  std::string gateway = "before";
  std::string output;
};

Split splitEthernet(const std::string& stored) {
  Split split;
  split.output =
      printedBy([&] { splitEthernetAddress(stored, split.address, split.mask, split.gateway); });
  return split;
}

Split splitAp(const std::string& stored) {
  Split split;
  split.output = printedBy([&] { splitApAddress(stored, split.address, split.mask); });
  return split;
}

void expectEthernet(const std::string& stored, const std::string& address, const std::string& mask,
                    const std::string& gateway) {
  const Split split = splitEthernet(stored);
  EXPECT_EQ(address, split.address) << stored;
  EXPECT_EQ(mask, split.mask) << stored;
  EXPECT_EQ(gateway, split.gateway) << stored;
  EXPECT_EQ("", split.output) << stored;
}

void expectEthernetFailure(const std::string& stored, const std::string& message) {
  const Split split = splitEthernet(stored);
  EXPECT_EQ("", split.address + split.mask + split.gateway) << stored;
  EXPECT_EQ("! " + message + stored + "\n", split.output);
}

TEST(SplitEthernetAddress, GivesAddressMaskAndGateway) {
  expectEthernet("192.168.1.10/24,192.168.1.1", "192.168.1.10", "255.255.255.0", "192.168.1.1");
  expectEthernet("\t192.168.1.10 / 16 , 192.168.1.1\r\n", "192.168.1.10", "255.255.0.0",
                 "192.168.1.1");
  expectEthernet("192.168.1.10/24,", "192.168.1.10", "255.255.255.0", "");
}

TEST(SplitEthernetAddress, OnlyTrimsAddressAndGateway) {
  expectEthernet("anything/0,1,2/3", "anything", "0.0.0.0", "1,2/3");
  expectEthernet("/32,", "", "255.255.255.255", "");
}

TEST(SplitEthernetAddress, ReportsAMissingSeparator) {
  for (const char* stored : {"", "192.168.1.10", "192.168.1.10/24", "192.168.1.10,192.168.1.1"})
    expectEthernetFailure(stored, "Invalid Ethernet address format: ");
}

TEST(SplitEthernetAddress, ReportsABadPrefix) {
  for (const char* stored :
       {"192.168.1.10/abc,192.168.1.1", "1.2.3.4/33,5.6.7.8", "1.2.3.4/,5.6.7.8",
        "1.2.3.4/2/4,5.6.7.8", "1.2.3.4/-1,x", "a/99999999999,\xFF"})
    expectEthernetFailure(stored, "Invalid CIDR prefix in ethernet address: ");
}

TEST(SplitEthernetAddress, PrefixRunsToTheEndWhenTheCommaComesFirst) {
  expectEthernet("1.2.3.4,5/24", "1.2.3.4,5", "255.255.255.0", "5/24");
  expectEthernetFailure("1.2.3.4,5/24,6", "Invalid CIDR prefix in ethernet address: ");
  expectEthernetFailure(",/", "Invalid CIDR prefix in ethernet address: ");
}

TEST(SplitApAddress, GivesAddressAndMask) {
  for (const char* stored : {"10.42.0.1/24,10.42.0.1", " 10.42.0.1 / 24 ,x"}) {
    const Split split = splitAp(stored);
    EXPECT_EQ("10.42.0.1", split.address);
    EXPECT_EQ("255.255.255.0", split.mask);
    EXPECT_EQ("", split.output);
  }
  const Split commaFirst = splitAp("a,b/8");
  EXPECT_EQ("a,b", commaFirst.address);
  EXPECT_EQ("255.0.0.0", commaFirst.mask);
}

TEST(SplitApAddress, ReportsFailures) {
  const Cases cases = {
      {"", "Invalid Format\n"},
      {"10.42.0.1/24", "Invalid Format\n"},
      {"10.42.0.1,10.42.0.1", "Invalid Format\n"},
      {"10.42.0.1/33,x", "Invalid CIDR prefix in address: 10.42.0.1/33,x\n"},
      {"10.42.0.1/ ,x", "Invalid CIDR prefix in address: 10.42.0.1/ ,x\n"},
  };
  for (const auto& [stored, message] : cases) {
    const Split split = splitAp(stored);
    EXPECT_EQ("", split.address + split.mask) << stored;
    EXPECT_EQ("! " + message, split.output);
  }
}

}  // namespace
