// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Writes a keyfile as the window's save does, or reads a value of one, without the window: what is
// given to NetworkManager's parser must be what the program writes, and neither a display nor
// entries are needed for that.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "base/print.h"
#include "base/trim.h"
#include "settings/ethernet.h"
#include "settings/keyfile.h"
#include "settings/wifi.h"

namespace {

using Texts = std::vector<std::string>;

NetworkManagerConfig& config() { return NetworkManagerConfig::getInstance(); }

/** Whether the mode that is stored differs; the keyfile of another mode is gone then. */
bool removeOnModeChange(const std::string& path, const char* section, const char* key,
                        std::string_view mode) {
  if (config().readIniString(section, key, "", path) == mode) return false;
  std::remove(path.c_str());
  return true;
}

void writeEntries(const std::string& path, const std::vector<KeyfileEntry>& entries) {
  for (const KeyfileEntry& entry : entries)
    config().writeIniString(entry.section, entry.key, entry.value, path);
  removeKeyfileValueQuotes(path);
}

void saveEthernet(std::string_view mode, const EthernetSettings& settings) {
  if (removeOnModeChange(config().getEthernetConnectionPath(), "ipv4", "method", mode))
    config().createDefaultEthernetFile();
  writeEntries(config().getEthernetConnectionPath(), ethernetKeyfileEntries(mode, settings));
}

void saveWifi(std::string_view mode, const WifiSettings& settings) {
  if (removeOnModeChange(config().getWifiConnectionPath(), "wifi", "mode", mode))
    config().createDefaultWifiFile();
  writeEntries(config().getWifiConnectionPath(), wifiKeyfileEntries(mode, settings));
}

void saveStatic(const Texts& texts) {
  saveEthernet(ETHERNET_STATIC_MODE, {formatEthernetAddress(texts.at(0), texts.at(1), texts.at(2)),
                                      std::string(trim(texts.at(3)))});
}

void saveAccessPoint(const Texts& texts) {
  WifiSettings settings{"wlan0", texts.at(0), texts.at(1), texts.at(2), ""};
  settings.storedAddress = formatApAddress(texts.at(3), texts.at(4));
  saveWifi(WIFI_AP_MODE, settings);
}

void saveClient(const Texts& texts) {
  saveWifi(WIFI_CLIENT_MODE, {"wlan0", texts.at(0), texts.at(1), "", ""});
}

void printValue(const Texts& texts) {
  logLine(config().readIniString(texts.at(1), texts.at(2), "", texts.at(0)));
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void(const Texts&)>> actions = {
      {"default-ethernet", [](const Texts&) { config().createDefaultEthernetFile(); }},
      {"default-wifi", [](const Texts&) { config().createDefaultWifiFile(); }},
      {"static", saveStatic},  // address, mask, gateway, DNS server
      {"dynamic", [](const Texts&) { saveEthernet(ETHERNET_DYNAMIC_MODE, {}); }},
      {"access-point", saveAccessPoint},  // SSID, password, channel, address, mask
      {"client", saveClient},             // SSID, password
      {"read", printValue},               // path, section, key
  };
  // Without the folder the program would look for one near the working directory.
  if (argc < 2 || std::getenv("ZOR_NETWORKMANAGER_DEBUG_PATH") == nullptr) return 2;
  try {
    const auto& action = actions.at(argv[1]);
    config().initialize(NetworkManagerConfig::DEBUG);
    action(Texts(argv + 2, argv + argc));
  } catch (const std::exception& error) {
    logError("write_keyfile: ", error.what());
    return 2;
  }
  return 0;
}
