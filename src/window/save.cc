// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include "base/print.h"
#include "base/whole_file.h"
#include "settings/keyfile.h"
#include "settings/wifi.h"

void NetworkManagerWindow::saveAndExit() {
  // Hiding the window ends its life: what is needed afterwards is taken before.
  const NetworkManagerConfig* const configuration = config;
  const int page = notebook.get_current_page();
  if (page == ETHERNET_PAGE && saveEthernet()) {
    const std::string id = readConnectionId(ethernetPath);
    hide();  // before the request, and below after it; both are intended
    configuration->runPermissionsHandler("finalize_ethernet", id);
  } else if (page == WIFI_PAGE && saveWifi()) {
    configuration->runPermissionsHandler("finalize_wifi", readConnectionId(wifiPath));
    hide();
  }
}

bool NetworkManagerWindow::saveEthernet() {
  if (selectedEthernetMode != ETHERNET_STATIC_MODE &&
      selectedEthernetMode != ETHERNET_DYNAMIC_MODE) {
    logError("Unexpected Ethernet mode: ", selectedEthernetMode);
    return false;
  }
  resetEthernetFileOnModeChange();
  if (selectedEthernetMode == ETHERNET_STATIC_MODE && !validateEthernetValues()) {
    logError("Invalid format for IP Address or Subnet Mask");
    return false;
  }
  writeEthernetSettingsToFile(selectedEthernetMode);
  writeEthernetUpdateFile();
  removeKeyfileValueQuotes(ethernetPath);
  flushToDisk(ethernetPath);
  return true;
}

bool NetworkManagerWindow::saveWifi() {
  if (selectedWifiMode == WIFI_DISABLED_MODE) {
    resetWifiCredentials();  // the removal does it once more; both lines are intended
    removeWifiSettingsFile();
    return true;
  }
  if (selectedWifiMode != WIFI_AP_MODE && selectedWifiMode != WIFI_CLIENT_MODE) {
    logError("Unexpected Wi-Fi mode: ", selectedWifiMode);
    return false;
  }
  resetWifiFileOnModeChange();
  if (selectedWifiMode == WIFI_AP_MODE && !validateWifiValues()) {
    logError("Invalid format for IP Address or Subnet Mask, or invalid wifi mode");
    return false;
  }
  writeWifiSettingsToFile(selectedWifiMode);
  removeKeyfileValueQuotes(wifiPath);
  flushToDisk(wifiPath);
  return true;
}

std::string NetworkManagerWindow::readConnectionId(const std::string& path) const {
  return path.empty() ? std::string() : config->readIniString("connection", "id", "", path);
}

void NetworkManagerWindow::closeWithoutSaving() {
  config->runPermissionsHandler("rollback", "");
  logLine("Closing program without saving");
  hide();
}
