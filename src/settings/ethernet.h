// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "settings/ipv4.h"
#include "settings/keyfile.h"

/** The modes of the wired connection, as NetworkManager's ipv4 method. */
inline constexpr std::string_view ETHERNET_STATIC_MODE = "manual";
inline constexpr std::string_view ETHERNET_DYNAMIC_MODE = "auto";

/** The interface that is written; another one is shown where the keyfile names it. */
inline constexpr std::string_view ETHERNET_INTERFACE = "eth0";

extern const DefaultKeyfile DEFAULT_ETHERNET_KEYFILE;

/** What varies in the keyfile of the wired connection. Both are for a static address only. */
struct EthernetSettings {
  std::string storedAddress;  // "address/prefix,gateway"
  std::string dnsServer;
};

/**
 * The keyfile values of the wired connection, in the order in which they are written; none for an
 * unknown mode. The dynamic mode leaves address1 and dns of an earlier static one as they are.
 */
std::vector<KeyfileEntry> ethernetKeyfileEntries(std::string_view mode,
                                                 const EthernetSettings& settings);

/**
 * Builds the stored form of a static address, "address/prefix,gateway". The texts go in as they
 * were entered. A bad one is reported on standard error and gives empty text.
 */
std::string formatEthernetAddress(std::string_view address, std::string_view mask,
                                  std::string_view gateway);

/** The first server in the value of the dns key, whatever separates the servers; or empty text. */
std::string firstDnsServer(std::string_view dns);

/** Where the update record is left for the privileged program. */
inline constexpr std::string_view ETHERNET_UPDATE_FILE = "/tmp/ethernetUpdateSettings";

/** The numeric form of the wired settings, for the privileged program. */
struct EthernetUpdateRecord {
  static constexpr std::int32_t STATIC = 0;
  static constexpr std::int32_t DYNAMIC = 1;
  using Octets = std::array<std::int32_t, 4>;  // first octet first, 0 to 255

  std::int32_t mode = STATIC;
  Octets address{};
  Octets subnetMask{};
  Octets gateway{};

  /** Takes the octets of three dotted texts; if one is bad, or the mask has gaps, all are 0. */
  void setOctets(std::string_view addressText, std::string_view maskText,
                 std::string_view gatewayText);

  /** Sets all octets to 0, which stands for "unset or invalid"; the mode stays. */
  void clearOctets();

  /** Thirteen two-digit upper-case hexadecimal fields, each followed by a blank, on one line. */
  std::string toText() const;
};
