// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Finding the keyfiles, reading all that the pages show, saving it and removing the quotes. The
// input is the keyfiles of a folder, with "@@" and an LF between them.
#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <utility>

#include "app/NetworkManagerConfig.h"
#include "fuzz/support.h"
#include "settings/ethernet.h"
#include "settings/ipv4.h"
#include "settings/keyfile.h"
#include "settings/wifi.h"

/** No pause between reading and writing: it would allow no more than twenty inputs a second. */
extern "C" int nanosleep(const timespec* /*pause*/, timespec* /*rest*/) { return 0; }

namespace {

constexpr std::size_t VALUE_MAX = 99;

bool isBlank(char c) { return c >= 1 && c <= ' '; }

std::string readValue(const std::string& section, const std::string& key, const std::string& file) {
  const auto& config = NetworkManagerConfig::getInstance();
  const std::string value = config.readIniString(section, key, "none", file);
  REQUIRE(value.size() <= VALUE_MAX && value.find('\0') == std::string::npos);
  return value;
}

/** All values that the two pages and the save read. */
void readAll(const std::string& file) {
  constexpr std::array<std::pair<const char*, const char*>, 13> VALUES = {{
      {"connection", "id"},
      {"connection", "type"},
      {"connection", "interface-name"},
      {"wifi", "mode"},
      {"wifi", "ssid"},
      {"wifi", "band"},
      {"wifi", "channel"},
      {"wifi-security", "psk"},
      {"ipv4", "method"},
      {"ipv4", "address1"},
      {"ipv4", "dns"},
      {"ipv6", "method"},
      {"", "key-before-any-section"},
  }};
  for (const auto& [section, key] : VALUES) readValue(section, key, file);

  const std::string server = firstDnsServer(readValue("ipv4", "dns", file));
  REQUIRE(server.find_first_of(";, \t\n\v\f\r") == std::string::npos);
  std::string address;
  std::string mask;
  std::string gateway;
  const std::string stored = readValue("ipv4", "address1", file);
  splitEthernetAddress(stored, address, mask, gateway);
  REQUIRE(mask.empty() ? address.empty() && gateway.empty() : isValidSubnetMask(mask));
  std::string apAddress;
  std::string apMask;
  splitApAddress(stored, apAddress, apMask);
  REQUIRE(apAddress == address && apMask == mask);
}

/** Saves what was read, in one of the modes: all of them would take too long. */
void save(const std::string& file, std::size_t mode) {
  const auto& config = NetworkManagerConfig::getInstance();
  const std::string stored = readValue("ipv4", "address1", file);
  const std::string dns = readValue("ipv4", "dns", file);
  const WifiSettings wifi = {
      readValue("connection", "interface-name", file), readValue("wifi", "ssid", file),
      readValue("wifi-security", "psk", file), readValue("wifi", "channel", file), stored};
  const std::array entries = {ethernetKeyfileEntries(ETHERNET_STATIC_MODE, {stored, dns}),
                              ethernetKeyfileEntries(ETHERNET_DYNAMIC_MODE, {stored, dns}),
                              wifiKeyfileEntries(WIFI_AP_MODE, wifi),
                              wifiKeyfileEntries(WIFI_CLIENT_MODE, wifi)};
  for (const KeyfileEntry& entry : entries.at(mode % entries.size())) {
    REQUIRE(config.writeIniString(entry.section, entry.key, entry.value, file) == 1);
    // Blanks around a value are lost, unless it is quoted.
    if (std::none_of(entry.value.begin(), entry.value.end(), isBlank))
      REQUIRE(readValue(entry.section, entry.key, file) == entry.value);
  }
}

/** What removing the quotes makes of a file, line by line. */
std::string withoutQuotes(const std::string& content) {
  std::istringstream lines(content);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
    bool affected = false;
    for (const char* key : {"permissions=", "group=", "pairwise=", "proto="})
      affected = affected || line.find(key) != std::string::npos;
    for (const char c : line)
      if (!affected || c != '"') result += c;
    result += '\n';
  }
  return result;
}

void checkFound(const std::string& found, const std::string& type,
                const std::vector<std::string>& files) {
  const auto isOfType = [&](const std::string& file) {
    return readValue("connection", "type", file) == type;
  };
  std::set<std::string> candidates;
  for (const std::string& file : files)
    if (isOfType(file)) candidates.insert(file);
  REQUIRE(candidates.empty() ? found.empty() : candidates.count(found) == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryDirectory& folder = fuzzFolder();
  static const bool silenced = [] {
    setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", folder.path.c_str(), 1);
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    return true;
  }();
  REQUIRE(silenced);

  std::vector<std::string> contents = splitInput(textOf(data, size));
  constexpr std::size_t MOST = 5;
  if (contents.size() > MOST) contents.resize(MOST);
  std::vector<std::string> files;
  for (std::size_t index = 0; index < contents.size(); ++index) {
    files.push_back(folder.file("file" + std::to_string(index)));
    writeOldFile(files.back(), contents[index]);
  }

  auto& config = NetworkManagerConfig::getInstance();
  config.initialize(NetworkManagerConfig::DEBUG);
  REQUIRE(config.listConnectionFiles().size() == files.size());
  checkFound(config.getEthernetConnectionPath(), "ethernet", files);
  checkFound(config.getWifiConnectionPath(), "wifi", files);

  for (std::size_t index = 0; index < files.size(); ++index) {
    const std::string& file = files[index];
    readAll(file);
    REQUIRE(isStillOld(file) && readBytes(file) == contents[index]);
    if (index == 0) save(file, contents[index].size());
    const std::string saved = readBytes(file);
    removeKeyfileValueQuotes(file);
    REQUIRE(readBytes(file) == withoutQuotes(saved));
    REQUIRE(modeOf(file) == 0600);
    std::filesystem::remove(file);
  }
  REQUIRE(folder.names().empty());
  return 0;
}
