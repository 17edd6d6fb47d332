// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/child.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <stdexcept>

#include "support/files.h"

namespace {

/** Does nothing for who is one already. */
void becomeOrdinaryUser() {
  if (geteuid() != 0) return;
  if (setgroups(0, nullptr) != 0 || setgid(ORDINARY_USER) != 0 || setuid(ORDINARY_USER) != 0)
    throw std::runtime_error("cannot give up root's rights");
}

}  // namespace

int waitForStatus(pid_t process) {
  int status = 0;
  if (waitpid(process, &status, 0) < 0) throw std::runtime_error("cannot wait for a child");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool hasChild() {
  siginfo_t info{};
  return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

void waitForChildren() {
  while (waitpid(-1, nullptr, 0) > 0) {
  }
}

int inChild(const std::function<void()>& body) {
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

int asOrdinaryUser(const std::function<void()>& body) {
  return inChild([&] {
    becomeOrdinaryUser();
    body();
  });
}

Unprivileged::Unprivileged() {
  if (geteuid() == 0 && seteuid(ORDINARY_USER) != 0)
    throw std::runtime_error("cannot lay down root's rights");
}

Unprivileged::~Unprivileged() {
  if (getuid() == 0 && seteuid(0) != 0) std::abort();
}

ResourceLimit::ResourceLimit(Resource limited, rlim_t most) : resource(limited) {
  std::signal(SIGXFSZ, SIG_IGN);  // so that a write beyond the limit fails like any other
  if (getrlimit(resource, &before) != 0) throw std::runtime_error("no such limit");
  const rlimit lower{most, before.rlim_max};
  if (setrlimit(resource, &lower) != 0) throw std::runtime_error("cannot set a limit");
}

ResourceLimit::~ResourceLimit() { (void)setrlimit(resource, &before); }

Lease::Lease(const std::string& path, int milliseconds) {
  int ready[2];
  if (pipe2(ready, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  // The holder is no child of the test, which waits for all that it has.
  if (child == 0 && fork() != 0) _exit(0);
  if (child == 0) {
    sigset_t asked;
    sigemptyset(&asked);
    sigaddset(&asked, SIGIO);
    sigprocmask(SIG_BLOCK, &asked, nullptr);
    const bool leased = fcntl(::open(path.c_str(), O_RDWR), F_SETLEASE, F_WRLCK) == 0;
    const pid_t self = getpid();
    if (!leased || write(ready[1], &self, sizeof self) != sizeof self) _exit(1);
    int received = 0;
    sigwait(&asked, &received);
    if (milliseconds == FOR_GOOD) pause();
    usleep(static_cast<useconds_t>(milliseconds) * 1000);
    _exit(0);
  }
  waitForStatus(child);
  close(ready[1]);
  const bool leased = read(ready[0], &holder, sizeof holder) == sizeof holder;
  close(ready[0]);
  if (!leased) throw std::runtime_error("no lease on " + path);
}

Lease::~Lease() { kill(holder, SIGKILL); }
