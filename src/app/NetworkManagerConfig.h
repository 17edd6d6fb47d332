// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/**
 * The one object that knows where the connection keyfiles are. It finds them, creates default ones,
 * reads and writes their values, and starts the privileged program. For the main thread only.
 */
class NetworkManagerConfig {
 public:
  /** The one instance, made on first use and kept until the process ends. */
  static NetworkManagerConfig& getInstance();

  NetworkManagerConfig(const NetworkManagerConfig&) = delete;
  NetworkManagerConfig& operator=(const NetworkManagerConfig&) = delete;
  ~NetworkManagerConfig() = default;

  static constexpr int PRODUCTION = 0;
  static constexpr int DEBUG = 1;

  /** Longer values of a keyfile are read up to this many bytes. */
  static constexpr std::size_t LONGEST_VALUE = 99;

  /** Chooses the directory for the mode (any other mode keeps it) and looks for the keyfiles. */
  void initialize(int mode);

  /**
   * The directory of the test keyfiles: what the environment variable names, or the first
   * "Ethernet_Test_Connections" in or near the working directory. Need not exist.
   */
  std::string getDebugDirectoryPath() const;

  /** The names of the regular files in the directory, unsorted; fewer if it cannot be read. */
  std::vector<std::string> listConnectionFiles() const;

  /** Looks for both keyfiles again and prints their paths. */
  void refreshConnectionPaths();

  /** Takes the first of the names whose file is of the type; the path is empty if there is none. */
  void findEthernetConnection(const std::vector<std::string>& names);
  void findWifiConnection(const std::vector<std::string>& names);

  /**
   * The keyfile's path, empty if there is none. One is a copy and one is not, on purpose: who keeps
   * the Wi-Fi path copies it.
   */
  std::string getEthernetConnectionPath() const;
  const std::string& getWifiConnectionPath() const;

  /**
   * Writes a default keyfile in the directory, unless a file that cannot be read has its name. The
   * path is the new one even if that fails.
   */
  void createDefaultEthernetFile();
  void createDefaultWifiFile();

  /** A value cut to LONGEST_VALUE, or the default, cut alike, where there is none. */
  std::string readIniString(const std::string& section, const std::string& key,
                            const std::string& defaultValue, const std::string& fileName) const;

  /**
   * Whether a file holds another value for a key than this one, or none. False also where the file
   * cannot be read: nobody knows what it holds then, so it must not be replaced.
   */
  bool storesOtherThan(const std::string& value, const std::string& section, const std::string& key,
                       const std::string& fileName) const;

  /** ini_puts() of a value, which may be empty. Returns 1, or 0 if the file could not be written.
   */
  int writeIniString(const std::string& section, const std::string& key, const std::string& value,
                     const std::string& fileName) const;

  /**
   * Starts the privileged program with an action and, unless it is empty, an argument. Returns at
   * once; what becomes of it is not known.
   */
  void runPermissionsHandler(const std::string& action, const std::string& argument) const;

 private:
  NetworkManagerConfig() = default;
  std::string pathOf(std::string_view fileName) const;
  std::string findConnection(const std::vector<std::string>& names, const std::string& type) const;

  std::vector<std::string> connectionFileNames;  // reserved, never filled
  std::string ethernetConnectionPath;
  std::string wifiConnectionPath;
  std::string networkManagerDirectoryPath;
};
