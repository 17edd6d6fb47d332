// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/open_private.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "base/retry.h"

int openPrivate(const char* path, int flags) {
  constexpr mode_t PRIVATE = S_IRUSR | S_IWUSR;
  const int descriptor = open(path, flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, PRIVATE);
  if (descriptor == -1 || (flags & O_ACCMODE) == O_RDONLY) return descriptor;

  // Only a file's mode, not that of a device that a link leads to. Who may write a file without
  // owning it cannot change its mode: then it stays as it is.
  (void)succeedsOnRetry([&] {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return false;
    const bool isDone = !S_ISREG(status.st_mode) || status.st_mode == (S_IFREG | PRIVATE);
    return isDone || fchmod(descriptor, PRIVATE) == 0;
  });
  return descriptor;
}
