// SPDX-License-Identifier: MIT
#include "settings/keyfile.h"
#include "settings/text.h"
#include "settings/wifi.h"
#include "window/NetworkManagerWindow.h"

void NetworkManagerWindow::saveAndExit() {
  switch (notebook.get_current_page()) {
    case ETHERNET_PAGE:
      if (saveEthernet()) {
        // Hiding the window ends its life: what is needed then is taken before.
        const NetworkManagerConfig* const survivor = config;
        const std::string id = readConnectionId(ethernetPath);
        hide();
        survivor->runPermissionsHandler("finalize_ethernet", id);
      }
      break;
    case WIFI_PAGE:
      if (saveWifi()) {
        // Here the request comes before the window goes, unlike above; both are intended.
        config->runPermissionsHandler("finalize_wifi", readConnectionId(wifiPath));
        hide();
      }
      break;
    default:
      break;
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
  return true;
}

bool NetworkManagerWindow::saveWifi() {
  if (selectedWifiMode == WIFI_DISABLED_MODE) {
    resetWifiCredentials();  // and once more on the removal, each with its line; intended
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
  return true;
}

std::string NetworkManagerWindow::readConnectionId(const std::string& path) const {
  return path.empty() ? std::string() : config->readIniString("connection", "id", "", path);
}
