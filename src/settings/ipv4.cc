// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/ipv4.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include "base/print.h"
#include "base/trim.h"

namespace {

constexpr std::uint32_t ADDRESS_BITS = 32;
constexpr std::uint32_t OCTET_BITS = 8;
constexpr int OCTET_MAX = 255;

/** Converts text that consists of decimal digits only, at least one, and fits into an int. */
bool parseDigits(std::string_view text, int& number) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (text.empty() || !std::all_of(text.begin(), text.end(), isDigit)) return false;
  return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
}

/** The pieces of "address/prefix,gateway", untrimmed. */
struct StoredAddress {
  std::string_view address;
  std::string_view prefix;
  std::string_view gateway;
};

/** Cuts at the first "/" and the first ","; returns whether both are there. */
bool cutStoredAddress(std::string_view stored, StoredAddress& pieces) {
  const std::size_t slash = stored.find('/');
  const std::size_t comma = stored.find(',');
  if (slash == std::string_view::npos || comma == std::string_view::npos) return false;
  pieces.address = stored.substr(0, slash);
  // With the comma before the slash the length wraps around: the prefix reaches to the end.
  pieces.prefix = stored.substr(slash + 1, comma - slash - 1);
  pieces.gateway = stored.substr(comma + 1);
  return true;
}

}  // namespace

bool parseIpv4Octets(std::string_view text, Ipv4Octets& octets) {
  text = trim(text);
  std::size_t count = 0;
  while (!text.empty()) {
    if (count == octets.size()) return false;
    const std::size_t dot = std::min(text.find('.'), text.size());
    int number{};
    if (!parseDigits(trim(text.substr(0, dot)), number) || number > OCTET_MAX) return false;
    octets[count++] = static_cast<std::uint8_t>(number);
    text.remove_prefix(std::min(dot + 1, text.size()));
  }
  return count == octets.size();
}

bool parseCidrPrefix(std::string_view text, std::uint32_t& prefix) {
  int number{};
  if (!parseDigits(trim(text), number)) return false;
  prefix = static_cast<std::uint32_t>(number);
  return prefix <= ADDRESS_BITS;
}

std::string cidrPrefixToSubnetMask(std::uint32_t prefix) {
  if (prefix > ADDRESS_BITS) {
    logError("Invalid CIDR prefix: ", std::to_string(prefix));
    return {};
  }
  const std::uint32_t mask = prefix == 0 ? 0 : ~std::uint32_t{0} << (ADDRESS_BITS - prefix);
  std::string text;
  for (std::uint32_t shift = ADDRESS_BITS; shift > 0; shift -= OCTET_BITS) {
    if (!text.empty()) text += '.';
    text += std::to_string((mask >> (shift - OCTET_BITS)) & OCTET_MAX);
  }
  return text;
}

int maskToCidrPrefix(std::uint32_t mask) {
  // Negation flips the bits above the lowest one-bit: what it shares with the inverse is a gap.
  if (((~mask + 1) & ~mask) != 0) return -1;
  int prefix = 0;
  for (; mask != 0; mask <<= 1) ++prefix;
  return prefix;
}

int subnetMaskToCidrPrefix(std::string_view mask) {
  Ipv4Octets octets{};
  if (!parseIpv4Octets(mask, octets)) return -1;
  std::uint32_t bits = 0;
  for (const std::uint8_t octet : octets) bits = bits << OCTET_BITS | octet;
  return maskToCidrPrefix(bits);
}

bool isValidSubnetMask(std::string_view mask) { return subnetMaskToCidrPrefix(mask) >= 0; }

bool validateIpAddress(std::string_view address) {
  logLine("Validating IP Address: ", address);
  Ipv4Octets octets{};
  const bool valid = parseIpv4Octets(address, octets);
  logLine("IP Address validation result: ", valid ? "Valid" : "Invalid");
  return valid;
}

std::string joinStoredAddress(std::string_view address, int prefix, std::string_view gateway) {
  return std::string(address)
      .append("/")
      .append(std::to_string(prefix))
      .append(",")
      .append(gateway);
}

void splitEthernetAddress(std::string_view fullEthernetAddress, std::string& address,
                          std::string& mask, std::string& gateway) {
  address.clear();
  mask.clear();
  gateway.clear();
  StoredAddress pieces;
  std::uint32_t prefix{};
  if (!cutStoredAddress(fullEthernetAddress, pieces))
    return logError("Invalid Ethernet address format: ", fullEthernetAddress);
  if (!parseCidrPrefix(pieces.prefix, prefix))
    return logError("Invalid CIDR prefix in ethernet address: ", fullEthernetAddress);
  address = trim(pieces.address);
  mask = cidrPrefixToSubnetMask(prefix);
  gateway = trim(pieces.gateway);
}

void splitApAddress(std::string_view fullApAddress, std::string& address, std::string& mask) {
  address.clear();
  mask.clear();
  StoredAddress pieces;
  std::uint32_t prefix{};
  if (!cutStoredAddress(fullApAddress, pieces)) return logError("Invalid Format");
  if (!parseCidrPrefix(pieces.prefix, prefix))
    return logError("Invalid CIDR prefix in address: ", fullApAddress);
  address = trim(pieces.address);
  mask = cidrPrefixToSubnetMask(prefix);
}
