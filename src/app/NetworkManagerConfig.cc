// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/NetworkManagerConfig.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/print.h"
#include "base/retry.h"
#include "base/whole_file.h"
#include "ini/ini.h"
#include "ini/value.h"
#include "settings/ethernet.h"
#include "settings/wifi.h"

namespace {

constexpr const char* SYSTEM_DIRECTORY = "/etc/NetworkManager/system-connections";

/** Whether an entry is a file, or leads to one: not only for this moment. */
bool isRegularFile(const std::filesystem::directory_entry& entry) {
  bool isOne{};
  (void)succeedsOnRetry([&] {
    std::error_code error;
    isOne = entry.is_regular_file(error);
    errno = error.value();
    return !error;
  });
  return isOne;
}

void createDefaultFile(const std::string& path, std::string_view content, std::string_view type) {
  // One that could not be read was not found either, and is not to be lost for that.
  if (!isUnreadable(path) &&
      (replaceFile(path, content) || overwriteFile(path, std::string(content)))) {
    logLine("New ", type, " connection file created at: ", path);
  } else {
    // Says "Wi-Fi" for both types, on purpose: one text to look for in a log.
    logError("Failed to create new Wi-Fi connection file at: ", path);
  }
}

}  // namespace

NetworkManagerConfig& NetworkManagerConfig::getInstance() {
  static NetworkManagerConfig instance;
  return instance;
}

void NetworkManagerConfig::initialize(int mode) {
  if (mode == PRODUCTION) {
    networkManagerDirectoryPath = SYSTEM_DIRECTORY;
  } else if (mode == DEBUG) {
    networkManagerDirectoryPath = getDebugDirectoryPath();
  }
  logLine("NetworkManagerDirectoryPath: ", networkManagerDirectoryPath);
  refreshConnectionPaths();
}

std::string NetworkManagerConfig::getDebugDirectoryPath() const {
  constexpr const char* TEST_DIRECTORY = "Ethernet_Test_Connections";
  std::error_code ignored;
  const char* configured = std::getenv("ZOR_NETWORKMANAGER_DEBUG_PATH");
  if (configured != nullptr && std::filesystem::is_directory(configured, ignored))
    return configured;

  const std::filesystem::path working = std::filesystem::current_path(ignored);
  const std::array candidates = {working / TEST_DIRECTORY, working / "gtkTest" / TEST_DIRECTORY,
                                 working.parent_path() / TEST_DIRECTORY};
  for (const auto& candidate : candidates) {
    if (std::filesystem::is_directory(candidate, ignored)) return candidate.string();
  }
  return candidates.front().string();
}

std::vector<std::string> NetworkManagerConfig::listConnectionFiles() const {
  std::vector<std::string> names;
  std::string failure;
  // A keyfile that is not seen for a moment would be replaced by a default one.
  (void)succeedsOnRetry([&] {
    names.clear();
    failure.clear();
    try {
      for (const auto& entry : std::filesystem::directory_iterator(networkManagerDirectoryPath))
        if (isRegularFile(entry)) names.push_back(entry.path().filename().string());
    } catch (const std::filesystem::filesystem_error& error) {
      failure = error.what();
      errno = error.code().value();
    }
    return failure.empty();
  });
  if (!failure.empty()) logError("Error: ", failure);
  return names;
}

void NetworkManagerConfig::refreshConnectionPaths() {
  const std::vector<std::string> names = listConnectionFiles();
  findEthernetConnection(names);
  logLine("Ethernet Connection Path: ", ethernetConnectionPath);
  findWifiConnection(names);
  logLine("Wifi Connection Path: ", wifiConnectionPath);
}

std::string NetworkManagerConfig::pathOf(std::string_view fileName) const {
  return (networkManagerDirectoryPath + "/").append(fileName);
}

std::string NetworkManagerConfig::findConnection(const std::vector<std::string>& names,
                                                 const std::string& type) const {
  for (const std::string& name : names) {
    std::string candidate = pathOf(name);
    if (readIniString("connection", "type", "unknown", candidate) == type) return candidate;
  }
  return {};
}

void NetworkManagerConfig::findEthernetConnection(const std::vector<std::string>& names) {
  ethernetConnectionPath = findConnection(names, "ethernet");
  if (ethernetConnectionPath.empty()) logLine("No Ethernet Connection Exists");
}

void NetworkManagerConfig::findWifiConnection(const std::vector<std::string>& names) {
  wifiConnectionPath = findConnection(names, "wifi");
  if (wifiConnectionPath.empty()) logLine("No Wifi Connection Exists");
}

std::string NetworkManagerConfig::getEthernetConnectionPath() const {
  return ethernetConnectionPath;
}

const std::string& NetworkManagerConfig::getWifiConnectionPath() const {
  return wifiConnectionPath;
}

void NetworkManagerConfig::createDefaultEthernetFile() {
  ethernetConnectionPath = pathOf(DEFAULT_ETHERNET_KEYFILE.fileName);
  createDefaultFile(ethernetConnectionPath, DEFAULT_ETHERNET_KEYFILE.content, "Ethernet");
}

void NetworkManagerConfig::createDefaultWifiFile() {
  wifiConnectionPath = pathOf(DEFAULT_WIFI_KEYFILE.fileName);
  createDefaultFile(wifiConnectionPath, DEFAULT_WIFI_KEYFILE.content, "Wi-Fi");
}

std::string NetworkManagerConfig::readIniString(const std::string& section, const std::string& key,
                                                const std::string& defaultValue,
                                                const std::string& fileName) const {
  std::array<char, LONGEST_VALUE + 1> value{};
  ini_gets(section.c_str(), key.c_str(), defaultValue.c_str(), value.data(), value.size(),
           fileName.c_str());
  return value.data();
}

bool NetworkManagerConfig::storesOtherThan(const std::string& value, const std::string& section,
                                           const std::string& key,
                                           const std::string& fileName) const {
  std::array<char, LONGEST_VALUE + 1> stored{};
  const ini::reading result =
      ini::read_value(section.c_str(), key.c_str(), stored.data(), stored.size(), fileName.c_str());
  std::error_code ignored;
  const bool known = result != ini::reading::FAILED ||
                     std::filesystem::is_directory(fileName, ignored);  // nothing that can be lost
  return known && stored.data() != value;
}

int NetworkManagerConfig::writeIniString(const std::string& section, const std::string& key,
                                         const std::string& value,
                                         const std::string& fileName) const {
  return ini_puts(section.c_str(), key.c_str(), value.c_str(), fileName.c_str());
}
