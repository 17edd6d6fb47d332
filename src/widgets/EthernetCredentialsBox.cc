// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/EthernetCredentialsBox.h"

#include "widgets/layout.h"
#include "widgets/widget_text.h"

EthernetCredentialsBox::EthernetCredentialsBox(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL),
      config(theConfig),
      ipAddressLabel("IP Address"),
      subnetMaskLabel("Subnet Mask"),
      defaultGatewayLabel("Default Gateway"),
      dnsServerLabel("DNS Server"),
      ethernetPath(config.getEthernetConnectionPath()) {
  // box > grid
  set_visible(true);
  append(grid);
  for (Gtk::Label* label :
       {&ipAddressLabel, &subnetMaskLabel, &defaultGatewayLabel, &dnsServerLabel})
    label->set_margin(MARGIN);

  // box > grid > labels and fields
  attachField(grid, ipAddressLabel, ipAddressEntry, 0, 0);
  attachField(grid, subnetMaskLabel, subnetMaskEntry, 0, 1);
  attachField(grid, defaultGatewayLabel, defaultGatewayEntry, 0, 2);
  attachField(grid, dnsServerLabel, dnsServerEntry, 0, 3);
}

Glib::ustring EthernetCredentialsBox::getIpAddress() const { return ipAddressEntry.get_text(); }

Glib::ustring EthernetCredentialsBox::getSubnetMask() const { return subnetMaskEntry.get_text(); }

Glib::ustring EthernetCredentialsBox::getDefaultGateway() const {
  return defaultGatewayEntry.get_text();
}

Glib::ustring EthernetCredentialsBox::getDnsServer() const { return dnsServerEntry.get_text(); }

void EthernetCredentialsBox::setIpAddress(const std::string& ipAddress) {
  ipAddressEntry.set_text(toWidgetText(ipAddress));
}

void EthernetCredentialsBox::setSubnetMask(const std::string& subnetMask) {
  subnetMaskEntry.set_text(toWidgetText(subnetMask));
}

void EthernetCredentialsBox::setDefaultGateway(const std::string& defaultGateway) {
  defaultGatewayEntry.set_text(toWidgetText(defaultGateway));
}

void EthernetCredentialsBox::setDnsServer(const std::string& dnsServer) {
  dnsServerEntry.set_text(toWidgetText(dnsServer));
}

void EthernetCredentialsBox::setAllEntries(const std::string& ipAddress,
                                           const std::string& subnetMask,
                                           const std::string& defaultGateway,
                                           const std::string& dnsServer) {
  setIpAddress(ipAddress);
  setSubnetMask(subnetMask);
  setDefaultGateway(defaultGateway);
  setDnsServer(dnsServer);
}
