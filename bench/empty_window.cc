// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The floor for the start: what the toolkit takes to show a window with nothing in it.
#include <gtkmm/application.h>
#include <gtkmm/window.h>

int main(int /*argc*/, char** argv) {
  return Gtk::Application::create("org.gtkmm.example")->make_window_and_run<Gtk::Window>(1, argv);
}
