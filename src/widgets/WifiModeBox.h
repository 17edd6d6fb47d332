// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/frame.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>

#include <string>

#include "app/NetworkManagerConfig.h"
#include "widgets/APCredentials.h"
#include "widgets/DHCPBox.h"

/** The choice of what the wireless interface is: client, access point or nothing. */
class WifiModeBox : public Gtk::Box {
 public:
  explicit WifiModeBox(NetworkManagerConfig& theConfig);

  /** "ap", "infrastructure" or, also while nothing is chosen, "disabled". */
  std::string getSelectedMode() const;

  Gtk::CheckButton& getClientButton() { return clientButton; }
  Gtk::CheckButton& getAccessPointButton() { return accessPointButton; }
  Gtk::CheckButton& getDisabledButton() { return disabledButton; }

  /** Chooses what the keyfile says; what it does not say, or says otherwise, is "disabled". */
  void loadModeFromFile();

  /** Connects the three buttons to onModeToggled(). */
  void connectModeButtons(APCredentials& apCredentials, DHCPBox& dhcpBox, Gtk::Label& noteLabel);

  /**
   * Handler of the three buttons: shows the entries of an access point and the note above them for
   * that mode, hides them for the others and leaves them while nothing is chosen.
   */
  void onModeToggled(APCredentials& apCredentials, DHCPBox& dhcpBox, Gtk::Label& noteLabel);

 private:
  NetworkManagerConfig& config;
  std::string wifiPath;  // the keyfile of the start; another one is not followed
  Gtk::Label modeLabel;
  Gtk::Frame frame;
  Gtk::Grid grid;
  Gtk::CheckButton clientButton;
  Gtk::CheckButton accessPointButton;
  Gtk::CheckButton disabledButton;
};
