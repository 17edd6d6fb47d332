// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/entry.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include <string>

#include "app/NetworkManagerConfig.h"

/** The four entries of a static wired address. */
class EthernetCredentialsBox : public Gtk::Box {
 public:
  explicit EthernetCredentialsBox(NetworkManagerConfig& theConfig);

  Glib::ustring getIpAddress() const;
  Glib::ustring getSubnetMask() const;
  Glib::ustring getDefaultGateway() const;
  Glib::ustring getDnsServer() const;
  Gtk::Entry& getIpAddressEntry() { return ipAddressEntry; }
  Gtk::Entry& getSubnetMaskEntry() { return subnetMaskEntry; }
  Gtk::Entry& getDefaultGatewayEntry() { return defaultGatewayEntry; }
  Gtk::Entry& getDnsServerEntry() { return dnsServerEntry; }

  /** The setters take any bytes; what is not valid UTF-8 shows as replacement characters. */
  void setIpAddress(const std::string& ipAddress);
  void setSubnetMask(const std::string& subnetMask);
  void setDefaultGateway(const std::string& defaultGateway);
  void setDnsServer(const std::string& dnsServer);
  void setAllEntries(const std::string& ipAddress, const std::string& subnetMask,
                     const std::string& defaultGateway, const std::string& dnsServer);

 private:
  NetworkManagerConfig& config;
  Gtk::Grid grid;
  Gtk::Label ipAddressLabel;
  Gtk::Label subnetMaskLabel;
  Gtk::Label defaultGatewayLabel;
  Gtk::Label dnsServerLabel;
  Gtk::Entry ipAddressEntry;
  Gtk::Entry subnetMaskEntry;
  Gtk::Entry defaultGatewayEntry;
  Gtk::Entry dnsServerEntry;
  std::string ethernetPath;  // kept, not read
};
