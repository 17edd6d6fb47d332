// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "base/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <system_error>

#include "base/flush.h"
#include "base/open_private.h"
#include "base/retry.h"
#include "base/temporary_file.h"
#include "base/write_all.h"

namespace {

/** Reads on to the end, holding the bytes once. Returns false where that fails. */
bool readAll(int descriptor, std::string& content) {
  struct stat status {};
  constexpr std::size_t LAST_LF = 1;  // which the caller may have to add
  std::array<char, 4096> block{};
  try {
    if (fstat(descriptor, &status) == 0)
      content.reserve(static_cast<std::size_t>(status.st_size) + LAST_LF);
    for (;;) {
      const ssize_t length = read(descriptor, block.data(), block.size());
      if (length <= 0) return length == 0;
      content.append(block.data(), static_cast<std::size_t>(length));
    }
  } catch (const std::exception&) {  // no memory, or more than any text can hold
    errno = ENOMEM;
    return false;
  }
}

/** Whether a file can take a name: nobody has it, or a file or link that goes then. */
bool isReplaceable(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode) || S_ISLNK(status.st_mode);
}

/** Makes a file longer by empty lines, where there is room for all of them. */
bool grow(int descriptor, off_t size, std::size_t more) {
  const std::string emptyLines(more, '\n');
  if (pwrite(descriptor, emptyLines.data(), more, size) == static_cast<ssize_t>(more)) return true;
  (void)ftruncate(descriptor, size);
  return false;
}

/** Puts the first bytes of the content, which it may fill up, in the place of those of a file. */
bool overwrite(int descriptor, std::string& content, std::size_t length) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return false;
  if (!S_ISREG(status.st_mode)) return writeAll(descriptor, content);
  const auto size = static_cast<std::size_t>(status.st_size);
  if (length > size && !grow(descriptor, status.st_size, length - size)) return false;
  // Not truncated first: what is cut off afterwards is then nothing but empty lines.
  if (length > 0) content.resize(std::max(length, size), '\n');
  return writeAll(descriptor, content) && ftruncate(descriptor, static_cast<off_t>(length)) == 0;
}

}  // namespace

std::optional<std::string> readFile(const std::string& path) {
  std::string content;
  const bool complete = succeedsOnRetry([&] {
    content.clear();
    const int descriptor = openPrivate(path.c_str(), O_RDONLY);
    if (descriptor == -1) return false;
    const bool read = readAll(descriptor, content);
    close(descriptor);
    return read;
  });
  if (!complete) return std::nullopt;
  return content;
}

bool replaceFile(const std::string& path, std::string_view content) {
  if (!isReplaceable(path)) return false;
  bool replaced = false;
  (void)succeedsOnRetry([&] {
    TemporaryFile file(path.c_str());
    if (file.descriptor() == -1 || !writeAll(file.descriptor(), content) || !file.close())
      return false;
    replaced = file.takePlace();
    return true;  // the next try would begin with the removal of what may be all there is
  });
  return replaced;
}

bool isUnreadable(const std::string& path) {
  return !succeedsOnRetry([&] {
    const int descriptor = openPrivate(path.c_str(), O_RDONLY);
    if (descriptor == -1) return errno == ENOENT || errno == ELOOP;
    char first{};
    // Folders and FIFOs hold nothing that could be lost.
    const bool readable =
        pread(descriptor, &first, sizeof first, 0) >= 0 || errno == EISDIR || errno == ESPIPE;
    close(descriptor);
    return readable;
  });
}

bool overwriteFile(const std::string& path, std::string content) {
  const std::size_t length = content.size();
  return succeedsOnRetry([&] {
    const int descriptor = openPrivate(path.c_str(), O_WRONLY | O_CREAT);
    if (descriptor == -1) return false;
    const bool written = overwrite(descriptor, content, length);
    return close(descriptor) == 0 && written;
  });
}

void moveFile(const std::string& from, const std::string& to) {
  std::error_code ignored;
  if (std::filesystem::is_symlink(from, ignored) &&
      std::filesystem::equivalent(from, to, ignored)) {
    removeFile(from);  // in place of what it leads to, it would lead to itself
  } else if (isReplaceable(to) && !isUnreadable(to)) {
    (void)succeedsOnRetry([&] { return std::rename(from.c_str(), to.c_str()) == 0; });
  }
}

void removeFile(const std::string& path) {
  (void)succeedsOnRetry([&] { return unlink(path.c_str()) == 0 || errno == ENOENT; });
}

void flushToDisk(const std::string& path) {
  for (const std::string& name : {path, path.substr(0, path.rfind('/') + 1)}) {
    (void)succeedsOnRetry([&] {
      const int descriptor = openPrivate(name.c_str(), O_RDONLY);
      if (descriptor == -1) return errno == ENOENT;
      const bool flushed = flush(descriptor);
      close(descriptor);
      return flushed;
    });
  }
}
