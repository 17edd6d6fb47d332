// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

/** What the operations on addresses mean, written out step by step without a thought of speed. */
namespace definitions {

using Octets = std::array<std::uint8_t, 4>;

inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

inline std::string trimmed(std::string text) {
  while (!text.empty() && isBlank(text.back())) text.pop_back();
  while (!text.empty() && isBlank(text.front())) text.erase(0, 1);
  return text;
}

/** Decimal digits alone, of a number that an int can hold. */
inline std::optional<int> number(const std::string& text) {
  if (text.empty()) return {};
  for (const char c : text)
    if (c < '0' || c > '9') return {};
  try {
    return std::stoi(text);
  } catch (const std::out_of_range&) {
    return {};
  }
}

/** Reads fields like lines that end in ".": nothing behind the last one is no field. */
inline bool parseOctets(const std::string& text, Octets& octets) {
  std::istringstream fields(trimmed(text));
  std::string field;
  std::size_t count = 0;
  while (std::getline(fields, field, '.')) {
    if (count == octets.size()) return false;
    const std::optional<int> octet = number(trimmed(field));
    if (!octet || *octet > 255) return false;
    octets.at(count++) = static_cast<std::uint8_t>(*octet);
  }
  return count == octets.size();
}

inline bool parsePrefix(const std::string& text, std::uint32_t& prefix) {
  const std::optional<int> value = number(trimmed(text));
  if (!value) return false;
  prefix = static_cast<std::uint32_t>(*value);
  return *value <= 32;
}

inline std::string dotted(std::uint32_t address) {
  return std::to_string(address >> 24) + "." + std::to_string(address >> 16 & 255) + "." +
         std::to_string(address >> 8 & 255) + "." + std::to_string(address & 255);
}

/** As many ones as the prefix is long, then zeros. */
inline std::uint32_t maskNumber(unsigned prefix) {
  const std::bitset<32> bits(std::string(prefix, '1') + std::string(32 - prefix, '0'));
  return static_cast<std::uint32_t>(bits.to_ulong());
}

/** The ones from the top bit on, if there are no others; else -1. */
inline int prefixOfMask(std::uint32_t mask) {
  const int ones = mask == ~std::uint32_t{0} ? 32 : __builtin_clz(~mask);
  return __builtin_popcount(mask) == ones ? ones : -1;
}

inline int prefixOfMaskText(const std::string& text) {
  Octets octets{};
  if (!parseOctets(text, octets)) return -1;
  std::uint32_t mask = 0;
  for (const std::uint8_t octet : octets) mask = mask * 256 + octet;
  return prefixOfMask(mask);
}

/** A stored address, "address/prefix,gateway", in pieces; and what is said about a bad one. */
struct Split {
  std::string address;
  std::string mask;
  std::string gateway;
  std::string complaint;
};

inline Split split(const std::string& stored, const std::string& formatComplaint,
                   const std::string& prefixComplaint) {
  const std::size_t slash = stored.find('/');
  const std::size_t comma = stored.find(',');
  if (slash == std::string::npos || comma == std::string::npos)
    return {{}, {}, {}, formatComplaint + "\n"};
  const std::string prefixText =
      comma > slash ? stored.substr(slash + 1, comma - slash - 1) : stored.substr(slash + 1);
  std::uint32_t prefix = 0;
  if (!parsePrefix(prefixText, prefix)) return {{}, {}, {}, prefixComplaint + stored + "\n"};
  return {trimmed(stored.substr(0, slash)),
          dotted(maskNumber(prefix)),
          trimmed(stored.substr(comma + 1)),
          {}};
}

}  // namespace definitions
