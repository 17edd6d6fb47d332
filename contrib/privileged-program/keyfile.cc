// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "keyfile.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <set>

#include "system.h"

namespace {

constexpr std::string_view DIGITS = "0123456789";
constexpr std::string_view NUMBER = "-0123456789";
constexpr std::string_view UUID = "-0123456789abcdefABCDEF";
constexpr std::string_view ADDRESSES = "0123456789./,; ";
// The window reads no more of a value.
constexpr std::size_t LONGEST_VALUE = 99;
// It takes what is behind that for the next line, a comment's as well.
constexpr std::size_t LONGEST_LINE = 511;
// Of comments and empty lines. All else is a few kilobytes: so the next save is not too large.
constexpr std::size_t MOST_COMMENTS = 32768;
// The default file has it, until the window writes another one.
constexpr std::string_view DEFAULT_SSID = "my_new_wifi";

enum class Form {
  WORD,          // one of some words
  CHARACTERS,    // some characters, one that is no blank at least
  MAY_BE_EMPTY,  // the same, or none
  TEXT,          // anything that can be printed
  NAME,          // the same, but no list of bytes
};

struct Setting {
  std::string_view type;  // of the connection; empty for both
  std::string_view section;
  std::string_view key;
  Form form;
  std::string_view values;
};

// What the window writes, and a few values that a first keyfile may have. None of them names a
// file, a program or another connection, and what an address is worth NetworkManager's own parser
// says. Only the access point may share its network: that starts servers on the interface.
constexpr std::array SETTINGS = {
    // Not those of the default files: a file that still has one of them did not get its values.
    Setting{"", "connection", "id", Form::WORD, "ethernet Hotspot ZOR"},
    Setting{"", "connection", "uuid", Form::CHARACTERS, UUID},
    Setting{"", "connection", "timestamp", Form::CHARACTERS, DIGITS},
    Setting{"", "connection", "type", Form::WORD, "ethernet wifi"},
    Setting{"", "connection", "interface-name", Form::WORD, "eth0 wlan0"},
    Setting{"", "connection", "autoconnect", Form::WORD, "true false"},
    Setting{"", "connection", "autoconnect-priority", Form::CHARACTERS, NUMBER},
    // Whoever is named here may change the connection through NetworkManager, past this list.
    Setting{"wifi", "connection", "permissions", Form::WORD, "user:zor:;"},
    Setting{"wifi", "wifi", "mode", Form::WORD, "ap infrastructure"},
    Setting{"wifi", "wifi", "ssid", Form::NAME, ""},
    Setting{"wifi", "wifi", "band", Form::WORD, "a bg"},
    Setting{"wifi", "wifi", "channel", Form::CHARACTERS, DIGITS},
    Setting{"wifi", "wifi-security", "auth-alg", Form::WORD, "open"},
    Setting{"wifi", "wifi-security", "group", Form::WORD, "ccmp;"},
    Setting{"wifi", "wifi-security", "key-mgmt", Form::WORD, "wpa-psk"},
    Setting{"wifi", "wifi-security", "pairwise", Form::WORD, "ccmp;"},
    Setting{"wifi", "wifi-security", "proto", Form::WORD, "rsn;"},
    Setting{"wifi", "wifi-security", "psk", Form::TEXT, ""},
    Setting{"ethernet", "ipv4", "method", Form::WORD, "auto manual"},
    Setting{"wifi", "ipv4", "method", Form::WORD, "auto manual shared"},
    Setting{"", "ipv4", "address1", Form::CHARACTERS, ADDRESSES},
    Setting{"", "ipv4", "dns", Form::MAY_BE_EMPTY, ADDRESSES},
    Setting{"", "ipv6", "addr-gen-mode", Form::WORD, "default eui64 stable-privacy"},
    Setting{"", "ipv6", "method", Form::WORD, "auto disabled ignore link-local"},
};

// Sections that may be there, though nothing may be in them.
constexpr std::array<std::string_view, 2> EMPTY_SECTIONS = {"ethernet", "proxy"};

bool isFor(const Connection& connection, const Setting& setting) {
  return setting.type.empty() || setting.type == connection.type;
}

bool isSection(const Connection& connection, std::string_view name) {
  return std::any_of(SETTINGS.begin(), SETTINGS.end(),
                     [&](const Setting& setting) {
                       return setting.section == name && isFor(connection, setting);
                     }) ||
         (std::count(EMPTY_SECTIONS.begin(), EMPTY_SECTIONS.end(), name) > 0 &&
          (name != "ethernet" || name == connection.type));
}

bool isWordOf(std::string_view words, std::string_view value) {
  while (!words.empty()) {
    const std::string_view word = words.substr(0, words.find(' '));
    if (word == value) return true;
    words.remove_prefix(std::min(word.size() + 1, words.size()));
  }
  return false;
}

/** Whether a backslash and the letter behind it stand for the end of a line. */
bool holdsLineEnd(std::string_view value) {
  for (std::size_t at = value.find('\\'); at != std::string_view::npos;
       at = value.find('\\', at + 2))
    if (value.substr(at + 1, 1) == "n" || value.substr(at + 1, 1) == "r") return true;
  return false;
}

/** Whether a value ends with ";", and perhaps blanks, their escapes, or a backslash alone. */
bool endsWithSemicolon(std::string_view value) {
  for (;;) {
    if (value.ends_with("\\s") || value.ends_with("\\t"))
      value.remove_suffix(2);
    else if (value.ends_with(' ') || value.ends_with('\\'))
      value.remove_suffix(1);
    else
      return value.ends_with(';');
  }
}

bool isAllowed(const Setting& setting, std::string_view value) {
  if (value.size() > LONGEST_VALUE) return false;
  switch (setting.form) {
    case Form::WORD:
      return isWordOf(setting.values, value);
    case Form::CHARACTERS:
      return value.find_first_not_of(' ') != std::string_view::npos &&
             value.find_first_not_of(setting.values) == std::string_view::npos;
    case Form::MAY_BE_EMPTY:
      return value.find_first_not_of(setting.values) == std::string_view::npos;
    case Form::TEXT:  // what cannot be printed was refused with its line
      return !holdsLineEnd(value);
    case Form::NAME:  // numbers with ";" behind each are bytes of any value
      return !holdsLineEnd(value) && !endsWithSemicolon(value);
  }
  return false;
}

bool isPrintable(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= ' ' && byte != 0x7F;
}

[[noreturn]] void refuse(int line, const std::string& reason) {
  throw Refusal("line " + std::to_string(line) + ": " + reason);
}

/** Reads the lines of a keyfile one after the other. */
class Reader {
 public:
  explicit Reader(const Connection& ours) : connection(ours) {}

  void read(std::string_view line) {
    ++number;
    if (!std::all_of(line.begin(), line.end(), isPrintable)) refuse(number, "a control character");
    if (line.size() > LONGEST_LINE) refuse(number, "a line that is too long");
    if (line.empty() || line.front() == '#') {
      comments += line.size() + 1;
      if (comments > MOST_COMMENTS) refuse(number, "too many comments");
    } else if (line.front() == '[') {
      readSection(line);
    } else {
      readSetting(line);
    }
  }

  Settings settings;

 private:
  void readSection(std::string_view line) {
    if (line.back() != ']') refuse(number, "no section, nor a setting");
    section = line.substr(1, line.size() - 2);
    if (!isSection(connection, section)) refuse(number, "a section that is not allowed");
    // Of two, the window reads the first and NetworkManager the last.
    if (!sections.insert(section).second) refuse(number, "a section for the second time");
  }

  void readSetting(std::string_view line) {
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos) refuse(number, "no section, nor a setting");
    const std::string_view key = line.substr(0, sign);
    const std::string_view value = line.substr(sign + 1);
    const auto* const setting =
        std::find_if(SETTINGS.begin(), SETTINGS.end(), [&](const Setting& known) {
          return known.section == section && known.key == key && isFor(connection, known);
        });
    if (setting == SETTINGS.end()) refuse(number, "a setting that is not allowed");
    if (!isAllowed(*setting, value)) refuse(number, "a value that is not allowed");
    const std::string name = section + "." + std::string(key);
    if (!settings.emplace(name, value).second) refuse(number, "a setting for the second time");
  }

  const Connection& connection;
  int number = 0;
  std::size_t comments = 0;
  std::string section;
  std::set<std::string> sections;
};

std::string valueOf(const Settings& settings, const std::string& name) {
  const auto found = settings.find(name);
  return found == settings.end() ? "" : found->second;
}

/** Appends the octets of an address to a record. Returns whether it is one. */
bool appendAddress(std::string& record, const std::string& text) {
  in_addr address{};
  if (inet_pton(AF_INET, text.c_str(), &address) != 1) return false;
  constexpr std::string_view HEXADECIMAL = "0123456789ABCDEF";
  std::array<std::uint8_t, sizeof address> octets{};
  std::memcpy(octets.data(), &address, octets.size());  // first octet first
  for (const std::uint8_t octet : octets)
    record += {HEXADECIMAL[octet >> 4U], HEXADECIMAL[octet & 0xFU], ' '};
  return true;
}

/** The dotted mask of a prefix length; empty for a text that is none. */
std::string maskOf(std::string_view prefix) {
  constexpr unsigned BITS = 32;
  unsigned length = 0;
  const auto [end, error] = std::from_chars(prefix.begin(), prefix.end(), length);
  if (error != std::errc() || end != prefix.end() || length > BITS) return {};
  const in_addr mask{htonl(length == 0 ? 0 : ~0U << (BITS - length))};
  std::array<char, INET_ADDRSTRLEN> text{};
  return inet_ntop(AF_INET, &mask, text.data(), text.size());
}

}  // namespace

Settings readKeyfile(const Connection& connection, std::string_view content) {
  Reader reader(connection);
  while (!content.empty()) {
    const std::string_view line = content.substr(0, content.find('\n'));
    reader.read(line);
    content.remove_prefix(std::min(line.size() + 1, content.size()));
  }
  // Without them the file would be for something else, or for any interface.
  if (valueOf(reader.settings, "connection.type") != connection.type)
    throw Refusal("another type of connection");
  if (valueOf(reader.settings, "connection.interface-name") != connection.interface)
    throw Refusal("another interface");
  // The window writes them after the id, and stops nowhere when there is no room left: without them
  // the network would be open to everybody, or another one than was saved.
  const auto require = [&](const char* name) {
    if (valueOf(reader.settings, name).empty())
      throw Refusal(std::string("a network without ") + name);
  };
  if (connection.type == WIFI.type)
    for (const char* name : {"wifi.mode", "wifi-security.key-mgmt", "wifi-security.psk"})
      require(name);
  const bool isAccessPoint = valueOf(reader.settings, "wifi.mode") == "ap";
  if (isAccessPoint)
    for (const char* name : {"wifi.channel", "wifi-security.group", "wifi-security.pairwise",
                             "wifi-security.proto", "ipv4.address1"})
      require(name);
  if (valueOf(reader.settings, "wifi.ssid") == DEFAULT_SSID)
    throw Refusal("a network without a name of its own");
  const std::string method = valueOf(reader.settings, "ipv4.method");
  if (method == "manual" && !reader.settings.contains("ipv4.dns"))  // which may be empty
    throw Refusal("a static address without ipv4.dns");
  if (isAccessPoint && method != "shared")
    throw Refusal("an access point whose network is not shared");
  if (!isAccessPoint && method == "shared")
    throw Refusal("a network is shared that is no access point's");
  return std::move(reader.settings);
}

std::string recordOf(const Settings& settings) {
  const std::string method = valueOf(settings, "ipv4.method");
  std::string record;
  if (method == "auto") {
    for (int field = 0; field < 13; ++field) record += field == 0 ? "01 " : "00 ";
    return record;
  }
  std::string stored = valueOf(settings, "ipv4.address1");  // ADDRESS/PREFIX,GATEWAY
  stored.erase(0, stored.find_first_not_of(' '));           // nobody reads a blank in front
  stored = stored.substr(0, stored.find(';'));              // the window reads no further
  const std::size_t slash = stored.find('/');
  const std::size_t comma = stored.find(',');
  if (method != "manual" || slash == std::string::npos || comma == std::string::npos ||
      comma < slash)
    return {};
  record = "00 ";
  const bool complete =
      appendAddress(record, stored.substr(0, slash)) &&
      appendAddress(record,
                    maskOf(std::string_view(stored).substr(slash + 1, comma - slash - 1))) &&
      appendAddress(record, stored.substr(comma + 1));
  return complete ? record : "";
}
