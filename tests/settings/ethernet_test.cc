// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/ethernet.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "settings/entries.h"
#include "support/bytes.h"
#include "support/files.h"
#include "support/printed.h"

namespace {

using Lines = std::vector<std::string>;

static_assert(ETHERNET_STATIC_MODE == "manual");
static_assert(ETHERNET_DYNAMIC_MODE == "auto");
static_assert(std::is_same_v<decltype(EthernetUpdateRecord::mode), std::int32_t>);
static_assert(std::is_same_v<EthernetUpdateRecord::Octets, std::array<std::int32_t, 4>>);

const std::string UNSET_OCTETS = "00 00 00 00 00 00 00 00 00 00 00 00 ";

// ---- The update record

TEST(EthernetUpdateRecord, IsThirteenHexadecimalFields) {
  EthernetUpdateRecord record;
  EXPECT_BYTES_EQ("00 " + UNSET_OCTETS, record.toText());
  record.mode = EthernetUpdateRecord::DYNAMIC;
  EXPECT_BYTES_EQ("01 " + UNSET_OCTETS, record.toText());
  record.mode = EthernetUpdateRecord::STATIC;
  record.address = {192, 168, 1, 10};
  record.subnetMask = {255, 255, 255, 0};
  record.gateway = {192, 168, 1, 1};
  EXPECT_BYTES_EQ("00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 ", record.toText());
}

TEST(EthernetUpdateRecord, ClearingTheOctetsKeepsTheMode) {
  EthernetUpdateRecord record{1, {1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  record.clearOctets();
  EXPECT_BYTES_EQ("01 " + UNSET_OCTETS, record.toText());
}

// ---- The stored address

struct Stored {
  std::string text;
  std::string record;
  std::string output;
};

/** Starts from a record that is filled already. */
Stored store(const std::string& address, const std::string& mask, const std::string& gateway) {
  EthernetUpdateRecord record{1, {1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  Stored stored;
  stored.output = printedBy([&] { stored.text = formatEthernetAddress(address, mask, gateway); });
  record.setOctets(address, mask, gateway);
  stored.record = record.toText();
  return stored;
}

TEST(StoredEthernetAddress, IsAddressPrefixAndGateway) {
  const Stored stored = store("192.168.1.10", "255.255.255.0", "192.168.1.1");
  EXPECT_EQ("192.168.1.10/24,192.168.1.1", stored.text);
  EXPECT_EQ("01 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 ", stored.record);
  EXPECT_EQ("", stored.output);
}

TEST(StoredEthernetAddress, KeepsTheTextsAsTheyWereEntered) {
  const Stored stored = store(" 010.0.0.1. ", " 255.0.0.0\t", "10 .0.0.254\t");
  EXPECT_EQ(" 010.0.0.1. /8,10 .0.0.254\t", stored.text);
  EXPECT_EQ("01 0A 00 00 01 FF 00 00 00 0A 00 00 FE ", stored.record);
}

TEST(StoredEthernetAddress, MayHaveAMaskWithoutABit) {
  const Stored stored = store("10.0.0.1", "0.0.0.0", "10.0.0.254");
  EXPECT_EQ("10.0.0.1/0,10.0.0.254", stored.text);
  EXPECT_EQ("01 0A 00 00 01 00 00 00 00 0A 00 00 FE ", stored.record);
  EXPECT_EQ("", stored.output);
}

TEST(StoredEthernetAddress, ReportsABadMaskFirst) {
  for (const char* mask : {"255.0.255.0", "", "24"}) {
    const Stored stored = store("bad", mask, "bad");
    EXPECT_EQ("", stored.text);
    EXPECT_EQ("01 " + UNSET_OCTETS, stored.record);
    EXPECT_EQ("! Unable to create ethernet address: invalid subnet mask\n", stored.output);
  }
}

TEST(StoredEthernetAddress, ReportsABadAddressOrGateway) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "192.168.1.1"}, {"192.168.1.10", ""}, {"192.168.1.10", "192.168.1.256"}, {"x", "y"}};
  for (const auto& [address, gateway] : cases) {
    const Stored stored = store(address, "255.255.255.0", gateway);
    EXPECT_EQ("", stored.text);
    EXPECT_EQ("01 " + UNSET_OCTETS, stored.record);
    EXPECT_EQ("! Unable to create ethernet address: invalid IP, subnet, or gateway format\n",
              stored.output);
  }
}

// ---- The DNS server that is shown

TEST(FirstDnsServer, IsTheFirstPieceWhateverSeparatesThem) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"8.8.8.8;8.8.4.4;", "8.8.8.8"},
      {"8.8.8.8", "8.8.8.8"},
      {"8.8.8.8,8.8.4.4", "8.8.8.8"},
      {"8.8.8.8 8.8.4.4", "8.8.8.8"},
      {"8.8.8.8\t1", "8.8.8.8"},
      {"8.8.8.8\n1", "8.8.8.8"},
      {"8.8.8.8\v1", "8.8.8.8"},
      {"8.8.8.8\f1", "8.8.8.8"},
      {"8.8.8.8\r1", "8.8.8.8"},
      {" ;, \t;8.8.8.8;1", "8.8.8.8"},
      {"", ""},
      {" ;,; \t\n\v\f\r", ""},
      {"_not/checked|\xFF;1", "_not/checked|\xFF"},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(expected, firstDnsServer(value)) << value;
}

// ---- The keyfile

TEST(EthernetKeyfile, HasItsStaticEntriesInOrder) {
  EXPECT_EQ((Lines{
                "connection | id | ethernet",
                "connection | type | ethernet",
                "connection | autoconnect-priority | -999",
                "connection | autoconnect | true",
                "connection | interface-name | eth0",
                "ipv4 | method | manual",
                "ipv4 | address1 | 192.168.1.10/24,192.168.1.1",
                "ipv4 | dns | 8.8.8.8",
                "ipv6 | addr-gen-mode | stable-privacy",
                "ipv6 | method | auto",
            }),
            describe(ethernetKeyfileEntries("manual", {"192.168.1.10/24,192.168.1.1", "8.8.8.8"})));
}

TEST(EthernetKeyfile, StaticEntriesMayBeEmpty) {
  const Lines lines = describe(ethernetKeyfileEntries("manual", {}));
  ASSERT_EQ(10U, lines.size());
  EXPECT_EQ("ipv4 | address1 | ", lines[6]);
  EXPECT_EQ("ipv4 | dns | ", lines[7]);
}

TEST(EthernetKeyfile, DynamicEntriesLeaveTheStaticOnesOut) {
  EXPECT_EQ((Lines{
                "connection | id | ethernet",
                "connection | type | ethernet",
                "connection | autoconnect-priority | -999",
                "connection | autoconnect | true",
                "connection | interface-name | eth0",
                "ipv4 | method | auto",
                "ipv6 | addr-gen-mode | stable-privacy",
                "ipv6 | method | auto",
            }),
            describe(ethernetKeyfileEntries("auto", {"192.168.1.10/24,192.168.1.1", "8.8.8.8"})));
}

TEST(EthernetKeyfile, UnknownModesWriteNothing) {
  for (const char* mode : {"", "Manual", "AUTO", "auto ", "shared"})
    EXPECT_TRUE(ethernetKeyfileEntries(mode, {"a", "b"}).empty()) << mode;
}

}  // namespace
