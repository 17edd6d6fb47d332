// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <chrono>
#include <thread>

/** Whether what a system call failed with may be over a moment later. */
inline bool mayPass(int error) {
  switch (error) {
    case EAGAIN:  // a lease that somebody else holds on the file, too
    case EINTR:
    case EIO:
    case EMFILE:
    case ENFILE:
    case ENOMEM:
    case ESTALE:
      return true;
    default:
      return false;
  }
}

/**
 * Whether an operation succeeds, be it not at once: a caller who takes a passing failure for
 * certain loses what a file holds. Whatever fails is tried once more, and what may pass again and
 * again for a tenth of a second. The operation returns whether it succeeded, and leaves errno as it
 * was when it failed. The one place that decides how often something is tried.
 */
template <typename Operation>
bool succeedsOnRetry(Operation operation) {
  using std::chrono::milliseconds;
  if (operation()) return true;
  for (const milliseconds pause :
       {milliseconds(0), milliseconds(1), milliseconds(4), milliseconds(15), milliseconds(80)}) {
    if (pause.count() > 0 && !mayPass(errno)) break;
    std::this_thread::sleep_for(pause);
    errno = 0;
    if (operation()) return true;
  }
  return false;
}
