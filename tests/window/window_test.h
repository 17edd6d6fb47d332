// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/entry.h>
#include <gtkmm/messagedialog.h>
#include <gtkmm/notebook.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/bytes.h"
#include "support/child.h"
#include "support/keyfile_test.h"
#include "support/keyfiles.h"
#include "support/printed.h"
#include "support/widgets.h"
#include "window/NetworkManagerWindow.h"

constexpr const char* STATIC_KEYFILE =
    "[connection]\nid=wired\ntype=ethernet\n"
    "[ipv4]\nmethod=manual\naddress1=192.168.1.10/24,192.168.1.1\ndns=8.8.8.8;8.8.4.4;\n";
constexpr const char* DYNAMIC_KEYFILE =
    "[connection]\nid=wired\ntype=ethernet\n[ipv4]\nmethod=auto\n";
constexpr const char* AP_KEYFILE =
    "[connection]\nid=hotspot\ntype=wifi\ninterface-name=wlan1\n"
    "[wifi]\nmode=ap\nssid=Net\nband=bg\nchannel=6\n"
    "[wifi-security]\npsk=password1\n[ipv4]\naddress1=10.42.0.5/24,10.42.0.1\n";
constexpr const char* CLIENT_KEYFILE =
    "[connection]\nid=client\ntype=wifi\n"
    "[wifi]\nmode=infrastructure\nssid=Home\n[wifi-security]\npsk=password2\n";

/** A window on private keyfiles, reached through its widgets as a user reaches it. */
class WindowTest : public KeyfileTest {
 protected:
  static constexpr int ETHERNET = 0;
  static constexpr int WIFI = 1;

  std::unique_ptr<NetworkManagerWindow> window;

  /** Builds the window on the keyfiles that are there. Returns what that prints. */
  std::string open() {
    window.reset();
    loadKeyfiles();
    return printedBy([this] { window = std::make_unique<NetworkManagerWindow>(); });
  }

  /** The same with keyfiles under the names of the default files, and with a page in front. */
  void open(const std::string& ethernetKeyfile, const std::string& wifiKeyfile, int page) {
    if (!ethernetKeyfile.empty())
      writeBytes(directory.file("ethernet.nmconnection"), ethernetKeyfile);
    if (!wifiKeyfile.empty()) writeBytes(directory.file("wlan0.nmconnection"), wifiKeyfile);
    open();
    window->show();
    showPage(page);
  }

  std::string ethernetFile() const { return directory.file("ethernet.nmconnection"); }
  std::string wifiFile() const { return directory.file("wlan0.nmconnection"); }

  // What a user does. Each returns what it prints.
  std::string showPage(int page) {
    return printedBy([&] { notebook().set_current_page(page); });
  }
  std::string choose(const std::string& label) {
    return printedBy([&] { labelled<Gtk::CheckButton>(*window, label).set_active(true); });
  }
  std::string press(const std::string& label) {
    return printedBy([&] {
      click(labelled<Gtk::Button>(*window, label));
      waitForChildren();
    });
  }
  std::string save() { return press("Save And Exit"); }
  std::string leave() { return press("Exit Without Saving"); }
  void fillEthernet(const std::string& ipAddress, const std::string& mask,
                    const std::string& gateway, const std::string& dns) {
    ethernetEntry("IP Address").set_text(ipAddress);
    ethernetEntry("Subnet Mask").set_text(mask);
    ethernetEntry("Default Gateway").set_text(gateway);
    ethernetEntry("DNS Server").set_text(dns);
  }
  void fillWifi(const std::string& ssid, const std::string& password) {
    credentialEntry("SSID").set_text(ssid);
    credentialEntry("Password").set_text(password);
  }
  void fillAccessPoint(const std::string& ipAddress, const std::string& mask, guint channelNumber) {
    apEntry("IP Address").set_text(ipAddress);
    apEntry("Subnet Mask").set_text(mask);
    channel().set_selected(channelNumber);
  }

  // What a user sees.
  Gtk::Notebook& notebook() { return widgetOf<Gtk::Notebook>(*window); }
  Gtk::Entry& ethernetEntry(const std::string& label) {
    return fieldOf<Gtk::Entry>(widgetOf<EthernetCredentialsBox>(*window), label);
  }
  Gtk::Entry& credentialEntry(const std::string& label) {
    return fieldOf<Gtk::Entry>(widgetOf<WifiCredentials>(*window), label);
  }
  Gtk::Entry& apEntry(const std::string& label) {
    return fieldOf<Gtk::Entry>(widgetOf<APCredentials>(*window), label);
  }
  Gtk::DropDown& channel() { return widgetOf<Gtk::DropDown>(widgetOf<APCredentials>(*window)); }

  std::vector<std::string> ethernetTexts() {
    std::vector<std::string> texts;
    for (const char* label : {"IP Address", "Subnet Mask", "Default Gateway", "DNS Server"})
      texts.push_back(ethernetEntry(label).get_text().raw());
    return texts;
  }
  std::string chosen(std::initializer_list<std::string> labels) {
    std::string active;
    for (const std::string& label : labels) {
      if (labelled<Gtk::CheckButton>(*window, label).get_active()) active += label;
    }
    return active;
  }
  std::string ethernetMode() { return chosen({"Static IP", "Dynamic IP"}); }
  std::string wifiMode() { return chosen({"Client", "Access Point", "Disabled"}); }

  /** The parts of both pages that are not hidden. */
  std::string visibleParts() {
    const std::vector<std::pair<std::string, Gtk::Widget*>> parts = {
        {"ethernet-device", &widgetOf<EthernetDeviceBox>(*window)},
        {"ethernet-mode", &widgetOf<EthernetIPModeBox>(*window)},
        {"ethernet-entries", &widgetOf<EthernetCredentialsBox>(*window)},
        {"wifi-device", &widgetOf<DeviceBox>(*window)},
        {"wifi-mode", &widgetOf<WifiModeBox>(*window)},
        {"wifi-credentials", &widgetOf<WifiCredentials>(*window)},
        {"access-point", &widgetOf<APCredentials>(*window)},
        {"dhcp", &widgetOf<DHCPBox>(*window)}};
    std::string names;
    for (const auto& [name, widget] : parts) {
      if (widget->get_visible()) names += (names.empty() ? "" : " ") + name;
    }
    return names;
  }

  std::pair<int, int> defaultSize() const {
    std::pair<int, int> size;
    window->get_default_size(size.first, size.second);
    return size;
  }

  static std::vector<Gtk::MessageDialog*> dialogs() {
    std::vector<Gtk::MessageDialog*> found;
    for (Gtk::Window* toplevel : Gtk::Window::list_toplevels()) {
      if (auto* dialog = dynamic_cast<Gtk::MessageDialog*>(toplevel)) found.push_back(dialog);
    }
    return found;
  }
};

/** The two lines of a check of one address. */
inline std::string checked(const std::string& address, const std::string& verdict) {
  return "Validating IP Address: " + address + "\nIP Address validation result: " + verdict + "\n";
}
