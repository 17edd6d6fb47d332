// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <gtkmm/application.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <utility>

#include "app/NetworkManagerConfig.h"
#include "app/drawing.h"
#include "app/inherited.h"
#include "base/print.h"
#include "window/NetworkManagerWindow.h"

namespace {

constexpr const char* APPLICATION_ID = "org.gtkmm.example";

/** The time that the privileged program has for "unlock"; its end is not waited for. */
constexpr std::chrono::milliseconds PAUSE_AFTER_UNLOCK{200};

/** The signals by which a session or a service is stopped. */
constexpr std::array STOP_SIGNALS = {SIGHUP, SIGINT, SIGTERM};

// Process-wide on purpose, and made before main().
// NOLINTNEXTLINE(cert-err58-cpp,cppcoreguidelines-avoid-non-const-global-variables,readability-identifier-naming)
NetworkManagerConfig* const config = &NetworkManagerConfig::getInstance();

/**
 * Opens those of the standard streams that are closed. Otherwise the next file that is opened, or
 * the connection to the display, would take the place of standard output, and what the program
 * prints would be written into it.
 */
void openStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(descriptor, F_GETFD) < 0) (void)open("/dev/null", O_RDWR);
}

Glib::RefPtr<Gtk::Application> createApplication() {
  drawWithoutGraphicsProcessor(gtk_get_minor_version());
  return Gtk::Application::create(APPLICATION_ID);
}

int runInDebugMode(char** argv) {
  logLine("Starting application in debug mode");
  config->initialize(NetworkManagerConfig::DEBUG);
  const auto application = createApplication();
  argv[1] = nullptr;
  return application->make_window_and_run<NetworkManagerWindow>(1, argv);
}

/** Asks for the "rollback" that is owed after "unlock", once. */
void rollBack() {
  static bool owed = true;
  if (std::exchange(owed, false)) config->runPermissionsHandler("rollback", "");
}

/** Has the signals wait that would end the program. Returns which ones had to wait before. */
sigset_t holdStopSignals() {
  sigset_t stops;
  sigset_t before;
  sigemptyset(&stops);
  for (const int signal : STOP_SIGNALS) sigaddset(&stops, signal);
  pthread_sigmask(SIG_BLOCK, &stops, &before);
  return before;
}

gboolean quit(gpointer application) {
  g_application_quit(G_APPLICATION(application));
  return G_SOURCE_CONTINUE;
}

/** From now on they close the window, like a person would. Ignored ones stay so (as by nohup). */
void closeOnStopSignals(GApplication* application, const sigset_t& waiting) {
  for (const int signal : STOP_SIGNALS) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) g_unix_signal_add(signal, quit, application);
  }
  pthread_sigmask(SIG_SETMASK, &waiting, nullptr);
}

int runInProductionMode(int argc, char** argv) {
  logLine("Starting application for Halvorik");
  // From "unlock" on the program must not end without "rollback".
  const sigset_t waiting = holdStopSignals();
  config->runPermissionsHandler("unlock", "");
  // The toolkit ends the process itself after --help, and where there is no display. (It does so
  // too when the display goes away, but in a way that calls nothing at exit.)
  (void)std::atexit(rollBack);
  std::this_thread::sleep_for(PAUSE_AFTER_UNLOCK);
  config->initialize(NetworkManagerConfig::PRODUCTION);
  const auto application = createApplication();
  closeOnStopSignals(G_APPLICATION(application->gobj()), waiting);
  const int status = application->make_window_and_run<NetworkManagerWindow>(argc, argv);
  // Also after "Exit Without Saving", which has asked already, and after a save; both are intended.
  rollBack();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  openStandardStreams();
  keepInherited();
  // A reader of the log that goes away, or a log that has reached its largest size, must not end
  // the program in the middle of a save.
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
  const bool debug = argc > 1 && std::string_view(argv[1]) == "1";
  return debug ? runInDebugMode(argv) : runInProductionMode(argc, argv);
}
