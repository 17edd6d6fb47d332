// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/inherited.h"

#include <unistd.h>

#include <csignal>
#include <optional>
#include <vector>

namespace {

struct Inherited {
  sigset_t blocked{};
  struct sigaction onBrokenPipe {};
  struct sigaction onFileTooLarge {};
  std::vector<char*> environment;  // the strings themselves stay where they are
};

// Process-wide, as signals are.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
std::optional<Inherited> inherited;

}  // namespace

void keepInherited() {
  Inherited& now = inherited.emplace();
  pthread_sigmask(SIG_SETMASK, nullptr, &now.blocked);
  sigaction(SIGPIPE, nullptr, &now.onBrokenPipe);
  sigaction(SIGXFSZ, nullptr, &now.onFileTooLarge);
  for (char** variable = environ; *variable != nullptr; ++variable)
    now.environment.push_back(*variable);
  now.environment.push_back(nullptr);
}

void restoreInherited() {
  if (!inherited) return;
  sigaction(SIGPIPE, &inherited->onBrokenPipe, nullptr);
  sigaction(SIGXFSZ, &inherited->onFileTooLarge, nullptr);
  environ = inherited->environment.data();
  pthread_sigmask(SIG_SETMASK, &inherited->blocked, nullptr);
}
