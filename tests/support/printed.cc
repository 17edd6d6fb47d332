// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/printed.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "support/files.h"

namespace {

/** Sends a descriptor into a file while it lives. A program that dies leaves the file behind. */
class Redirection {
 public:
  explicit Redirection(int redirected)
      : number(redirected),
        saved(fcntl(number, F_DUPFD_CLOEXEC, 0)),
        name(std::filesystem::temp_directory_path() / "captured-XXXXXX"),
        file(mkostemp(name.data(), O_CLOEXEC)) {
    if (dup2(file, number) < 0) throw std::runtime_error("cannot capture what is printed");
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;
  ~Redirection() {
    dup2(saved, number);
    close(saved);
    close(file);
    unlink(name.c_str());
  }

  std::string text() const { return readBytes(name); }

 private:
  int number;
  int saved;
  std::string name;
  int file;
};

void flush() {
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
}

}  // namespace

std::string lines(std::initializer_list<std::string> texts) {
  std::string joined;
  for (const std::string& text : texts) joined += text + "\n";
  return joined;
}

std::string printedBy(const std::function<void()>& action) {
  flush();
  const Redirection out(STDOUT_FILENO);
  const Redirection err(STDERR_FILENO);
  action();
  std::string text = out.text();
  std::istringstream errors(err.text());
  for (std::string line; std::getline(errors, line);)
    text += "! " + line + (errors.eof() ? "" : "\n");
  flush();
  return text;
}
