// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/** The four numbers of a dotted address, first one first. */
using Ipv4Octets = std::array<std::uint8_t, 4>;

/**
 * Reads a dotted address. Blanks around it and around each field, leading zeros (decimal all the
 * same) and one "." at its end are accepted. Returns whether the text is an address; the octets
 * before the first bad field are written even if it is not.
 */
bool parseIpv4Octets(std::string_view text, Ipv4Octets& octets);

/**
 * Reads a prefix length, decimal digits with blanks around them. Returns whether it is one, from 0
 * to 32. A larger number that fits into an int is written to prefix too.
 */
bool parseCidrPrefix(std::string_view text, std::uint32_t& prefix);

/** The dotted mask of a prefix length; empty, with a line on standard error, for one above 32. */
std::string cidrPrefixToSubnetMask(std::uint32_t prefix);

/** The prefix length, 0 to 32, of a mask, first octet on top; -1 for one with gaps. */
int maskToCidrPrefix(std::uint32_t mask);

/** The prefix length, 0 to 32, of a dotted mask; -1 for text that is none or has gaps. */
int subnetMaskToCidrPrefix(std::string_view mask);

/** Whether the text is a dotted mask without gaps. */
bool isValidSubnetMask(std::string_view mask);

/** parseIpv4Octets() for its verdict alone, which is logged together with the text. */
bool validateIpAddress(std::string_view address);

/** The stored form of an address, "address/prefix,gateway". Checks nothing. */
std::string joinStoredAddress(std::string_view address, int prefix, std::string_view gateway);

/**
 * Splits the stored form of an address again, and turns the prefix into a mask.
 * Address and gateway are trimmed but not checked. On any failure all outputs are empty and a line
 * on standard error says why. No output may be the text that is split.
 */
void splitEthernetAddress(std::string_view fullEthernetAddress, std::string& address,
                          std::string& mask, std::string& gateway);

/** The same for an access point, whose gateway is not wanted. */
void splitApAddress(std::string_view fullApAddress, std::string& address, std::string& mask);
