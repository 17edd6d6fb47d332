// SPDX-License-Identifier: MIT
#include <gtkmm/application.h>

#include <chrono>
#include <csignal>
#include <string_view>
#include <thread>

#include "app/NetworkManagerConfig.h"
#include "settings/text.h"
#include "window/NetworkManagerWindow.h"

namespace {

// Process-wide on purpose, and made before main().
// NOLINTNEXTLINE(cert-err58-cpp,cppcoreguidelines-avoid-non-const-global-variables,readability-identifier-naming)
NetworkManagerConfig* const config = &NetworkManagerConfig::getInstance();

int runWindow(int argc, char** argv) {
  const auto application = Gtk::Application::create("org.gtkmm.example");
  return application->make_window_and_run<NetworkManagerWindow>(argc, argv);
}

int runInDebugMode(char** argv) {
  logLine("Starting application in debug mode");
  config->initialize(NetworkManagerConfig::DEBUG);
  argv[1] = nullptr;
  return runWindow(1, argv);
}

int runInProductionMode(int argc, char** argv) {
  logLine("Starting application for Halvorik");
  config->runPermissionsHandler("unlock", "");
  // The request is not waited for: this is the time it has to act.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  config->initialize(NetworkManagerConfig::PRODUCTION);
  const int status = runWindow(argc, argv);
  // The second request after "Exit Without Saving", and the one that follows a save, are intended.
  config->runPermissionsHandler("rollback", "");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  // A reader of the log that goes away must not end the program in the middle of a save.
  std::signal(SIGPIPE, SIG_IGN);
  const bool debug = argc > 1 && std::string_view(argv[1]) == "1";
  return debug ? runInDebugMode(argv) : runInProductionMode(argc, argv);
}
