// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <climits>
#include <string>

// System calls that fail, in a program that is linked with failing_calls.cc: close, fchmod, fstat,
// fsync, ftruncate, lseek, open, pread, pwrite, read, realpath, rename, unlink and write;
// "open to write" is about some of the calls of open.

/** Which calls fail, and how. */
struct Failure {
  std::string call;
  int error;
  int after = 0;        // this many calls work
  int times = INT_MAX;  // how many fail then
};

/** Lets calls fail while it lives. Two of them can be about different calls. */
class FailingCall {
 public:
  explicit FailingCall(const Failure& failure);
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;
  ~FailingCall();

  /** How many calls there were until now, those that failed included. */
  int calls() const;

 private:
  std::string call;
};
