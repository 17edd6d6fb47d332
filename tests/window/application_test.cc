// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <glibmm/main.h>
#include <gtkmm/application.h>

#include "window_test.h"

namespace {

/** The window as the program runs it: made, owned and deleted by the application. */
class ApplicationRun : public WindowTest {
 protected:
  NetworkManagerWindow* running = nullptr;  // nulled when the window is gone

  /** Runs the application and has the action done in its window. True if it then ends by itself. */
  bool runWindow(const std::function<void()>& action) {
    loadKeyfiles();
    const auto application = Gtk::Application::create("org.gtkmm.example");
    application->signal_window_added().connect([&](Gtk::Window* added) {
      auto* main = dynamic_cast<NetworkManagerWindow*>(added);
      if (main == nullptr) return;  // a dialog
      main->signal_destroy().connect([this] { running = nullptr; });
      running = main;
      Glib::signal_idle().connect_once(action);
    });
    bool late = false;
    sigc::connection limit = Glib::signal_timeout().connect_seconds(
        [&] {
          late = true;
          application->quit();
          return false;
        },
        30);
    int status = -1;
    printedBy([&] {
      status = application->make_window_and_run<NetworkManagerWindow>(0, nullptr);
      waitForChildren();
    });
    limit.disconnect();
    EXPECT_EQ(running, nullptr) << "the window is deleted";
    return status == 0 && !late;
  }

  void pressInRunning(const std::string& label) { click(labelled<Gtk::Button>(*running, label)); }
  void showPageOfRunning(int page) { widgetOf<Gtk::Notebook>(*running).set_current_page(page); }
};

TEST_F(ApplicationRun, EndsAfterASave) {
  const UpdateRecordLock lock;
  writeBytes(directory.file("wired"), STATIC_KEYFILE);
  writeBytes(directory.file("wireless"), AP_KEYFILE);
  for (const int page : {ETHERNET, WIFI}) {
    EXPECT_TRUE(runWindow([&] {
      showPageOfRunning(page);
      pressInRunning("Save And Exit");
    }));
    EXPECT_EQ(recorder.requests(),
              page == WIFI ? "[finalize_wifi][Hotspot]" : "[finalize_ethernet][ethernet]");
  }
}

TEST_F(ApplicationRun, IsNotKeptByAVisibleDialog) {
  writeBytes(directory.file("wired"), STATIC_KEYFILE);
  writeBytes(directory.file("wireless"), AP_KEYFILE);
  for (const bool close : {false, true}) {
    bool visible = false;
    EXPECT_TRUE(runWindow([&] {
      for (const int page : {ETHERNET, WIFI}) {
        showPageOfRunning(page);
        fieldOf<Gtk::Entry>(*running, "Default Gateway").set_text("");
        fieldOf<Gtk::Entry>(*running, "Password").set_text("");
        pressInRunning("Save And Exit");
      }
      visible = dialogs().size() == 2 && dialogs()[0]->get_visible() && dialogs()[1]->get_visible();
      if (close) {
        running->close();
      } else {
        pressInRunning("Exit Without Saving");
      }
    }));
    EXPECT_TRUE(visible);
    EXPECT_TRUE(dialogs().empty());
    EXPECT_EQ(recorder.requests(), close ? "" : "[rollback]");
  }
}

}  // namespace
