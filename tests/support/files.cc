// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/files.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file || chmod(path.c_str(), 0644) != 0) throw std::runtime_error("cannot write " + path);
}

bool exists(const std::string& path) { return std::filesystem::exists(path); }

struct stat statusOf(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) throw std::runtime_error("cannot stat " + path);
  return status;
}

mode_t modeOf(const std::string& path) { return statusOf(path).st_mode & 07777; }

ino_t inodeOf(const std::string& path) { return statusOf(path).st_ino; }

void makeOld(const std::string& path) {
  const std::array<timespec, 2> times = {{{1000, 1}, {1000, 1}}};
  if (utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0)
    throw std::runtime_error("cannot set the times of " + path);
}

bool isStillOld(const std::string& path) {
  const timespec changed = statusOf(path).st_mtim;
  return changed.tv_sec == 1000 && changed.tv_nsec == 1;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

void preferMemory(unsigned long long bytes) {
  const char* const memory = "/dev/shm";
  struct statvfs status {};
  if (access(memory, W_OK) != 0 || statvfs(memory, &status) != 0) return;
  const auto room = static_cast<unsigned long long>(status.f_bavail) * status.f_frsize;
  if (room >= bytes) setenv("TMPDIR", memory, 1);
}

TemporaryDirectory::TemporaryDirectory()
    : path(std::filesystem::canonical(std::filesystem::temp_directory_path())) {
  path += "/zor-test-XXXXXX";
  if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("cannot create " + path);
}

TemporaryDirectory::~TemporaryDirectory() {
  (void)chmod(path.c_str(), S_IRWXU);
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

std::string TemporaryDirectory::makeDirectory(const std::string& name) const {
  std::filesystem::create_directories(file(name));
  return file(name);
}

void TemporaryDirectory::giveToOrdinaryUser() const {
  if (geteuid() != 0) return;
  std::vector<std::string> given = {path};
  for (const std::string& name : names()) given.push_back(file(name));
  for (const std::string& name : given)
    if (lchown(name.c_str(), ORDINARY_USER, ORDINARY_USER) != 0)
      throw std::runtime_error("cannot give away " + name);
}
