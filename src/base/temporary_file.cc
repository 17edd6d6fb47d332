// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/flush.h"
#include "base/open_private.h"
#include "base/retry.h"
#include "base/write_all.h"

namespace {

constexpr char TEMPORARY_SUFFIX = '~';

/**
 * Fills an array of zeros with the name, the suffix as its last byte; a name that has it already
 * gets one more. Leaves it for what cannot name a file, or leaves no room.
 */
const char* temporaryName(std::array<char, PATH_MAX>& name, const char* path) {
  const std::size_t length = std::strlen(path);
  if (length == 0 || length + 1 >= name.size() || path[length - 1] == '/') return name.data();
  const std::size_t last = path[length - 1] == TEMPORARY_SUFFIX ? length : length - 1;
  *std::copy_n(path, last, name.begin()) = TEMPORARY_SUFFIX;
  return name.data();
}

/** Creates a file that is not there yet; -1, with errno set, if it is. */
int createNew(const char* path) { return openPrivate(path, O_WRONLY | O_CREAT | O_EXCL); }

/** The same in place of a leftover, perhaps one that others can read, or a link. */
int createAnew(const char* path) {
  const int descriptor = createNew(path);
  if (descriptor != -1 || errno != EEXIST || unlink(path) != 0) return descriptor;
  return createNew(path);
}

bool copyBytes(int source, int target) {
  std::array<char, 512> block{};
  for (;;) {
    const ssize_t length = read(source, block.data(), block.size());
    if (length <= 0) return length == 0;
    if (!writeAll(target, {block.data(), static_cast<std::size_t>(length)})) return false;
  }
}

/** Copies a file into one that was created for it, and that does not stay if this fails. */
bool copy(const char* path, int target, const char* place) {
  const int source = openPrivate(path, O_RDONLY);
  bool copied = copyBytes(source, target) && flush(target);  // fails where source is -1
  close(source);
  copied = close(target) == 0 && copied;
  if (!copied) (void)unlink(place);
  return copied;
}

}  // namespace

TemporaryFile::TemporaryFile(const char* path)
    : place(path), opened(createAnew(temporaryName(name, path))), discarded(opened >= 0) {}

TemporaryFile::~TemporaryFile() {
  if (opened >= 0) ::close(opened);
  if (discarded) (void)unlink(name.data());
}

bool TemporaryFile::close() {
  const bool flushed = flush(opened);
  return ::close(std::exchange(opened, -1)) == 0 && flushed;
}

bool TemporaryFile::takePlace() {
  (void)unlink(place);
  // Not given up for a failure of a moment: the next change would begin with a missing file.
  discarded = !succeedsOnRetry([&] { return std::rename(name.data(), place) == 0; });
  if (!discarded) return true;
  int target{};
  (void)succeedsOnRetry([&] {
    target = createNew(place);
    return target != -1 || errno == EEXIST;
  });
  if (target == -1) {
    discarded = errno == EEXIST;  // the old file could not be removed
    return false;
  }
  discarded = copy(name.data(), target, place);
  return discarded;
}
