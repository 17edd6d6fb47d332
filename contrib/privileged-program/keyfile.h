// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

/** A connection of the device: the one file that it has, and what that must say of itself. */
struct Connection {
  const char* file;
  std::string_view type;
  std::string_view interface;
};

constexpr Connection ETHERNET = {"ethernet.nmconnection", "ethernet", "eth0"};
constexpr Connection WIFI = {"wlan0.nmconnection", "wifi", "wlan0"};

/** The values of a keyfile by "section.key". */
using Settings = std::map<std::string, std::string>;

/**
 * Reads a keyfile of one of the connections. Whatever is not known to be harmless is refused: a
 * section, key or value that is not on the list, a second one of the same name, a line of another
 * form than "[section]", "key=value", "# comment" and the empty one. Throws a Refusal that tells
 * the number of the line, and nothing of what it holds.
 */
Settings readKeyfile(const Connection& connection, std::string_view content);

/**
 * What the window notes of these Ethernet settings: the mode, "00" for static and "01" for dynamic,
 * then the octets of address, mask and gateway, each with two hexadecimal digits and a blank.
 * Empty if the settings are no static address with a gateway, nor dynamic; else of one size.
 */
constexpr std::size_t RECORD_SIZE = 39;
std::string recordOf(const Settings& settings);
