// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/shared_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/retry.h"
#include "base/write_all.h"

namespace {

/** A second name may be a link that another user made to a file of the user. */
bool isOwnFile(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
         status.st_nlink == 1;
}

}  // namespace

bool writeSharedFile(const std::string& path, std::string_view content) {
  constexpr int FLAGS = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
  constexpr mode_t READABLE = 0666;
  return succeedsOnRetry([&] {
    const int descriptor = open(path.c_str(), FLAGS, READABLE);
    if (descriptor == -1) return false;
    // Not truncated before it is known whose file it is.
    const bool written =
        isOwnFile(descriptor) && ftruncate(descriptor, 0) == 0 && writeAll(descriptor, content);
    return close(descriptor) == 0 && written;
  });
}
