// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/failing_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>

namespace {

struct State {
  Failure failure;
  int calls = 0;
};
std::map<std::string, State, std::less<>>& states() {
  static std::map<std::string, State, std::less<>> all;
  return all;
}

bool fails(std::string_view call) {
  const auto found = states().find(call);
  if (found == states().end()) return false;
  auto& [failure, calls] = found->second;
  const int number = calls++;
  if (number < failure.after || number - failure.after >= failure.times) return false;
  errno = failure.error;
  return true;
}

}  // namespace

FailingCall::FailingCall(const Failure& failure) : call(failure.call) {
  states()[call] = {failure};
}

FailingCall::~FailingCall() { states().erase(call); }

int FailingCall::calls() const { return states().at(call).calls; }

// In the place of the C library's functions. A file that fails to be closed is closed all the same.
// Offsets have 64 bits everywhere, which the headers turn into other names.
#define NEXT(name, type) reinterpret_cast<type>(dlsym(RTLD_NEXT, name))
#if defined(_FILE_OFFSET_BITS) && _FILE_OFFSET_BITS == 64
#define LARGE(name) name "64"
#else
#define LARGE(name) name
#endif

extern "C" int close(int descriptor) {
  static const auto next = NEXT("close", int (*)(int));
  const int result = next(descriptor);
  return fails("close") ? -1 : result;
}

extern "C" int fchmod(int descriptor, mode_t mode) noexcept {
  static const auto next = NEXT("fchmod", int (*)(int, mode_t));
  return fails("fchmod") ? -1 : next(descriptor, mode);
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept {
  static const auto next = NEXT(LARGE("fstat"), int (*)(int, struct stat*));
  return fails("fstat") ? -1 : next(descriptor, status);
}

extern "C" int fsync(int descriptor) {
  static const auto next = NEXT("fsync", int (*)(int));
  return fails("fsync") ? -1 : next(descriptor);
}

extern "C" int ftruncate(int descriptor, off_t size) noexcept {
  static const auto next = NEXT(LARGE("ftruncate"), int (*)(int, off_t));
  return fails("ftruncate") ? -1 : next(descriptor, size);
}

extern "C" off_t lseek(int descriptor, off_t offset, int from) noexcept {
  static const auto next = NEXT(LARGE("lseek"), off_t(*)(int, off_t, int));
  return fails("lseek") ? -1 : next(descriptor, offset, from);
}

extern "C" int open(const char* path, int flags, ...) {
  static const auto next = NEXT(LARGE("open"), int (*)(const char*, int, ...));
  std::va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const bool toWrite = (flags & O_ACCMODE) != O_RDONLY;
  return fails("open") || (toWrite && fails("open to write")) ? -1 : next(path, flags, mode);
}

extern "C" ssize_t pread(int descriptor, void* bytes, size_t size, off_t offset) {
  static const auto next = NEXT(LARGE("pread"), ssize_t(*)(int, void*, size_t, off_t));
  return fails("pread") ? -1 : next(descriptor, bytes, size, offset);
}

extern "C" ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  static const auto next = NEXT(LARGE("pwrite"), ssize_t(*)(int, const void*, size_t, off_t));
  return fails("pwrite") ? -1 : next(descriptor, bytes, size, offset);
}

extern "C" ssize_t read(int descriptor, void* bytes, size_t size) {
  static const auto next = NEXT("read", ssize_t(*)(int, void*, size_t));
  return fails("read") ? -1 : next(descriptor, bytes, size);
}

extern "C" char* realpath(const char* path, char* resolved) noexcept {
  static const auto next = NEXT("realpath", char* (*)(const char*, char*));
  return fails("realpath") ? nullptr : next(path, resolved);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  static const auto next = NEXT("rename", int (*)(const char*, const char*));
  return fails("rename") ? -1 : next(from, to);
}

extern "C" int unlink(const char* path) noexcept {
  static const auto next = NEXT("unlink", int (*)(const char*));
  return fails("unlink") ? -1 : next(path);
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t size) {
  static const auto next = NEXT("write", ssize_t(*)(int, const void*, size_t));
  return fails("write") ? -1 : next(descriptor, bytes, size);
}
