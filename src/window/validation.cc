// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include <initializer_list>
#include <string>
#include <string_view>

#include "base/print.h"
#include "base/trim.h"
#include "settings/ipv4.h"
#include "settings/wifi.h"
#include "widgets/accessible.h"

namespace {

/** A field as the dialog names it, and the verdict on it. */
struct CheckedField {
  std::string_view label;
  bool valid;
};

std::string describeInvalidFields(std::initializer_list<CheckedField> fields) {
  std::string names;
  for (const auto& [label, valid] : fields) {
    if (valid) continue;
    if (!names.empty()) names += ", ";
    names += label;
  }
  // Nobody asks about fields that are all valid; the words are kept all the same.
  return "Invalid " + (names.empty() ? "All fields are valid" : names);
}

}  // namespace

bool NetworkManagerWindow::validateWifiValues() {
  wifiIpAddress = wifiGrid.getAPCredentials().getIpAddress();
  wifiSubnetMask = wifiGrid.getAPCredentials().getSubnetMask();
  wifiPassword = wifiGrid.getCredentials().getPassword();
  logLine("IP Address being validated: ", wifiIpAddress.raw());
  logLine("Subnet Mask being validated: ", wifiSubnetMask.raw());
  logLine("Wifi Password being validated: ", wifiPassword.raw());

  wifiIpAddressValid = validateIpAddress(trim(wifiIpAddress.raw()));
  wifiSubnetMaskValid = isValidSubnetMask(wifiSubnetMask.raw());
  wifiPasswordValid = isValidWifiPassword(wifiPassword.raw());
  if (wifiIpAddressValid && wifiSubnetMaskValid && wifiPasswordValid) {
    logLine("Valid IP, Subnet, and password");
    return true;
  }
  // The wording of the last one, grammar included, is kept.
  showInvalidValues(wifiDialog, "You entered invalid Wifi Credentials",
                    describeInvalidFields(
                        {{"IP Address", wifiIpAddressValid},
                         {"Subnet Mask", wifiSubnetMaskValid},
                         {"Password (must at least 8 characters and contain no special characters)",
                          wifiPasswordValid}}));
  return false;
}

bool NetworkManagerWindow::validateEthernetValues() {
  const EthernetCredentialsBox& entries = ethernetGrid.getCredentialsBox();
  ethernetIpAddress = entries.getIpAddress();
  ethernetSubnetMask = entries.getSubnetMask();
  ethernetGateway = entries.getDefaultGateway();
  ethernetDnsServer = entries.getDnsServer();
  logLine("Ethernet IP Address being validated: ", ethernetIpAddress.raw());
  logLine("Ethernet Subnet Mask being validated: ", ethernetSubnetMask.raw());
  logLine("Ethernet Gateway being validated: ", ethernetGateway.raw());
  logLine("Ethernet DNS Server being validated: ", ethernetDnsServer.raw());

  const std::string_view dns = trim(ethernetDnsServer.raw());
  ethernetIpAddressValid = validateIpAddress(trim(ethernetIpAddress.raw()));
  ethernetGatewayValid = validateIpAddress(trim(ethernetGateway.raw()));
  ethernetSubnetMaskValid = isValidSubnetMask(ethernetSubnetMask.raw());
  ethernetDnsServerValid = dns.empty() || validateIpAddress(dns);
  if (ethernetIpAddressValid && ethernetSubnetMaskValid && ethernetGatewayValid &&
      ethernetDnsServerValid) {
    logLine("Valid Ethernet IP, Subnet, Gateway, and Subnet Mask");  // the last one is the DNS
    return true;
  }
  showInvalidValues(ethernetDialog, "You entered invalid Ethernet Credentials",
                    describeInvalidFields({{"IP Address", ethernetIpAddressValid},
                                           {"Subnet Mask", ethernetSubnetMaskValid},
                                           {"Gateway", ethernetGatewayValid},
                                           {"DNS Server", ethernetDnsServerValid}}));
  return false;
}

void NetworkManagerWindow::showInvalidValues(std::unique_ptr<Gtk::MessageDialog>& dialog,
                                             const Glib::ustring& message,
                                             const std::string& detail) {
  dialog.reset();  // the old one goes before the new one comes
  dialog = std::make_unique<Gtk::MessageDialog>(*this, message, false, Gtk::MessageType::INFO,
                                                Gtk::ButtonsType::OK, false);
  dialog->set_secondary_text(detail);
  nameDialog(*dialog);
  dialog->set_modal(true);
  dialog->set_hide_on_close(true);
  dialog->signal_response().connect(sigc::hide(sigc::mem_fun(*dialog, &Gtk::Widget::hide)));
  dialog->show();
}
