// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <functional>
#include <string>

// Processes, and what belongs to one as a whole.

/**
 * Waits for a child process, or for any (-1). Returns its exit status as a shell gives it: 128 and
 * the signal for one that was killed.
 */
int waitForStatus(pid_t process);

/** Whether a child process was started and not yet waited for, running or not. */
bool hasChild();
void waitForChildren();

/**
 * Runs a test's body in a child process, where it may change what belongs to the whole process.
 * Returns 0 when its expectations held; one that hangs is ended, which is a failure too.
 */
int inChild(const std::function<void()>& body);

/** inChild(), and without root's rights, which are given up for good. */
int asOrdinaryUser(const std::function<void()>& body);

/**
 * While it lives, files are accessed without root's rights: for what cannot go on in a child
 * process, as a window. Does nothing for who has none.
 */
class Unprivileged {
 public:
  Unprivileged();
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;
  ~Unprivileged();
};

/**
 * Another process that holds a lease on a file: it cannot be opened without waiting until the lease
 * is given back, some time after the first try, or ends.
 */
class Lease {
 public:
  static constexpr int FOR_GOOD = -1;

  Lease(const std::string& path, int milliseconds);
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease();

 private:
  pid_t holder = 0;
};

/** While it lives, the process has no more of a resource (RLIMIT_FSIZE, ...) than so much. */
class ResourceLimit {
 public:
  using Resource = decltype(RLIMIT_FSIZE);

  ResourceLimit(Resource limited, rlim_t most);
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;
  ~ResourceLimit();

 private:
  Resource resource;
  rlimit before{};
};
