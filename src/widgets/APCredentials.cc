// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/APCredentials.h"

#include "base/trim.h"
#include "widgets/accessible.h"
#include "widgets/layout.h"
#include "widgets/widget_text.h"

namespace {

constexpr guint AUTOMATIC = 0;
constexpr int HIGHEST_CHANNEL = 11;  // more are not offered, by design

// Less than there is above the button. The last row is cut in half, which shows that more follow.
constexpr int LIST_HEIGHT = 288;

/** The position of a name is the channel. */
std::vector<Glib::ustring> makeChannelNames() {
  std::vector<Glib::ustring> names{"Auto"};
  for (int channel = 1; channel <= HIGHEST_CHANNEL; ++channel)
    names.emplace_back(std::to_string(channel));
  return names;
}

}  // namespace

APCredentials::APCredentials(NetworkManagerConfig& theConfig)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL),
      ipAddressLabel("IP Address"),
      subnetMaskLabel("Subnet Mask"),
      channelLabel("Channel (2.4 GHz)"),
      channelNames(makeChannelNames()),
      config(theConfig) {
  // box > grid
  set_visible(true);
  append(grid);
  for (Gtk::Label* label : {&ipAddressLabel, &subnetMaskLabel, &channelLabel})
    label->set_margin(MARGIN);

  nameDropDown(channelDropDown, channelLabel);
  openAtChoice(channelDropDown);
  openAbove(channelDropDown, LIST_HEIGHT);
  openAtTouch(channelDropDown);
  channelModel = Gtk::StringList::create(channelNames);
  channelDropDown.set_model(channelModel);
  channelDropDown.set_selected(AUTOMATIC);

  // box > grid > labels and fields
  attachField(grid, ipAddressLabel, ipAddressEntry, 0, 0);
  attachField(grid, subnetMaskLabel, subnetMaskEntry, 0, 1);
  attachField(grid, channelLabel, channelDropDown, 0, 2);
}

Glib::ustring APCredentials::getIpAddress() const { return ipAddressEntry.get_text(); }

Glib::ustring APCredentials::getSubnetMask() const { return subnetMaskEntry.get_text(); }

void APCredentials::setIpAddress(const std::string& ipAddress) {
  ipAddressEntry.set_text(toWidgetText(ipAddress));
}

void APCredentials::setSubnetMask(const std::string& subnetMask) {
  subnetMaskEntry.set_text(toWidgetText(subnetMask));
}

std::string APCredentials::getChannel() const {
  const guint selected = channelDropDown.get_selected();
  return std::to_string(selected < channelNames.size() ? selected : AUTOMATIC);
}

void APCredentials::setChannel(const std::string& channel) {
  const std::string_view text = trim(channel);
  const int number = text.empty() ? 0 : std::stoi(std::string(text));
  const bool offered = number >= 1 && number <= HIGHEST_CHANNEL;
  channelDropDown.set_selected(offered ? static_cast<guint>(number) : AUTOMATIC);
}
