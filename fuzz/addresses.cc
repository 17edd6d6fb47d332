// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The arithmetic of addresses against its definitions. The input is the text of an address, a mask,
// a prefix or a stored address, or of a whole form: address, mask and gateway with "|" between
// them; its first four bytes are a mask too.
#include <array>
#include <iostream>
#include <numeric>
#include <sstream>

#include "fuzz/support.h"
#include "settings/ethernet.h"
#include "settings/ipv4.h"
#include "settings/ipv4_definitions.h"
#include "settings/wifi.h"

namespace {

/** All that a statement prints on the two streams: without files, for that many inputs. */
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

std::int64_t sumOf(const EthernetUpdateRecord::Octets& octets) {
  return std::accumulate(octets.begin(), octets.end(), std::int64_t{0});
}

/** A form becomes a stored address that splits into the same form again, or none. */
void checkForm(const std::string& address, const std::string& mask, const std::string& gateway) {
  definitions::Octets octets{};
  const bool hasAddress = definitions::parseOctets(address, octets);
  const bool hasGateway = definitions::parseOctets(gateway, octets);
  const int prefix = definitions::prefixOfMaskText(mask);

  EthernetUpdateRecord record;
  std::string stored;
  const std::string lines =
      printed([&] { stored = formatEthernetAddress(address, mask, gateway); });
  record.setOctets(address, mask, gateway);
  if (hasAddress && hasGateway && prefix >= 0) {
    REQUIRE(lines.empty());
    REQUIRE(stored == address + "/" + std::to_string(prefix) + "," + gateway);
    const definitions::Split split = definitions::split(stored, "", "");
    REQUIRE(split.address == definitions::trimmed(address));
    REQUIRE(split.gateway == definitions::trimmed(gateway));
    REQUIRE(split.mask ==
            definitions::dotted(definitions::maskNumber(static_cast<unsigned>(prefix))));
  } else {
    REQUIRE(stored.empty() && !lines.empty());
    REQUIRE(sumOf(record.address) + sumOf(record.subnetMask) + sumOf(record.gateway) == 0);
  }
  REQUIRE(record.toText().size() == 39);

  printed([&] { stored = formatApAddress(address, mask); });
  REQUIRE(stored.empty() != (hasAddress && prefix >= 0));
  if (stored.empty()) return;
  const definitions::Split split = definitions::split(stored, "", "");
  REQUIRE(split.address == definitions::trimmed(address));
  REQUIRE(split.gateway.substr(split.gateway.rfind('.')) == ".1");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = textOf(data, size);
  checkPieces(text);
  checkSplits(text);
  std::istringstream form(text);
  std::array<std::string, 3> fields;
  for (std::string& field : fields) std::getline(form, field, '|');
  checkForm(fields[0], fields[1], fields[2]);
  std::uint32_t number = 0;
  for (std::size_t at = 0; at < 4 && at < size; ++at) number = number << 8 | data[at];
  checkNumber(number);
  checkNumber(number >> 24);
  return 0;
}
