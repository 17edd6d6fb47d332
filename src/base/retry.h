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
 * Runs an operation until it succeeds, and returns whether it did. Whatever fails is tried once
 * more; what may pass is tried for a tenth of a second. Without this a failure of a moment would
 * look like an empty file, and a save would then make it one. The operation returns whether it
 * succeeded, with errno set if not. Only this decides how often something is tried.
 */
template <typename Operation>
bool succeedsOnRetry(Operation operation) {
  using std::chrono::milliseconds;
  if (operation()) return true;
  for (const milliseconds pause :
       {milliseconds(0), milliseconds(1), milliseconds(4), milliseconds(15), milliseconds(80)}) {
    if (pause.count() > 0 && !mayPass(errno)) break;
    std::this_thread::sleep_for(pause);
    if (operation()) return true;
  }
  return false;
}
