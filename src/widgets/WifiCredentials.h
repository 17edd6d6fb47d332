// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include <string>

#include "app/NetworkManagerConfig.h"

/** The wireless network's name and password, first filled from the keyfile. */
class WifiCredentials : public Gtk::Box {
 public:
  explicit WifiCredentials(NetworkManagerConfig& theConfig);

  Glib::ustring getSsid() const;
  Glib::ustring getPassword() const;
  Gtk::Entry& getPasswordEntry() { return passwordEntry; }

  /** Fills both entries from the keyfile. */
  void loadFromFile();

  /** Fills one entry from the keyfile again, with a default for a value that is not there. */
  void reloadSsid(const std::string& defaultSsid);
  void reloadPassword(const std::string& defaultPassword);

  /** Handler of "Show Password". */
  void onShowPasswordToggled();

 private:
  NetworkManagerConfig& config;
  Gtk::Grid grid;
  Gtk::Label ssidLabel;
  Gtk::Label passwordLabel;
  Gtk::Entry ssidEntry;
  Gtk::Entry passwordEntry;
  Gtk::CheckButton showPasswordButton;
  std::string wifiPath;  // the keyfile of the start; another one is not followed
};
