// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/files.h"
#include "support/recorder.h"

/**
 * A folder of keyfiles that the program finds in debug mode, and a recorder in the place of the
 * privileged program. The toolkit has been started.
 */
class KeyfileTest : public testing::Test {
 protected:
  KeyfileTest();

  /** Has the program look for the keyfiles. What that prints is dropped. */
  void loadKeyfiles() const;

  TemporaryDirectory directory;
  Recorder recorder;
};

/** Keeps the update record, whose path is fixed, to one test at a time, and removes it. */
class UpdateRecordLock {
 public:
  static constexpr const char* PATH = "/tmp/ethernetUpdateSettings";
  UpdateRecordLock();
  ~UpdateRecordLock();
  UpdateRecordLock(const UpdateRecordLock&) = delete;
  UpdateRecordLock& operator=(const UpdateRecordLock&) = delete;

 private:
  int descriptor;
};
