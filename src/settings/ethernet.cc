// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/ethernet.h"

#include <algorithm>

#include "base/print.h"

constexpr DefaultKeyfile DEFAULT_ETHERNET_KEYFILE = {
    "ethernet.nmconnection",
    "[connection]\n"
    "id=new_ethernet_connection\n"
    "type=ethernet\n"
    "autoconnect-priority=-999\n"
    "interface-name=eth0\n"
    "\n[ethernet]\n"
    "\n[ipv4]\n"
    "method=auto\n"
    "\n[ipv6]\n"
    "addr-gen-mode=stable-privacy\n"
    "method=auto\n"
    "\n[proxy]",
};

std::vector<KeyfileEntry> ethernetKeyfileEntries(std::string_view mode,
                                                 const EthernetSettings& settings) {
  if (mode != ETHERNET_STATIC_MODE && mode != ETHERNET_DYNAMIC_MODE) return {};
  std::vector<KeyfileEntry> entries = {
      {"connection", "id", "ethernet"},
      {"connection", "type", "ethernet"},
      {"connection", "autoconnect-priority", "-999"},
      {"connection", "autoconnect", "true"},
      {"connection", "interface-name", std::string(ETHERNET_INTERFACE)},
      {"ipv4", "method", std::string(mode)},
  };
  if (mode == ETHERNET_STATIC_MODE) {
    entries.push_back({"ipv4", "address1", settings.storedAddress});
    entries.push_back({"ipv4", "dns", settings.dnsServer});
  }
  entries.push_back({"ipv6", "addr-gen-mode", "stable-privacy"});
  entries.push_back({"ipv6", "method", "auto"});
  return entries;
}

std::string formatEthernetAddress(std::string_view address, std::string_view mask,
                                  std::string_view gateway) {
  const int prefix = subnetMaskToCidrPrefix(mask);
  if (prefix < 0) {
    logError("Unable to create ethernet address: invalid subnet mask");
    return {};
  }
  Ipv4Octets ignored{};
  if (!parseIpv4Octets(address, ignored) || !parseIpv4Octets(gateway, ignored)) {
    logError("Unable to create ethernet address: invalid IP, subnet, or gateway format");
    return {};
  }
  return joinStoredAddress(address, prefix, gateway);
}

std::string firstDnsServer(std::string_view dns) {
  constexpr std::string_view SEPARATORS = ";, \t\n\v\f\r";
  const auto first = std::min(dns.find_first_not_of(SEPARATORS), dns.size());
  dns.remove_prefix(first);
  return std::string(dns.substr(0, dns.find_first_of(SEPARATORS)));
}

namespace {

bool parseOctets(std::string_view text, EthernetUpdateRecord::Octets& octets) {
  Ipv4Octets parsed{};
  const bool valid = parseIpv4Octets(text, parsed);
  std::copy(parsed.begin(), parsed.end(), octets.begin());
  return valid;
}

}  // namespace

void EthernetUpdateRecord::setOctets(std::string_view addressText, std::string_view maskText,
                                     std::string_view gatewayText) {
  if (!isValidSubnetMask(maskText) || !parseOctets(addressText, address) ||
      !parseOctets(maskText, subnetMask) || !parseOctets(gatewayText, gateway))
    clearOctets();
}

void EthernetUpdateRecord::clearOctets() {
  address = {};
  subnetMask = {};
  gateway = {};
}

std::string EthernetUpdateRecord::toText() const {
  constexpr std::string_view DIGITS = "0123456789ABCDEF";
  constexpr std::int32_t NIBBLE_BITS = 4;
  constexpr std::int32_t NIBBLE_MASK = 0xF;
  constexpr char SEPARATOR = ' ';
  std::string text;
  const auto append = [&](std::int32_t field) {
    text += {DIGITS[(field >> NIBBLE_BITS) & NIBBLE_MASK], DIGITS[field & NIBBLE_MASK], SEPARATOR};
  };
  append(mode);
  for (const Octets& octets : {address, subnetMask, gateway})
    std::for_each(octets.begin(), octets.end(), append);
  return text;
}
