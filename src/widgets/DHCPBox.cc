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

  // The column between the two stays empty, as designed.
  layOutChoice(*this, enableLabel, frame, enableGrid, {&yesButton, nullptr, &noButton});
  noButton.set_group(yesButton);
  yesButton.set_active(true);

  // box > label, and the grid below it
  append(poolLabel);
  append(poolGrid);
  showAll({&poolLabel, &poolGrid});

  // box > grid > one row
  attachField(poolGrid, startLabel, startEntry, 0, 0);
  attachField(poolGrid, endLabel, endEntry, 2, 0);

  noButton.set_sensitive(false);
  yesButton.set_sensitive(false);
  endEntry.set_sensitive(false);
  startEntry.set_sensitive(false);
}
