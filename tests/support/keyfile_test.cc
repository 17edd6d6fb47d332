// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/keyfile_test.h"

#include <fcntl.h>
#include <gtkmm/application.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "app/NetworkManagerConfig.h"
#include "support/printed.h"

namespace {

/** Starts the toolkit once for all tests of a program. */
class Toolkit : public testing::Environment {
 public:
  void SetUp() override {
    application = Gtk::Application::create("test.widgets", Gio::Application::Flags::NON_UNIQUE);
    application->register_application();
  }
  void TearDown() override { application.reset(); }

 private:
  Glib::RefPtr<Gtk::Application> application;
};

// The framework owns it.
[[maybe_unused]] const testing::Environment* const TOOLKIT =
    testing::AddGlobalTestEnvironment(new Toolkit);

}  // namespace

KeyfileTest::KeyfileTest() { setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", directory.path.c_str(), 1); }

void KeyfileTest::loadKeyfiles() const {
  printedBy([] { NetworkManagerConfig::getInstance().initialize(NetworkManagerConfig::DEBUG); });
}

UpdateRecordLock::UpdateRecordLock() {
  const std::string name = std::string(PATH) + ".lock";
  // Where another user has made the file, it may not be opened for creation.
  descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) descriptor = open(name.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
  if (descriptor < 0 || flock(descriptor, LOCK_EX) != 0) throw std::runtime_error("no lock");
  std::filesystem::remove_all(PATH);
}

UpdateRecordLock::~UpdateRecordLock() {
  std::error_code ignored;
  std::filesystem::remove_all(PATH, ignored);
  close(descriptor);
}
