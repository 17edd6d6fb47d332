// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <ostream>
#include <stdexcept>
#include <string>

/** What was printed on the two streams. */
struct Output {
  std::string out;
  std::string err;

  friend bool operator==(const Output& left, const Output& right) {
    return left.out == right.out && left.err == right.err;
  }
  friend std::ostream& operator<<(std::ostream& stream, const Output& output) {
    return stream << "\n--- out\n" << output.out << "--- err\n" << output.err << "---\n";
  }
};

/** Redirects a descriptor into memory as long as it lives. */
class CapturedDescriptor {
 public:
  explicit CapturedDescriptor(int descriptor)
      : captured(descriptor), original(dup(descriptor)), memory(memfd_create("capture", 0)) {
    if (original < 0 || memory < 0 || dup2(memory, captured) < 0)
      throw std::runtime_error("cannot capture a descriptor");
  }
  CapturedDescriptor(const CapturedDescriptor&) = delete;
  CapturedDescriptor& operator=(const CapturedDescriptor&) = delete;
  ~CapturedDescriptor() {
    dup2(original, captured);
    close(original);
    close(memory);
  }

  std::string text() const {
    std::string content(static_cast<std::size_t>(lseek(memory, 0, SEEK_END)), '\0');
    if (pread(memory, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
      throw std::runtime_error("cannot read what was captured");
    return content;
  }

 private:
  int captured;
  int original;
  int memory;
};

/**
 * All that a statement prints, by whatever means, its child processes included if it waits for
 * them. What it leaves in a buffer is lost: every line is to be flushed.
 */
template <typename Statement>
Output capture(Statement&& statement) {
  const auto flush = [] {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
  };
  flush();
  const CapturedDescriptor out(STDOUT_FILENO);
  const CapturedDescriptor err(STDERR_FILENO);
  statement();
  Output output{out.text(), err.text()};
  flush();
  return output;
}
