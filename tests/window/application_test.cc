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
    printed = printedBy([&] {
      status = application->make_window_and_run<NetworkManagerWindow>(0, nullptr);
      waitForChildren();
    });
    limit.disconnect();
    EXPECT_EQ(running, nullptr) << "the window is deleted";
    return status == 0 && !late;
  }

  void press(const std::string& label) { click(labelled<Gtk::Button>(*running, label)); }
  void showPageOfRunning(int page) { widgetOf<Gtk::Notebook>(*running).set_current_page(page); }

  bool printedLine(const std::string& line) const {
    return printed.find("\n" + line + "\n") != std::string::npos;
  }

 private:
  std::string printed;
};

TEST_F(ApplicationRun, EndsWhenTheUserLeaves) {
  bool visible = false;
  EXPECT_TRUE(runWindow([&] {
    visible = running->get_visible();
    press("Exit Without Saving");
  }));
  EXPECT_TRUE(visible);
  EXPECT_TRUE(printedLine("Closing program without saving"));
  EXPECT_EQ(recorder.requests(), "[rollback]");
}

TEST_F(ApplicationRun, EndsAfterAnEthernetSave) {
  const UpdateRecordLock lock;
  writeBytes(directory.file("wired"), STATIC_KEYFILE);
  EXPECT_TRUE(runWindow([&] { press("Save And Exit"); }));
  EXPECT_EQ(recorder.requests(), "[finalize_ethernet][ethernet]");
}

TEST_F(ApplicationRun, EndsAfterAWifiSave) {
  for (const char* content : {AP_KEYFILE, CLIENT_KEYFILE}) {
    writeBytes(directory.file("wireless"), content);
    EXPECT_TRUE(runWindow([&] {
      showPageOfRunning(WIFI);
      press("Save And Exit");
    }));
    EXPECT_EQ(recorder.requests(),
              content == AP_KEYFILE ? "[finalize_wifi][Hotspot]" : "[finalize_wifi][ZOR]");
  }
}

TEST_F(ApplicationRun, EndsAfterWifiIsDisabled) {
  EXPECT_TRUE(runWindow([&] {
    showPageOfRunning(WIFI);
    press("Save And Exit");
  }));
  EXPECT_EQ(recorder.requests(), "[finalize_wifi]");
}

TEST_F(ApplicationRun, EndsWhenTheWindowIsClosed) {
  for (const int page : {ETHERNET, WIFI}) {
    EXPECT_TRUE(runWindow([&] {
      showPageOfRunning(page);
      running->close();
    }));
    EXPECT_EQ(recorder.requests(), "");
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
        press("Save And Exit");
      }
      visible = dialogs().size() == 2 && dialogs()[0]->get_visible() && dialogs()[1]->get_visible();
      if (close) {
        running->close();
      } else {
        press("Exit Without Saving");
      }
    }));
    EXPECT_TRUE(visible);
    EXPECT_TRUE(dialogs().empty());
    EXPECT_EQ(recorder.requests(), close ? "" : "[rollback]");
  }
}

TEST_F(ApplicationRun, GoesOnAfterADialog) {
  const UpdateRecordLock lock;
  writeBytes(directory.file("wired"), STATIC_KEYFILE);
  bool stillThere = false;
  EXPECT_TRUE(runWindow([&] {
    auto& gateway = fieldOf<Gtk::Entry>(*running, "Default Gateway");
    gateway.set_text("");
    press("Save And Exit");
    dialogs().at(0)->response(Gtk::ResponseType::OK);
    stillThere = running != nullptr && running->get_visible();
    gateway.set_text("192.168.1.1");
    press("Save And Exit");
  }));
  EXPECT_TRUE(stillThere);
  EXPECT_EQ(recorder.requests(), "[finalize_ethernet][ethernet]");
}

}  // namespace
