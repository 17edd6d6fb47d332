// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/recorder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "support/child.h"

namespace fs = std::filesystem;

Recorder::Recorder() : searchPath(std::getenv("PATH")) {
  // On a terminal a child process would show a line that it loses otherwise.
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  // A copy, for accounts that cannot reach the original; they may write their records, too.
  fs::copy_file(RECORDER_PROGRAM, program());
  fs::permissions(folder.path, fs::perms(0755));
  fs::permissions(records, fs::perms(01777));
  setenv("PATH", folder.path.c_str(), 1);
  setenv("ZOR_RECORDS", records.c_str(), 1);
}

Recorder::~Recorder() {
  setenv("PATH", searchPath.c_str(), 1);
  waitForChildren();
}

std::vector<Call> Recorder::calls() const {
  waitForChildren();
  std::vector<Call> found;
  for (const auto& entry : fs::directory_iterator(records)) {
    const std::string record = readBytes(entry.path());
    const auto end = record.find('\0');  // no argument holds one
    found.push_back({record.substr(0, end), record.substr(end + 1)});
    fs::remove(entry.path());
  }
  return found;
}

std::string Recorder::requests() const {
  std::vector<std::string> all;
  for (const Call& call : calls()) all.push_back(call.arguments);
  std::sort(all.begin(), all.end());
  std::string text;
  for (const std::string& arguments : all) text += (text.empty() ? "" : " ") + arguments;
  return text;
}
