// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "settings/keyfile.h"

/** The modes of the wireless connection, as NetworkManager's wifi mode. */
inline constexpr std::string_view WIFI_AP_MODE = "ap";
inline constexpr std::string_view WIFI_CLIENT_MODE = "infrastructure";
inline constexpr std::string_view WIFI_DISABLED_MODE = "disabled";

/** The only band that an access point is given: 2.4 GHz. */
inline constexpr std::string_view WIFI_BAND = "bg";

/** The interface, unless the keyfile names another one. */
inline constexpr std::string_view WIFI_INTERFACE = "wlan0";

extern const DefaultKeyfile DEFAULT_WIFI_KEYFILE;

/** What varies in the keyfile of the wireless connection. */
struct WifiSettings {
  std::string deviceName;
  std::string ssid;
  std::string password;
  std::string channel;        // access point only: "0" (automatic) to "11"
  std::string storedAddress;  // access point only: "address/prefix,gateway"
};

/**
 * The keyfile values of the wireless connection, in the order in which they are written; none for
 * a mode other than access point and client.
 */
std::vector<KeyfileEntry> wifiKeyfileEntries(std::string_view mode, const WifiSettings& settings);

/**
 * Builds the stored form of an access point's address. Its gateway is the address with 1 as the
 * last field, whatever the mask. Logs the check of the address; a bad address or mask is reported
 * on standard error and gives empty text.
 */
std::string formatApAddress(std::string_view address, std::string_view mask);

/**
 * Whether a password will do for an access point: at least 8 bytes, all of them ASCII letters,
 * digits, " ", "-" or "_".
 */
bool isValidWifiPassword(std::string_view password);
