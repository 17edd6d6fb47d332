// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "app/inherited.h"

#include <csignal>
#include <optional>

namespace {

struct Inherited {
  sigset_t blocked;
  struct sigaction onBrokenPipe;
  struct sigaction onFileTooLarge;
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
}

void restoreInherited() {
  if (!inherited) return;
  sigaction(SIGPIPE, &inherited->onBrokenPipe, nullptr);
  sigaction(SIGXFSZ, &inherited->onFileTooLarge, nullptr);
  pthread_sigmask(SIG_SETMASK, &inherited->blocked, nullptr);
}
