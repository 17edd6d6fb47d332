// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Stands in front of the C library's functions: the write with the number ZOR_SHORT_WRITE, from 1,
// among those to regular files takes only half of the bytes, as a disk that is nearly full would.
// Standard output is not seen here: of a line the C library writes the rest by itself.
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

namespace {

size_t taken(int descriptor, size_t length) {
  static int writes = 0;
  const char* number = std::getenv("ZOR_SHORT_WRITE");
  struct stat status {};
  if (number == nullptr || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
    return length;
  return ++writes == std::atoi(number) ? length / 2 : length;
}

}  // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, size_t length) {
  return syscall(SYS_write, descriptor, bytes, taken(descriptor, length));
}

extern "C" ssize_t pwrite(int descriptor, const void* bytes, size_t length, off_t offset) {
  return syscall(SYS_pwrite64, descriptor, bytes, taken(descriptor, length), offset);
}
