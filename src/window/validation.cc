// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window/NetworkManagerWindow.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "base/print.h"
#include "base/trim.h"
#include "settings/ipv4.h"
#include "settings/wifi.h"
#include "widgets/accessible.h"

namespace {

/** A field as the dialog names it, the verdict on it, and where it is entered. */
struct CheckedField {
  std::string label;
  bool valid;
  Gtk::Entry& entry;
};
using CheckedFields = std::vector<CheckedField>;

bool areAllValid(const CheckedFields& fields) {
  return std::all_of(fields.begin(), fields.end(), [](const auto& field) { return field.valid; });
}

std::string describeInvalid(const CheckedFields& fields) {
  std::string labels;
  for (const auto& [label, valid, entry] : fields)
    if (!valid) labels += (labels.empty() ? "" : ", ") + label;
  // Nobody asks about fields that are all valid; the words for them are kept all the same.
  return "Invalid " + (labels.empty() ? "All fields are valid" : labels);
}

/** The window keeps the focus while the dialog has it: it is there again when the dialog goes. */
void focusFirstInvalid(const CheckedFields& fields) {
  const auto invalid =
      std::find_if(fields.begin(), fields.end(), [](const auto& field) { return !field.valid; });
  if (invalid != fields.end()) invalid->entry.grab_focus();
}

}  // namespace

bool NetworkManagerWindow::validateWifiValues() {
  APCredentials& entries = wifiGrid.getAPCredentials();
  WifiCredentials& credentials = wifiGrid.getCredentials();
  wifiTexts = {entries.getIpAddress(), entries.getSubnetMask(), credentials.getPassword()};
  logLine("IP Address being validated: ", wifiTexts.ipAddress.raw());
  logLine("Subnet Mask being validated: ", wifiTexts.subnetMask.raw());
  logLine("Wifi Password being validated: ", wifiTexts.password.raw());

  wifiValid.ipAddress = validateIpAddress(trim(wifiTexts.ipAddress.raw()));
  wifiValid.subnetMask = isValidSubnetMask(wifiTexts.subnetMask.raw());
  wifiValid.password = isValidWifiPassword(wifiTexts.password.raw());
  const CheckedFields fields = {
      {"IP Address", wifiValid.ipAddress, entries.getIpAddressEntry()},
      {"Subnet Mask", wifiValid.subnetMask, entries.getSubnetMaskEntry()},
      // The wording, grammar included, is kept.
      {"Password (must at least 8 characters and contain no special characters)",
       wifiValid.password, credentials.getPasswordEntry()}};
  if (areAllValid(fields)) {
    logLine("Valid IP, Subnet, and password");
    return true;
  }
  focusFirstInvalid(fields);
  showInvalidValues(wifiDialog, "You entered invalid Wifi Credentials", describeInvalid(fields));
  return false;
}

bool NetworkManagerWindow::validateEthernetValues() {
  EthernetCredentialsBox& entries = ethernetGrid.getCredentialsBox();
  ethernetTexts = {entries.getIpAddress(), entries.getSubnetMask(), entries.getDefaultGateway(),
                   entries.getDnsServer()};
  logLine("Ethernet IP Address being validated: ", ethernetTexts.ipAddress.raw());
  logLine("Ethernet Subnet Mask being validated: ", ethernetTexts.subnetMask.raw());
  logLine("Ethernet Gateway being validated: ", ethernetTexts.gateway.raw());
  logLine("Ethernet DNS Server being validated: ", ethernetTexts.dnsServer.raw());

  const std::string_view dns = trim(ethernetTexts.dnsServer.raw());
  ethernetValid.ipAddress = validateIpAddress(trim(ethernetTexts.ipAddress.raw()));
  ethernetValid.gateway = validateIpAddress(trim(ethernetTexts.gateway.raw()));
  ethernetValid.subnetMask = isValidSubnetMask(ethernetTexts.subnetMask.raw());
  ethernetValid.dnsServer = dns.empty() || validateIpAddress(dns);
  const CheckedFields fields = {
      {"IP Address", ethernetValid.ipAddress, entries.getIpAddressEntry()},
      {"Subnet Mask", ethernetValid.subnetMask, entries.getSubnetMaskEntry()},
      {"Gateway", ethernetValid.gateway, entries.getDefaultGatewayEntry()},
      {"DNS Server", ethernetValid.dnsServer, entries.getDnsServerEntry()}};
  if (areAllValid(fields)) {
    logLine("Valid Ethernet IP, Subnet, Gateway, and Subnet Mask");  // the last one is the DNS
    return true;
  }
  focusFirstInvalid(fields);
  showInvalidValues(ethernetDialog, "You entered invalid Ethernet Credentials",
                    describeInvalid(fields));
  return false;
}

void NetworkManagerWindow::showInvalidValues(std::unique_ptr<Gtk::MessageDialog>& dialog,
                                             const Glib::ustring& message,
                                             const Glib::ustring& detail) {
  dialog.reset();  // the old one goes before the new one comes
  dialog = std::make_unique<Gtk::MessageDialog>(*this, message, false, Gtk::MessageType::INFO,
                                                Gtk::ButtonsType::OK, false);
  dialog->set_secondary_text(detail);
  nameDialog(*dialog);
  dialog->set_modal(true);
  dialog->set_hide_on_close(true);
  // Whatever the response: sigc::hide() leaves it out.
  dialog->signal_response().connect(sigc::hide(sigc::mem_fun(*dialog, &Gtk::Widget::hide)));
  dialog->show();
}
