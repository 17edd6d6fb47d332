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
#include "widgets/EthernetCredentialsBox.h"

/** The choice between a static and a dynamic wired address. Nothing is chosen at first. */
class EthernetIPModeBox : public Gtk::Box {
 public:
  explicit EthernetIPModeBox(NetworkManagerConfig& theConfig);

  /** "manual", "auto", or empty text while nothing is chosen. */
  std::string getSelectedMode() const;

  Gtk::CheckButton& getStaticButton() { return staticButton; }
  Gtk::CheckButton& getDynamicButton() { return dynamicButton; }
  void setStaticActive();
  void setDynamicActive();

  /** Connects both buttons to onModeToggled(). */
  void connectModeButtons(EthernetCredentialsBox& credentialsBox);

  /**
   * Handler of both buttons: shows the entries for a static address, hides them for a dynamic one
   * and leaves them while nothing is chosen.
   */
  void onModeToggled(EthernetCredentialsBox& credentialsBox);

 private:
  NetworkManagerConfig& config;
  std::string ethernetPath;  // printed at the start; kept, not read afterwards
  Gtk::Frame frame;
  Gtk::Grid grid;
  Gtk::Label modeLabel;
  Gtk::CheckButton staticButton;
  Gtk::CheckButton dynamicButton;
};
