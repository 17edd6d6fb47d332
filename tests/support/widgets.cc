// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/widgets.h"

#include <glibmm/main.h>

#include <chrono>

std::vector<Gtk::Widget*> children(Gtk::Widget& widget) {
  std::vector<Gtk::Widget*> found;
  for (Gtk::Widget* child = widget.get_first_child(); child != nullptr;
       child = child->get_next_sibling())
    found.push_back(child);
  return found;
}

bool eventually(const std::function<bool()>& condition) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  // The timer ends each wait for an event, so that the condition and the limit are looked at.
  sigc::connection ticks = Glib::signal_timeout().connect([] { return true; }, 5);
  bool holds = condition();
  while (!holds && std::chrono::steady_clock::now() < limit) {
    Glib::MainContext::get_default()->iteration(true);
    holds = condition();
  }
  ticks.disconnect();
  return holds;
}

void click(Gtk::Widget& button) { g_signal_emit_by_name(button.gobj(), "clicked"); }
