// SPDX-License-Identifier: MIT
// The arithmetic of addresses against its definitions. The input is the text of an address, a mask,
// a prefix or a stored address; its first four bytes are a mask too.
#include <iostream>
#include <sstream>

#include "fuzz/support.h"
#include "settings/ipv4.h"
#include "settings/ipv4_definitions.h"

namespace {

/** All that a statement prints on the two streams. */
template <typename Statement>
std::string printed(Statement&& statement) {
  std::ostringstream text;
  std::streambuf* const out = std::cout.rdbuf(text.rdbuf());
  std::streambuf* const err = std::cerr.rdbuf(text.rdbuf());
  statement();
  std::cout.rdbuf(out);
  std::cerr.rdbuf(err);
  return text.str();
}

void checkPieces(const std::string& text) {
  Ipv4Octets octets = {250, 251, 252, 253};
  definitions::Octets expectedOctets = {250, 251, 252, 253};
  const bool valid = definitions::parseOctets(text, expectedOctets);
  REQUIRE(parseIpv4Octets(text, octets) == valid && octets == expectedOctets);

  bool result = false;
  const std::string lines = printed([&] { result = validateIpAddress(text); });
  REQUIRE(result == valid);
  REQUIRE(lines == "Validating IP Address: " + text +
                       "\nIP Address validation result: " + (valid ? "Valid\n" : "Invalid\n"));

  std::uint32_t prefix = 99;
  std::uint32_t expectedPrefix = 99;
  const bool isPrefix = definitions::parsePrefix(text, expectedPrefix);
  REQUIRE(parseCidrPrefix(text, prefix) == isPrefix && prefix == expectedPrefix);

  const int length = definitions::prefixOfMaskText(text);
  REQUIRE(subnetMaskToCidrPrefix(text) == length && isValidSubnetMask(text) == (length >= 0));
}

void checkSplits(const std::string& text) {
  std::string address = "x";
  std::string mask = "x";
  std::string gateway = "x";
  std::string lines = printed([&] { splitEthernetAddress(text, address, mask, gateway); });
  definitions::Split expected = definitions::split(text, "Invalid Ethernet address format: " + text,
                                                   "Invalid CIDR prefix in ethernet address: ");
  REQUIRE(address == expected.address && mask == expected.mask && gateway == expected.gateway);
  REQUIRE(lines == expected.complaint);

  address = mask = "x";
  lines = printed([&] { splitApAddress(text, address, mask); });
  expected = definitions::split(text, "Invalid Format", "Invalid CIDR prefix in address: ");
  REQUIRE(address == expected.address && mask == expected.mask && lines == expected.complaint);
}

void checkNumber(std::uint32_t number) {
  REQUIRE(subnetMaskToCidrPrefix(definitions::dotted(number)) == definitions::prefixOfMask(number));
  std::string mask;
  const std::string lines = printed([&] { mask = cidrPrefixToSubnetMask(number); });
  if (number <= 32) {
    REQUIRE(mask == definitions::dotted(definitions::maskNumber(number)) && lines.empty());
    REQUIRE(subnetMaskToCidrPrefix(mask) == static_cast<int>(number));
  } else {
    REQUIRE(mask.empty() && lines == "Invalid CIDR prefix: " + std::to_string(number) + "\n");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = textOf(data, size);
  checkPieces(text);
  checkSplits(text);
  std::uint32_t number = 0;
  for (std::size_t at = 0; at < 4 && at < size; ++at) number = number << 8 | data[at];
  checkNumber(number);
  checkNumber(number >> 24);
  return 0;
}
