// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/DHCPBox.h"

#include "widgets/layout.h"

DHCPBox::DHCPBox()
    : Gtk::Box(Gtk::Orientation::VERTICAL),
      enableLabel("Enable DHCP"),
      yesButton("Yes"),
      noButton("No"),
      poolLabel("DHCP Pool"),
      startLabel("Start IP"),
      endLabel("End IP") {
  set_margin(MARGIN);
  layOutFramedGrid(*this, enableLabel, frame, enableGrid);

  // Column 1 stays empty between the two, as designed.
  enableGrid.attach(yesButton, 0, 0);
  enableGrid.attach(noButton, 2, 0);
  for (Gtk::CheckButton* button : {&yesButton, &noButton}) {
    button->set_halign(Gtk::Align::CENTER);
    button->set_valign(Gtk::Align::CENTER);
  }
  noButton.set_group(yesButton);
  yesButton.set_active(true);

  append(poolLabel);
  append(poolGrid);
  poolGrid.attach(startLabel, 0, 0);
  poolGrid.attach(startEntry, 1, 0);
  poolGrid.attach(endLabel, 2, 0);
  poolGrid.attach(endEntry, 3, 0);
  startLabel.set_mnemonic_widget(startEntry);
  endLabel.set_mnemonic_widget(endEntry);

  noButton.set_sensitive(false);
  yesButton.set_sensitive(false);
  endEntry.set_sensitive(false);
  startEntry.set_sensitive(false);
  showAll({&yesButton, &noButton, &poolLabel, &poolGrid, &startLabel, &startEntry, &endLabel,
           &endEntry});
}
