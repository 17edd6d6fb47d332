// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/entry.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>
#include <gtkmm/stringlist.h>

#include <string>
#include <vector>

#include "app/NetworkManagerConfig.h"

/** The address and the channel of the access point. */
class APCredentials : public Gtk::Box {
 public:
  explicit APCredentials(NetworkManagerConfig& theConfig);

  Glib::ustring getIpAddress() const;
  Glib::ustring getSubnetMask() const;
  Gtk::Entry& getIpAddressEntry() { return ipAddressEntry; }
  Gtk::Entry& getSubnetMaskEntry() { return subnetMaskEntry; }

  /** The setters take any bytes; what is not valid UTF-8 shows as replacement characters. */
  void setIpAddress(const std::string& ipAddress);
  void setSubnetMask(const std::string& subnetMask);

  /** The channel as decimal text, "1" to "11", or "0" for the automatic choice. */
  std::string getChannel() const;

  /**
   * Selects a channel by the number that the text, trimmed, begins with: 1 to 11, and the automatic
   * choice for any other number or empty text. Text that begins with no number, or with one that is
   * no int, leaves the selection alone and throws std::invalid_argument or std::out_of_range, as
   * std::stoi() does.
   */
  void setChannel(const std::string& channel);

 private:
  Gtk::Grid grid;
  Gtk::Entry ipAddressEntry;
  Gtk::Entry subnetMaskEntry;
  Gtk::Label ipAddressLabel;
  Gtk::Label subnetMaskLabel;
  Gtk::Label channelLabel;
  Gtk::DropDown channelDropDown;
  Glib::RefPtr<Gtk::StringList> channelModel;
  std::vector<Glib::ustring> channelNames;        // the position is the channel; 0 is automatic
  [[maybe_unused]] NetworkManagerConfig& config;  // kept, not read
};
