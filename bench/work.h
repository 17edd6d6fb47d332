// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "contender.h"

/** Something to do with a keyfile, again and again, in the way of any contender. */
class Work {
 public:
  const std::string name;
  const int lines;  // of the keyfile; for discovery, the number of keyfiles

  Work(std::string workName, int size) : name(std::move(workName)), lines(size) {}
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  virtual ~Work() = default;

  virtual bool suits(const Contender& /*contender*/) const { return true; }

  /** Makes the files of one contender and tells where. Not measured. */
  virtual std::string prepare(const Contender& contender) = 0;

  /** Once through the work. Two turns in a row have different values to write. */
  virtual void run(const Contender& contender, const std::string& path, unsigned turn) = 0;

  /** Whether what the last run() left or found is right. */
  virtual bool isRight(const Contender& contender, const std::string& path, unsigned turn) = 0;
};

/** All the work, on files below a folder. */
std::vector<std::unique_ptr<Work>> allWork(const std::string& folder);
