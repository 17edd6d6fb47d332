// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// All masks, all prefixes and all short texts of an octet: their number allows it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "settings/ipv4.h"
#include "settings/ipv4_definitions.h"
#include "support/printed.h"

namespace {

constexpr std::uint64_t MASKS = std::uint64_t{1} << 32;

TEST(ExhaustiveMasks, AreAsManyAsThereArePrefixes) {  // each of which is looked at further down
  constexpr std::uint64_t SHARE = std::uint64_t{1} << 24;
  std::atomic<std::uint64_t> next{0};
  std::atomic<unsigned> accepted{0};
  const auto work = [&] {
    for (std::uint64_t first = next.fetch_add(SHARE); first < MASKS; first = next.fetch_add(SHARE))
      for (std::uint64_t mask = first; mask < first + SHARE; ++mask)
        if (maskToCidrPrefix(static_cast<std::uint32_t>(mask)) >= 0) ++accepted;
  };
  std::vector<std::thread> threads;
  for (unsigned core = 0; core < std::max(1U, std::thread::hardware_concurrency()); ++core)
    threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(33U, accepted);
}

TEST(ExhaustiveMasks, AsTextHaveThePrefixOfTheirNumber) {
  // In each field: no ones, a run from the top, from the bottom, in the middle, and one with a gap.
  std::vector<std::uint32_t> fields = {0x18, 0xA5};
  for (unsigned ones = 0; ones <= 8; ++ones) {
    fields.push_back(0xFF00 >> ones & 0xFF);
    fields.push_back(0xFF >> ones);
  }
  for (const std::uint32_t first : fields)
    for (const std::uint32_t second : fields)
      for (const std::uint32_t third : fields)
        for (const std::uint32_t fourth : fields) {
          const std::uint32_t mask = first << 24 | second << 16 | third << 8 | fourth;
          const std::string text = definitions::dotted(mask);
          ASSERT_EQ(definitions::prefixOfMask(mask), subnetMaskToCidrPrefix(text)) << text;
          ASSERT_EQ(definitions::prefixOfMask(mask) >= 0, isValidSubnetMask(text)) << text;
        }
}

TEST(ExhaustivePrefixes, BecomeMasksAndPrefixesAgain) {
  for (unsigned prefix = 0; prefix <= 32; ++prefix) {
    const std::uint32_t mask = definitions::maskNumber(prefix);
    EXPECT_EQ(definitions::dotted(mask), cidrPrefixToSubnetMask(prefix));
    EXPECT_EQ(static_cast<int>(prefix), maskToCidrPrefix(mask));
    EXPECT_EQ(static_cast<int>(prefix), subnetMaskToCidrPrefix(cidrPrefixToSubnetMask(prefix)));
  }
  for (const std::uint32_t prefix : {33U, 64U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
    std::string mask;
    const std::string output = printedBy([&] { mask = cidrPrefixToSubnetMask(prefix); });
    EXPECT_EQ("", mask);
    EXPECT_EQ("! Invalid CIDR prefix: " + std::to_string(prefix) + "\n", output);
  }
}

/** Calls a function with every text of up to four of the characters. */
void forEachText(const std::function<void(const std::string&)>& function) {
  constexpr std::string_view CHARACTERS = "0123456789 .+-";
  constexpr std::size_t LONGEST = 4;
  std::string text;
  const std::function<void()> extend = [&] {
    function(text);
    if (text.size() == LONGEST) return;
    for (const char character : CHARACTERS) {
      text += character;
      extend();
      text.pop_back();
    }
  };
  extend();
}

TEST(ExhaustiveTexts, AreOctetsInEachPlaceAsDefined) {
  unsigned count = 0;
  forEachText([&](const std::string& text) {
    ++count;
    for (const std::string& address :
         {text, text + ".2.3.4", "1." + text + ".3.4", "1.2." + text + ".4", "1.2.3." + text}) {
      definitions::Octets expected = {250, 251, 252, 253};
      Ipv4Octets octets = {250, 251, 252, 253};
      const bool valid = definitions::parseOctets(address, expected);
      ASSERT_EQ(valid, parseIpv4Octets(address, octets)) << "'" << address << "'";
      ASSERT_EQ(expected, octets) << "'" << address << "'";
    }
  });
  EXPECT_EQ(1U + 14 + 14 * 14 + 14 * 14 * 14 + 14 * 14 * 14 * 14, count);
}

TEST(ExhaustiveTexts, ArePrefixesAsDefined) {
  forEachText([](const std::string& text) {
    std::uint32_t expected = 99;
    std::uint32_t prefix = 99;
    const bool valid = definitions::parsePrefix(text, expected);
    ASSERT_EQ(valid, parseCidrPrefix(text, prefix)) << "'" << text << "'";
    ASSERT_EQ(expected, prefix) << "'" << text << "'";
  });
}

}  // namespace
