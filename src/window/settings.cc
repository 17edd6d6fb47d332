// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include <stdexcept>

#include "base/print.h"
#include "base/shared_file.h"
#include "base/trim.h"
#include "base/whole_file.h"
#include "settings/ipv4.h"
#include "settings/wifi.h"

namespace {

/** Where the old keyfile stands when the default one cannot be made. */
void moveToDefaultName(const std::string& path, const DefaultKeyfile& keyfile) {
  const std::string name = path.substr(0, path.rfind('/') + 1).append(keyfile.fileName);
  if (name != path) moveFile(path, name);
}

}  // namespace

void NetworkManagerWindow::setSelectedEthernetMode() {
  EthernetIPModeBox& modeBox = ethernetGrid.getIPModeBox();
  if (ethernetPath.empty()) {
    logError("No ethernet connection file found; defaulting mode to dynamic (auto).");
    selectedEthernetMode = ETHERNET_DYNAMIC_MODE;
    modeBox.setDynamicActive();
    return;
  }
  selectedEthernetMode = trim(config->readIniString("ipv4", "method", "", ethernetPath));
  logLine("setSelectedEthernetMode called. Retrieved mode: ", selectedEthernetMode);
  logLine("ETHERNET_STATIC_MODE constant: ", ETHERNET_STATIC_MODE);
  if (selectedEthernetMode == ETHERNET_STATIC_MODE) {
    logLine("Ethernet mode set to static (manual).");
    modeBox.setStaticActive();
    return;
  }
  if (selectedEthernetMode == ETHERNET_DYNAMIC_MODE) {
    logLine("Ethernet mode set to dynamic (auto).");
  } else {
    logError("Unrecognized Ethernet mode '", selectedEthernetMode,
             "'; defaulting to dynamic (auto).");
    selectedEthernetMode = ETHERNET_DYNAMIC_MODE;
  }
  modeBox.setDynamicActive();
}

void NetworkManagerWindow::populateEthernetSettingsFromFile() {
  logLine("populateEthernetSettingsFromFile called with mode: ", selectedEthernetMode);
  logLine("ETHERNET_STATIC_MODE constant: ", ETHERNET_STATIC_MODE);
  if (selectedEthernetMode == ETHERNET_DYNAMIC_MODE) {
    logLine("Ethernet mode is dynamic; no manual settings to populate.");
    ethernetGrid.getCredentialsBox().setDnsServer("");
    return;
  }
  if (selectedEthernetMode != ETHERNET_STATIC_MODE) {
    logError("Error: Ethernet mode not set. Cannot populate settings.");
    return;
  }
  logLine("Ethernet mode matches static.");
  populateStaticAddress();
}

void NetworkManagerWindow::populateStaticAddress() {
  const std::string fullEthernetAddress =
      config->readIniString("ipv4", "address1", "", ethernetPath);
  const std::string dns = config->readIniString("ipv4", "dns", "", ethernetPath);
  if (fullEthernetAddress.empty()) {
    logError("Error: No Ethernet address information found in the configuration file.");
    return;
  }
  logLine("Read fullEthernetAddress: ", fullEthernetAddress);
  std::string address;
  std::string mask;
  std::string gateway;
  splitEthernetAddress(fullEthernetAddress, address, mask, gateway);
  EthernetCredentialsBox& entries = ethernetGrid.getCredentialsBox();
  entries.setIpAddress(address);
  entries.setSubnetMask(mask);
  entries.setDefaultGateway(gateway);
  entries.setDnsServer(firstDnsServer(dns));
  // Said even of an address that could not be split.
  logLine("Populated Ethernet settings successfully.");
}

void NetworkManagerWindow::populateWifiSettingsFromFile() {
  const std::string stored = config->readIniString("ipv4", "address1", "", wifiPath);
  const std::string band = config->readIniString("wifi", "band", "", wifiPath);
  const std::string channel = config->readIniString("wifi", "channel", "0", wifiPath);
  std::string address;
  std::string mask;
  splitApAddress(stored, address, mask);

  APCredentials& entries = wifiGrid.getAPCredentials();
  entries.setIpAddress(address);
  entries.setSubnetMask(mask);
  try {
    entries.setChannel(trim(band) == WIFI_BAND ? channel : "0");
  } catch (const std::logic_error&) {
    // Text that is no number leaves the choice alone.
  }
}

void NetworkManagerWindow::resetWifiCredentials() {
  logLine("Resetting Wifi Credentials");
  wifiGrid.getCredentials().reloadSsid("");
  wifiGrid.getCredentials().reloadPassword("");
}

void NetworkManagerWindow::createEthernetAddress() {
  const EthernetCredentialsBox& entries = ethernetGrid.getCredentialsBox();
  ethernetTexts.subnetMask = entries.getSubnetMask();
  ethernetTexts.ipAddress = entries.getIpAddress();
  ethernetTexts.gateway = entries.getDefaultGateway();
  storedEthernetAddress = formatEthernetAddress(
      ethernetTexts.ipAddress.raw(), ethernetTexts.subnetMask.raw(), ethernetTexts.gateway.raw());
  ethernetUpdateRecord.setOctets(ethernetTexts.ipAddress.raw(), ethernetTexts.subnetMask.raw(),
                                 ethernetTexts.gateway.raw());
}

void NetworkManagerWindow::writeEthernetSettingsToFile(const std::string& mode) {
  EthernetSettings settings;
  if (mode == ETHERNET_STATIC_MODE) {
    settings.dnsServer = trim(ethernetGrid.getCredentialsBox().getDnsServer().raw());
    createEthernetAddress();
    settings.storedAddress = storedEthernetAddress;
    ethernetUpdateRecord.mode = EthernetUpdateRecord::STATIC;
  } else if (mode == ETHERNET_DYNAMIC_MODE) {
    ethernetUpdateRecord.mode = EthernetUpdateRecord::DYNAMIC;
    ethernetUpdateRecord.clearOctets();
  }
  writeKeyfile(ethernetPath, ethernetKeyfileEntries(mode, settings));
}

void NetworkManagerWindow::writeEthernetUpdateFile() {
  const std::string path(ETHERNET_UPDATE_FILE);
  if (writeSharedFile(path, ethernetUpdateRecord.toText())) {
    logLine("File created at ", path);
  } else {
    logError("Error: Unable to create the file.");
  }
}

void NetworkManagerWindow::createApAddress() {
  storedApAddress = formatApAddress(wifiTexts.ipAddress.raw(), wifiTexts.subnetMask.raw());
}

void NetworkManagerWindow::writeWifiSettingsToFile(const std::string& mode) {
  WifiSettings settings;
  settings.deviceName = getWifiDeviceName();
  settings.ssid = wifiGrid.getCredentials().getSsid();
  settings.password = wifiGrid.getCredentials().getPassword();
  if (mode == WIFI_AP_MODE) {
    settings.channel = wifiGrid.getAPCredentials().getChannel();
    createApAddress();
    settings.storedAddress = storedApAddress;
  }
  writeKeyfile(wifiPath, wifiKeyfileEntries(mode, settings));
}

void NetworkManagerWindow::writeKeyfile(const std::string& path,
                                        const std::vector<KeyfileEntry>& entries) {
  for (const KeyfileEntry& entry : entries)
    config->writeIniString(entry.section, entry.key, entry.value, path);
}

Glib::ustring NetworkManagerWindow::getWifiDeviceName() {
  Glib::ustring name = wifiGrid.getDeviceBox().getDeviceEntry().get_text();
  logLine("Wifi Device name: ", name.raw());
  return name;
}

void NetworkManagerWindow::createWifiFileIfMissing() {
  const bool needed = selectedWifiMode == WIFI_AP_MODE || selectedWifiMode == WIFI_CLIENT_MODE;
  if (!wifiPath.empty() || !needed) return;
  config->createDefaultWifiFile();
  config->refreshConnectionPaths();
  wifiPath = config->getWifiConnectionPath();
}

bool NetworkManagerWindow::storesOtherMode(std::string_view kind, const std::string& mode,
                                           const char* section, const char* key,
                                           const std::string& path) const {
  const std::string stored = config->readIniString(section, key, "", path);
  logLine("existing ", kind, " mode: ", stored, " selected mode: ", mode);
  return config->storesOtherThan(mode, section, key, path);
}

void NetworkManagerWindow::resetWifiFileOnModeChange() {
  if (!storesOtherMode("wifi", selectedWifiMode, "wifi", "mode", wifiPath)) return;
  moveToDefaultName(wifiPath, DEFAULT_WIFI_KEYFILE);
  config->createDefaultWifiFile();
  wifiPath = config->getWifiConnectionPath();
}

void NetworkManagerWindow::resetEthernetFileOnModeChange() {
  if (!storesOtherMode("ethernet", selectedEthernetMode, "ipv4", "method", ethernetPath)) return;
  moveToDefaultName(ethernetPath, DEFAULT_ETHERNET_KEYFILE);
  config->createDefaultEthernetFile();
  ethernetPath = config->getEthernetConnectionPath();
}

void NetworkManagerWindow::removeWifiSettingsFile() {
  logLine("Removing existing Wi-Fi settings file at ", wifiPath);
  resetWifiCredentials();  // while there is still something to read
  removeFile(wifiPath);
  flushToDisk(wifiPath);
  wifiPath.clear();
}
