// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/inherited.h"

#include <unistd.h>

#include <csignal>
#include <map>
#include <optional>
#include <vector>

namespace {

struct Inherited {
  sigset_t blocked{};
  std::map<int, struct sigaction> actions;  // by the signal
  std::vector<char*> environment;           // the strings themselves stay where they are
};

// Process-wide, as signals are.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
std::optional<Inherited> inherited;

}  // namespace

void keepInherited() {
  Inherited& now = inherited.emplace();
  pthread_sigmask(SIG_SETMASK, nullptr, &now.blocked);
  for (const int signal : {SIGPIPE, SIGXFSZ}) sigaction(signal, nullptr, &now.actions[signal]);
  for (char** variable = environ; *variable != nullptr; ++variable)
    now.environment.push_back(*variable);
  now.environment.push_back(nullptr);
}

void restoreInherited() {
  if (!inherited) return;
  environ = inherited->environment.data();
  for (const auto& [signal, action] : inherited->actions) sigaction(signal, &action, nullptr);
  pthread_sigmask(SIG_SETMASK, &inherited->blocked, nullptr);
}
