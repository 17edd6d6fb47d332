// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

#include "support/files.h"

/** The exit status of a process as a shell gives it: 128 and the signal for one that was killed. */
inline int waitForStatus(pid_t process) {
  int status = 0;
  if (waitpid(process, &status, 0) != process) throw std::runtime_error("cannot wait for a child");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/**
 * Runs a test's body in a child process, where it may change what belongs to the whole process.
 * Returns 0 when its expectations held; one that hangs is ended, which is a failure too.
 */
template <typename Body>
int inChild(Body&& body) {
  constexpr unsigned LIMIT_IN_SECONDS = 20;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child != 0) return waitForStatus(child);
  alarm(LIMIT_IN_SECONDS);
  try {
    body();
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
  }
  std::fflush(nullptr);
  _exit(testing::Test::HasFailure() ? 1 : 0);
}

/** Gives up root's rights for good. Does nothing for who has none. */
inline void becomeOrdinaryUser() {
  if (geteuid() != 0) return;
  if (setgroups(0, nullptr) != 0 || setgid(ORDINARY_USER) != 0 || setuid(ORDINARY_USER) != 0)
    throw std::runtime_error("cannot give up root's rights");
}

/** inChild(), and without root's rights. */
template <typename Body>
int asOrdinaryUser(Body&& body) {
  return inChild([&] {
    becomeOrdinaryUser();
    body();
  });
}
