// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/write_all.h"

#include <unistd.h>

#include <cerrno>

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t length = write(descriptor, bytes.data(), bytes.size());
    if (length == -1 && errno == EINTR) continue;
    if (length <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(length));
  }
  return true;
}
