// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/wifi.h"

#include <algorithm>

#include "base/print.h"
#include "base/trim.h"
#include "settings/ipv4.h"

// Unlike the one for Ethernet this has no empty lines.
constexpr DefaultKeyfile DEFAULT_WIFI_KEYFILE = {
    "wlan0.nmconnection",
    "[connection]\n"
    "id=new_wifi_connection\n"
    "type=wifi\n"
    "interface-name=wlan0"
    "\n[wifi]\n"
    "ssid=my_new_wifi"
    "\n[ipv4]\n"
    "method=auto"
    "\n[proxy]",
};

namespace {

std::vector<KeyfileEntry> accessPointEntries(const WifiSettings& settings) {
  return {
      {"connection", "id", "Hotspot"},
      {"connection", "type", "wifi"},
      {"connection", "autoconnect", "true"},
      {"connection", "interface-name", settings.deviceName},
      {"wifi", "mode", std::string(WIFI_AP_MODE)},
      {"wifi", "ssid", settings.ssid},
      {"wifi", "band", std::string(WIFI_BAND)},
      {"wifi", "channel", settings.channel},
      {"wifi-security", "group", "ccmp;"},
      {"wifi-security", "key-mgmt", "wpa-psk"},
      {"wifi-security", "pairwise", "ccmp;"},
      {"wifi-security", "proto", "rsn;"},
      {"wifi-security", "psk", settings.password},
      {"ipv4", "method", "shared"},
      {"ipv4", "address1", settings.storedAddress},
      {"ipv6", "addr-gen-mode", "stable-privacy"},
      {"ipv6", "method", "ignore"},
  };
}

std::vector<KeyfileEntry> clientEntries(const WifiSettings& settings) {
  return {
      {"connection", "id", "ZOR"},
      {"connection", "type", "wifi"},
      {"connection", "autoconnect", "true"},
      {"connection", "interface-name", settings.deviceName},
      {"connection", "permissions", "user:zor:;"},
      {"wifi", "mode", std::string(WIFI_CLIENT_MODE)},
      {"wifi", "ssid", settings.ssid},
      {"wifi-security", "auth-alg", "open"},
      {"wifi-security", "key-mgmt", "wpa-psk"},
      {"wifi-security", "psk", settings.password},
      {"ipv4", "method", "auto"},
      {"ipv6", "addr-gen-mode", "stable-privacy"},
      {"ipv6", "method", "auto"},
  };
}

}  // namespace

std::vector<KeyfileEntry> wifiKeyfileEntries(std::string_view mode, const WifiSettings& settings) {
  if (mode == WIFI_AP_MODE) return accessPointEntries(settings);
  if (mode == WIFI_CLIENT_MODE) return clientEntries(settings);
  return {};
}

std::string formatApAddress(std::string_view address, std::string_view mask) {
  address = trim(address);
  const int prefix = subnetMaskToCidrPrefix(mask);
  if (prefix < 0 || !validateIpAddress(address)) {
    logError("Unable to create AP address: invalid IP or subnet mask");
    return {};
  }
  const std::string network(address.substr(0, address.rfind('.') + 1));
  return joinStoredAddress(address, prefix, network + "1");
}

namespace {

constexpr std::size_t SHORTEST_PASSWORD = 8;
// Spelled out: in some locales bytes above 127 are letters to isalnum().
constexpr std::string_view PASSWORD_CHARACTERS =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 -_";

}  // namespace

bool isValidWifiPassword(std::string_view password) {
  return password.size() >= SHORTEST_PASSWORD &&
         password.find_first_not_of(PASSWORD_CHARACTERS) == std::string_view::npos;
}
