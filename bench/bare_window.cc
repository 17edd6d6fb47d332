// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The floor for the start: the tree of widgets that the program shows on the sample keyfiles, by
// the same toolkit, without files, signals or thought. first_frame.cc shows that the trees are the
// same.
#include <gtkmm/application.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/entry.h>
#include <gtkmm/frame.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>
#include <gtkmm/notebook.h>
#include <gtkmm/stringlist.h>
#include <gtkmm/window.h>

namespace {

constexpr int MARGIN = 5;
constexpr auto VERTICAL = Gtk::Orientation::VERTICAL;
constexpr auto HORIZONTAL = Gtk::Orientation::HORIZONTAL;

void center(Gtk::Widget& widget) {
  widget.set_halign(Gtk::Align::CENTER);
  widget.set_valign(Gtk::Align::CENTER);
}

/** A grid of equal cells. */
struct EvenGrid : Gtk::Grid {
  EvenGrid() {
    set_column_homogeneous(true);
    set_row_homogeneous(true);
    set_margin(MARGIN);
  }
};

struct MarginLabel : Gtk::Label {
  explicit MarginLabel(const char* text) : Gtk::Label(text) { set_margin(MARGIN); }
};

struct BareDevice : Gtk::Box {
  EvenGrid grid;
  Gtk::Label label{"Device"};
  Gtk::Entry entry;

  explicit BareDevice(const char* name) : Gtk::Box(VERTICAL) {
    append(grid);
    grid.set_expand(true);
    grid.set_valign(Gtk::Align::CENTER);
    entry.set_text(name);
    entry.set_editable(false);
    entry.set_expand(true);
    grid.attach(label, 0, 0);
    grid.attach(entry, 0, 1);
    label.set_mnemonic_widget(entry);
    for (Gtk::Widget* widget :
         {static_cast<Gtk::Widget*>(&label), static_cast<Gtk::Widget*>(&entry)}) {
      center(*widget);
      widget->set_margin(MARGIN);
    }
  }
};

/** A title above a frame with a grid. */
struct BareFrame : Gtk::Box {
  Gtk::Label title;
  Gtk::Frame frame;
  EvenGrid grid;

  explicit BareFrame(const char* text) : Gtk::Box(VERTICAL), title(text) {
    title.set_margin_top(MARGIN);
    title.set_margin_bottom(MARGIN);
    append(title);
    frame.set_margin(MARGIN);
    append(frame);
    frame.set_child(grid);
  }

  void add(Gtk::CheckButton& button, int column, Gtk::CheckButton* group) {
    grid.attach(button, column, 0);
    center(button);
    if (group != nullptr) button.set_group(*group);
  }
};

struct BareField {
  MarginLabel label;
  Gtk::Entry entry;

  BareField(Gtk::Grid& grid, const char* text, int column, int row) : label(text) {
    grid.attach(label, column, row);
    grid.attach(entry, column + 1, row);
    label.set_mnemonic_widget(entry);
  }
};

struct BareEthernetEntries : Gtk::Box {
  Gtk::Grid grid;
  BareField address{grid, "IP Address", 0, 0};
  BareField mask{grid, "Subnet Mask", 0, 1};
  BareField gateway{grid, "Default Gateway", 0, 2};
  BareField dns{grid, "DNS Server", 0, 3};

  BareEthernetEntries() : Gtk::Box(HORIZONTAL) { append(grid); }
};

struct BareEthernetPage : Gtk::Grid {
  BareEthernetEntries entries;
  BareFrame mode{"Mode"};
  Gtk::CheckButton fixed{"Static IP"};
  Gtk::CheckButton dynamic{"Dynamic IP"};
  BareDevice device{"eth0"};

  BareEthernetPage() {
    mode.add(fixed, 0, nullptr);
    mode.add(dynamic, 1, nullptr);
    fixed.set_group(dynamic);
    dynamic.set_active(true);
    entries.set_visible(false);
    set_valign(Gtk::Align::START);
    set_margin(MARGIN);
    set_expand(true);
    entries.set_expand(true);
    entries.set_halign(Gtk::Align::CENTER);
    mode.set_expand(true);
    attach(device, 1, 0);
    attach(mode, 1, 1, 3);
    attach(entries, 1, 2, 3);
  }
};

struct BareWifiEntries : Gtk::Box {
  Gtk::Grid grid;
  BareField ssid{grid, "SSID", 0, 0};
  BareField password{grid, "Password", 2, 0};
  Gtk::CheckButton show{"Show Password"};

  BareWifiEntries() : Gtk::Box(HORIZONTAL) {
    append(grid);
    ssid.entry.set_text("Workshop");
    password.entry.set_text("correct horse 42");
    password.entry.set_visibility(false);
    password.entry.set_invisible_char('*');
    grid.attach(show, 4, 0);
  }
};

struct BareAccessPoint : Gtk::Box {
  Gtk::Grid grid;
  BareField address{grid, "IP Address", 0, 0};
  BareField mask{grid, "Subnet Mask", 0, 1};
  MarginLabel channelLabel{"Channel (2.4 GHz)"};
  Gtk::DropDown channel;

  BareAccessPoint() : Gtk::Box(HORIZONTAL) {
    append(grid);
    channel.set_model(
        Gtk::StringList::create({"Auto", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}));
    channel.set_selected(0);
    grid.attach(channelLabel, 0, 2);
    grid.attach(channel, 1, 2);
    channelLabel.set_mnemonic_widget(channel);
  }
};

struct BareDhcp : BareFrame {
  Gtk::CheckButton yes{"Yes"};
  Gtk::CheckButton no{"No"};
  Gtk::Label poolLabel{"DHCP Pool"};
  Gtk::Grid pool;
  Gtk::Label startLabel{"Start IP"};
  Gtk::Entry start;
  Gtk::Label endLabel{"End IP"};
  Gtk::Entry end;

  BareDhcp() : BareFrame("Enable DHCP") {
    set_margin(MARGIN);
    add(yes, 0, nullptr);
    add(no, 2, &yes);
    yes.set_active(true);
    append(poolLabel);
    append(pool);
    pool.attach(startLabel, 0, 0);
    pool.attach(start, 1, 0);
    pool.attach(endLabel, 2, 0);
    pool.attach(end, 3, 0);
    startLabel.set_mnemonic_widget(start);
    endLabel.set_mnemonic_widget(end);
    for (Gtk::Widget* widget : std::initializer_list<Gtk::Widget*>{&yes, &no, &start, &end})
      widget->set_sensitive(false);
  }
};

struct BareWifiPage : Gtk::Grid {
  BareDevice device{"wlan0"};
  BareFrame mode{"Mode"};
  Gtk::CheckButton client{"Client"};
  Gtk::CheckButton accessPoint{"Access Point"};
  Gtk::CheckButton disabled{"Disabled"};
  BareWifiEntries entries;
  Gtk::Label note{"Below info is only for access points"};
  BareAccessPoint accessPointEntries;
  BareDhcp dhcp;

  BareWifiPage() {
    mode.add(disabled, 0, &client);
    mode.add(client, 1, nullptr);
    mode.add(accessPoint, 2, &client);
    client.set_active(true);
    set_valign(Gtk::Align::START);
    set_margin(MARGIN);
    set_expand(true);
    for (Gtk::Widget* widget : std::initializer_list<Gtk::Widget*>{&device, &mode, &dhcp})
      widget->set_expand(true);
    attach(device, 1, 0, 3);
    attach(mode, 1, 1, 3);
    attach(entries, 1, 2, 3);
    attach(note, 1, 3, 2);
    attach(accessPointEntries, 1, 4, 3, 2);
    attach(dhcp, 1, 6, 3);
    for (Gtk::Widget* widget : std::initializer_list<Gtk::Widget*>{&device, &mode, &entries, &note,
                                                                   &accessPointEntries, &dhcp})
      widget->set_visible(false);
  }
};

struct BareWindow : Gtk::Window {
  Gtk::Box mainBox{VERTICAL};
  Gtk::Box buttonBox{HORIZONTAL};
  BareEthernetPage ethernetPage;
  BareWifiPage wifiPage;
  Gtk::Button exit{"Exit Without Saving"};
  Gtk::Button save{"Save And Exit"};
  Gtk::Notebook notebook;

  BareWindow() {
    set_title("ZOR Network Manager");
    set_default_size(525, 425);
    set_resizable(false);
    mainBox.set_margin(MARGIN);
    mainBox.set_spacing(1);
    mainBox.append(notebook);
    mainBox.append(buttonBox);
    buttonBox.set_spacing(50);
    buttonBox.set_halign(Gtk::Align::CENTER);
    for (Gtk::Button* button : {&save, &exit}) {
      buttonBox.append(*button);
      button->set_hexpand(false);
      button->set_halign(Gtk::Align::CENTER);
    }
    notebook.set_margin(MARGIN);
    notebook.set_expand(true);
    notebook.append_page(ethernetPage, "Ethernet");
    notebook.append_page(wifiPage, "Wifi");
    set_child(mainBox);
  }
};

}  // namespace

int main(int /*argc*/, char** argv) {
  const auto application = Gtk::Application::create("org.gtkmm.example");
  return application->make_window_and_run<BareWindow>(1, argv);
}
