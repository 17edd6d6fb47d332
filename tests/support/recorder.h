// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "support/files.h"

/** The exit status of the recorder, which nothing else here has. */
inline constexpr int RECORDER_STATUS = 42;

/** What the recorder was called with. */
struct Call {
  std::string arguments;      // e.g. "[finalize_wifi][ZOR]"
  std::string circumstances;  // its name, umask, ignored and blocked signals
};

/**
 * While it lives, PATH leads to the recorder and to nothing else: a program in the place of the
 * privileged one that writes down each call.
 */
class Recorder {
 public:
  Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  ~Recorder();

  /** Where PATH finds the privileged program. To be removed or replaced at will. */
  std::string program() const { return folder.file("zor-network-permissions-handler"); }

  /** The calls since the last look, in no order. Waits for all child processes. */
  std::vector<Call> calls() const;

  /** The arguments of these calls, sorted, with a blank between. */
  std::string requests() const;

 private:
  TemporaryDirectory folder;
  std::string records = folder.makeDirectory("records");
  std::string searchPath;
};
